#include "bench/measuring/stop_watch.h"

#include <ctime>

namespace kaz::bench {
namespace {

double processorTime() noexcept {
    timespec now{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

}  // namespace

StopWatch::StopWatch() noexcept
    : start_(std::chrono::steady_clock::now()), processorStart_(processorTime()) {}

double StopWatch::microseconds() const noexcept {
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start_).count();
}

double StopWatch::processorMicroseconds() const noexcept {
    return processorTime() - processorStart_;
}

}  // namespace kaz::bench
