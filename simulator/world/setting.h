#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace kaz::sim {

// A value of a type that no setting accepts.
struct UnusableSetting {
    bool operator==(const UnusableSetting&) const = default;
};

// Bytes, as opposed to a string.
struct ByteSetting {
    std::string bytes;

    bool operator==(const ByteSetting&) const = default;
};

using Setting = std::variant<UnusableSetting, std::string, std::int64_t, ByteSetting>;

// One network's settings by name, in the given order.
using Settings = std::vector<std::pair<std::string, Setting>>;

}  // namespace kaz::sim
