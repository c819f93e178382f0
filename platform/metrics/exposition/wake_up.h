#pragma once

#include <semaphore.h>

#include <cerrno>
#include <chrono>
#include <ctime>

#include "base/non_copyable.h"

namespace kaz::metrics_reporting {

// Wakes one sleeping thread, or prevents its next sleep. It uses a POSIX semaphore for two reasons: posting
// takes no lock that a forked child could inherit locked, and some implementations of std::counting_semaphore
// poll in timed waits.
class WakeUp : NonCopyable {
  public:
    WakeUp() noexcept { ::sem_init(&semaphore_, 0, 0); }
    ~WakeUp() { ::sem_destroy(&semaphore_); }

    void post() noexcept { ::sem_post(&semaphore_); }

    // Waits for one post and takes it.
    void wait() noexcept {
        while (::sem_wait(&semaphore_) != 0 && errno == EINTR) {
        }
    }

    // The same; returns false on timeout.
    bool waitUntil(std::chrono::steady_clock::time_point time) noexcept {
        const auto sinceBoot = time.time_since_epoch();
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(sinceBoot);
        const std::chrono::nanoseconds rest = sinceBoot - seconds;
        const timespec end{static_cast<std::time_t>(seconds.count()), static_cast<long>(rest.count())};
        int result = 0;
        do {
            result = ::sem_clockwait(&semaphore_, CLOCK_MONOTONIC, &end);
        } while (result != 0 && errno == EINTR);
        return result == 0;
    }

  private:
    ::sem_t semaphore_{};
};

}  // namespace kaz::metrics_reporting
