#pragma once

#include <chrono>

namespace kaz::bench {

// Measures from its construction: the time that passed, and what this process (all its threads)
// was given of the processor meanwhile.
class StopWatch {
  public:
    StopWatch() noexcept;

    double microseconds() const noexcept;
    double processorMicroseconds() const noexcept;

  private:
    std::chrono::steady_clock::time_point start_;
    double processorStart_;
};

}  // namespace kaz::bench
