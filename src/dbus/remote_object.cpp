#include "dbus/remote_object.h"

#include "dbus/platform_help.h"

#include <cerrno>
#include <utility>

namespace kaz::dbus {

RemoteObject::RemoteObject(sd_bus* bus, MessageEndpoint endpoint, bool* silent)
    : bus_(bus), endpoint_(std::move(endpoint)), silent_(silent) {}

Reply RemoteObject::get(const char* property) const {
    MessageBuilder builder = makeDbusGetProperty(bus_, endpoint_, property);
    return send(builder);
}

bool RemoteObject::set(const char* property, const Variant& value) const {
    MessageBuilder builder = makeDbusSetProperty(bus_, endpoint_, property);
    write(builder, value);
    return static_cast<bool>(send(builder));
}

void RemoteObject::markSecret(MessageBuilder& builder) {
    if (builder.message() != nullptr) {
        sd_bus_message_sensitive(builder.message());
    }
    keepErrorTextOutOfLog(builder);
}

Reply RemoteObject::send(MessageBuilder& builder) const {
    // After a failed argument the message is invalid: sd-bus records the type of a text before it refuses the
    // text, and the bus would disconnect us for sending it.
    if (builder.message() == nullptr || !builder.ok()) {
        return Reply(MessageDecoder{});
    }
    // A late call must not start a service that was stopped meanwhile. Only systemd starts services.
    sd_bus_message_set_auto_start(builder.message(), 0);
    errno = 0;
    const MessageDecoder reply = sendMessage(bus_, builder);
    if (silent_ != nullptr) {
        *silent_ = reply.message == nullptr && errno == ETIMEDOUT;
    }
    return Reply(reply);
}

}  // namespace kaz::dbus
