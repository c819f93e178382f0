#include "diagnostics/connection_info_text.h"

#include "diagnostics/ssid_redaction.h"

namespace kaz::wifi {
namespace {

std::string_view name(ConnectionInfo::Status status) {
    switch (status) {
        case ConnectionInfo::Status::disconnected:
            return "disconnected";
        case ConnectionInfo::Status::connectingWifi:
            return "connectingWifi";
        case ConnectionInfo::Status::connectingIP:
            return "connectingIP";
        case ConnectionInfo::Status::connected:
            return "connected";
    }
    return "unexpected";
}

std::string_view name(ConnectionInfo::DisconnectReason reason) {
    switch (reason) {
        case ConnectionInfo::DisconnectReason::unknown:
            return "unknown";
        case ConnectionInfo::DisconnectReason::causedByUser:
            return "causedByUser";
        case ConnectionInfo::DisconnectReason::causedBySystem:
            return "causedBySystem";
    }
    return "unexpected";
}

void appendLiveFields(std::string& text, const ConnectionInfo& info) {
    if (!info.ssid.empty()) {
        text.append(", ").append(redactableSsid(info.ssid));
    }
    if (info.signal != NoSignaldBm) {
        text.append(", signal=").append(std::to_string(info.signal));
    }
}

void appendDisconnectFields(std::string& text, const ConnectionInfo& info) {
    text.append(", disconnectReason=").append(name(info.disconnectReason));
    if (!info.disconnectSsid.empty()) {
        // The redactable form's own label completes the word: disconnectssid="...".
        text.append(", disconnect").append(redactableSsid(info.disconnectSsid));
    }
}

}  // namespace

std::string toText(const ConnectionInfo& info) {
    std::string text = "status=";
    text.append(name(info.status));
    if (info.status == ConnectionInfo::Status::disconnected) {
        appendDisconnectFields(text, info);
    } else {
        appendLiveFields(text, info);
    }
    return text;
}

}  // namespace kaz::wifi
