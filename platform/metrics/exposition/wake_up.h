#pragma once

#include <semaphore.h>

#include <cerrno>
#include <chrono>
#include <ctime>

namespace kaz::metrics_reporting {

// Wakes one sleeping thread, or lets it not fall asleep. POSIX's semaphore, because posting it takes no lock
// that could stay locked in a forked child, and because some std::counting_semaphore wait for a time by
// polling.
class WakeUp {
  public:
    WakeUp() noexcept { ::sem_init(&semaphore_, 0, 0); }
    ~WakeUp() { ::sem_destroy(&semaphore_); }
    WakeUp(const WakeUp&) = delete;
    WakeUp& operator=(const WakeUp&) = delete;
    WakeUp(WakeUp&&) = delete;
    WakeUp& operator=(WakeUp&&) = delete;

    void post() noexcept { ::sem_post(&semaphore_); }

    // Takes one post.
    void wait() noexcept {
        while (::sem_wait(&semaphore_) != 0 && errno == EINTR) {
        }
    }

    // False when the time came without a post.
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
