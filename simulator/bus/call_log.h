#pragma once

#include "base/journal.h"

#include <string>

namespace kaz::sim {

// A method call that a simulated service received.
struct Call {
    std::string peer;  // "supplicant", "systemd" or "networkd"
    std::string path;
    std::string interface;
    std::string member;
    std::string arguments;  // a JSON array
};

// Every call in the order of arrival, also calls with a fault.
using CallLog = Journal<Call>;

}  // namespace kaz::sim
