#include "dbus/remote_object.h"

#include <utility>

namespace kaz::dbus {

RemoteObject::RemoteObject(sd_bus* bus, MessageEndpoint endpoint)
    : bus_(bus), endpoint_(std::move(endpoint)) {}

Reply RemoteObject::get(const char* property) const {
    MessageBuilder builder = makeDbusGetProperty(bus_, endpoint_, property);
    return send(builder);
}

bool RemoteObject::set(const char* property, const Variant& value) const {
    MessageBuilder builder = makeDbusSetProperty(bus_, endpoint_, property);
    write(builder, value);
    return static_cast<bool>(send(builder));
}

Reply RemoteObject::send(MessageBuilder& builder) const {
    // What was built may not be a message: sd-bus notes the type of a text before it refuses the text, and
    // the bus disconnects whoever sends that.
    if (!builder.ok()) {
        return Reply(MessageDecoder{});
    }
    return Reply(sendMessage(bus_, builder));
}

}  // namespace kaz::dbus
