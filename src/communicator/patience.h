#pragma once

#include <chrono>

namespace kaz::wifi {

// The time limit for reading the objects of a list, as long as the timeout of one call. Without it, each object could
// take a whole timeout, and a request to switch Wi-Fi off would wait for all of them.
class Patience {
  public:
    // True when the objects that remain must be left out.
    bool ended() const { return Clock::now() - begin_ >= limit; }

  private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::seconds limit{10};

    Clock::time_point begin_ = Clock::now();
};

}  // namespace kaz::wifi
