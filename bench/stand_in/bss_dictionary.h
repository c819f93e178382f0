#pragma once

#include <systemd/sd-bus.h>

#include <string>

namespace kaz::bench {

// Appends the properties of an access point as the supplicant reports them, with information elements. It is
// WPA2 and WPA3 personal. Throws std::runtime_error on failure.
void appendBssProperties(sd_bus_message* message, const std::string& ssid, int signal);

// Throws std::runtime_error for a negative sd-bus return code; returns any other.
int check(int result);

}  // namespace kaz::bench
