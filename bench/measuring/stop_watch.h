#pragma once

#include <chrono>

namespace kaz::bench {

// Measures the time since its construction, and the processor time of this process (all its threads).
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
