#include <kaz/dbus/calls.h>

#include <cstdint>

namespace kaz::dbus {
namespace {

constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";

sd_bus_message* makeMessage(sd_bus* bus, const MessageEndpoint& endpoint, const char* interface,
                            const std::string& member) {
    sd_bus_message* message = nullptr;
    sd_bus_message_new_method_call(bus, &message, endpoint.destination.c_str(), endpoint.path.c_str(),
                                   interface, member.c_str());
    return message;
}

sd_bus_message* makePropertyMessage(sd_bus* bus, const MessageEndpoint& endpoint, const char* member,
                                    const std::string& property) {
    sd_bus_message* message = makeMessage(bus, endpoint, propertiesInterface, member);
    if (message != nullptr) {
        sd_bus_message_append(message, "ss", endpoint.interface.c_str(), property.c_str());
    }
    return message;
}

}  // namespace

// The endpoint by value: so are all platform libraries called.
MessageBuilder makeDbusCall(sd_bus* bus,
                            MessageEndpoint endpoint,  // NOLINT(performance-unnecessary-value-param)
                            const std::string& member) {
    return MessageBuilder(makeMessage(bus, endpoint, endpoint.interface.c_str(), member));
}

MessageBuilder makeDbusGetProperty(sd_bus* bus,
                                   MessageEndpoint endpoint,  // NOLINT(performance-unnecessary-value-param)
                                   const std::string& property) {
    return MessageBuilder(makePropertyMessage(bus, endpoint, "Get", property));
}

MessageBuilder makeDbusSetProperty(sd_bus* bus,
                                   MessageEndpoint endpoint,  // NOLINT(performance-unnecessary-value-param)
                                   const std::string& property) {
    return MessageBuilder(makePropertyMessage(bus, endpoint, "Set", property));
}

MessageDecoder sendMessage(sd_bus* bus, MessageBuilder& builder) {
    sd_bus_message* reply = nullptr;
    sd_bus_call(bus, builder.message(), 0, nullptr, &reply);
    return {reply, true};
}

}  // namespace kaz::dbus
