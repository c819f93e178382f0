#pragma once

#include "communicator/communicator.h"

#include <wifi/types.h>

#include <chrono>
#include <string>

namespace kaz::fuzz {

// A fact for the connection tracker, or a read of its record. The kind decides which fields are used.
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
