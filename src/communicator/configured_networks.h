#pragma once

#include "communicator/communicator.h"
#include "communicator/supplicant_interface.h"

#include <wifi/certificates.h>
#include <wifi/types.h>

#include <kaz/dbus/opath.h>

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kaz::wifi {

// The networks in the supplicant's configuration. Every operation is refused while detached, except setPrioritySync().
// A failed operation returns false or nothing. Loop thread only.
class ConfiguredNetworks {
  public:
    using List = std::vector<std::unique_ptr<Communicator::ConfiguredNetwork>>;

    explicit ConfiguredNetworks(const SupplicantInterface& supplicant);

    std::unique_ptr<Communicator::ConfiguredNetwork> addSync(const ConnectionSettings& settings,
                                                             const Certificates& certificates);
    bool selectSync(const dbus::OPath& network);
    bool removeSync(const dbus::OPath& network);
    bool setEnabledSync(const dbus::OPath& network, bool enabled);
    bool setPrioritySync(const dbus::OPath& network, int priority);
    std::optional<std::string> ssidSync(const dbus::OPath& network);

    // All networks, in the supplicant's order. It makes one call per network. After the limit of Patience the remaining
    // networks are listed without their SSID.
    List listSync();

    // The supplicant has added or removed this network. True if the change is new: not made by us, and not yet seen by
    // listSync().
    bool noteAdded(const dbus::OPath& network);
    bool noteRemoved(const dbus::OPath& network);

    // Makes the supplicant write its configuration file.
    bool saveSync();

  private:
    const SupplicantInterface& supplicant_;
    std::set<std::string> known_;  // paths of the networks that were listed or added, and not removed since
};

}  // namespace kaz::wifi
