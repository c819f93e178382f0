#pragma once

#include <systemd/sd-bus.h>

#include <string>

namespace kaz::bench {

// Appends the properties of an access point as the supplicant reports them, information elements included. It
// is WPA2 and WPA3 personal. Throws std::runtime_error on failure.
void appendBssProperties(sd_bus_message* message, const std::string& ssid, int signal);

// Throws std::runtime_error for a negative sd-bus return code; passes any other on.
int check(int result);

}  // namespace kaz::bench
