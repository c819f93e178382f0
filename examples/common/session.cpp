#include "session.h"

#include <iostream>
#include <string_view>
#include <utility>

namespace example {

using kaz::wifi::ConnectionInfo;
using kaz::wifi::ConnectResult;

namespace {

std::string inWords(const ConnectionInfo& info) {
    switch (info.status) {
        case ConnectionInfo::Status::disconnected:
            if (info.disconnectReason == ConnectionInfo::DisconnectReason::causedBySystem) {
                return "not connected; lost or could not join \"" + printable(info.disconnectSsid) + '"';
            }
            return "not connected";
        case ConnectionInfo::Status::connectingWifi:
            return "joining \"" + printable(info.ssid) + '"';
        case ConnectionInfo::Status::connectingIP:
            return "getting an address from \"" + printable(info.ssid) + '"';
        case ConnectionInfo::Status::connected:
            return "connected to \"" + printable(info.ssid) + '"';
    }
    return {};
}

}  // namespace

std::string printable(const std::string& ssid) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const char byte : ssid) {
        const auto code = static_cast<unsigned char>(byte);
        if (code >= 0x20 && code < 0x7F && byte != '\\') {
            text += byte;
        } else {
            text += "\\x";
            text += digits[code >> 4U];
            text += digits[code & 0xFU];
        }
    }
    return text;
}

Session::Session(kaz::wifi::Manager& wifi, std::string ssid) : wifi_(wifi), ssid_(std::move(ssid)) {
    std::cout << "Type the passphrase of \"" << printable(ssid_) << "\"; Ctrl-D ends the program."
              << std::endl;
}

void Session::show(const kaz::wifi::client::Snapshot& now) {
    if (now.networks != networks_) {
        networks_ = now.networks;
        for (const auto& network : networks_) {
            std::cout << "  " << network.signal << " dBm  " << printable(network.ssid) << '\n';
        }
        std::cout.flush();
    }
    if (inWords(now.connection.info) != inWords(connection_)) {
        std::cout << inWords(now.connection.info) << std::endl;
    }
    connection_ = now.connection.info;
}

void Session::enter(const std::string& line) {
    kaz::wifi::ConnectionSettings settings;
    settings.ssid = ssid_;
    settings.securityMode = kaz::wifi::SecurityMode::rsnPsk;
    settings.password = line;
    switch (wifi_.connect(settings)) {
        case ConnectResult::ok:  // show() shows the outcome
            break;
        case ConnectResult::passwordTooShort:
        case ConnectResult::passwordTooLong:
            std::cout << "a passphrase has 8 to 63 bytes" << std::endl;
            break;
        default:
            std::cout << "an SSID has 1 to 32 bytes" << std::endl;
            break;
    }
}

}  // namespace example
