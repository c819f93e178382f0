#include "unit/connection_info/tracker_fixture.h"

#include <fmt/format.h>

namespace kaz::test {
namespace {

using namespace std::chrono_literals;

const char* name(ConnectionInfo::Status status) {
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
    return "?";
}

const char* name(ConnectionInfo::DisconnectReason reason) {
    switch (reason) {
        case ConnectionInfo::DisconnectReason::unknown:
            return "unknown";
        case ConnectionInfo::DisconnectReason::causedByUser:
            return "causedByUser";
        case ConnectionInfo::DisconnectReason::causedBySystem:
            return "causedBySystem";
    }
    return "?";
}

}  // namespace

std::string describe(const ConnectionInfo& info) {
    std::string text = fmt::format("{} '{}' {}", name(info.status), info.ssid, info.signal);
    const bool neverDisconnected = info.disconnectReason == ConnectionInfo::DisconnectReason::unknown &&
                                   info.disconnectSsid.empty() &&
                                   info.disconnectTime == FakeClock::TimePoint();
    if (!neverDisconnected) {
        const std::chrono::duration<double, std::milli> time = info.disconnectTime - FakeClock::usualStart;
        text += fmt::format(", {} '{}' @ {:.10g} ms", name(info.disconnectReason), info.disconnectSsid,
                            time.count());
    }
    return text;
}

Bss bss(const std::string& ssid, int signal) {
    return {ssid, signal, wifi::SecurityMode::rsnPsk};
}

void TrackerTest::becomeConnecting(const std::string& ssid) {
    tracker.setCurrentBss(bss(ssid));
    tracker.setSupplicantStatus(SupplicantStatus::Connecting);
    clock->advance(1s);
}

void TrackerTest::becomeConnectingIP(const std::string& ssid) {
    reportSuccess(ssid);
    clock->advance(1s);
}

void TrackerTest::becomeConnected(const std::string& ssid) {
    tracker.setNetworkdIsOnline(true);
    becomeConnectingIP(ssid);
}

void TrackerTest::reportSuccess(const std::string& ssid) {
    tracker.setCurrentBss(bss(ssid));
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
}

}  // namespace kaz::test
