// Networks whose name D-Bus cannot carry as text: it has NUL, or is not UTF-8. The library refuses to configure them, but
// connects to one that is configured.
#pragma once

#include <wifi/manager.h>

#include <string>

namespace kaz::ctl {

bool isByteName(const std::string& ssid);

// The rule that such settings break, as if they had another name.
wifi::ConnectResult validateByteName(wifi::ConnectionSettings& settings, wifi::Manager& manager);

// Configures the network. Throws CommandFailed. Only open, WEP and personal networks are supported.
void addByteName(const wifi::ConnectionSettings& settings, const std::string& what);

}  // namespace kaz::ctl
