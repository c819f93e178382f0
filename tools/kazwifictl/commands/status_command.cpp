#include <fmt/format.h>

#include "kazwifictl/commands/commands.h"
#include "kazwifictl/output/documents.h"
#include "kazwifictl/text/signal_strength.h"
#include "kazwifictl/text/ssid_text.h"
#include "kazwifictl/text/words.h"

namespace kaz::ctl {

using wifi::ConnectionInfo;

namespace {

std::string powerText(const Snapshot& view) {
    if (view.running) {
        return view.enabled ? "on" : "switched off, but wpa_supplicant runs";
    }
    return view.enabled ? "on, but wpa_supplicant does not run" : "off";
}

std::string connectionText(const ConnectionInfo& info, const Terminal& terminal, const Style& style) {
    std::string status(statusInWords(info.status));
    if (info.status == ConnectionInfo::Status::disconnected) {
        return status;
    }
    const bool connected = info.status == ConnectionInfo::Status::connected;
    const std::string ssid = quoted(info.ssid, terminal.utf8);
    const std::string_view preposition = info.status == ConnectionInfo::Status::connectingIP ? "from" : "to";
    return fmt::format("{} {} {}", connected ? style.good(status) : status, preposition,
                       style.bold(terminal.interactive ? isolated(ssid) : ssid));
}

std::string lastDropText(const ConnectionInfo& info, const Terminal& terminal, Clock::time_point now) {
    const bool byUser = info.disconnectReason == ConnectionInfo::DisconnectReason::causedByUser;
    const double seconds = static_cast<double>(inMilliseconds(now - info.disconnectTime)) / 1000;
    return fmt::format("from {}, {:.1f} s ago, {}", quoted(info.disconnectSsid, terminal.utf8), seconds,
                       byUser ? "by the user" : "by the system");
}

std::string statusText(const Snapshot& view, const Output& output, Clock::time_point now) {
    const ConnectionInfo& info = view.connection;
    const Terminal& terminal = output.terminal();
    std::string text = fmt::format("Wi-Fi               {}\n", powerText(view));
    if (!view.running) {
        return text;
    }
    text += fmt::format("Connection          {}\n", connectionText(info, terminal, output.style()));
    const auto signal = knownSignal(info.signal);
    if (info.status != ConnectionInfo::Status::disconnected && signal) {
        const std::string shown = fmt::format("{} {} dBm", barsText(*signal, terminal.utf8), *signal);
        text += fmt::format("Signal              {}\n", output.style().bySignal(*signal, shown));
    }
    if (view.scanning) {
        text += "Scanning            yes\n";
    }
    if (info.disconnectReason != ConnectionInfo::DisconnectReason::unknown) {
        text += fmt::format("Last disconnection  {}\n", lastDropText(info, terminal, now));
    }
    return text;
}

}  // namespace

Report showStatus(const Options& /*options*/, Workspace& place, Output& output) {
    const Snapshot view = place.look("cannot read the status", Workspace::Need::nothing);
    const auto now = Clock::now();
    Report report{statusText(view, output, now),
                  {{"enabled", view.enabled},
                   {"running", view.running},
                   {"scanning", view.scanning},
                   {"connection", connectionJson(view.connection, now)}},
                  std::nullopt};
    if (view.enabled && !view.running) {
        report.failure = noStack("Wi-Fi does not work", view, place.log().hints());
    }
    return report;
}

}  // namespace kaz::ctl
