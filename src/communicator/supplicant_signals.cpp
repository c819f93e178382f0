// The supplicant's signals, resolved into the engine's terms.
#include "base/log.h"
#include "communicator/bus_names.h"
#include "communicator/dbus_communicator.h"
#include "communicator/supplicant_state.h"
#include "diagnostics/reason_codes.h"

#include <limits>
#include <utility>

namespace kaz::wifi {
namespace {

void logDisconnectReason(int reason) {
    // Negative when we, not the access point, ended the link. The one number without an opposite has no name
    // either.
    const int code = reason == std::numeric_limits<int>::min() ? 0 : std::abs(reason);
    log::debug("PropertiesChanged: DisconnectReason={}({}) ", reason, ieee80211_get_reason_code_string(code));
}

}  // namespace

void DbusCommunicator::onSignalSupplicantScanDone(dbus::MessageDecoder& decoder) {
    scanningDoneHandler(dbus::read<bool>(decoder).value_or(false));
    log::debug("PropertiesChanged: Scanning=false (via ScanDone)");
    SupplicantInterfaceProperties scanEnded;
    scanEnded.scanning = false;
    supplicantPropertiesHandler(std::move(scanEnded));
}

void DbusCommunicator::onSignalEAP(dbus::MessageDecoder& decoder) {
    const auto status = dbus::read<std::string>(decoder);
    const auto parameter = dbus::read<std::string>(decoder);
    if (status && parameter) {
        log::debug("EAP: Status: {}, parameter: {}", *status, parameter->empty() ? "<empty>" : *parameter);
    }
}

void DbusCommunicator::onSignalSupplicantNetworkSelected(dbus::MessageDecoder& decoder) {
    const auto network = dbus::read<dbus::OPath>(decoder);
    if (!network) {
        log::warn("Got NetworkSelected without object path");
        return;
    }
    const std::optional<std::string> ssid = getConfiguredSsidForNetworkSync(*network);
    if (!ssid) {
        log::error("NetworkSelected {}, but couldn't get SSID", network->str());
    }
    networkSelectedHandler(ssid);
}

void DbusCommunicator::onSignalSupplicantPropertiesChanged(dbus::MessageDecoder& decoder) {
    const auto interface = dbus::read<std::string>(decoder);
    const auto properties = dbus::read<dbus::SupplicantInterfaceProperties>(decoder);
    if (!interface || !properties) {
        log::warn("Couldn't decode wpa_supplicant PropertiesChanged ({})",
                  interface ? properties.error() : interface.error());
        return;
    }
    if (*interface != bus::supplicant::interfaceInterface) {
        log::debug("Ignoring PropertiesChanged on {}", *interface);
        return;
    }
    emitSupplicantInterfaceProperties(*properties);
}

void DbusCommunicator::emitSupplicantInterfaceProperties(
    const dbus::SupplicantInterfaceProperties& properties) {
    SupplicantInterfaceProperties resolved;
    resolveBssList(properties, resolved);
    if (properties.scanning) {
        // The end of a scan is told by ScanDone, which also comes when no property changes.
        if (*properties.scanning) {
            resolved.scanning = true;
        }
        log::debug("PropertiesChanged: Scanning={}", *properties.scanning ? "true" : "false (ignored)");
    }
    resolveCurrentNetwork(properties, resolved);
    resolveCurrentBss(properties, resolved);
    if (properties.state) {
        resolved.status = fromSupplicantState(*properties.state);
        log::debug("PropertiesChanged: State={}", *properties.state);
    }
    if (properties.disconnectReason) {
        logDisconnectReason(*properties.disconnectReason);
    }
    supplicantPropertiesHandler(std::move(resolved));
}

void DbusCommunicator::resolveBssList(const dbus::SupplicantInterfaceProperties& from,
                                      SupplicantInterfaceProperties& to) {
    if (!from.bsss) {
        return;
    }
    if (from.bsss->empty()) {
        to.bssListChange = PropertyChange::Cleared;
        return;
    }
    to.bssList = decodeBssPaths(*from.bsss);
    to.bssListChange = PropertyChange::Set;
    log::debug("PropertiesChanged: BSSs={} values, decoded={}", from.bsss->size(), to.bssList.size());
}

void DbusCommunicator::resolveCurrentNetwork(const dbus::SupplicantInterfaceProperties& from,
                                             SupplicantInterfaceProperties& to) {
    if (!from.currentNetwork) {
        return;
    }
    if (from.currentNetwork->emptyPath()) {
        to.currentNetworkChange = PropertyChange::Cleared;
    } else if (auto ssid = getConfiguredSsidForNetworkSync(*from.currentNetwork)) {
        to.currentNetworkSsid = std::move(*ssid);
        to.currentNetworkChange = PropertyChange::Set;
    }
    log::debug("PropertiesChanged: CurrentNetwork={}", from.currentNetwork->str());
}

void DbusCommunicator::resolveCurrentBss(const dbus::SupplicantInterfaceProperties& from,
                                         SupplicantInterfaceProperties& to) {
    if (!from.currentBss) {
        return;
    }
    if (from.currentBss->emptyPath()) {
        to.currentBssChange = PropertyChange::Cleared;
    } else if (auto bss = getBssPropertiesSync(*from.currentBss)) {
        to.currentBss = std::move(*bss);
        to.currentBssChange = PropertyChange::Set;
    }
    log::debug("PropertiesChanged: CurrentBSS={}", from.currentBss->str());
}

}  // namespace kaz::wifi
