#include "support/waiting/waiting.h"

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

bool eventually(const std::function<bool()>& condition) {
    const auto end = steady_clock::now() + timeLimit;
    while (!condition()) {
        if (steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(milliseconds(1));
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
