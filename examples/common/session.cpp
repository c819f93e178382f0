#include "session.h"

#include <wifi/client/words.h>

#include <iostream>
#include <string_view>
#include <utility>

namespace example {

using kaz::wifi::ConnectionDetails;
using kaz::wifi::ConnectionInfo;
using kaz::wifi::ConnectResult;

namespace {

std::string inWords(const ConnectionDetails& now) {
    const ConnectionInfo& info = now.info;
    switch (info.status) {
        case ConnectionInfo::Status::disconnected:
            if (info.disconnectReason == ConnectionInfo::DisconnectReason::causedBySystem) {
                return "not connected to \"" + printable(info.disconnectSsid) +
                       "\": " + kaz::wifi::client::Words().cause(now.lastOutcome);
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
    if (inWords(now.connection) != inWords(connection_)) {
        std::cout << inWords(now.connection) << std::endl;
    }
    connection_ = now.connection;
}

void Session::enter(const std::string& line) {
    kaz::wifi::ConnectionSettings settings;
    settings.ssid = ssid_;
    settings.securityMode = kaz::wifi::SecurityMode::rsnPsk;
    settings.password = line;
    const ConnectResult verdict = wifi_.connect(settings);
    if (verdict != ConnectResult::ok) {  // otherwise show() shows the outcome
        std::cout << kaz::wifi::client::Words().verdict(verdict, settings.securityMode) << std::endl;
    }
}

}  // namespace example
