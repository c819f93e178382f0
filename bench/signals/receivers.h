#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

namespace kaz::bench {

inline constexpr const char* senderName = "com.kazwifi.Bench1";

// The record of a receiver. The time is that of the last signal.
struct Reception {
    std::atomic<std::chrono::steady_clock::time_point> at{};
    std::atomic<std::uint32_t> count = 0;  // of PropertiesChanged with a State; notified
};

// Receives and decodes PropertiesChanged of `path` from senderName, on its own thread.
class Receiver {
  public:
    Receiver() = default;
    virtual ~Receiver() = default;
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;
    Receiver(Receiver&&) = delete;
    Receiver& operator=(Receiver&&) = delete;

    Reception reception;
};

// Returns after it has subscribed. The sender must own its name.
std::unique_ptr<Receiver> makeOurReceiver(const std::string& path);
std::unique_ptr<Receiver> makeBareReceiver(const std::string& busAddress, const std::string& path);

}  // namespace kaz::bench
