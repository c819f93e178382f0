#pragma once

#include <wifi/client/follower.h>
#include <wifi/connection_details.h>

#include <optional>
#include <string>
#include <utility>

// Tracks one attempt to connect, from the request to the outcome. Its input is what the Manager publishes, so tests need
// no Manager.
class Attempt {
  public:
    enum class Outcome {
        connected,
        failed,     // why() says why
        noAddress,  // the link is up, but no address came within Manager::setAddressTimeout(); it may still come
        lost,       // the link broke; why() says why
        stopped,  // Wi-Fi stopped meanwhile
    };

    explicit Attempt(std::string ssid) : ssid_(std::move(ssid)) {}

    const std::string& ssid() const { return ssid_; }

    // Returns the outcome once there is one. Call it after each change, but not after the outcome.
    std::optional<Outcome> see(const kaz::wifi::client::Snapshot& state);

    const kaz::wifi::Outcome& why() const { return why_; }

  private:
    std::string ssid_;
    bool begun_ = false;
    bool linkUp_ = false;
    kaz::wifi::Outcome why_;
};
