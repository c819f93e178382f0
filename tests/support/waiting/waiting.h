#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace kaz::test {

// Asks again and again until the answer is yes. False when a generous limit passes first.
inline bool eventually(const std::function<bool()>& condition) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > limit) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace kaz::test
