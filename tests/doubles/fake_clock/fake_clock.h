#pragma once

#include "time_provider.h"

#include <atomic>
#include <chrono>

namespace kaz::test {

// A clock that stands still until it is moved. Any thread may move and read it.
class FakeClock final : public wifi::TimeProvider {
  public:
    using TimePoint = std::chrono::steady_clock::time_point;

    // Well after the clock's zero, which stands for never.
    static constexpr TimePoint usualStart{std::chrono::seconds(1000)};

    explicit FakeClock(TimePoint start = usualStart) : now_(start.time_since_epoch()) {}

    TimePoint get() override { return TimePoint(now_.load()); }
    void advance(std::chrono::nanoseconds by) { now_ = now_.load() + by; }

  private:
    std::atomic<std::chrono::nanoseconds> now_;
};

}  // namespace kaz::test
