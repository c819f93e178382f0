#include "simulator/world/neighbourhood_json.h"

#include "base/hex.h"

#include <cstdint>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace kaz::sim {
namespace {

using nlohmann::json;

template <typename Record>
using Fields = std::map<std::string, std::function<void(Record&, const json&)>, std::less<>>;

template <typename Record>
void fill(Record& record, const json& object, const Fields<Record>& fields, const std::string& place) {
    if (!object.is_object()) {
        throw std::runtime_error(place + ": not an object");
    }
    for (const auto& [key, value] : object.items()) {
        const auto field = fields.find(key);
        if (field == fields.end()) {
            throw std::runtime_error(
                std::string(place).append(": unknown member \"").append(key).append("\""));
        }
        try {
            field->second(record, value);
        } catch (const std::exception& error) {
            throw std::runtime_error(
                std::string(place).append(".").append(key).append(": ").append(error.what()));
        }
    }
}

json parse(std::string_view text) {
    try {
        return json::parse(text, nullptr, true, true);
    } catch (const json::exception& error) {
        throw std::runtime_error(error.what());
    }
}

std::string bytesOf(const json& value) {
    const auto bytes = fromHex(value.get<std::string>());
    if (!bytes) {
        throw std::runtime_error("not hexadecimal");
    }
    return *bytes;
}

std::string ssidOf(std::string bytes) {
    constexpr std::size_t longest = 32;
    if (bytes.size() > longest) {
        throw std::runtime_error("longer than 32 bytes");
    }
    return bytes;
}

std::string bssidOf(const json& value) {
    auto text = value.get<std::string>();
    if (!bssidBytes(text)) {
        throw std::runtime_error("not a BSSID");
    }
    return text;
}

Security securityOf(const json& value) {
    const auto security = securityFromText(value.get<std::string>());
    if (!security) {
        throw std::runtime_error("not a kind of security");
    }
    return *security;
}

EapAccount accountOf(const json& value) {
    static const Fields<EapAccount> fields = {
        {"identity", [](EapAccount& a, const json& v) { a.identity = v.get<std::string>(); }},
        {"password", [](EapAccount& a, const json& v) { a.password = v.get<std::string>(); }},
        {"method", [](EapAccount& a, const json& v) { a.method = v.get<std::string>(); }},
        {"phase2", [](EapAccount& a, const json& v) { a.phase2 = v.get<std::string>(); }},
    };
    EapAccount account;
    fill(account, value, fields, "account");
    return account;
}

void fillAccessPoint(AccessPoint& accessPoint, const json& value, const std::string& place) {
    static const Fields<AccessPoint> fields = {
        {"ssid", [](AccessPoint& a, const json& v) { a.ssid = ssidOf(v.get<std::string>()); }},
        {"ssid_hex", [](AccessPoint& a, const json& v) { a.ssid = ssidOf(bytesOf(v)); }},
        {"bssid", [](AccessPoint& a, const json& v) { a.bssid = bssidOf(v); }},
        {"signal", [](AccessPoint& a, const json& v) { a.signal = v.get<std::int16_t>(); }},
        {"frequency", [](AccessPoint& a, const json& v) { a.frequency = v.get<std::uint16_t>(); }},
        {"security", [](AccessPoint& a, const json& v) { a.security = securityOf(v); }},
        {"password", [](AccessPoint& a, const json& v) { a.password = v.get<std::string>(); }},
        {"ca_file", [](AccessPoint& a, const json& v) { a.caFile = v.get<std::string>(); }},
        {"server_domain", [](AccessPoint& a, const json& v) { a.serverDomain = v.get<std::string>(); }},
        {"hidden", [](AccessPoint& a, const json& v) { a.hidden = v.get<bool>(); }},
        {"full", [](AccessPoint& a, const json& v) { a.full = v.get<bool>(); }},
        {"busy", [](AccessPoint& a, const json& v) { a.busy = v.get<bool>(); }},
        {"accounts",
         [](AccessPoint& a, const json& v) {
             a.accounts.clear();
             for (const json& account : v) {
                 a.accounts.push_back(accountOf(account));
             }
         }},
    };
    fill(accessPoint, value, fields, place);
}

Settings settingsOf(const json& value) {
    Settings settings;
    for (const auto& [key, setting] : value.items()) {
        if (key == "ssid_hex") {
            settings.emplace_back("ssid", ByteSetting{ssidOf(bytesOf(setting))});
        } else if (setting.is_string()) {
            settings.emplace_back(key, setting.get<std::string>());
        } else {
            settings.emplace_back(key, setting.is_boolean() ? std::int64_t{setting.get<bool>() ? 1 : 0}
                                                            : setting.get<std::int64_t>());
        }
    }
    return settings;
}

void fillTimes(Times& times, const json& value) {
    Fields<Times> fields;
    const auto add = [&fields](const char* name, Times::ms Times::*member) {
        fields.emplace(name, [member](Times& t, const json& v) { t.*member = Times::ms(v.get<unsigned>()); });
    };
    add("unit_start", &Times::unitStart);
    add("unit_stop", &Times::unitStop);
    add("unit_restart", &Times::unitRestart);
    add("scan", &Times::scan);
    add("scan_interval", &Times::scanInterval);
    add("authenticate", &Times::authenticate);
    add("associate", &Times::associate);
    add("handshake", &Times::handshake);
    add("handshake_timeout", &Times::handshakeTimeout);
    add("eap", &Times::eap);
    add("reconnect", &Times::reconnect);
    add("retry_disabled", &Times::retryDisabled);
    add("beacon_loss", &Times::beaconLoss);
    add("dhcp", &Times::dhcp);
    fill(times, value, fields, "times");
}

void addAccessPoints(Neighbourhood& neighbourhood, const json& list) {
    for (const json& value : list) {
        AccessPoint accessPoint;
        fillAccessPoint(accessPoint, value, "#" + std::to_string(neighbourhood.accessPoints.size() + 1));
        if (accessPoint.bssid.empty()) {
            accessPoint.bssid = neighbourhood.freeBssid();
        } else if (neighbourhood.find(accessPoint.bssid) != nullptr) {
            throw std::runtime_error("BSSID " + accessPoint.bssid + " twice");
        }
        neighbourhood.accessPoints.push_back(std::move(accessPoint));
    }
}

}  // namespace

