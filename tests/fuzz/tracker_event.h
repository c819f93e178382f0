#pragma once

#include "communicator/communicator.h"

#include <wifi/types.h>

#include <chrono>
#include <string>

namespace kaz::fuzz {

// Something that the connection tracker is told, or a look at what it publishes. Which fields count depends on the
// kind.
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
    std::string ssid;
    int dBm = 0;
    bool flag = false;
    wifi::Communicator::SupplicantConnectionStatus status{};
    std::chrono::nanoseconds duration{};

    wifi::Communicator::BssProperties bss() const { return {ssid, dBm, wifi::SecurityMode::rsnPsk}; }
};

}  // namespace kaz::fuzz
