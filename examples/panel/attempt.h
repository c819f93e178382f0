#pragma once

#include <wifi/types.h>

#include <chrono>
#include <optional>
#include <string>

// Follows one attempt to connect, from the request to what came of it. It sees nothing but what the Manager's getters
// tell, so that it can be tested without one.
//
// The library tells when an attempt is given up, not why. It gives up 2000 ms after the request or the last scan when
// nobody answers, and at any other time when the network turned the device away; so the time is what tells the two
// apart.
class Attempt {
  public:
    enum class Outcome {
        connected,
        notAnswering,  // nobody answered under that name
        refused,       // the network turned the device away
        noAddress,     // the link stands, but no address came for half a minute; this may still change
        lost,          // the link broke
        stopped,       // Wi-Fi stopped meanwhile
    };
    using Clock = std::chrono::steady_clock;

    // What the Manager tells at one moment.
    struct Sight {
        kaz::wifi::ConnectionInfo info;
        bool running = true;
        bool scanning = false;
        Clock::time_point scanningChanged;  // when `scanning` last did
        Clock::time_point now;
    };

    Attempt(std::string ssid, Clock::time_point requested);

    const std::string& ssid() const { return ssid_; }

    // To be called after each change, and now and then. The outcome once there is one; not to be called after that.
    std::optional<Outcome> see(const Sight& sight);

  private:
    Outcome end(const Sight& sight) const;

    std::string ssid_;
    Clock::time_point patienceBegan_;  // when the 2000 ms began
    Clock::time_point linkUpSince_;
    bool begun_ = false;
    bool linkUp_ = false;
};
