#pragma once

#include <kaz/dbus/message.h>

#include <string>

namespace kaz::dbus {

MessageBuilder makeDbusCall(sd_bus* bus, MessageEndpoint endpoint, const std::string& member);
MessageBuilder makeDbusGetProperty(sd_bus* bus, MessageEndpoint endpoint, const std::string& property);
MessageBuilder makeDbusSetProperty(sd_bus* bus, MessageEndpoint endpoint, const std::string& property);
MessageDecoder sendMessage(sd_bus* bus, MessageBuilder& builder);

}  // namespace kaz::dbus
