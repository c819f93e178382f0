#include "communicator/configured_networks.h"

#include "base/log.h"
#include "communicator/configured_network.h"
#include "communicator/configured_ssid.h"
#include "communicator/network_settings.h"
#include "communicator/patience.h"
#include "dbus/records.h"
#include "dbus/reply.h"
#include "dbus/variant.h"

#include <cstddef>
#include <utility>

namespace kaz::wifi {

ConfiguredNetworks::ConfiguredNetworks(const SupplicantInterface& supplicant) : supplicant_(supplicant) {}

std::unique_ptr<Communicator::ConfiguredNetwork> ConfiguredNetworks::addSync(
    const ConnectionSettings& settings, const Certificates& certificates) {
    if (!supplicant_.mayUse("add network")) {
        return nullptr;
    }
    dbus::Reply reply =
        supplicant_.interface().callWithSecrets("AddNetwork", networkSettings(settings, certificates));
    const auto network = reply.read<dbus::OPath>();
    if (!network) {
        return nullptr;
    }
    known_.insert(network->str());
    log::debug("Added network {}", network->str());
    return std::make_unique<ConfiguredNetwork>(*this, *network, settings.ssid);
}

bool ConfiguredNetworks::selectSync(const dbus::OPath& network) {
    if (!supplicant_.mayUse("select network")) {
        return false;
    }
    if (!supplicant_.interface().call("SelectNetwork", network)) {
        return false;
    }
    log::debug("Selected network {}", network.str());
    return true;
}

bool ConfiguredNetworks::removeSync(const dbus::OPath& network) {
    if (!supplicant_.mayUse("remove network")) {
        return false;
    }
    if (!supplicant_.interface().call("RemoveNetwork", network)) {
        return false;
    }
    known_.erase(network.str());
    log::debug("Removed network {}", network.str());
    return true;
}

bool ConfiguredNetworks::setEnabledSync(const dbus::OPath& network, bool enabled) {
    return supplicant_.mayUse("enable network") && supplicant_.network(network).set("Enabled", enabled);
}

// The supplicant keeps all settings that are not in the dictionary.
bool ConfiguredNetworks::setPrioritySync(const dbus::OPath& network, int priority) {
    return supplicant_.network(network).set("Properties", dbus::Variant::Map{{"priority", priority}});
}

std::optional<std::string> ConfiguredNetworks::ssidSync(const dbus::OPath& network) {
    if (!supplicant_.mayUse("get network ssid")) {
        return std::nullopt;
    }
    dbus::Reply reply = supplicant_.network(network).get("Properties");
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
        log::warn("Couldn't decode SSID for {} ({})", network.str(),
                  Communicator::makeSsidRedactable(*properties->ssid));
    }
    return ssid;
}

ConfiguredNetworks::List ConfiguredNetworks::listSync() {
    if (!supplicant_.mayUse("list configured networks")) {
        return {};
    }
    dbus::Reply reply = supplicant_.interface().get("Networks");
    const auto paths = reply.read<std::vector<dbus::OPath>>();
    if (!paths) {
        return {};
    }
    known_.clear();
    List networks;
    networks.reserve(paths->size());
    const Patience patience(supplicant_.callLimit());
    std::size_t unasked = 0;
    for (const dbus::OPath& path : *paths) {
        known_.insert(path.str());
        std::optional<std::string> ssid;
        if (patience.ended()) {
            ++unasked;
        } else {
            ssid = ssidSync(path);
        }
        networks.push_back(std::make_unique<ConfiguredNetwork>(*this, path, std::move(ssid)));
    }
    if (unasked > 0) {
        log::warn("wpa_supplicant is too slow, the SSIDs of {} networks stay unknown", unasked);
    }
    return networks;
}

// Our own changes are known before their signals are handled.
bool ConfiguredNetworks::noteAdded(const dbus::OPath& network) {
    return known_.insert(network.str()).second;
}

bool ConfiguredNetworks::noteRemoved(const dbus::OPath& network) {
    return known_.erase(network.str()) > 0;
}

bool ConfiguredNetworks::saveSync() {
    if (!supplicant_.mayUse("save configuration")) {
        return false;
    }
    if (!supplicant_.interface().call("SaveConfig")) {
        log::error("Couldn't save wpa_supplicant config");
        return false;
    }
    log::debug("Saved new wpa_supplicant config");
    return true;
}

}  // namespace kaz::wifi
