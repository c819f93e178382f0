#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>

namespace kaz::bench {

// What the stand-in tells about its world.
struct World {
    std::uint32_t bssCount = 0;
    std::uint32_t ssidCount = 0;  // access points share so many SSIDs; 0 for one each
    bool hanging = false;         // whether it answers nobody but the benchmark
};

inline constexpr const char* interfacePath = "/fi/w1/wpa_supplicant1/Interfaces/0";

// Answers a call as wpa_supplicant, systemd or networkd would, a call it does not know with nothing in the
// reply. Zero or more; below zero is an sd-bus error.
int answer(sd_bus_message* call, const World& world);

// Appends the property BSSs with the paths of `count` access points, as an entry of a dictionary.
void appendBssPaths(sd_bus_message* message, std::uint32_t count);

}  // namespace kaz::bench
