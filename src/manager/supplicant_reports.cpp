#include "manager/supplicant_reports.h"

#include "base/log.h"

#include <utility>

namespace kaz::wifi {
namespace {

using PropertyChange = Communicator::PropertyChange;

}  // namespace

void SupplicantReports::signalScanningDone(bool success) {
    log::debug("Scan done, status: {}", success);
}

void SupplicantReports::signalNetworkSelected(const std::optional<std::string>& ssid) {
    if (ssid) {
        log::debug("NetworkSelected is {}", Communicator::makeSsidRedactable(*ssid));
        tracker_.setCurrentNetworkSsid(ssid);
    }
}

void SupplicantReports::signalSupplicantPropertiesChanged(
    Communicator::SupplicantInterfaceProperties properties) {
    if (properties.bssListChange != PropertyChange::Unchanged) {
        list_.setBssList(std::move(properties.bssList));
    }
    if (properties.scanning) {
        setScanning(*properties.scanning);
    }
    if (properties.currentNetworkChange == PropertyChange::Set) {
        tracker_.setCurrentNetworkSsid(std::move(properties.currentNetworkSsid));
    }
    switch (properties.currentBssChange) {
        case PropertyChange::Unchanged:
            break;
        case PropertyChange::Set:
            tracker_.setCurrentBss(std::move(properties.currentBss));
            break;
        case PropertyChange::Cleared:
            tracker_.setCurrentBss(std::nullopt);
            break;
    }
    if (properties.status) {
        tracker_.setSupplicantStatus(*properties.status);
    }
}

void SupplicantReports::setScanning(bool scanning) {
    tracker_.setScanning(scanning);
    if (scanning_.exchange(scanning) != scanning) {
        published_.notify(Published::Change::scanning);
    }
}

}  // namespace kaz::wifi
