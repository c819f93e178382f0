#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "requests/change.h"

namespace kaz::requests {

// A network for the supplicant: its name, and its other fields by the names of wpa_supplicant.conf. The caller wipes what
// is secret.
struct NewNetwork {
    std::string ssid;  // any bytes: it is sent as bytes, and not as text
    std::vector<std::pair<const char*, std::variant<std::string, int>>> fields;
};

// Adds a network to the interface that the supplicant uses first. It is not enabled, and not saved yet. Returns after the
// limit when the supplicant does not answer.
Change addNetwork(const NewNetwork& network, std::chrono::milliseconds limit);

}  // namespace kaz::requests
