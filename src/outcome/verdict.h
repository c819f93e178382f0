// The rules by which facts become a cause: pure functions. A cause never follows from time alone. The first rule that
// fits decides:
//
// 1. Who ended it, if that explains it: the user, another attempt, the end of the supplicant.
// 2. The radio is off, or the supplicant did not take the request.
// 3. The link was up: who ended it, and how strong the signal was.
// 4. No access point was tried: whether one announces the SSID, and what it demands.
// 5. An access point was tried: its status codes, what EAP reported, how far the keys were exchanged, its reason code.
#pragma once

#include "outcome/facts.h"

#include <wifi/connection_details.h>
#include <wifi/types.h>

#include <optional>

namespace kaz::wifi {

struct Verdict {
    Cause cause = Cause::unknown;
    Certainty certainty = Certainty::unknown;

    friend bool operator==(const Verdict&, const Verdict&) = default;
};

Verdict verdictOn(const Facts& facts);

// Rule 3 alone.
Verdict verdictOnLoss(const Evidence& evidence);

// What EAP reported, as a cause; Cause::none if it explains nothing.
Verdict verdictOnEap(const Evidence& evidence);

// The mode that joins a network with these demands: the announced one if it meets them. `unsupported` if none does, or if
// the supplicant has said that it lacks the hash-to-element that they need.
SecurityMode modeToJoin(SecurityMode announced, const NetworkDemands& demands,
                        std::optional<bool> hashToElement);

// Whether a device that asks for this mode can join a network with these demands. True if no demand is known.
bool meets(SecurityMode requested, const NetworkDemands& demands);

}  // namespace kaz::wifi
