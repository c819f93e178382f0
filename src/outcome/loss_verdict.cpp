#include "outcome/codes.h"
#include "outcome/verdict.h"

namespace kaz::wifi {
namespace {

// Below this, links are lost often. The signal is polled once per minute, so the last one may be old.
constexpr int weakSignaldBm = -75;

}  // namespace

Verdict verdictOnLoss(const Evidence& evidence) {
    if (const Verdict verdict = verdictOnEap(evidence); verdict.cause != Cause::none) {
        return verdict;
    }
    switch (evidence.reasonSender) {
        case Evidence::Sender::nobody:
            return {};
        case Evidence::Sender::accessPoint:
            if (evidence.reasonCode == reason::leaving || evidence.reasonCode == reason::stationHasLeft) {
                return {Cause::accessPointGone, Certainty::certain};
            }
            return {Cause::deauthenticated, Certainty::certain};
        case Evidence::Sender::device:
            break;
    }
    // Another program may have asked the supplicant to leave.
    if (evidence.reasonCode == reason::leaving) {
        return {};
    }
    const bool weak = evidence.signal != NoSignaldBm && evidence.signal <= weakSignaldBm;
    return {weak ? Cause::weakSignal : Cause::accessPointGone, Certainty::probable};
}

}  // namespace kaz::wifi
