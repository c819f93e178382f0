#include "kazwifictl/commands/change_writer.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <time.h>

#include <algorithm>
#include <map>

#include "kazwifictl/output/documents.h"
#include "kazwifictl/text/signal_strength.h"
#include "kazwifictl/text/words.h"

namespace kaz::ctl {

using wifi::ConnectionInfo;
using wifi::WifiNetwork;

namespace {

using WallClock = ChangeWriter::WallClock;

// Milliseconds are written too.
std::string utcTime(WallClock::time_point time) {
    return fmt::format("{:%FT%T}Z", std::chrono::floor<std::chrono::milliseconds>(time));
}

std::string localTime(WallClock::time_point time) {
    const time_t seconds = WallClock::to_time_t(time);
    tm parts{};
    ::localtime_r(&seconds, &parts);
    return fmt::format(
        "{:%T}", std::chrono::floor<std::chrono::milliseconds>(time + std::chrono::seconds(parts.tm_gmtoff)));
}

std::map<std::string, WifiNetwork> bySsid(const std::vector<WifiNetwork>& networks) {
    std::map<std::string, WifiNetwork> map;
    for (const WifiNetwork& network : networks) {
        map.emplace(network.ssid, network);
    }
    return map;
}

std::string differences(const WifiNetwork& before, const WifiNetwork& now) {
    std::string text;
    if (before.signal != now.signal) {
        text += fmt::format(", was {} dBm", before.signal);
    }
    if (before.securityMode != now.securityMode) {
        text += fmt::format(", was {}", securityInWords(before.securityMode));
    }
    if (before.configured != now.configured) {
        text += before.configured ? ", was saved" : ", was not saved";
    }
    return text;
}

}  // namespace

std::string ChangeWriter::begin(const Snapshot& now, WallClock::time_point time) {
    return powerLine(now, time) + (now.running ? connection(now.connection, time) : std::string()) +
           (now.scanning ? scanning(true, time) : std::string()) + networks({}, now.networks, time);
}

std::string ChangeWriter::change(const Snapshot& before, const Snapshot& now, WallClock::time_point time) {
    // No line for a scan that ended because the supplicant stopped.
    const bool scanChanged = now.scanning != before.scanning && now.running;
    return power(before, now, time) +
           (now.connection != before.connection ? connection(now.connection, time) : std::string()) +
           (scanChanged ? scanning(now.scanning, time) : std::string()) +
           networks(before.networks, now.networks, time);
}

std::string ChangeWriter::news(const Snapshot& before, const Snapshot& now, WallClock::time_point time) {
    // No line for a connection that ended because Wi-Fi was switched off, or for the empty record of a new supplicant.
    const bool connectionChanged = now.connection != before.connection && now.running &&
                                   !(before.isDisconnected() && now.isDisconnected());
    return power(before, now, time) + (connectionChanged ? connection(now.connection, time) : std::string());
}

std::string ChangeWriter::line(WallClock::time_point time, std::string_view topic, const std::string& text,
                               const Json& json) {
    if (output_.json()) {
        Json object{{"format", 1}, {"time", utcTime(time)}, {"event", topic}};
        object.update(json);
        return oneLine(object);
    }
    const std::string stamp = output_.style().dim(localTime(time));
    return fmt::format("{}  {:<10}  {}\n", stamp, topic, text);
}

std::string ChangeWriter::power(const Snapshot& before, const Snapshot& now, WallClock::time_point time) {
    const bool changed = now.enabled != before.enabled || now.running != before.running;
    return changed ? powerLine(now, time) : std::string();
}

std::string ChangeWriter::powerLine(const Snapshot& now, WallClock::time_point time) {
    const std::string text = fmt::format("{}, wpa_supplicant {}", now.enabled ? "on" : "off",
                                         now.running ? "runs" : "does not run");
    return line(time, "wifi", text, {{"enabled", now.enabled}, {"running", now.running}});
}

std::string ChangeWriter::scanning(bool scanning, WallClock::time_point time) {
    return line(time, "scan", scanning ? "began" : "ended", {{"scanning", scanning}});
}

std::string ChangeWriter::connection(const ConnectionInfo& info, WallClock::time_point time) {
    const Style& style = output_.style();
    std::string text(statusInWords(info.status));
    if (info.status == ConnectionInfo::Status::disconnected) {
        text = info.disconnectReason == ConnectionInfo::DisconnectReason::unknown ? text : style.bad(text);
        if (!info.disconnectSsid.empty()) {
            text += fmt::format(" (disconnected from {} by the {})", output_.name(info.disconnectSsid),
                                reasonName(info.disconnectReason));
        }
    } else {
        const bool connected = info.status == ConnectionInfo::Status::connected;
        const auto dBm = knownSignal(info.signal);
        text = fmt::format("{} {} {}{}", connected ? style.good(text) : text, preposition(info.status),
                           output_.name(info.ssid), dBm ? ", " + output_.signal(*dBm) : "");
    }
    return line(time, "connection", text, connectionJson(info, Clock::now()));
}

std::string ChangeWriter::networks(const std::vector<WifiNetwork>& before,
                                   const std::vector<WifiNetwork>& now, WallClock::time_point time) {
    const auto were = bySsid(before);
    const auto are = bySsid(now);
    std::string text;
    for (const WifiNetwork& each : before) {
        if (are.find(each.ssid) == are.end()) {
            text += network("disappeared", each, {}, time);
        }
    }
    for (const WifiNetwork& each : now) {
        const auto was = were.find(each.ssid);
        if (was == were.end()) {
            text += network("appeared", each, {}, time);
        } else if (was->second != each) {
            text += network("changed", each, differences(was->second, each), time);
        }
    }
    return text;
}

std::string ChangeWriter::network(std::string_view change, const WifiNetwork& network, const std::string& was,
                                  WallClock::time_point time) {
    const std::string text =
        fmt::format("{} {}  {}  {}{}{}", change == "appeared" ? "+" : (change == "changed" ? "~" : "-"),
                    output_.name(network.ssid), output_.signal(network.signal),
                    securityInWords(network.securityMode), network.configured ? ", saved" : "", was);
    Json json{{"change", change}};
    json.update(networkJson({network.ssid, network.signal, network.securityMode, network.configured}));
    return line(time, "network", text, json);
}

}  // namespace kaz::ctl
