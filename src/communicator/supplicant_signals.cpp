#include "communicator/supplicant_signals.h"

#include "base/log.h"
#include "communicator/bus_names.h"
#include "communicator/eap_report.h"
#include "communicator/supplicant_state.h"
#include "dbus/message_io.h"
#include "dbus/reply.h"
#include "diagnostics/reason_codes.h"

#include <cstdlib>
#include <limits>
#include <optional>
#include <string>
#include <utility>

namespace kaz::wifi {
namespace {

void logDisconnectReason(int reason) {
    // Negative when we, not the access point, ended the link. The smallest int has no absolute value.
    const int code = reason == std::numeric_limits<int>::min() ? 0 : std::abs(reason);
    log::debug("PropertiesChanged: DisconnectReason={}({}) ", reason, ieee80211_get_reason_code_string(code));
}

// Only a change is evidence: in a reply, the values may be from an earlier attempt.
Communicator::LinkEvidence evidenceOf(const dbus::SupplicantInterfaceProperties& properties) {
    Communicator::LinkEvidence evidence;
    if (properties.state) {
        evidence.step = linkStepOfState(*properties.state);
    }
    evidence.disconnectReason = properties.disconnectReason;
    evidence.authenticationStatus = properties.authStatusCode.value;
    evidence.associationStatus = properties.assocStatusCode.value;
    return evidence;
}

}  // namespace

SupplicantSignals::SupplicantSignals(dbus::Bus& bus, SupplicantInterface& supplicant,
                                     ConfiguredNetworks& networks, Radio& radio, Communicator& handlers)
    : bus_(bus), supplicant_(supplicant), networks_(networks), radio_(radio), handlers_(handlers) {}

void SupplicantSignals::subscribe() const {
    subscribe(bus::supplicant::interfaceInterface, "ScanDone", &SupplicantSignals::onSignalScanDone);
    subscribe(bus::supplicant::interfaceInterface, "EAP", &SupplicantSignals::onSignalEap);
    subscribe(bus::supplicant::interfaceInterface, "NetworkSelected",
              &SupplicantSignals::onSignalNetworkSelected);
    subscribe(bus::propertiesInterface, bus::propertiesChanged,
              &SupplicantSignals::onSignalPropertiesChanged);
}

void SupplicantSignals::subscribeToNetworks() const {
    subscribe(bus::supplicant::interfaceInterface, "NetworkAdded", &SupplicantSignals::onSignalNetworkAdded);
    subscribe(bus::supplicant::interfaceInterface, "NetworkRemoved",
              &SupplicantSignals::onSignalNetworkRemoved);
    // Not every supplicant has these.
    subscribe(bus::supplicant::interfaceInterface, "PskMismatch", &SupplicantSignals::onSignalPskMismatch);
    subscribe(bus::supplicant::interfaceInterface, "SaePasswordMismatch",
              &SupplicantSignals::onSignalSaePasswordMismatch);
}

void SupplicantSignals::subscribe(const char* interface, const char* member, SignalHandler handler) const {
    bus_.subscribe(bus::supplicant::service, supplicant_.path(), interface, member,
                   dbus::Bus::Lifetime::temporary, [this, handler](dbus::MessageDecoder& decoder) {
                       supplicant_.noteSignal();
                       (this->*handler)(decoder);
                   });
}

void SupplicantSignals::readSync() const {
    dbus::Reply reply =
        supplicant_.interfaceProperties().call("GetAll", std::string(bus::supplicant::interfaceInterface));
    if (!reply) {
        return;
    }
    const auto properties = reply.read<dbus::SupplicantInterfaceProperties>();
    if (!properties) {
        log::error("Couldn't decode wpa_supplicant PropertiesChanged ({})", properties.error());
        return;
    }
    supplicant_.noteName(properties->ifname.value_or(""));
    report(*properties);
}

void SupplicantSignals::readBssListSync() const {
    if (!supplicant_.mayUse("read the BSS list", log::Level::debug)) {
        return;
    }
    dbus::Reply reply = supplicant_.interface().get("BSSs");
    dbus::SupplicantInterfaceProperties properties;
    if (auto bsss = reply.read<std::vector<dbus::OPath>>()) {
        properties.bsss = std::move(*bsss);
        report(properties);
    }
}

void SupplicantSignals::onSignalScanDone(dbus::MessageDecoder& decoder) const {
    handlers_.scanningDoneHandler(dbus::read<bool>(decoder).value_or(false));
    log::debug("PropertiesChanged: Scanning=false (via ScanDone)");
    Report scanEnded;
    scanEnded.scanning = false;
    handlers_.supplicantPropertiesHandler(std::move(scanEnded));
}

void SupplicantSignals::onSignalEap(dbus::MessageDecoder& decoder) const {
    const auto status = dbus::read<std::string>(decoder);
    const auto parameter = dbus::read<std::string>(decoder);
    if (status && parameter) {
        log::debug("EAP: Status: {}, parameter: {}", *status, parameter->empty() ? "<empty>" : *parameter);
        Communicator::LinkEvidence evidence;
        evidence.eap = fromEapStatus(*status, *parameter);
        tell(evidence);
    }
}

void SupplicantSignals::onSignalNetworkSelected(dbus::MessageDecoder& decoder) const {
    const auto network = dbus::read<dbus::OPath>(decoder);
    if (!network) {
        log::warn("Got NetworkSelected without object path");
        return;
    }
    const std::optional<std::string> ssid = networks_.ssidSync(*network);
    if (!ssid) {
        log::error("NetworkSelected {}, but couldn't get SSID", network->str());
    }
    handlers_.networkSelectedHandler(ssid);
}

void SupplicantSignals::onSignalPropertiesChanged(dbus::MessageDecoder& decoder) const {
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
    report(*properties);
    tell(evidenceOf(*properties));
}

void SupplicantSignals::onSignalPskMismatch(dbus::MessageDecoder& /*decoder*/) const {
    Communicator::LinkEvidence evidence;
    evidence.mismatch = Communicator::KeyMismatch::preSharedKey;
    tell(evidence);
}

void SupplicantSignals::onSignalSaePasswordMismatch(dbus::MessageDecoder& /*decoder*/) const {
    Communicator::LinkEvidence evidence;
    evidence.mismatch = Communicator::KeyMismatch::saePassword;
    tell(evidence);
}

void SupplicantSignals::tell(const Communicator::LinkEvidence& evidence) const {
    if (evidence != Communicator::LinkEvidence{}) {
        handlers_.linkEvidenceHandler(evidence);
    }
}

void SupplicantSignals::onSignalNetworkAdded(dbus::MessageDecoder& decoder) const {
    const auto network = dbus::read<dbus::OPath>(decoder);
    if (network && networks_.noteAdded(*network)) {
        handlers_.configuredNetworksChangedHandler();
    }
}

void SupplicantSignals::onSignalNetworkRemoved(dbus::MessageDecoder& decoder) const {
    const auto network = dbus::read<dbus::OPath>(decoder);
    if (network && networks_.noteRemoved(*network)) {
        handlers_.configuredNetworksChangedHandler();
    }
}

void SupplicantSignals::report(const dbus::SupplicantInterfaceProperties& properties) const {
    Report resolved;
    resolveBssList(properties, resolved);
    if (properties.scanning) {
        // ScanDone reports the end of a scan: it is also sent when no property changes.
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
    resolved.authMode = properties.currentAuthMode.value;
    if (const auto& saePwe = properties.saePwe.value) {
        resolved.hashToElement = *saePwe == "1" || *saePwe == "2";
    }
    if (properties.disconnectReason) {
        logDisconnectReason(*properties.disconnectReason);
    }
    handlers_.supplicantPropertiesHandler(std::move(resolved));
}

void SupplicantSignals::resolveBssList(const dbus::SupplicantInterfaceProperties& from, Report& to) const {
    if (!from.bsss) {
        return;
    }
    if (from.bsss->empty()) {
        to.bssListChange = Communicator::PropertyChange::Cleared;
        return;
    }
    to.bssList = radio_.bssListSync(*from.bsss);
    to.bssListChange = Communicator::PropertyChange::Set;
    log::debug("PropertiesChanged: BSSs={} values, decoded={}", from.bsss->size(), to.bssList.size());
}

void SupplicantSignals::resolveCurrentNetwork(const dbus::SupplicantInterfaceProperties& from,
                                              Report& to) const {
    if (!from.currentNetwork) {
        return;
    }
    if (from.currentNetwork->emptyPath()) {
        to.currentNetworkChange = Communicator::PropertyChange::Cleared;
    } else if (auto ssid = networks_.ssidSync(*from.currentNetwork)) {
        to.currentNetworkSsid = std::move(*ssid);
        to.currentNetworkChange = Communicator::PropertyChange::Set;
    }
    log::debug("PropertiesChanged: CurrentNetwork={}", from.currentNetwork->str());
}

void SupplicantSignals::resolveCurrentBss(const dbus::SupplicantInterfaceProperties& from, Report& to) const {
    if (!from.currentBss) {
        return;
    }
    if (from.currentBss->emptyPath()) {
        to.currentBssChange = Communicator::PropertyChange::Cleared;
    } else if (auto bss = radio_.bssSync(*from.currentBss)) {
        to.currentBss = std::move(*bss);
        to.currentBssChange = Communicator::PropertyChange::Set;
    }
    log::debug("PropertiesChanged: CurrentBSS={}", from.currentBss->str());
}

}  // namespace kaz::wifi
