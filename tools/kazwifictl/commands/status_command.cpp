#include <fmt/format.h>

#include "kazwifictl/commands/commands.h"
#include "kazwifictl/output/documents.h"
#include "kazwifictl/text/signal_strength.h"
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

std::string connectionText(const ConnectionInfo& info, const Output& output) {
    std::string status(statusInWords(info.status));
    if (info.status == ConnectionInfo::Status::disconnected) {
        return status;
    }
    const bool connected = info.status == ConnectionInfo::Status::connected;
    return fmt::format("{} {} {}", connected ? output.style().good(status) : status, preposition(info.status),
                       output.style().bold(output.name(info.ssid)));
}

std::string statusText(const Snapshot& view, const Output& output, Clock::time_point now) {
    const ConnectionInfo& info = view.connection.info;
    std::string text = fmt::format("Wi-Fi               {}\n", powerText(view));
    if (!view.running) {
        return text;
    }
    text += fmt::format("Connection          {}\n", connectionText(info, output));
    const auto signal = knownSignal(info.signal);
    if (!view.isDisconnected() && signal) {
        text += fmt::format("Signal              {}\n", output.signal(*signal));
    }
    if (view.scanning) {
        text += "Scanning            yes\n";
    }
    if (info.disconnectReason != ConnectionInfo::DisconnectReason::unknown) {
        text += fmt::format("Last disconnection  from {}, {:.1f} s ago, by the {}\n",
                            output.name(info.disconnectSsid), inSeconds(now - info.disconnectTime),
                            reasonName(info.disconnectReason));
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
                   {"connection", connectionJson(view.connection.info, now)}},
                  std::nullopt};
    if (view.enabled && !view.running) {
        report.failure = noStack("Wi-Fi does not work", view, place.log().hints());
    }
    return report;
}

}  // namespace kaz::ctl
