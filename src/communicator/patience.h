#pragma once

#include <chrono>

namespace kaz::wifi {

// How long reading the members of a list may take before the rest is left out: as long as one call. Each of them
// could take until its call times out, while whoever switches Wi-Fi off waits for the last.
class Patience {
  public:
    bool ended() const { return Clock::now() - begin_ >= limit; }

  private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::seconds limit{10};

    Clock::time_point begin_ = Clock::now();
};

}  // namespace kaz::wifi
