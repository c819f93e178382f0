#pragma once

#include <wifi/types.h>

#include <chrono>
#include <optional>
#include <string>

// Tracks one attempt to connect, from the request to the outcome. Its input is what the Manager's getters return, so
// tests need no Manager.
//
// The library reports that an attempt failed, but not why. If no access point answers, it fails 2000 ms after the
// request or the last scan. If it fails at another time, the network refused the device.
class Attempt {
  public:
    enum class Outcome {
        connected,
        notAnswering,  // no access point with this SSID answered
        refused,       // the network refused the device
        noAddress,     // the link is up, but there is no address after half a minute; this may still change
        lost,          // the link broke
        stopped,       // Wi-Fi stopped meanwhile
    };
    using Clock = std::chrono::steady_clock;

    // What the Manager's getters return at one moment.
    struct Sight {
        kaz::wifi::ConnectionInfo info;
        bool running = true;
        bool scanning = false;
        Clock::time_point scanningChanged;  // when `scanning` last changed
        Clock::time_point now;
    };

    Attempt(std::string ssid, Clock::time_point requested);

    const std::string& ssid() const { return ssid_; }

    // Returns the outcome once there is one. Call it after each change and periodically, but not after the outcome.
    std::optional<Outcome> see(const Sight& sight);

  private:
    Outcome end(const Sight& sight) const;

    std::string ssid_;
    Clock::time_point patienceBegan_;  // start of the 2000 ms
    Clock::time_point linkUpSince_;
    bool begun_ = false;
    bool linkUp_ = false;
};
