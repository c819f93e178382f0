// The networks in the supplicant's configuration, and its connection.
#include "base/log.h"
#include "communicator/bus_names.h"
#include "communicator/configured_network.h"
#include "communicator/configured_ssid.h"
#include "communicator/dbus_communicator.h"
#include "communicator/network_settings.h"
#include "communicator/patience.h"

#include <utility>

namespace kaz::wifi {

std::unique_ptr<Communicator::ConfiguredNetwork> DbusCommunicator::addNetworkSync(
    const ConnectionSettings& settings) {
    if (!mayUseSupplicant("add network")) {
        return nullptr;
    }
    dbus::Reply reply = supplicantInterface().callWithSecrets("AddNetwork", networkSettings(settings));
    const auto network = reply.read<dbus::OPath>();
    if (!network) {
        return nullptr;
    }
    log::debug("Added network {}", network->str());
    return std::make_unique<ConfiguredNetwork>(*this, *network, settings.ssid);
}

bool DbusCommunicator::selectNetworkSync(const dbus::OPath& network) {
    if (!mayUseSupplicant("select network")) {
        return false;
    }
    if (!supplicantInterface().call("SelectNetwork", network)) {
        return false;
    }
    log::debug("Selected network {}", network.str());
    return true;
}

bool DbusCommunicator::removeNetworkSync(const dbus::OPath& network) {
    if (!mayUseSupplicant("remove network")) {
        return false;
    }
    if (!supplicantInterface().call("RemoveNetwork", network)) {
        return false;
    }
    log::debug("Removed network {}", network.str());
    return true;
}

bool DbusCommunicator::setNetworkEnabledSync(const dbus::OPath& network, bool enabled) {
    return mayUseSupplicant("enable network") && supplicantNetwork(network).set("Enabled", enabled);
}

// The supplicant keeps all settings that the dictionary does not name.
bool DbusCommunicator::setNetworkPrioritySync(const dbus::OPath& network, int priority) {
    return supplicantNetwork(network).set("Properties", dbus::Variant::Map{{"priority", priority}});
}

std::optional<std::string> DbusCommunicator::getConfiguredSsidForNetworkSync(const dbus::OPath& network) {
    if (!mayUseSupplicant("get network ssid")) {
        return std::nullopt;
    }
    dbus::Reply reply = supplicantNetwork(network).get("Properties");
    const auto properties = reply.read<ConfiguredSsid>();
    if (!properties) {
        log::warn("Couldn't get SSID for {}. Error {}", network.str(), properties.error());
        return std::nullopt;
    }
    if (!properties->ssid) {
        log::warn("Couldn't get SSID for {}, no value set.", network.str());
        return std::nullopt;
    }
    auto ssid = decodeConfiguredSsid(*properties->ssid);
    if (!ssid) {
        log::warn("Couldn't decode SSID for {} ({})", network.str(), makeSsidRedactable(*properties->ssid));
    }
    return ssid;
}

std::vector<std::unique_ptr<Communicator::ConfiguredNetwork>>
DbusCommunicator::getAllConfiguredNetworksSync() {
    if (!mayUseSupplicant("list configured networks")) {
        return {};
    }
    dbus::Reply reply = supplicantInterface().get("Networks");
    const auto paths = reply.read<std::vector<dbus::OPath>>();
    if (!paths) {
        return {};
    }
    std::vector<std::unique_ptr<Communicator::ConfiguredNetwork>> networks;
    networks.reserve(paths->size());
    const Patience patience;
    std::size_t unasked = 0;
    for (const dbus::OPath& path : *paths) {
        std::optional<std::string> ssid;
        if (patience.ended()) {
            ++unasked;
        } else {
            ssid = getConfiguredSsidForNetworkSync(path);
        }
        networks.push_back(std::make_unique<ConfiguredNetwork>(*this, path, std::move(ssid)));
    }
    if (unasked > 0) {
        log::warn("wpa_supplicant is too slow, the SSIDs of {} networks stay unknown", unasked);
    }
    return networks;
}

bool DbusCommunicator::saveNetworkConfigurationSync() {
    if (!mayUseSupplicant("save configuration")) {
        return false;
    }
    if (!supplicantInterface().call("SaveConfig")) {
        log::error("Couldn't save wpa_supplicant config");
        return false;
    }
    log::debug("Saved new wpa_supplicant config");
    return true;
}

bool DbusCommunicator::disconnectSync() {
    return mayUseSupplicant("disconnect") && supplicantInterface().call("Disconnect");
}

bool DbusCommunicator::reconnectSync() {
    return mayUseSupplicant("reconnect") && supplicantInterface().call("Reconnect");
}

}  // namespace kaz::wifi
