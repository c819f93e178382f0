#pragma once

#include "base/non_copyable.h"
#include "communicator/communicator.h"
#include "manager/published.h"

#include <wifi/connection_details.h>
#include <wifi/types.h>

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kaz::wifi {

// The list of networks in range: one entry per SSID, without the network in use. A new fact only marks the list as
// dirty; the next taskUpdateNetworks() rebuilds and publishes it. Loop thread only.
class NetworkList : NonCopyable {
  public:
    NetworkList(Communicator& communicator, Published& published)
        : communicator_(communicator), published_(published) {}

    void setBssList(std::vector<Communicator::BssProperties> list);
    void setConnection(const ConnectionInfo& info);
    // Whether the supplicant joins networks by hash-to-element.
    void setHashToElement(bool able);
    void supplicantDetached();

    // Asks the supplicant which networks are configured.
    void taskUpdateConfiguredNetworks();

    void taskUpdateNetworks();

    // What the access points in range tell of this network: the evidence's `seen`, `signal` and `demands`.
    Evidence sightingOf(const std::string& ssid) const;

  private:
    std::vector<WifiNetwork> currentNetworks() const;
    NetworkAccessBySsid currentAccess() const;

    Communicator& communicator_;
    Published& published_;
    std::vector<Communicator::BssProperties> bssList_;
    std::set<std::string> configuredSsids_;
    std::optional<std::string> ssidInUse_;
    std::optional<bool> hashToElement_;  // unknown unless the supplicant told it
    std::vector<WifiNetwork> networks_;  // as last published
    NetworkAccessBySsid access_;         // as last published
    bool networksDirty_ = false;
};

}  // namespace kaz::wifi
