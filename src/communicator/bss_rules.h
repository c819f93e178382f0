// What an access point's announcements mean. Pure functions.
#pragma once

#include "dbus/records.h"

#include <wifi/types.h>

#include <string>
#include <vector>

namespace kaz::wifi {

// The SSID of an access point; empty when it hides its SSID, by announcing none, a single blank or only zero
// bytes.
std::string ssidOfBss(const std::vector<unsigned char>& announced);

// How to connect to an access point. One that offers WPA3 personal only is `unsupported`, one that offers
// WPA2 beside it is `rsnPsk`.
SecurityMode securityModeOfBss(const BSSData& bss);

}  // namespace kaz::wifi
