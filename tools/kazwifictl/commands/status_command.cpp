#include <fmt/format.h>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "inspection/interface_in_use.h"
#include "kazwifictl/commands/commands.h"
#include "kazwifictl/commands/radio_block.h"
#include "kazwifictl/output/documents.h"
#include "kazwifictl/text/signal_strength.h"
#include "kazwifictl/text/words.h"

namespace kaz::ctl {

using namespace std::string_literals;
using wifi::ConnectionInfo;

namespace {

// What is asked of the daemons and the kernel at the moment, beside what the library publishes.
struct Live {
    inspection::Fact<inspection::InterfaceInUse> interface;
    std::optional<RadioBlock> block;

    explicit Live(bool running) {
        if (running) {
            interface = inspection::readInterfaceInUse();
            block = radioBlock();
        }
    }
};

std::string powerText(const Snapshot& view, const Live& live) {
    if (live.block) {
        return "on, but the radio is blocked";
    }
    if (view.running) {
        return view.enabled ? "on" : "switched off, but wpa_supplicant runs";
    }
    if (isUnknown(view)) {
        return view.enabled ? "switched on; whether it works is unknown"
                            : "switched off; whether the radio is off is unknown";
    }
    if (!view.enabled) {
        return "off";
    }
    return "on, but " +
           (stackTrouble(view).why == supplicantStopped ? supplicantStopped : "it cannot be used"s);
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

// "2 h 13 min"
std::string durationText(std::chrono::seconds duration) {
    const auto seconds = duration.count();
    constexpr int minute = 60;
    constexpr int hour = 60 * minute;
    constexpr int day = 24 * hour;
    if (seconds < minute) {
        return fmt::format("{} s", seconds);
    }
    if (seconds < hour) {
        return fmt::format("{} min", seconds / minute);
    }
    return seconds < day ? fmt::format("{} h {} min", seconds / hour, seconds % hour / minute)
                         : fmt::format("{} d {} h", seconds / day, seconds % day / hour);
}

std::string interfaceText(const inspection::Fact<inspection::InterfaceInUse>& interface) {
    if (!interface.isKnown()) {
        return {};
    }
    std::string text = line("Interface", interface->name);
    text += interface->linkedFor ? line("Connected for", durationText(*interface->linkedFor)) : "";
    for (const std::string& address : interface->addresses.value_or(std::vector<std::string>())) {
        text += line("Address", address);
    }
    return text;
}

void addInterface(Json& connection, const inspection::Fact<inspection::InterfaceInUse>& interface,
                  bool linked) {
    connection["interface"] = interface.isKnown() ? Json(interface->name) : Json();
    connection["addresses"] =
        interface.isKnown() && interface->addresses ? Json(*interface->addresses) : Json();
    connection["linked_s"] =
        interface.isKnown() && linked && interface->linkedFor ? Json(interface->linkedFor->count()) : Json();
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

std::string statusText(const Snapshot& view, const Live& live, const Output& output, Clock::time_point now) {
    std::string text = line("Wi-Fi", powerText(view, live));
    if (!view.running) {
        return text;
    }
    text += line("Connection", connectionText(view.connection.info, output));
    if (!view.isDisconnected()) {
        text += linkText(view, output) + interfaceText(live.interface);
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
    Snapshot view = place.look("cannot read the status", Workspace::Need::nothing);
    const Live live(view.running);
    // What the library publishes is up to a minute old, and that of a new Manager is of the last scan.
    if (!view.isDisconnected() && live.interface.isKnown() && live.interface->signal.isKnown()) {
        view.connection.info.signal = *live.interface->signal;
        view.connection.network.rate = live.interface->rate.value_or(view.connection.network.rate);
    }
    const auto now = Clock::now();
    Report report{statusText(view, live, output, now),
                  {{"enabled", view.enabled},
                   {"running", view.running},
                   {"scanning", view.scanning},
                   {"radio_block", live.block ? Json(live.block->kind) : Json()},
                   {"connection", connectionJson(view.connection, now)}},
                  std::nullopt};
    addInterface(report.members["connection"], live.interface, !view.isDisconnected());
    const bool unknown = isUnknown(view);
    if (unknown || (view.enabled && !view.running)) {
        report.failure = noStack(unknown ? "cannot read the whole status" : "Wi-Fi does not work", view);
    } else if (live.block) {
        report.failure = live.block->failure("Wi-Fi does not work");
    }
    return report;
}

}  // namespace kaz::ctl
