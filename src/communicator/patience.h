#pragma once

#include <chrono>

namespace kaz::wifi {

// The time limit for reading the objects of a list, as long as that of one call. Without it, each object could take the
// whole time of a call, and a request to switch Wi-Fi off would wait for all of them.
class Patience {
  public:
    explicit Patience(std::chrono::milliseconds limit) : limit_(limit) {}

    // True when the objects that remain must be left out.
    bool ended() const { return Clock::now() - begin_ >= limit_; }

  private:
    using Clock = std::chrono::steady_clock;

    std::chrono::milliseconds limit_;
    Clock::time_point begin_ = Clock::now();
};

}  // namespace kaz::wifi
