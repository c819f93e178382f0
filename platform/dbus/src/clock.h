// The loop's only clock, CLOCK_MONOTONIC.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace kaz::dbus {

using Clock = std::chrono::steady_clock;

// Practically never, but small enough to be added to a time.
inline constexpr std::chrono::hours longestDelay{24 * 365 * 100};

// sd-event counts microseconds. The delay must not be negative.
inline uint64_t toMicroseconds(Clock::duration delay) noexcept {
    return static_cast<uint64_t>(std::chrono::ceil<std::chrono::microseconds>(delay).count());
}

}  // namespace kaz::dbus
