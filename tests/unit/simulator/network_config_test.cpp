#include "simulator/supplicant/network_config.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>

namespace kaz::sim::test {
namespace {

using ::testing::Contains;
using ::testing::Key;
using ::testing::Not;

const std::vector<std::string> compiledMethods = {"PEAP", "TTLS", "MSCHAPV2"};

using Entry = std::pair<std::string, Setting>;

std::string shownAs(const std::string& name, const Setting& value) {
    NetworkConfig config;
    return config.set(name, value, compiledMethods) ? std::string(config.text(name)) : "refused";
}

TEST(NetworkConfig, TakesWhatTheSupplicantTakes) {
    const std::tuple<Entry, const char*> accepted[] = {
        {{"ssid", "Home"}, "\"Home\""},
        {{"ssid", ""}, "\"\""},
        {{"ssid", "a\"b\\c"}, "\"a\"b\\c\""},
        {{"ssid", "l\xc3\xa9"}, "6cc3a9"},
        {{"ssid", "01234567890123456789012345678901"}, "\"01234567890123456789012345678901\""},
        {{"ssid", ByteSetting{std::string("A\0B", 3)}}, "410042"},
        {{"psk", "8 chars."}, "\"8 chars.\""},
        {{"psk", std::string(63, 'x')}, nullptr},
        {{"psk", ByteSetting{std::string(32, '\x01')}}, nullptr},
        {{"sae_password", "x\"y"}, "\"x\"y\""},
        {{"wep_key0", "abcde"}, "\"abcde\""},
        {{"wep_key0", "abcd"}, "\"abcd\""},
        {{"key_mgmt", "NONE"}, "NONE"},
        {{"key_mgmt", "WPA-PSK SAE"}, "WPA-PSK SAE"},
        {{"auth_alg", "OPEN"}, "OPEN"},
        {{"eap", "PEAP"}, "PEAP"},
        {{"eap", "PEAP TTLS"}, "PEAP TTLS"},
        {{"phase1", "tls_disable_tlsv1_0=0 tls_disable_tlsv1_1=0"},
         "\"tls_disable_tlsv1_0=0 tls_disable_tlsv1_1=0\""},
        {{"scan_ssid", std::int64_t{1}}, "1"},
        {{"ieee80211w", std::int64_t{2}}, "2"},
        {{"priority", std::int64_t{-5}}, "-5"},
    };
    for (const auto& [entry, shown] : accepted) {
        const auto text = shownAs(entry.first, entry.second);
        EXPECT_NE(text, "refused") << entry.first;
        if (shown != nullptr) {
            EXPECT_EQ(text, shown) << entry.first;
        }
    }
}

TEST(NetworkConfig, RefusesWhatTheSupplicantRefuses) {
    const Entry refused[] = {
        {"bogus", "x"},
        {"ssid", "012345678901234567890123456789012"},
        {"ssid", std::int64_t{5}},
        {"ssid", UnusableSetting{}},
        {"ssid", ByteSetting{""}},
        {"psk", "7 chars"},
        {"psk", std::string(64, 'a')},
        {"psk", ByteSetting{"short"}},
        {"wep_key0", "01234567890123456"},
        {"key_mgmt", "WPA4"},
        {"key_mgmt", ""},
        {"auth_alg", "FOO"},
        {"eap", "LEAP"},
        {"scan_ssid", std::int64_t{2}},
        {"ieee80211w", std::int64_t{4}},
        {"priority", "5"},
    };
    for (const auto& [name, value] : refused) {
        EXPECT_EQ(shownAs(name, value), "refused") << name;
    }
}

TEST(NetworkConfig, ShowsNoSecrets) {
    NetworkConfig config;
    ASSERT_TRUE(config.setAll({{"ssid", "Home"},
                               {"psk", "password"},
                               {"sae_password", "secret"},
                               {"password", "word"},
                               {"wep_key0", "abcde"},
                               {"private_key_passwd", "key"}},
                              compiledMethods));
    for (const auto& [name, value] : config.shown()) {
        EXPECT_THAT(
            name, Not(::testing::AnyOf("psk", "sae_password", "password", "wep_key0", "private_key_passwd")));
    }
    EXPECT_THAT(config.shown(), Contains(std::pair<std::string, std::string>("ssid", "\"Home\"")));
    EXPECT_THAT(config.stored(), Contains(Key("psk")));
}

TEST(NetworkConfig, ChangesAllFieldsOrNone) {
    NetworkConfig config;
    ASSERT_TRUE(config.setAll({{"ssid", "Home"}, {"psk", "password"}}, compiledMethods));
    EXPECT_FALSE(config.setAll({{"priority", std::int64_t{5}}, {"bogus", "x"}}, compiledMethods));
    EXPECT_EQ(config.number("priority"), 0);
    EXPECT_TRUE(config.setAll({{"priority", std::int64_t{5}}}, compiledMethods));
    EXPECT_EQ(config.number("priority"), 5);
    EXPECT_EQ(config.ssid(), "Home");
}

TEST(NetworkConfig, IsIncompleteWithoutTheKeyItAsksFor) {
    const std::pair<Settings, bool> cases[] = {
        {{{"key_mgmt", "NONE"}}, true},    {{}, false},
        {{{"psk", "password"}}, true},     {{{"key_mgmt", "WPA-PSK"}}, false},
        {{{"key_mgmt", "SAE"}}, false},    {{{"key_mgmt", "SAE"}, {"sae_password", "x"}}, true},
        {{{"key_mgmt", "WPA-EAP"}}, true},
    };
    for (const auto& [settings, complete] : cases) {
        NetworkConfig config;
        ASSERT_TRUE(config.setAll(settings, compiledMethods));
        EXPECT_EQ(config.complete(), complete) << config.text("key_mgmt");
    }
}

}  // namespace
}  // namespace kaz::sim::test
