#include <fmt/format.h>

#include <string>
#include <string_view>

#include "kazwifictl/commands/commands.h"
#include "kazwifictl/output/documents.h"
#include "kazwifictl/text/signal_strength.h"
#include "kazwifictl/text/words.h"

namespace kaz::ctl {

using namespace std::string_literals;
using wifi::ConnectionInfo;

namespace {

std::string powerText(const Snapshot& view, const LibraryLog::Hints& hints) {
    if (view.running) {
        return view.enabled ? "on" : "switched off, but wpa_supplicant runs";
    }
    if (isUnknown(view, hints)) {
        return view.enabled ? "switched on; whether it works is unknown"
                            : "switched off; whether the radio is off is unknown";
    }
    if (!view.enabled) {
        return "off";
    }
    return "on, but " +
           (stackTrouble(view, hints).why == supplicantStopped ? supplicantStopped : "it cannot be used"s);
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

std::string line(std::string_view label, const std::string& value) {
    return fmt::format("{:<20}{}\n", label, value);
}

std::string linkText(const Snapshot& view, const Output& output) {
    const auto signal = knownSignal(view.connection.info.signal);
    const wifi::NetworkInUse& inUse = view.connection.network;
    std::string text = signal ? line("Signal", output.signal(*signal)) : std::string();
    if (isKnown(inUse)) {
        text += line("Security", securityInWords(inUse.securityMode));
        text += line("Access point", bssidText(inUse.bssid));
        text += inUse.frequency == 0 ? "" : line("Channel", channelText(inUse.frequency));
    }
    return inUse.rate == 0 ? text : text + line("Rate", fmt::format("{} Mbit/s", inUse.rate));
}

std::string statusText(const Snapshot& view, const LibraryLog::Hints& hints, const Output& output,
                       Clock::time_point now) {
    std::string text = line("Wi-Fi", powerText(view, hints));
    if (!view.running) {
        return text;
    }
    text += line("Connection", connectionText(view.connection.info, output));
    if (!view.isDisconnected()) {
        text += linkText(view, output);
    }
    if (view.scanning) {
        text += line("Scanning", "yes");
    }
    const std::string end =
        outcomeInWords(view.connection.lastOutcome, output.name(view.connection.lastOutcome.ssid));
    if (!end.empty()) {
        text += line("Previously",
                     fmt::format("{}, {:.1f} s ago", end, inSeconds(now - view.connection.lastOutcome.time)));
    }
    return text;
}

}  // namespace

Report showStatus(const Options& /*options*/, Workspace& place, Output& output) {
    const Snapshot view = place.look("cannot read the status", Workspace::Need::nothing);
    const auto now = Clock::now();
    const LibraryLog::Hints hints = place.log().hints();
    Report report{statusText(view, hints, output, now),
                  {{"enabled", view.enabled},
                   {"running", view.running},
                   {"scanning", view.scanning},
                   {"connection", connectionJson(view.connection, now)}},
                  std::nullopt};
    const bool unknown = isUnknown(view, hints);
    if (unknown || (view.enabled && !view.running)) {
        report.failure =
            noStack(unknown ? "cannot read the whole status" : "Wi-Fi does not work", view, hints);
    }
    return report;
}

}  // namespace kaz::ctl
