#include "diagnostics/reason_codes.h"

#include <array>
#include <cstddef>

namespace kaz::wifi {
namespace {

constexpr const char* unnamed = "<unknown>";

// Indexed by the code.
constexpr std::array names{
    unnamed,                           // 0
    "UNSPECIFIED",                     // 1
    "PREV_AUTH_NOT_VALID",             // 2
    "DEAUTH_LEAVING",                  // 3
    "DISASSOC_DUE_TO_INACTIVITY",      // 4
    "DISASSOC_AP_BUSY",                // 5
    "CLASS2_FRAME_FROM_NONAUTH_STA",   // 6
    "CLASS3_FRAME_FROM_NONASSOC_STA",  // 7
    "DISASSOC_STA_HAS_LEFT",           // 8
    "STA_REQ_ASSOC_WITHOUT_AUTH",      // 9
    "DISASSOC_BAD_POWER",              // 10
    "DISASSOC_BAD_SUPP_CHAN",          // 11
    "BSS_TRANSITION_DISASSOC",         // 12
    "INVALID_IE",                      // 13
    "MIC_FAILURE",                     // 14
    "4WAY_HANDSHAKE_TIMEOUT",          // 15
    "GROUP_KEY_HANDSHAKE_TIMEOUT",     // 16
    "IE_DIFFERENT",                    // 17
    "INVALID_GROUP_CIPHER",            // 18
    "INVALID_PAIRWISE_CIPHER",         // 19
    "INVALID_AKMP",                    // 20
    "UNSUPP_RSN_VERSION",              // 21
    "INVALID_RSN_IE_CAP",              // 22
    "IEEE8021X_FAILED",                // 23
    "CIPHER_SUITE_REJECTED",           // 24
    unnamed,                           // 25
    unnamed,                           // 26
    unnamed,                           // 27
    unnamed,                           // 28
    unnamed,                           // 29
    unnamed,                           // 30
    unnamed,                           // 31
    "DISASSOC_UNSPECIFIED_QOS",        // 32
    "DISASSOC_QAP_NO_BANDWIDTH",       // 33
    "DISASSOC_LOW_ACK",                // 34
    "DISASSOC_QAP_EXCEED_TXOP",        // 35
    "QSTA_LEAVE_QBSS",                 // 36
    "QSTA_NOT_USE",                    // 37
    "QSTA_REQUIRE_SETUP",              // 38
    "QSTA_TIMEOUT",                    // 39
    unnamed,                           // 40
    unnamed,                           // 41
    unnamed,                           // 42
    unnamed,                           // 43
    unnamed,                           // 44
    "QSTA_CIPHER_NOT_SUPP",            // 45
    unnamed,                           // 46
    unnamed,                           // 47
    unnamed,                           // 48
    unnamed,                           // 49
    unnamed,                           // 50
    unnamed,                           // 51
    "MESH_PEER_CANCELED",              // 52
    "MESH_MAX_PEERS",                  // 53
    "MESH_CONFIG",                     // 54
    "MESH_CLOSE",                      // 55
    "MESH_MAX_RETRIES",                // 56
    "MESH_CONFIRM_TIMEOUT",            // 57
    "MESH_INVALID_GTK",                // 58
    "MESH_INCONSISTENT_PARAM",         // 59
    "MESH_INVALID_SECURITY",           // 60
    "MESH_PATH_ERROR",                 // 61
    "MESH_PATH_NOFORWARD",             // 62
    "MESH_PATH_DEST_UNREACHABLE",      // 63
    "MAC_EXISTS_IN_MBSS",              // 64
    "MESH_CHAN_REGULATORY",            // 65
    "MESH_CHAN",                       // 66
};

}  // namespace

const char* ieee80211_get_reason_code_string(int code) {
    if (code < 0 || static_cast<std::size_t>(code) >= names.size()) {
        return unnamed;
    }
    return names[static_cast<std::size_t>(code)];
}

}  // namespace kaz::wifi
