#include "communicator/radio.h"

#include "base/log.h"
#include "communicator/bss_rules.h"
#include "communicator/bus_names.h"
#include "communicator/patience.h"
#include "dbus/records.h"
#include "dbus/reply.h"
#include "dbus/variant.h"

#include <utility>

namespace kaz::wifi {

Radio::Radio(const SupplicantInterface& supplicant) : supplicant_(supplicant) {}

bool Radio::scanSync() {
    // At debug level, unlike other refusals, because user interfaces scan all the time.
    if (!supplicant_.mayUse("scan", log::Level::debug)) {
        return false;
    }
    const dbus::Variant::Map arguments{{"Type", "passive"}};
    return static_cast<bool>(supplicant_.interface().call("Scan", arguments));
}

std::optional<Communicator::BssProperties> Radio::bssSync(const dbus::OPath& bss) {
    if (!supplicant_.mayUse("get bss properties")) {
        return std::nullopt;
    }
    dbus::Reply reply =
        supplicant_.bssProperties(bss).call("GetAll", std::string(bus::supplicant::bssInterface));
    const auto data = reply.read<BSSData>();
    if (!data) {
        return std::nullopt;
    }
    return propertiesOfBss(*data);
}

std::vector<Communicator::BssProperties> Radio::bssListSync(const std::vector<dbus::OPath>& paths) {
    std::vector<Communicator::BssProperties> decoded;
    decoded.reserve(paths.size());
    const Patience patience(supplicant_.callLimit());
    for (const dbus::OPath& path : paths) {
        if (patience.ended()) {
            log::warn("wpa_supplicant is too slow, leaving out some of {} BSSs", paths.size());
            break;
        }
        if (auto bss = bssSync(path)) {
            decoded.push_back(std::move(*bss));
        }
    }
    return decoded;
}

std::optional<int> Radio::signalPollSync() {
    if (!supplicant_.mayUse("poll for signal strength")) {
        return std::nullopt;
    }
    dbus::Reply reply = supplicant_.interface().call("SignalPoll");
    const auto poll = reply.read<SignalPoll>();
    polledRate_ = poll ? poll->linkSpeed.value : std::nullopt;
    if (!poll) {
        return std::nullopt;
    }
    if (!poll->rssi) {
        log::warn("SignalPoll succeeded, but didn't return signal strength (rssi)");
    }
    return poll->rssi;
}

std::set<std::string> Radio::eapMethodsSync() {
    dbus::Reply reply = supplicant_.root().get("EapMethods");
    auto methods = reply.read<std::set<std::string>>();
    if (!methods) {
        log::warn("Unable to load eapMethods");
        return {};
    }
    return std::move(*methods);
}

bool Radio::disconnectSync() {
    return supplicant_.mayUse("disconnect") && supplicant_.interface().call("Disconnect");
}

bool Radio::reconnectSync() {
    return supplicant_.mayUse("reconnect") && supplicant_.interface().call("Reconnect");
}

}  // namespace kaz::wifi
