#include "dbus/remote_object.h"

#include "dbus/platform_help.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace kaz::dbus {

bool isSilence(const std::string& error) {
    static constexpr std::array<std::string_view, 4> names{SD_BUS_ERROR_NO_REPLY, SD_BUS_ERROR_TIMEOUT,
                                                           "org.freedesktop.DBus.Error.TimedOut",
                                                           "System.Error.ETIMEDOUT"};
    return std::find(names.begin(), names.end(), error) != names.end();
}

RemoteObject::RemoteObject(sd_bus* bus, MessageEndpoint endpoint, CallRecord* record)
    : bus_(bus), endpoint_(std::move(endpoint)), record_(record) {}

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
    if (builder.message() == nullptr) {
        return notSent(bus_ == nullptr ? SD_BUS_ERROR_DISCONNECTED : SD_BUS_ERROR_UNKNOWN_OBJECT);
    }
    if (!builder.ok()) {
        return notSent(SD_BUS_ERROR_INVALID_ARGS);
    }
    // A late call must not start a service that was stopped meanwhile. Only systemd starts services.
    sd_bus_message_set_auto_start(builder.message(), 0);
    std::string error;
    const MessageDecoder reply = sendAndTell(bus_, builder, error);
    if (record_ != nullptr) {
        record_->silent = isSilence(error);
        if (reply.message == nullptr) {
            record_->failure = std::move(error);
        }
    }
    return Reply(reply);
}

Reply RemoteObject::notSent(const char* error) const {
    if (record_ != nullptr) {
        record_->failure = error;
    }
    return Reply(MessageDecoder{});
}

}  // namespace kaz::dbus
