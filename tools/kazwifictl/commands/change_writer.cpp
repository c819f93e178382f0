#include "kazwifictl/commands/change_writer.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <time.h>

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

struct Listed {
    WifiNetwork network;
    wifi::NetworkAccess access;

    friend bool operator==(const Listed&, const Listed&) = default;
};

std::string differences(const Listed& was, const Listed& is) {
    const WifiNetwork& before = was.network;
    const WifiNetwork& now = is.network;
    std::string text;
    if (before.signal != now.signal) {
        text += fmt::format(", was {} dBm", before.signal);
    }
    if (was.access != is.access) {
        text += fmt::format(", was {}", securityInWords(was.access));
    }
    if (before.configured != now.configured) {
        text += before.configured ? ", was saved" : ", was not saved";
    }
    return text;
}

bool powerChanged(const Snapshot& before, const Snapshot& now) {
    return now.enabled != before.enabled || now.running != before.running;
}

// Collects lines with the same time.
class Lines {
  public:
    Lines(const Output& output, WallClock::time_point time) : output_(output), time_(time) {}

    const std::string& text() const { return text_; }

    void power(const Snapshot& now) {
        add("wifi",
            fmt::format("{}, wpa_supplicant {}", now.enabled ? "on" : "off",
                        now.running ? "runs" : "does not run"),
            {{"enabled", now.enabled}, {"running", now.running}});
    }

    void scanning(bool scanning) { add("scan", scanning ? "began" : "ended", {{"scanning", scanning}}); }

    void connection(const ConnectionInfo& info) {
        const Style& style = output_.style();
        std::string text(statusInWords(info.status));
        if (info.status == ConnectionInfo::Status::disconnected) {
            text =
                info.disconnectReason == ConnectionInfo::DisconnectReason::unknown ? text : style.bad(text);
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
        add("connection", text, connectionJson(info, Clock::now()));
    }

    void networks(const Snapshot& before, const Snapshot& now) {
        for (const WifiNetwork& each : before.networks) {
            if (now.find(each.ssid) == nullptr) {
                network('-', "disappeared", {each, before.accessTo(each)}, {});
            }
        }
        for (const WifiNetwork& each : now.networks) {
            const WifiNetwork* known = before.find(each.ssid);
            const Listed is{each, now.accessTo(each)};
            if (known == nullptr) {
                network('+', "appeared", is, {});
            } else if (const Listed was{*known, before.accessTo(*known)}; was != is) {
                network('~', "changed", is, differences(was, is));
            }
        }
    }

  private:
    void network(char mark, std::string_view change, const Listed& listed, const std::string& was) {
        const WifiNetwork& network = listed.network;
        Json json{{"change", change}};
        json.update(networkJson({network.ssid,
                                 network.signal,
                                 listed.access.mode,
                                 network.configured,
                                 {},
                                 listed.access.demands}));
        add("network",
            fmt::format("{} {}  {}  {}{}{}", mark, output_.name(network.ssid), output_.signal(network.signal),
                        securityInWords(listed.access), network.configured ? ", saved" : "", was),
            json);
    }

    void add(std::string_view topic, const std::string& text, const Json& json) {
        if (output_.json()) {
            Json object{{"format", 1}, {"time", utcTime(time_)}, {"event", topic}};
            object.update(json);
            text_ += oneLine(object);
        } else {
            text_ += fmt::format("{}  {:<10}  {}\n", output_.style().dim(localTime(time_)), topic, text);
        }
    }

    const Output& output_;
    WallClock::time_point time_;
    std::string text_;
};

}  // namespace

std::string ChangeWriter::begin(const Snapshot& now, WallClock::time_point time) {
    Lines lines(output_, time);
    lines.power(now);
    if (now.running) {
        lines.connection(now.connection.info);
    }
    if (now.scanning) {
        lines.scanning(true);
    }
    lines.networks({}, now);
    return lines.text();
}

std::string ChangeWriter::change(const Snapshot& before, const Snapshot& now, WallClock::time_point time) {
    Lines lines(output_, time);
    if (powerChanged(before, now)) {
        lines.power(now);
    }
    if (now.connection.info != before.connection.info) {
        lines.connection(now.connection.info);
    }
    // No line for a scan that ended because the supplicant stopped.
    if (now.scanning != before.scanning && now.running) {
        lines.scanning(now.scanning);
    }
    lines.networks(before, now);
    return lines.text();
}

std::string ChangeWriter::news(const Snapshot& before, const Snapshot& now, WallClock::time_point time) {
    Lines lines(output_, time);
    if (powerChanged(before, now)) {
        lines.power(now);
    }
    // No line for a connection that ended because Wi-Fi was switched off, or for the empty record of a new supplicant.
    if (now.connection.info != before.connection.info && now.running &&
        !(before.isDisconnected() && now.isDisconnected())) {
        lines.connection(now.connection.info);
    }
    return lines.text();
}

}  // namespace kaz::ctl
