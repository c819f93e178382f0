#pragma once

#include <wifi/failure_reason.h>

#include <string>

#include "kazwifictl/session/snapshot.h"
#include "kazwifictl/text/failure.h"

namespace kaz::ctl {

// Why Wi-Fi cannot be used, and what helps. Every message about a missing bus, unit, supplicant or interface comes from
// here.
struct StackTrouble {
    std::string why;
    std::string advice;
};
// The trouble that is none but this: a unit that is not active.
inline constexpr const char* supplicantStopped = "wpa_supplicant does not run";
StackTrouble stackTrouble(const Snapshot& now);

// The same as a failure.
Failure noStack(const std::string& what, const Snapshot& now);

// Why systemd did not start or stop the supplicant.
StackTrouble unitTrouble(wifi::FailureReason reason);

// Why the state could not be read in time.
Failure noAnswer(const std::string& what);

// Whether systemd, or the way to it, refused to tell whether the supplicant runs.
bool isUnknown(const Snapshot& now);

}  // namespace kaz::ctl
