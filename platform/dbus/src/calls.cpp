#include <kaz/dbus/calls.h>

#include <algorithm>
#include <utility>

#include "base/errno_text.h"
#include "base/log.h"
#include "platform/dbus/handles.h"

namespace kaz::dbus {
namespace {

constexpr uint64_t longestWait = 10'000'000;  // us
constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";

MessageBuilder makePropertyCall(sd_bus* bus, MessageEndpoint endpoint, const char* member,
                                const std::string& property) {
    const std::string interface = std::exchange(endpoint.interface, propertiesInterface);
    MessageBuilder builder = makeDbusCall(bus, std::move(endpoint), member);
    if (builder.message() != nullptr) {
        const int result =
            sd_bus_message_append(builder.message(), "ss", interface.c_str(), property.c_str());
        if (result < 0) {
            builder.fail(errnoText(result));
        }
    }
    return builder;
}

void logFailure(const MessageBuilder& call, const sd_bus_error& error) {
    const char* member = textOf(sd_bus_message_get_member(call.message()));
    const char* destination = textOf(sd_bus_message_get_destination(call.message()));
    if (call.sensitive()) {
        log::warn("Call of {} at {} failed: {}", member, destination, textOf(error.name));
    } else {
        log::warn("Call of {} at {} failed: {}: {}", member, destination, textOf(error.name),
                  textOf(error.message));
    }
}

// In us: the limit of the connection, if that is shorter.
uint64_t replyTimeout(sd_bus* bus) {
    uint64_t limit = longestWait;
    sd_bus_get_method_call_timeout(bus, &limit);
    return std::min(limit, longestWait);
}

// The name of the error; empty after a success.
std::string call(sd_bus* bus, const MessageBuilder& builder, sd_bus_message*& reply) {
    BusError failure;
    const int result = sd_bus_call(bus, builder.message(), replyTimeout(bus), &failure.value, &reply);
    if (result < 0) {
        if (sd_bus_error_is_set(&failure.value) == 0) {
            sd_bus_error_set_errno(&failure.value, result);
        }
        logFailure(builder, failure.value);
        return textOf(failure.value.name);
    }
    return {};
}

}  // namespace

MessageBuilder makeDbusCall(sd_bus* bus, MessageEndpoint endpoint, const std::string& member) {
    if (bus == nullptr || endpoint.path.empty()) {
        return MessageBuilder(nullptr);
    }
    sd_bus_message* message = nullptr;
    const int result =
        sd_bus_message_new_method_call(bus, &message, endpoint.destination.c_str(), endpoint.path.c_str(),
                                       endpoint.interface.c_str(), member.c_str());
    if (result < 0) {
        log::warn("Cannot make a call of {} at {}: {}", member, endpoint.destination, errnoText(result));
    }
    return MessageBuilder(message);
}

MessageBuilder makeDbusGetProperty(sd_bus* bus, MessageEndpoint endpoint, const std::string& property) {
    return makePropertyCall(bus, std::move(endpoint), "Get", property);
}

MessageBuilder makeDbusSetProperty(sd_bus* bus, MessageEndpoint endpoint, const std::string& property) {
    return makePropertyCall(bus, std::move(endpoint), "Set", property);
}

MessageDecoder sendMessage(sd_bus* bus, MessageBuilder& builder) {
    std::string error;
    return sendMessage(bus, builder, error);
}

MessageDecoder sendMessage(sd_bus* bus, MessageBuilder& builder, std::string& error) {
    error.clear();
    if (bus == nullptr || builder.message() == nullptr) {
        return {};
    }
    sd_bus_message* reply = nullptr;
    error = call(bus, builder, reply);
    return {reply};
}

}  // namespace kaz::dbus
