#include "support/waiting/waiting.h"

#include <algorithm>
#include <fstream>
#include <string>
#include <thread>

namespace kaz::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// How often the thread was put on or off a processor.
long switches(pid_t thread) {
    std::ifstream status("/proc/self/task/" + std::to_string(thread) + "/status");
    long sum = 0;
    for (std::string key; status >> key;) {
        if (long count = 0; key.ends_with("ctxt_switches:") && status >> count) {
            sum += count;
        }
    }
    return sum;
}

// Whether it waits for something other than a processor.
bool sleeps(pid_t thread) {
    std::ifstream status("/proc/self/task/" + std::to_string(thread) + "/status");
    for (std::string key; status >> key;) {
        if (std::string state; key == "State:" && status >> state) {
            return state == "S";
        }
    }
    return false;
}

}  // namespace

// Asks often at first. A long wait takes at most about a tenth longer, and few questions.
bool eventually(const std::function<bool()>& condition) {
    constexpr std::chrono::microseconds least{100};
    constexpr milliseconds most{20};
    const auto begin = steady_clock::now();
    while (!condition()) {
        const auto waited = steady_clock::now() - begin;
        if (waited > timeLimit) {
            return false;
        }
        std::this_thread::sleep_for(std::clamp<steady_clock::duration>(waited / 10, least, most));
    }
    return true;
}

bool fallsAsleep(pid_t thread) {
    return eventually([thread] {
        const long before = switches(thread);
        std::this_thread::sleep_for(milliseconds(300));
        return before != 0 && switches(thread) == before && sleeps(thread);
    });
}

void Counter::operator++() {
    const std::lock_guard lock(mutex_);
    ++count_;
    changed_.notify_all();
}

std::size_t Counter::value() const {
    const std::lock_guard lock(mutex_);
    return count_;
}

bool Counter::reaches(std::size_t count) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, timeLimit, [&] { return count_ >= count; });
}

}  // namespace kaz::test
