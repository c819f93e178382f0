#pragma once

#include "base/non_copyable.h"
#include "communicator/communicator.h"

#include <optional>
#include <string>

namespace kaz::wifi {

// The engine's duties towards the supplicant's configuration: it enables networks that a selection disabled, and saves
// changes. No other class does either. Loop thread only.
class SupplicantConfiguration : NonCopyable {
  public:
    explicit SupplicantConfiguration(Communicator& communicator) : communicator_(communicator) {}

    // Selects this network, which makes the supplicant disable all others. False on failure.
    bool select(Communicator::ConfiguredNetwork& network);

    // Ends a selection: enables all networks and requests a save. Without a selection it does nothing.
    void enableOthersAgain();

    // Ends a selection when the engine stops, before its outcome is known: enables all networks. It requests no save,
    // because the selected network may never have worked.
    void abandonSelection();

    // Gives the networks of this SSID a higher priority than all others and requests a save.
    void prefer(const std::string& ssid);

    void requestSave() { saveNeeded_ = true; }

    // Makes a requested save. The save waits while a selection keeps the other networks disabled. Otherwise the device
    // would know only one network after a restart. Returns whether the save succeeded, and nothing without a save.
    std::optional<bool> taskSaveConfiguration();

    void supplicantAttached();
    void supplicantDetached();

  private:
    void enableAll();

    Communicator& communicator_;
    bool othersDisabled_ = false;
    // True if a selection may have disabled networks and not all have been enabled since.
    bool enablingUnconfirmed_ = false;
    bool saveNeeded_ = false;
};

}  // namespace kaz::wifi
