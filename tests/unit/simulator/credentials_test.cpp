#include "simulator/supplicant/credentials.h"

#include <gtest/gtest.h>

namespace kaz::sim::test {
namespace {

const std::vector<std::string> peapAndTtls = {"PEAP", "TTLS", "TLS"};

NetworkConfig network(const Settings& settings) {
    NetworkConfig config;
    EXPECT_TRUE(config.setAll(settings, peapAndTtls));
    return config;
}

AccessPoint offering(Security security, const std::string& password = "") {
    AccessPoint accessPoint;
    accessPoint.security = security;
    accessPoint.password = password;
    return accessPoint;
}

TEST(Credentials, SuitOnlyTheSecurityTheyAreMeantFor) {
    const auto open = network({{"key_mgmt", "NONE"}});
    const auto wep = network({{"key_mgmt", "NONE"}, {"wep_key0", "abcde"}});
    const auto psk = network({{"key_mgmt", "WPA-PSK"}, {"psk", "password"}});
    const auto sae = network({{"key_mgmt", "SAE"}, {"sae_password", "password"}});
    const auto eap = network({{"key_mgmt", "WPA-EAP"}});
    struct Row {
        Security security;
        bool open, wep, psk, sae, eap;
    };
    const Row rows[] = {
        {Security::open, true, false, false, false, false},
        {Security::wep, false, true, false, false, false},
        {Security::wpa, false, false, true, false, false},
        {Security::wpa2, false, false, true, false, false},
        {Security::wpa2Wpa3, false, false, true, true, false},
        {Security::wpa3, false, false, false, true, false},
        {Security::eap, false, false, false, false, true},
    };
    for (const Row& row : rows) {
        const auto accessPoint = offering(row.security);
        EXPECT_EQ(suits(open, accessPoint), row.open) << toText(row.security);
        EXPECT_EQ(suits(wep, accessPoint), row.wep) << toText(row.security);
        EXPECT_EQ(suits(psk, accessPoint), row.psk) << toText(row.security);
        EXPECT_EQ(suits(sae, accessPoint), row.sae) << toText(row.security);
        EXPECT_EQ(suits(eap, accessPoint), row.eap) << toText(row.security);
    }
}

TEST(Credentials, AreRefusedWhereTheProtocolChecksThem) {
    struct Row {
        Settings settings;
        AccessPoint accessPoint;
        Admission admission;
    };
    const Settings psk = {{"key_mgmt", "WPA-PSK"}, {"psk", "password"}};
    const Settings sae = {{"key_mgmt", "SAE"}, {"sae_password", "password"}};
    const Settings wep = {{"key_mgmt", "NONE"}, {"wep_key0", "abcde"}};
    const Row rows[] = {
        {{{"key_mgmt", "NONE"}}, offering(Security::open), Admission::granted},
        {wep, offering(Security::wep, "abcde"), Admission::granted},
        {wep, offering(Security::wep, "6162636465"), Admission::granted},
        {wep, offering(Security::wep, "edcba"), Admission::refusedAtAuthentication},
        {psk, offering(Security::wpa, "password"), Admission::granted},
        {psk, offering(Security::wpa2, "password"), Admission::granted},
        {psk, offering(Security::wpa2, "Password"), Admission::refusedAtHandshake},
        {psk, offering(Security::wpa2Wpa3, "password"), Admission::granted},
        {sae, offering(Security::wpa2Wpa3, "password"), Admission::granted},
        {sae, offering(Security::wpa3, "password"), Admission::granted},
        {sae, offering(Security::wpa3, "other"), Admission::refusedAtAuthentication},
        {{{"key_mgmt", "SAE"}, {"psk", "password"}},
         offering(Security::wpa3, "password"),
         Admission::granted},
        {{{"key_mgmt", "WPA-PSK"}, {"psk", ByteSetting{std::string(32, '\x11')}}},
         offering(Security::wpa2, std::string(64, '1')),
         Admission::granted},
    };
    int number = 0;
    for (const Row& row : rows) {
        EXPECT_EQ(admission(network(row.settings), row.accessPoint), row.admission) << "row " << number;
        ++number;
    }
}

TEST(Credentials, OfAServerAreIdentityPasswordAndMethods) {
    AccessPoint campus = offering(Security::eap);
    campus.accounts = {{"ada", "engine", "PEAP", "MSCHAPV2"}, {"grace", "bug", "", ""}};
    const auto login = [](const char* identity, const char* password, const Settings& more = {}) {
        Settings settings = {{"key_mgmt", "WPA-EAP"}, {"identity", identity}, {"password", password}};
        settings.insert(settings.end(), more.begin(), more.end());
        return network(settings);
    };
    EXPECT_EQ(admission(login("ada", "engine"), campus), Admission::granted);
    EXPECT_EQ(admission(login("ada", "engine", {{"eap", "PEAP"}, {"phase2", "auth=MSCHAPV2"}}), campus),
              Admission::granted);
    EXPECT_EQ(admission(login("ada", "engine", {{"eap", "TTLS"}}), campus), Admission::refusedByServer);
    EXPECT_EQ(admission(login("ada", "engine", {{"phase2", "auth=PAP"}}), campus),
              Admission::refusedByServer);
    EXPECT_EQ(admission(login("grace", "bug", {{"eap", "TTLS"}, {"phase2", "auth=PAP"}}), campus),
              Admission::granted);
    EXPECT_EQ(admission(login("ada", "bug"), campus), Admission::refusedByServer);
    EXPECT_EQ(admission(login("eve", "engine"), campus), Admission::refusedByServer);
}

TEST(Credentials, OfAnEapServerAreItsCaAndDomain) {
    AccessPoint campus = offering(Security::eap);
    campus.accounts = {{"ada", "engine", "", ""}, {"device", "", "TLS", ""}};
    campus.caFile = "/ca.pem";
    campus.serverDomain = "radius.example.org";
    const auto verdict = [&](const Settings& more, const char* identity = "ada",
                             const char* password = "engine") {
        Settings settings = {{"key_mgmt", "WPA-EAP"}, {"identity", identity}, {"password", password}};
        settings.insert(settings.end(), more.begin(), more.end());
        const NetworkConfig config = network(settings);
        return admission(config, campus);
    };
    EXPECT_EQ(verdict({{"ca_cert", "/ca.pem"}}), Admission::granted);
    EXPECT_EQ(verdict({{"ca_cert", "/other.pem"}}), Admission::serverNotTrusted);
    for (const auto& [domain, expected] : std::vector<std::pair<std::string, Admission>>{
             {"radius.example.org", Admission::granted},
             {"example.org", Admission::granted},
             {"ample.org", Admission::serverNotTrusted},
             {"my.radius.example.org", Admission::serverNotTrusted}}) {
        EXPECT_EQ(verdict({{"ca_cert", "/ca.pem"}, {"domain_suffix_match", domain}}), expected) << domain;
    }
    EXPECT_EQ(verdict({{"eap", "TLS"}, {"private_key", "/key"}}, "device", ""), Admission::granted);
    EXPECT_EQ(verdict({{"eap", "TLS"}}, "device", ""), Admission::refusedByServer);
}

}  // namespace
}  // namespace kaz::sim::test
