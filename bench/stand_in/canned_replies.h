#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>

namespace kaz::bench {

// The state that the stand-in reports.
struct World {
    std::uint32_t bssCount = 0;
    std::uint32_t ssidCount = 0;  // the number of SSIDs that access points share; 0: one per access point
    bool hanging = false;         // whether it replies only to the benchmark's control calls
};

inline constexpr const char* interfacePath = "/fi/w1/wpa_supplicant1/Interfaces/0";

// Replies to a call like wpa_supplicant, systemd or networkd, and to an unknown call with an empty reply. A
// negative result is an sd-bus error.
int answer(sd_bus_message* call, const World& world);

// Appends the property BSSs with the paths of `count` access points, as an entry of a dictionary.
void appendBssPaths(sd_bus_message* message, std::uint32_t count);

}  // namespace kaz::bench
