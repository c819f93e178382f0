#include "diagnostics/reason_codes.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string_view>

namespace kaz::wifi {
namespace {

// From 0 to 70, written out, so that a name on the wrong line is noticed.
constexpr std::array<std::string_view, 71> names{
    "<unknown>",
    "UNSPECIFIED",
    "PREV_AUTH_NOT_VALID",
    "DEAUTH_LEAVING",
    "DISASSOC_DUE_TO_INACTIVITY",
    "DISASSOC_AP_BUSY",
    "CLASS2_FRAME_FROM_NONAUTH_STA",
    "CLASS3_FRAME_FROM_NONASSOC_STA",
    "DISASSOC_STA_HAS_LEFT",
    "STA_REQ_ASSOC_WITHOUT_AUTH",
    "DISASSOC_BAD_POWER",  // 10
    "DISASSOC_BAD_SUPP_CHAN",
    "BSS_TRANSITION_DISASSOC",
    "INVALID_IE",
    "MIC_FAILURE",
    "4WAY_HANDSHAKE_TIMEOUT",
    "GROUP_KEY_HANDSHAKE_TIMEOUT",
    "IE_DIFFERENT",
    "INVALID_GROUP_CIPHER",
    "INVALID_PAIRWISE_CIPHER",
    "INVALID_AKMP",  // 20
    "UNSUPP_RSN_VERSION",
    "INVALID_RSN_IE_CAP",
    "IEEE8021X_FAILED",
    "CIPHER_SUITE_REJECTED",
    "<unknown>",
    "<unknown>",
    "<unknown>",
    "<unknown>",
    "<unknown>",
    "<unknown>",  // 30
    "<unknown>",
    "DISASSOC_UNSPECIFIED_QOS",
    "DISASSOC_QAP_NO_BANDWIDTH",
    "DISASSOC_LOW_ACK",
    "DISASSOC_QAP_EXCEED_TXOP",
    "QSTA_LEAVE_QBSS",
    "QSTA_NOT_USE",
    "QSTA_REQUIRE_SETUP",
    "QSTA_TIMEOUT",
    "<unknown>",  // 40
    "<unknown>",
    "<unknown>",
    "<unknown>",
    "<unknown>",
    "QSTA_CIPHER_NOT_SUPP",
    "<unknown>",
    "<unknown>",
    "<unknown>",
    "<unknown>",
    "<unknown>",  // 50
    "<unknown>",
    "MESH_PEER_CANCELED",
    "MESH_MAX_PEERS",
    "MESH_CONFIG",
    "MESH_CLOSE",
    "MESH_MAX_RETRIES",
    "MESH_CONFIRM_TIMEOUT",
    "MESH_INVALID_GTK",
    "MESH_INCONSISTENT_PARAM",
    "MESH_INVALID_SECURITY",  // 60
    "MESH_PATH_ERROR",
    "MESH_PATH_NOFORWARD",
    "MESH_PATH_DEST_UNREACHABLE",
    "MAC_EXISTS_IN_MBSS",
    "MESH_CHAN_REGULATORY",
    "MESH_CHAN",
    "<unknown>",
    "<unknown>",
    "<unknown>",
    "<unknown>",  // 70
};

TEST(ReasonCodes, HaveTheNamesOfTheStandard) {
    for (std::size_t code = 0; code < names.size(); ++code) {
        EXPECT_EQ(ieee80211_get_reason_code_string(static_cast<int>(code)), names[code]) << code;
    }
}

TEST(ReasonCodes, OutsideTheTableAreUnknown) {
    for (const int code : {-1, -3, -15, -66, 71, 255, 256, 256 + 15, 65535, 65536 + 15,
                           std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        EXPECT_STREQ(ieee80211_get_reason_code_string(code), "<unknown>") << code;
    }
}

TEST(ReasonCodes, GiveTheSameStaticTextEachTime) {
    for (const int code : {3, 25, -1}) {
        EXPECT_EQ(static_cast<const void*>(ieee80211_get_reason_code_string(code)),
                  static_cast<const void*>(ieee80211_get_reason_code_string(code)))
            << code;
    }
}

}  // namespace
}  // namespace kaz::wifi
