#pragma once

#include "connection_info/time_provider.h"

#include <atomic>
#include <chrono>
#include <cstdint>

namespace kaz::test {

// A clock that advances only when a test moves it. Any thread may move and read it.
class FakeClock final : public wifi::TimeProvider {
  public:
    using TimePoint = std::chrono::steady_clock::time_point;

    // Well after zero, which means never.
    static constexpr TimePoint usualStart{std::chrono::seconds(1000)};

    TimePoint get() override { return TimePoint(std::chrono::nanoseconds(now_.fetch_add(tick_))); }
    void advance(std::chrono::nanoseconds by) { now_ += by.count(); }

    // From now on every reading is later than the one before, so that tests see the order of readings.
    void tickWithEveryReading() { tick_ = 1; }

  private:
    std::atomic<std::int64_t> now_{std::chrono::nanoseconds(usualStart.time_since_epoch()).count()};
    std::atomic<std::int64_t> tick_ = 0;
};

}  // namespace kaz::test
