#include "manager/enabled_choice.h"

#include "base/log.h"

namespace kaz::wifi {

EnabledChoice::EnabledChoice(Communicator& communicator, Published& published)
    : communicator_(communicator), published_(published), enabled_(communicator.readEnabledConfiguration()) {}

void EnabledChoice::setEnabled(bool on) {
    log::info("Turning wifi {}", on ? "on" : "off");
    const std::lock_guard lock(mutex_);
    if (enabled_.exchange(on) != on) {
        communicator_.pushTaskAsync_([this] { published_.notify(Published::Change::enabled); });
    }
    communicator_.writeEnabledConfiguration(on);
    // Also without a change: a repeated "on" tries again to start the supplicant.
    communicator_.pushTaskAsync_([this, on] { communicator_.startStopSupplicantSync(on); });
}

// Without the mutex, a choice made between the read and the exchange would be lost.
bool EnabledChoice::adoptStoredChoice() {
    const std::unique_lock lock(mutex_, std::try_to_lock);
    if (!lock) {
        return false;
    }
    const bool stored = communicator_.readEnabledConfiguration();
    return enabled_.exchange(stored) != stored;
}

}  // namespace kaz::wifi
