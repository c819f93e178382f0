#include "diagnostics/status_codes.h"

#include <algorithm>
#include <array>

namespace kaz::wifi {
namespace {

struct StatusName {
    int code;
    const char* name;
};

// The codes that access points send in an authentication or association response.
constexpr std::array statusNames{
    StatusName{0, "SUCCESS"},
    StatusName{1, "UNSPECIFIED_FAILURE"},
    StatusName{10, "CAPS_UNSUPPORTED"},
    StatusName{11, "REASSOC_NO_ASSOC"},
    StatusName{12, "ASSOC_DENIED_UNSPEC"},
    StatusName{13, "NOT_SUPPORTED_AUTH_ALG"},
    StatusName{14, "UNKNOWN_AUTH_TRANSACTION"},
    StatusName{15, "CHALLENGE_FAIL"},
    StatusName{16, "AUTH_TIMEOUT"},
    StatusName{17, "AP_UNABLE_TO_HANDLE_NEW_STA"},
    StatusName{18, "ASSOC_DENIED_RATES"},
    StatusName{19, "ASSOC_DENIED_NOSHORT"},
    StatusName{22, "SPEC_MGMT_REQUIRED"},
    StatusName{23, "PWR_CAPABILITY_NOT_VALID"},
    StatusName{24, "SUPPORTED_CHANNEL_NOT_VALID"},
    StatusName{27, "ASSOC_DENIED_NO_HT"},
    StatusName{28, "R0KH_UNREACHABLE"},
    StatusName{30, "ASSOC_REJECTED_TEMPORARILY"},
    StatusName{31, "ROBUST_MGMT_FRAME_POLICY_VIOLATION"},
    StatusName{32, "UNSPECIFIED_QOS_FAILURE"},
    StatusName{33, "DENIED_INSUFFICIENT_BANDWIDTH"},
    StatusName{34, "DENIED_POOR_CHANNEL_CONDITIONS"},
    StatusName{35, "DENIED_QOS_NOT_SUPPORTED"},
    StatusName{37, "REQUEST_DECLINED"},
    StatusName{38, "INVALID_PARAMETERS"},
    StatusName{40, "INVALID_IE"},
    StatusName{41, "GROUP_CIPHER_NOT_VALID"},
    StatusName{42, "PAIRWISE_CIPHER_NOT_VALID"},
    StatusName{43, "AKMP_NOT_VALID"},
    StatusName{44, "UNSUPPORTED_RSN_IE_VERSION"},
    StatusName{45, "INVALID_RSN_IE_CAPAB"},
    StatusName{46, "CIPHER_REJECTED_PER_POLICY"},
    StatusName{53, "INVALID_PMKID"},
    StatusName{72, "INVALID_RSNIE"},
    StatusName{76, "ANTI_CLOGGING_TOKEN_REQ"},
    StatusName{77, "FINITE_CYCLIC_GROUP_NOT_SUPPORTED"},
    StatusName{82, "REJECTED_WITH_SUGGESTED_BSS_TRANSITION"},
    StatusName{92, "REJECT_LOW_RSSI"},
    StatusName{104, "ASSOC_DENIED_NO_VHT"},
    StatusName{123, "UNKNOWN_PASSWORD_IDENTIFIER"},
    StatusName{126, "SAE_HASH_TO_ELEMENT"},
    StatusName{127, "SAE_PK"},
};

}  // namespace

const char* ieee80211StatusName(int code) {
    const auto* const found = std::find_if(statusNames.begin(), statusNames.end(),
                                           [&](const StatusName& status) { return status.code == code; });
    return found == statusNames.end() ? "<unknown>" : found->name;
}

}  // namespace kaz::wifi
