#pragma once

#include "communicator/communicator.h"

#include <wifi/types.h>

#include <chrono>
#include <optional>
#include <string>

namespace kaz::test {

// A fact for the connection tracker, a read of its record, or time that passes. The kind decides which fields are used.
struct TrackerEvent {
    enum class Kind {
        connect,  // ssid
        disconnect,
        forget,  // ssid
        select,  // ssid
        selectNameless,
        scanning,  // flag
        bss,       // ssid, dBm
        noBss,
        status,  // status
        signal,  // dBm
        online,  // flag
        supplicantComes,
        supplicantGoes,
        wait,  // duration
        look,
        kMaxValue = look,
    };

    Kind kind = Kind::look;
    std::string ssid{};
    int dBm = 0;
    bool flag = false;
    wifi::Communicator::SupplicantConnectionStatus status{};
    std::chrono::nanoseconds duration{};

    wifi::Communicator::BssProperties bss() const { return {ssid, dBm, wifi::SecurityMode::rsnPsk}; }
};

// Tells the event to the tracker or to its model, which have the same operations. Waiting is for their clock.
template <typename Tracker>
void tell(Tracker& tracker, const TrackerEvent& event) {
    using Kind = TrackerEvent::Kind;
    switch (event.kind) {
        case Kind::connect:
            return tracker.notifyAboutConnectionAttempt(event.ssid);
        case Kind::disconnect:
            return tracker.notifyAboutDisconnect();
        case Kind::forget:
            return tracker.notifyAboutForget(event.ssid);
        case Kind::select:
            return tracker.setCurrentNetworkSsid(event.ssid);
        case Kind::selectNameless:
            return tracker.setCurrentNetworkSsid(std::nullopt);
        case Kind::scanning:
            return tracker.setScanning(event.flag);
        case Kind::bss:
            return tracker.setCurrentBss(event.bss());
        case Kind::noBss:
            return tracker.setCurrentBss(std::nullopt);
        case Kind::status:
            return tracker.setSupplicantStatus(event.status);
        case Kind::signal:
            return tracker.setSignalStrength(event.dBm);
        case Kind::online:
            return tracker.setNetworkdIsOnline(event.flag);
        case Kind::supplicantComes:
            return tracker.setSupplicantState(true);
        case Kind::supplicantGoes:
            return tracker.setSupplicantState(false);
        case Kind::wait:
            return;
        case Kind::look:
            return static_cast<void>(tracker.getConnectionInfo());
    }
}

}  // namespace kaz::test
