#pragma once

#include <wifi/manager.h>

#include <string>

#include "kazwifictl/input/options.h"

namespace kaz::ctl {

// The command line that connects to `ssid` with the same options, but without a password or an identity, which it asks
// for.
std::string sameCommand(const std::string& ssid, const ConnectOptions& options);

// What to try instead of settings that break a rule.
std::string adviceFor(wifi::ConnectResult verdict, wifi::SecurityMode mode, const ConnectOptions& options,
                      const wifi::Manager& manager);

// Whether access points of a network that announces `announced` may take a device with `wanted`.
bool mayFit(wifi::SecurityMode announced, wifi::SecurityMode wanted);

}  // namespace kaz::ctl
