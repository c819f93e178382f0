#include "communicator/bss_rules.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace kaz::wifi {
namespace {

using Suites = std::set<std::string>;

struct SecurityCase {
    const char* what;
    Suites rsn;
    Suites wpa;
    bool privacy;
    std::string rsnGroup;
    SecurityMode mode;
};

const std::vector<SecurityCase> securityCases{
    // One rule after the other.
    {"rsn psk-sha256", {"wpa-psk-sha256"}, {}, true, "ccmp", SecurityMode::rsnPsk},
    {"rsn psk", {"wpa-psk"}, {}, true, "ccmp", SecurityMode::rsnPsk},
    {"rsn eap", {"wpa-eap"}, {}, true, "ccmp", SecurityMode::enterprise},
    {"wpa psk", {}, {"wpa-psk"}, true, "", SecurityMode::wpaPsk},
    {"wpa eap", {}, {"wpa-eap"}, true, "", SecurityMode::enterprise},
    {"open", {}, {}, false, "", SecurityMode::none},
    {"wep", {}, {}, true, "", SecurityMode::wep},
    {"group cipher but no suite", {}, {}, true, "ccmp", SecurityMode::unsupported},
    // RSN is examined first, pre-shared keys before EAP.
    {"rsn eap, wpa psk", {"wpa-eap"}, {"wpa-psk"}, true, "ccmp", SecurityMode::enterprise},
    {"rsn psk, wpa eap", {"wpa-psk"}, {"wpa-eap"}, true, "ccmp", SecurityMode::rsnPsk},
    {"rsn psk and eap", {"wpa-psk", "wpa-eap"}, {}, true, "ccmp", SecurityMode::rsnPsk},
    {"rsn psk-sha256 and eap", {"wpa-psk-sha256", "wpa-eap"}, {}, true, "", SecurityMode::rsnPsk},
    {"wpa psk and eap", {}, {"wpa-psk", "wpa-eap"}, true, "", SecurityMode::wpaPsk},
    {"rsn and wpa psk", {"wpa-psk"}, {"wpa-psk"}, true, "tkip", SecurityMode::rsnPsk},
    // WPA3 personal.
    {"rsn sae", {"sae"}, {}, true, "ccmp", SecurityMode::unsupported},
    {"rsn sae and psk", {"sae", "wpa-psk"}, {}, true, "ccmp", SecurityMode::rsnPsk},
    {"rsn sae, wpa psk", {"sae"}, {"wpa-psk"}, true, "ccmp", SecurityMode::wpaPsk},
    {"rsn sae, wpa eap", {"sae"}, {"wpa-eap"}, true, "ccmp", SecurityMode::enterprise},
    // Suites that are not tested, or not there.
    {"rsn owe", {"owe"}, {}, false, "ccmp", SecurityMode::unsupported},
    {"rsn eap-sha256", {"wpa-eap-sha256"}, {}, true, "ccmp", SecurityMode::unsupported},
    {"rsn ft-psk", {"wpa-ft-psk"}, {}, true, "ccmp", SecurityMode::unsupported},
    {"wpa none of the tested names", {}, {"wpa-none"}, true, "", SecurityMode::unsupported},
    {"wpa psk-sha256", {}, {"wpa-psk-sha256"}, true, "", SecurityMode::unsupported},
    {"names in other letters", {"WPA-PSK"}, {"Wpa-Eap"}, true, "", SecurityMode::unsupported},
    {"rsn empty name", {""}, {}, false, "", SecurityMode::unsupported},
    // Privacy counts only where there are no suites, the group only with privacy.
    {"rsn psk without privacy", {"wpa-psk"}, {}, false, "", SecurityMode::rsnPsk},
    {"unknown suite without privacy", {"sae"}, {}, false, "", SecurityMode::unsupported},
    {"group without privacy", {}, {}, false, "ccmp", SecurityMode::none},
};

TEST(SecurityModeOfBss, FirstMatchingRuleDecidesTheSecurityMode) {
    for (const SecurityCase& test : securityCases) {
        BSSData bss;
        bss.rsn = {test.rsn, test.rsnGroup};
        bss.wpa.keyMgmt = test.wpa;
        bss.privacy = test.privacy;
        EXPECT_EQ(securityModeOfBss(bss), test.mode) << test.what;
    }
}

TEST(SecurityModeOfBss, GroupCipherOfWpaDoesNotMatter) {
    BSSData bss;
    bss.privacy = true;
    bss.wpa.group = "tkip";
    EXPECT_EQ(securityModeOfBss(bss), SecurityMode::wep);
}

TEST(SecurityModeOfBss, BssWithoutPropertiesHasNoSecurity) {
    EXPECT_EQ(securityModeOfBss(BSSData{}), SecurityMode::none);
}

struct SsidCase {
    const char* what;
    std::vector<unsigned char> announced;
    std::string ssid;
};

const std::vector<SsidCase> ssidCases{
    {"nothing", {}, ""},
    {"one blank", {' '}, ""},
    {"one zero", {0}, ""},
    {"three zeros", {0, 0, 0}, ""},
    {"32 zeros", std::vector<unsigned char>(32, 0), ""},
    {"two blanks", {' ', ' '}, "  "},
    {"a blank and a zero", {' ', 0}, std::string(" \0", 2)},
    {"a zero among others", {'a', 0, 'b'}, std::string("a\0b", 3)},
    {"zeros before the end", {0, 0, 1}, std::string("\0\0\x01", 3)},
    {"blanks around", {' ', 'a', ' '}, " a "},
    {"one letter", {'a'}, "a"},
    {"no UTF-8", {0xff, 0xfe, 0xc3}, "\xff\xfe\xc3"},
    {"32 bytes", std::vector<unsigned char>(32, 0xff), std::string(32, '\xff')},
};

TEST(SsidOfBss, HiddenBssHasAnEmptySsidAndOthersAllTheirBytes) {
    for (const SsidCase& test : ssidCases) {
        EXPECT_EQ(ssidOfBss(test.announced), test.ssid) << test.what;
    }
}

TEST(DemandsOfBss, NameEveryWayIn) {
    BSSData bss;
    EXPECT_TRUE(demandsOfBss(bss).nothing);
    bss.privacy = true;
    EXPECT_TRUE(demandsOfBss(bss).wep);
    bss.rsn.group = "ccmp";
    EXPECT_TRUE(demandsOfBss(bss).other);
    struct Suite {
        const char* name;
        bool NetworkDemands::*demand;
    };
    const std::vector<Suite> suites{
        {"wpa-psk", &NetworkDemands::rsnPsk}, {"wpa-psk-sha256", &NetworkDemands::rsnPskSha256},
        {"sae", &NetworkDemands::sae},        {"wpa-eap", &NetworkDemands::enterprise},
        {"owe", &NetworkDemands::owe},        {"wpa-ft-psk", &NetworkDemands::other},
        {"", &NetworkDemands::other}};
    for (const auto& [name, demand] : suites) {
        bss.rsn.keyMgmt = {name};
        NetworkDemands expected;
        expected.*demand = true;
        EXPECT_EQ(demandsOfBss(bss), expected) << name;
    }
    bss.rsn.keyMgmt = {"wpa-psk", "sae"};
    bss.wpa.keyMgmt = {"wpa-psk"};
    const NetworkDemands both = demandsOfBss(bss);
    EXPECT_TRUE(both.rsnPsk && both.wpaPsk && both.sae);
}

TEST(DemandsOfBss, NameWhatRestrictsEveryWayIn) {
    BSSData bss;
    bss.rsn.keyMgmt = {"sae"};
    bss.rates.value = {54'000'000, 6'000'000};
    EXPECT_FALSE(demandsOfBss(bss).hashToElement);
    bss.rates.value = {61'500'000, 54'000'000};
    EXPECT_TRUE(demandsOfBss(bss).hashToElement);
    bss.mode.value = "infrastructure";
    EXPECT_FALSE(demandsOfBss(bss).adHoc);
    bss.mode.value = "ad-hoc";
    EXPECT_TRUE(demandsOfBss(bss).adHoc);
}

}  // namespace
}  // namespace kaz::wifi
