/// @file
/// Builds and sends method calls. Only the loop thread may use this.
#pragma once

#include <kaz/dbus/message.h>

#include <string>

namespace kaz::dbus {

/// A call of `member` at `endpoint`, ready for arguments. A null bus or an endpoint without a path gives a builder
/// without a message.
[[gnu::visibility("default")]] MessageBuilder makeDbusCall(sd_bus* bus, MessageEndpoint endpoint,
                                                           const std::string& member);

/// A complete call of org.freedesktop.DBus.Properties.Get for a property of endpoint's interface. The reply
/// contains one variant.
[[gnu::visibility("default")]] MessageBuilder makeDbusGetProperty(sd_bus* bus, MessageEndpoint endpoint,
                                                                  const std::string& property);

/// A call of org.freedesktop.DBus.Properties.Set for a property of endpoint's interface. The caller appends
/// the value, one variant.
[[gnu::visibility("default")]] MessageBuilder makeDbusSetProperty(sd_bus* bus, MessageEndpoint endpoint,
                                                                  const std::string& property);

/// Sends the call and blocks until the reply arrives: 10 s at most, or until the stopping loop cancels the
/// call. A failed call or an error reply gives a decoder without a message. It is logged at warning level with
/// member, destination and the error's name and text; for a sensitive call without the text. A builder without
/// a message and a null bus also give a decoder without a message, but are not logged. A builder that is not
/// ok() is sent with the arguments that it has.
[[gnu::visibility("default")]] MessageDecoder sendMessage(sd_bus* bus, MessageBuilder& builder);

/// The same, and sets `error` to the name of the D-Bus error: empty after a success and if nothing was sent.
[[gnu::visibility("default")]] MessageDecoder sendMessage(sd_bus* bus, MessageBuilder& builder,
                                                          std::string& error);

}  // namespace kaz::dbus
