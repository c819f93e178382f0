#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "inspection/facts.h"
#include "inspection/inspect.h"

namespace kaz::inspection {

// The interface that the supplicant uses, as it is now.
struct InterfaceInUse {
    std::string name;                    // "wlan0"
    Fact<int> signal;                    // dBm, measured for this question; absent without a link
    std::optional<int> rate;             // Mbit/s, measured with it
    std::optional<std::string> country;  // the supplicant's, "FI"
    // "192.0.2.7/24", those of IPv4 first; nothing if the kernel was not asked.
    std::optional<std::vector<std::string>> addresses;
    std::optional<std::chrono::seconds>
        linkedFor;  // since the present access point was joined; if the kernel tells
};

// Asks the supplicant and the kernel. Without a reply it returns after the limit of `places`.
Fact<InterfaceInUse> readInterfaceInUse(const Places& places = placesOfEnvironment());

// What keeps the radio of that interface silent. Without a reply of the supplicant, that of the only radio.
std::optional<RadioSwitch> blockOfRadio(const Places& places = placesOfEnvironment());

// Whether the supplicant hangs: it is on the bus, but does not answer within the limit.
bool supplicantHangs(std::chrono::milliseconds limit);

}  // namespace kaz::inspection
