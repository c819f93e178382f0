#pragma once

#include "bench/stand_in/canned_replies.h"

#include <systemd/sd-bus.h>

namespace kaz::bench {

inline constexpr const char* controlInterface = "com.kazwifi.Bench1";

// Serves a call of the control interface:
//
//   SetBssCount(u)   how many access points there are
//   SetSsidCount(u)  how many networks they belong to; 0 for one each
//   Report(u)        emits PropertiesChanged with the paths of so many access points
//   Scans(u)         emits so many signals: by turns that a scan began and that it is done
//   Hang(b)          whether to leave all calls but these without an answer
int control(sd_bus_message* call, World& world);

}  // namespace kaz::bench
