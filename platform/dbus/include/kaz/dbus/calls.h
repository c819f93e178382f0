/// @file
/// Building and sending method calls. Everything here belongs to the loop thread.
#pragma once

#include <kaz/dbus/message.h>

#include <string>

namespace kaz::dbus {

/// A call of `member` at `endpoint`, ready for arguments. It starts no service that is not running. A null bus
/// or an endpoint without a path gives a builder without a message.
[[gnu::visibility("default")]] MessageBuilder makeDbusCall(sd_bus* bus, MessageEndpoint endpoint,
                                                           const std::string& member);

/// A call of org.freedesktop.DBus.Properties.Get for a property of endpoint's interface, complete. The reply
/// holds one variant.
[[gnu::visibility("default")]] MessageBuilder makeDbusGetProperty(sd_bus* bus, MessageEndpoint endpoint,
                                                                  const std::string& property);

/// A call of org.freedesktop.DBus.Properties.Set for a property of endpoint's interface; the value, one
/// variant, is still to be appended.
[[gnu::visibility("default")]] MessageBuilder makeDbusSetProperty(sd_bus* bus, MessageEndpoint endpoint,
                                                                  const std::string& property);

/// Sends the call and blocks until the reply is here, at most 10 s, or until the loop gives up on its way out.
/// A call that failed, on the bus or by an error reply, is logged at warning level with member, destination
/// and the error's name and text (a sensitive call only with the name), and yields a decoder without a
/// message. A builder without a message and a null bus yield the same, unlogged. A builder that is not ok() is
/// sent as far as it got.
[[gnu::visibility("default")]] MessageDecoder sendMessage(sd_bus* bus, MessageBuilder& builder);

}  // namespace kaz::dbus
