#include "kazwifictl/commands/change_writer.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <time.h>

#include <algorithm>
#include <cstddef>

#include "kazwifictl/output/documents.h"
#include "kazwifictl/text/signal_strength.h"
#include "kazwifictl/text/words.h"
#include "kazwifictl/text/wrapping.h"

namespace kaz::ctl {

using wifi::ConnectionInfo;
using wifi::WifiNetwork;

namespace {

using WallClock = ChangeWriter::WallClock;

// Milliseconds are written too.
std::string utcTime(WallClock::time_point time) {
    return fmt::format("{:%FT%T}Z", std::chrono::floor<std::chrono::milliseconds>(time));
}

std::string localTime(WallClock::time_point time, bool precise) {
    const time_t seconds = WallClock::to_time_t(time);
    tm parts{};
    ::localtime_r(&seconds, &parts);
    const auto local = time + std::chrono::seconds(parts.tm_gmtoff);
    return precise ? fmt::format("{:%T}", std::chrono::floor<std::chrono::milliseconds>(local))
                   : fmt::format("{:%T}", std::chrono::floor<std::chrono::seconds>(local));
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

// The widths of a terminal that is too narrow for the dBm, and for the security and milliseconds.
constexpr int withDBm = 85;
constexpr int withSecurity = 60;

bool connectionChanged(const Snapshot& before, const Snapshot& now) {
    const bool refined =
        now.isDisconnected() && now.connection.lastOutcome.cause != before.connection.lastOutcome.cause;
    return now.connection.info != before.connection.info || (refined && now.running);
}

// Collects lines with the same time.
class Lines {
  public:
    Lines(const Output& output, WallClock::time_point time) : output_(output), time_(time) {}

    const std::string& text() const { return text_; }

    void power(const Snapshot& now, const std::string& trouble) {
        const bool troubled = !now.running && !trouble.empty();
        add("wifi",
            fmt::format(
                "{}, {}", now.enabled ? "on" : "off",
                now.running ? "wpa_supplicant runs" : (troubled ? trouble : "wpa_supplicant does not run")),
            {{"enabled", now.enabled}, {"running", now.running}, {"why", troubled ? Json(trouble) : Json()}});
    }

    void scanning(bool scanning) { add("scan", scanning ? "began" : "ended", {{"scanning", scanning}}); }

    void connection(const Snapshot& now) {
        const ConnectionInfo& info = now.connection.info;
        const Style& style = output_.style();
        std::string text(statusInWords(info.status));
        if (info.status == ConnectionInfo::Status::disconnected) {
            const std::string end =
                outcomeInWords(now.connection.lastOutcome, output_.name(now.connection.lastOutcome.ssid));
            text = end.empty() ? text : style.bad(end);
        } else {
            const bool connected = info.status == ConnectionInfo::Status::connected;
            const auto dBm = knownSignal(info.signal);
            text = fmt::format("{} {} {}{}", connected ? style.good(text) : text, preposition(info.status),
                               output_.name(info.ssid), dBm ? ", " + output_.signal(*dBm) : "");
        }
        add("connection", text, connectionJson(now.connection, Clock::now()));
    }

    void networks(const Snapshot& before, const Snapshot& now, std::set<std::string>& used) {
        if (!now.isDisconnected()) {
            used.insert(now.connection.info.ssid);
        }
        for (const WifiNetwork& each : before.networks) {
            if (now.find(each.ssid) == nullptr && !used.contains(each.ssid)) {
                network('-', "disappeared", {each, before.accessTo(each)}, {});
            }
        }
        for (const WifiNetwork& each : now.networks) {
            const WifiNetwork* known = before.find(each.ssid);
            const Listed is{each, now.accessTo(each)};
            if (known != nullptr) {
                const Listed was{*known, before.accessTo(*known)};
                if (was != is) {
                    network('~', "changed", is, differences(was, is));
                }
            } else if (used.erase(each.ssid) == 0) {
                network('+', "appeared", is, {});
            }
        }
        if (before.networks != now.networks) {
            // The others are not in range any more.
            std::erase_if(used, [&now](const std::string& ssid) { return !now.isInUse(ssid); });
        }
    }

  private:
    // What has the same width in every line comes first. A narrow terminal shows less of it.
    void network(char mark, std::string_view change, const Listed& listed, const std::string& was) {
        const WifiNetwork& network = listed.network;
        Json json{{"change", change}};
        json.update(networkJson({network.ssid,
                                 network.signal,
                                 listed.access.mode,
                                 network.configured,
                                 {},
                                 listed.access.demands}));
        const bool utf8 = output_.terminal().utf8;
        std::string text = barsText(network.signal, utf8);
        text += isWiderThan(withDBm) ? fmt::format(" {:>4} dBm", network.signal) : "";
        text = fmt::format("{} {}  ", mark, output_.style().bySignal(network.signal, text));
        text += isWiderThan(withSecurity) ? fmt::format("{:<15} ", securityInWords(listed.access)) : "";
        text += output_.name(network.ssid) + (network.configured ? ", saved" : "") + was;
        add("network", text, json);
    }

    bool isWiderThan(int columns) const {
        return output_.terminal().columns == 0 || output_.terminal().columns > columns;
    }

    // Breaks at blanks what is wider than the terminal. A narrow one shows no topic where the text says it.
    std::string linesOf(std::string_view topic, const std::string& text) const {
        constexpr int roomyIndent = 26;
        constexpr int narrowIndent = 9;
        const bool roomy = isWiderThan(withSecurity);
        const int indent = roomy ? roomyIndent : narrowIndent;
        const int columns = output_.terminal().columns;
        const bool named = topic == "wifi" || topic == "scan";
        const std::string all = roomy || !named ? text : fmt::format("{} {}", topic, text);
        std::string lines = output_.style().dim(localTime(time_, roomy));
        lines += roomy ? fmt::format("  {:<10}  ", topic) : " ";
        for (const char letter : columns == 0 ? all : wrapped(all, std::max(indent, columns - indent))) {
            lines += letter;
            lines.append(letter == '\n' ? static_cast<std::size_t>(indent) : 0U, ' ');
        }
        return lines + '\n';
    }

    void add(std::string_view topic, const std::string& text, const Json& json) {
        if (output_.json()) {
            Json object{{"format", 1}, {"time", utcTime(time_)}, {"event", topic}};
            object.update(json);
            text_ += oneLine(object);
        } else {
            text_ += linesOf(topic, text);
        }
    }

    const Output& output_;
    WallClock::time_point time_;
    std::string text_;
};

}  // namespace

std::string ChangeWriter::trouble(const Snapshot& now) const {
    return trouble_ && now.enabled && !now.running ? trouble_(now) : std::string();
}

std::string ChangeWriter::begin(const Snapshot& now, WallClock::time_point time) {
    Lines lines(output_, time);
    lines.power(now, trouble(now));
    if (now.running) {
        lines.connection(now);
    }
    if (now.scanning) {
        lines.scanning(true);
    }
    lines.networks({}, now, used_);
    return lines.text();
}

std::string ChangeWriter::change(const Snapshot& before, const Snapshot& now, WallClock::time_point time) {
    Lines lines(output_, time);
    if (powerChanged(before, now)) {
        lines.power(now, trouble(now));
    }
    if (connectionChanged(before, now)) {
        lines.connection(now);
    }
    // No line for a scan that ended because the supplicant stopped.
    if (now.scanning != before.scanning && now.running) {
        lines.scanning(now.scanning);
    }
    lines.networks(before, now, used_);
    return lines.text();
}

std::string ChangeWriter::news(const Snapshot& before, const Snapshot& now, WallClock::time_point time) {
    Lines lines(output_, time);
    if (powerChanged(before, now)) {
        lines.power(now, trouble(now));
    }
    // No line for a connection that ended because Wi-Fi was switched off, or for the empty record of a new supplicant.
    if (now.connection.info != before.connection.info && now.running &&
        !(before.isDisconnected() && now.isDisconnected())) {
        lines.connection(now);
    }
    return lines.text();
}

}  // namespace kaz::ctl
