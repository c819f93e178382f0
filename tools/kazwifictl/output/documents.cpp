#include "kazwifictl/output/documents.h"

#include <chrono>
#include <cstdint>
#include <string>

#include "base/hex.h"
#include "kazwifictl/text/signal_strength.h"
#include "kazwifictl/text/ssid_text.h"
#include "kazwifictl/text/words.h"

namespace kaz::ctl {

using wifi::ConnectionInfo;

namespace {

Json orNull(const std::optional<int>& value) {
    return value ? Json(*value) : Json();
}

Json lastDisconnect(const ConnectionInfo& info, std::chrono::steady_clock::time_point now) {
    if (info.disconnectReason == ConnectionInfo::DisconnectReason::unknown) {
        return {};
    }
    Json json = ssidMembers(info.disconnectSsid);
    json["by"] = reasonName(info.disconnectReason);
    json["ms_ago"] = inMilliseconds(now - info.disconnectTime);
    return json;
}

Json lastOutcome(const wifi::Outcome& outcome, std::chrono::steady_clock::time_point now) {
    if (outcome.cause == wifi::Cause::none) {
        return {};
    }
    Json json = ssidMembers(outcome.ssid);
    json["cause"] = causeName(outcome.cause);
    json["certainty"] = certaintyName(outcome.certainty);
    json["ms_ago"] = inMilliseconds(now - outcome.time);
    return json;
}

}  // namespace

std::int64_t inMilliseconds(std::chrono::steady_clock::duration duration) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(duration).count();
}

double inSeconds(std::chrono::steady_clock::duration duration) {
    return static_cast<double>(inMilliseconds(duration)) / 1000;
}

Json document(std::string_view command, const Json& members, const Failure* failure) {
    Json json{
        {"format", 1}, {"command", command.empty() ? Json() : Json(command)}, {"ok", failure == nullptr}};
    json.update(members);
    if (failure != nullptr) {
        json["error"] = {{"code", static_cast<int>(failure->code)},
                         {"name", nameOf(failure->code)},
                         {"what", failure->what},
                         {"why", failure->why},
                         {"try", failure->advice}};
    }
    return json;
}

Json ssidMembers(const std::string& ssid) {
    return {{"ssid", validUtf8(ssid)}, {"ssid_hex", toHex(ssid)}};
}

Json networkJson(const NetworkRow& row) {
    Json json = ssidMembers(row.ssid);
    json["signal_dbm"] = orNull(row.dBm);
    json["bars"] = row.dBm ? Json(barsOf(*row.dBm)) : Json();
    json["security"] = row.security ? Json(securityName(*row.security)) : Json();
    const std::string_view obstacle =
        row.security ? obstacleName({row.demands, *row.security}) : std::string_view();
    json["obstacle"] = obstacle.empty() ? Json() : Json(obstacle);
    json["saved"] = row.saved;
    json["status"] = statusName(row.status);
    json["in_range"] = row.inRange;
    return json;
}

Json networksJson(const std::vector<NetworkRow>& rows) {
    Json json = Json::array();
    for (const NetworkRow& row : rows) {
        json.push_back(networkJson(row));
    }
    return json;
}

Json connectionJson(const wifi::ConnectionDetails& details, std::chrono::steady_clock::time_point now) {
    const ConnectionInfo& info = details.info;
    const wifi::NetworkInUse& inUse = details.network;
    const bool connected = info.status != ConnectionInfo::Status::disconnected;
    Json json{{"status", statusName(info.status)}};
    json["ssid"] = connected ? Json(validUtf8(info.ssid)) : Json();
    json["ssid_hex"] = connected ? Json(toHex(info.ssid)) : Json();
    json["signal_dbm"] = connected ? orNull(knownSignal(info.signal)) : Json();
    json["security"] = isKnown(inUse) ? Json(securityName(inUse.securityMode)) : Json();
    json["bssid"] = isKnown(inUse) ? Json(bssidText(inUse.bssid)) : Json();
    json["frequency_mhz"] = inUse.frequency != 0 ? Json(inUse.frequency) : Json();
    const int channel = channelOf(inUse.frequency);
    json["channel"] = channel != 0 ? Json(channel) : Json();
    json["rate_mbit"] = inUse.rate != 0 ? Json(inUse.rate) : Json();
    json["last_disconnect"] = lastDisconnect(info, now);
    json["last_outcome"] = lastOutcome(details.lastOutcome, now);
    return json;
}

}  // namespace kaz::ctl
