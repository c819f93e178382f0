#pragma once

#include "bench/stand_in/canned_replies.h"

#include <systemd/sd-bus.h>

namespace kaz::bench {

inline constexpr const char* controlInterface = "com.kazwifi.Bench1";

// Handles a call of the control interface:
//
//   SetBssCount(u)   the number of access points
//   SetSsidCount(u)  the number of networks they belong to; 0: one per access point
//   Report(u)        emits PropertiesChanged with the paths of this number of access points
//   Scans(u)         emits this number of signals, alternately the start and the end of a scan
//   Hang(b)          whether to leave all other calls without a reply
int control(sd_bus_message* call, World& world);

}  // namespace kaz::bench
