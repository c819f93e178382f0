// What the radio sees: scans, access points, signal strength; and what the supplicant was built with.
#include "base/log.h"
#include "communicator/bss_rules.h"
#include "communicator/bus_names.h"
#include "communicator/dbus_communicator.h"
#include "communicator/patience.h"

#include <utility>

namespace kaz::wifi {

bool DbusCommunicator::scanSync() {
    // Quieter than the other refusals: user interfaces scan all the time.
    if (!mayUseSupplicant("scan", log::Level::debug)) {
        return false;
    }
    const dbus::Variant::Map arguments{{"Type", "passive"}};
    return static_cast<bool>(supplicantInterface().call("Scan", arguments));
}

std::optional<Communicator::BssProperties> DbusCommunicator::getBssPropertiesSync(const dbus::OPath& bss) {
    if (!mayUseSupplicant("get bss properties")) {
        return std::nullopt;
    }
    dbus::Reply reply = remoteObject(bus::supplicant::service, bss, bus::propertiesInterface)
                            .call("GetAll", std::string(bus::supplicant::bssInterface));
    const auto data = reply.read<BSSData>();
    if (!data) {
        return std::nullopt;
    }
    return BssProperties{ssidOfBss(data->ssid), data->signal, securityModeOfBss(*data)};
}

std::vector<Communicator::BssProperties> DbusCommunicator::decodeBssPaths(
    const std::vector<dbus::OPath>& paths) {
    std::vector<BssProperties> decoded;
    decoded.reserve(paths.size());
    const Patience patience;
    for (const dbus::OPath& path : paths) {
        if (patience.ended()) {
            log::warn("wpa_supplicant is too slow, leaving out some of {} BSSs", paths.size());
            break;
        }
        if (auto bss = getBssPropertiesSync(path)) {
            decoded.push_back(std::move(*bss));
        }
    }
    return decoded;
}

std::optional<int> DbusCommunicator::signalPollSync() {
    if (!mayUseSupplicant("poll for signal strength")) {
        return std::nullopt;
    }
    dbus::Reply reply = supplicantInterface().call("SignalPoll");
    const auto poll = reply.read<SignalPoll>();
    if (!poll) {
        return std::nullopt;
    }
    if (!poll->rssi) {
        log::warn("SignalPoll succeeded, but didn't return signal strength (rssi)");
    }
    return poll->rssi;
}

std::set<std::string> DbusCommunicator::eapMethodsSync() {
    dbus::Reply reply = supplicantRoot().get("EapMethods");
    auto methods = reply.read<std::set<std::string>>();
    if (!methods) {
        log::warn("Unable to load eapMethods");
        return {};
    }
    return std::move(*methods);
}

}  // namespace kaz::wifi