Neighbourhood neighbourhoodFromJson(std::string_view text) {
    static const Fields<Neighbourhood> fields = {
        {"access_points", addAccessPoints},
        {"configured_networks",
         [](Neighbourhood& n, const json& v) {
             for (const json& network : v) {
                 n.configuredNetworks.push_back(settingsOf(network));
             }
         }},
        {"eap_methods",
         [](Neighbourhood& n, const json& v) { n.eapMethods = v.get<std::vector<std::string>>(); }},
        {"times", [](Neighbourhood& n, const json& v) { fillTimes(n.times, v); }},
        {"unit_active", [](Neighbourhood& n, const json& v) { n.unitActive = v.get<bool>(); }},
        {"update_config", [](Neighbourhood& n, const json& v) { n.updateConfig = v.get<bool>(); }},
        {"interface", [](Neighbourhood& n, const json& v) { n.interface = v.get<bool>(); }},
        {"more_interfaces", [](Neighbourhood& n, const json& v) { n.moreInterfaces = v.get<unsigned>(); }},
        {"announce_own_choice", [](Neighbourhood& n, const json& v) { n.announceOwnChoice = v.get<bool>(); }},
    };
    Neighbourhood neighbourhood;
    fill(neighbourhood, parse(text), fields, "neighbourhood");
    return neighbourhood;
}

Neighbourhood readNeighbourhood(const std::filesystem::path& file) {
    std::ifstream in(file);
    if (!in) {
        throw std::runtime_error("cannot read " + file.string());
    }
    const std::string text(std::istreambuf_iterator<char>(in), {});
    try {
        return neighbourhoodFromJson(text);
    } catch (const std::exception& error) {
        throw std::runtime_error(file.string() + ": " + error.what());
    }
}

AccessPoint accessPointFromJson(std::string_view text) {
    AccessPoint accessPoint;
    fillAccessPoint(accessPoint, parse(text), "access point");
    return accessPoint;
}

void alterFromJson(AccessPoint& accessPoint, std::string_view text) {
    AccessPoint altered = accessPoint;
    fillAccessPoint(altered, parse(text), "access point");
    if (altered.bssid != accessPoint.bssid) {
        throw std::runtime_error("access point: the BSSID cannot be changed");
    }
    accessPoint = std::move(altered);
}

}  // namespace kaz::sim
