#include "manager/supplicant_configuration.h"

#include "base/log.h"

namespace kaz::wifi {
namespace {

constexpr int preferredPriority = 2;
constexpr int otherPriority = 1;

}  // namespace

bool SupplicantConfiguration::select(Communicator::ConfiguredNetwork& network) {
    // Set before the call: the supplicant may have obeyed although its reply was lost.
    enablingUnconfirmed_ = true;
    const bool selected = network.selectSync();
    othersDisabled_ = othersDisabled_ || selected;
    return selected;
}

void SupplicantConfiguration::enableOthersAgain() {
    if (othersDisabled_) {
        saveNeeded_ = true;
        enableAll();
    }
}

void SupplicantConfiguration::abandonSelection() {
    if (othersDisabled_) {
        enableAll();
    }
}

void SupplicantConfiguration::prefer(const std::string& ssid) {
    for (const auto& network : communicator_.getAllConfiguredNetworksSync()) {
        if (network->getSsid() == ssid) {
            log::debug("Setting priority=2 for {}", Communicator::makeSsidRedactable(ssid));
            network->setPrioritySync(preferredPriority);
        } else {
            network->setPrioritySync(otherPriority);
        }
    }
    saveNeeded_ = true;
}

std::optional<bool> SupplicantConfiguration::taskSaveConfiguration() {
    if (!saveNeeded_ || othersDisabled_) {
        return std::nullopt;
    }
    saveNeeded_ = false;
    return communicator_.saveNetworkConfigurationSync();
}

// A new supplicant has read its file. One that survived the loss of the bus still has the networks disabled.
void SupplicantConfiguration::supplicantAttached() {
    if (enablingUnconfirmed_ && communicator_.supplicantSurvived()) {
        saveNeeded_ = true;
        enableAll();
    } else {
        enablingUnconfirmed_ = false;
    }
}

void SupplicantConfiguration::supplicantDetached() {
    othersDisabled_ = false;
}

void SupplicantConfiguration::enableAll() {
    othersDisabled_ = false;
    const auto networks = communicator_.getAllConfiguredNetworksSync();
    bool allEnabled = !networks.empty();  // an empty list is what a failed listing gives, too
    for (const auto& network : networks) {
        allEnabled = network->setEnabledSync(true) && allEnabled;
    }
    enablingUnconfirmed_ = !allEnabled;
}

}  // namespace kaz::wifi
