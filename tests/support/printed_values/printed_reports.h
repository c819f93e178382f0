#pragma once

#include "communicator/communicator.h"
#include "support/printed_values/printed_values.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

// The communicator's values as text. Include this header in every source of a program that compares them.
namespace kaz::wifi {

inline void PrintTo(Communicator::SupplicantConnectionStatus status, std::ostream* out) {
    printName(status, {"no report yet", "InterfaceDisabled", "Disconnected", "Connecting", "Connected"}, out);
}

inline void PrintTo(Communicator::PropertyChange change, std::ostream* out) {
    printName(change, {"Unchanged", "Set", "Cleared"}, out);
}

// As "Home" -60 dBm rsnPsk.
inline std::string bssText(const Communicator::BssProperties& bss) {
    return '"' + bss.ssid + "\" " + std::to_string(bss.signal) + " dBm " +
           testing::PrintToString(bss.securityMode);
}

// The text of a report: "scanning=true status=Connected". It omits unset fields, and is "nothing" for an empty report. A
// value without its change is shown too.
inline std::string reportText(const Communicator::SupplicantInterfaceProperties& report) {
    using Change = Communicator::PropertyChange;
    std::string text;
    const auto add = [&text](const char* name, Change change, const std::string& payload) {
        if (change != Change::Unchanged || !payload.empty()) {
            text += std::string(" ") + name + '=' + testing::PrintToString(change);
            text += payload.empty() ? "" : '(' + payload + ')';
        }
    };
    if (report.scanning) {
        text += *report.scanning ? " scanning=true" : " scanning=false";
    }
    std::string list;
    for (const Communicator::BssProperties& bss : report.bssList) {
        list += (list.empty() ? "" : ", ") + bssText(bss);
    }
    add("bssList", report.bssListChange, list);
    const bool named = !report.currentNetworkSsid.empty() || report.currentNetworkChange == Change::Set;
    add("network", report.currentNetworkChange, named ? '"' + report.currentNetworkSsid + '"' : "");
    const bool hasBss = report.currentBss != Communicator::BssProperties{};
    add("bss", report.currentBssChange, hasBss ? bssText(report.currentBss) : "");
    if (report.status) {
        text += " status=" + testing::PrintToString(*report.status);
    }
    return text.empty() ? "nothing" : text.substr(1);
}

}  // namespace kaz::wifi
