// The SSID and the security mode of an access point. Pure functions.
#pragma once

#include "communicator/communicator.h"
#include "dbus/records.h"

#include <wifi/connection_details.h>
#include <wifi/types.h>

#include <string>
#include <vector>

namespace kaz::wifi {

// The SSID of an access point. It is empty for a hidden network, which announces no SSID, a single blank or only zero
// bytes.
std::string ssidOfBss(const std::vector<unsigned char>& announced);

// What the access point demands of a device.
NetworkDemands demandsOfBss(const BSSData& bss);

// The security mode with which to connect. It is `unsupported` for WPA3 personal alone, and `rsnPsk` for WPA3 together
// with WPA2.
SecurityMode securityModeOfBss(const BSSData& bss);

// What the engine needs of an access point.
Communicator::BssProperties propertiesOfBss(const BSSData& bss);

}  // namespace kaz::wifi
