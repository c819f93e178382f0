#pragma once

#include "simulator/world/access_point.h"
#include "simulator/world/setting.h"
#include "simulator/world/times.h"

#include <string>
#include <string_view>
#include <vector>

namespace kaz::sim {

// The state of a device when it is switched on: the access points in range and its own set-up.
struct Neighbourhood {
    std::vector<AccessPoint> accessPoints = {};
    std::vector<Settings> configuredNetworks = {};
    std::vector<std::string> eapMethods = {"MD5", "TLS", "MSCHAPV2", "PEAP", "TTLS",
                                           "GTC", "OTP", "FAST",     "PWD"};
    Times times = {};
    bool unitActive = true;
    bool updateConfig = true;
    bool interface = true;           // whether the supplicant starts with the radio's interface
    unsigned moreInterfaces = 0;     // listed by the supplicant after the radio's; they do nothing
    bool announceOwnChoice = false;  // NetworkSelected also for the supplicant's own choices

    // The access point with this BSSID, or null.
    AccessPoint* find(std::string_view bssid);
    const AccessPoint* find(std::string_view bssid) const;

    // A locally administered BSSID that no access point here has.
    std::string freeBssid() const;
};

}  // namespace kaz::sim
