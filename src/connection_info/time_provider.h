#pragma once

#include <chrono>

namespace kaz::wifi {

// The clock of the connection tracker. Monotonic; zero means never.
class TimeProvider {
  public:
    virtual std::chrono::steady_clock::time_point get() = 0;
    virtual ~TimeProvider() = default;

    TimeProvider() = default;
    TimeProvider(const TimeProvider&) = delete;
    TimeProvider& operator=(const TimeProvider&) = delete;
    TimeProvider(TimeProvider&&) = delete;
    TimeProvider& operator=(TimeProvider&&) = delete;
};

// The real clock. Callable from any thread.
class TimeProviderWallClock final : public TimeProvider {
  public:
    std::chrono::steady_clock::time_point get() override;
};

}  // namespace kaz::wifi
