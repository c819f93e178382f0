#pragma once

#include "simulator/supplicant/network_config.h"

#include <chrono>
#include <memory>
#include <vector>

namespace kaz::sim {

// A configured network and its recent failures.
struct Network {
    unsigned id = 0;
    NetworkConfig config;
    unsigned failures = 0;                     // in a row
    std::chrono::milliseconds pausedUntil{0};  // simulated time; after a refusal, no attempt until then
};

class NetworkList {
  public:
    // The id is one more than the greatest in use, so an id can be reused.
    Network& add(NetworkConfig config);

    Network* find(unsigned id);
    const Network* find(unsigned id) const;
    bool remove(unsigned id);

    const std::vector<std::unique_ptr<Network>>& all() const noexcept { return networks_; }

  private:
    std::vector<std::unique_ptr<Network>> networks_;
};

}  // namespace kaz::sim
