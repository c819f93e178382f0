#include "unit/communicator/report_text.h"

namespace kaz::wifi {
namespace {

using Properties = Communicator::BssProperties;
using Change = Communicator::PropertyChange;
using Status = Communicator::SupplicantConnectionStatus;

std::string nameOf(SecurityMode mode) {
    switch (mode) {
        case SecurityMode::none:
            return "none";
        case SecurityMode::wep:
            return "wep";
        case SecurityMode::wpaPsk:
            return "wpaPsk";
        case SecurityMode::rsnPsk:
            return "rsnPsk";
        case SecurityMode::sae:
            return "sae";
        case SecurityMode::enterprise:
            return "enterprise";
        case SecurityMode::enterpriseVariant:
            return "enterpriseVariant";
        case SecurityMode::unsupported:
            return "unsupported";
    }
    return "?";
}

std::string nameOf(Change change) {
    switch (change) {
        case Change::Unchanged:
            return "Unchanged";
        case Change::Set:
            return "Set";
        case Change::Cleared:
            return "Cleared";
    }
    return "?";
}

std::string nameOf(Status status) {
    switch (status) {
        case Status::InterfaceDisabled:
            return "InterfaceDisabled";
        case Status::Disconnected:
            return "Disconnected";
        case Status::Connecting:
            return "Connecting";
        case Status::Connected:
            return "Connected";
    }
    return "?";
}

std::string changeText(const char* name, Change change, const std::string& payload) {
    if (change == Change::Unchanged && payload.empty()) {
        return {};
    }
    std::string text = ' ' + (name + ('=' + nameOf(change)));
    return payload.empty() ? text : text + '(' + payload + ')';
}

}  // namespace

std::string bssText(const Properties& bss) {
    return '"' + bss.ssid + "\" " + std::to_string(bss.signal) + " dBm " + nameOf(bss.securityMode);
}

std::string reportText(const Communicator::SupplicantInterfaceProperties& report) {
    std::string text;
    if (report.scanning) {
        text += *report.scanning ? " scanning=true" : " scanning=false";
    }
    std::string list;
    for (const Properties& bss : report.bssList) {
        list += (list.empty() ? "" : ", ") + bssText(bss);
    }
    text += changeText("bssList", report.bssListChange, list);
    const bool named = !report.currentNetworkSsid.empty() || report.currentNetworkChange == Change::Set;
    text += changeText("network", report.currentNetworkChange,
                       named ? '"' + report.currentNetworkSsid + '"' : std::string());
    text += changeText("bss", report.currentBssChange,
                       report.currentBss == Properties{} ? std::string() : bssText(report.currentBss));
    if (report.status) {
        text += " status=" + nameOf(*report.status);
    }
    return text.empty() ? "nothing" : text.substr(1);
}

}  // namespace kaz::wifi
