#pragma once

#include "communicator/communicator.h"
#include "communicator/supplicant_interface.h"

#include <kaz/dbus/opath.h>

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kaz::wifi {

// What the supplicant's radio does and sees: scans, access points, signal strength, the connection. Every operation is
// refused while detached, except eapMethodsSync(). Failed operations return false or nothing. Loop thread only.
class Radio {
  public:
    explicit Radio(const SupplicantInterface& supplicant);

    bool scanSync();
    bool disconnectSync();
    bool reconnectSync();

    // The signal of the current connection in dBm.
    std::optional<int> signalPollSync();
    std::optional<int> polledRate() const { return polledRate_; }
    std::set<std::string> eapMethodsSync();

    std::optional<Communicator::BssProperties> bssSync(const dbus::OPath& bss);
    // The access points at these paths, in the same order. It makes one call per access point. It leaves out those that
    // cannot be read, and after the limit of Patience the remaining ones.
    std::vector<Communicator::BssProperties> bssListSync(const std::vector<dbus::OPath>& paths);

  private:
    const SupplicantInterface& supplicant_;
    std::optional<int> polledRate_;
};

}  // namespace kaz::wifi
