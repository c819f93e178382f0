#include "simulator/world/neighbourhood_json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <set>

namespace kaz::sim::test {
namespace {

using ::testing::HasSubstr;

std::string refusal(const std::string& text) {
    try {
        neighbourhoodFromJson(text);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "accepted";
}

TEST(NeighbourhoodJson, ReadsEveryMemberOfAnAccessPoint) {
    const auto neighbourhood = neighbourhoodFromJson(R"({"access_points": [{
        "ssid_hex": "4100fe", "bssid": "02:00:00:00:00:07", "signal": -71, "frequency": 5180, "security": "eap",
        "password": "unused", "ca_file": "/ca.pem", "server_domain": "radius.example.org", "hidden": true, "full": true, "busy": true,
        "accounts": [{"identity": "ada", "password": "p", "method": "PEAP", "phase2": "GTC"}]}]})");
    const AccessPoint expected{.ssid = std::string("A\0\xfe", 3),
                               .bssid = "02:00:00:00:00:07",
                               .signal = -71,
                               .frequency = 5180,
                               .security = Security::eap,
                               .password = "unused",
                               .accounts = {{"ada", "p", "PEAP", "GTC"}},
                               .caFile = "/ca.pem",
                               .serverDomain = "radius.example.org",
                               .hidden = true,
                               .full = true,
                               .busy = true};
    ASSERT_EQ(neighbourhood.accessPoints.size(), 1U);
    EXPECT_TRUE(neighbourhood.accessPoints.front() == expected);
}

TEST(NeighbourhoodJson, ReadsTheDevicesOwnSetUp) {
    const auto neighbourhood = neighbourhoodFromJson(R"({
        "unit_active": false, "update_config": false, "announce_own_choice": true, "more_interfaces": 1,
        "interface": false,
        "eap_methods": ["PEAP"], "times": {"scan": 10, "dhcp": 20},
        "configured_networks": [{"ssid": "Home", "psk": "password", "priority": 3, "scan_ssid": true},
                                {"ssid_hex": "fe"}]})");
    EXPECT_FALSE(neighbourhood.unitActive);
    EXPECT_FALSE(neighbourhood.updateConfig);
    EXPECT_TRUE(neighbourhood.announceOwnChoice);
    EXPECT_FALSE(neighbourhood.interface);
    EXPECT_EQ(neighbourhood.moreInterfaces, 1U);
    EXPECT_EQ(neighbourhood.eapMethods, std::vector<std::string>{"PEAP"});
    EXPECT_EQ(neighbourhood.times.scan.count(), 10);
    EXPECT_EQ(neighbourhood.times.dhcp.count(), 20);
    EXPECT_EQ(neighbourhood.times.associate, Times().associate);
    ASSERT_EQ(neighbourhood.configuredNetworks.size(), 2U);
    const Settings& home = neighbourhood.configuredNetworks.at(0);
    EXPECT_THAT(home, ::testing::UnorderedElementsAre(std::pair("ssid", Setting("Home")),
                                                      std::pair("psk", Setting("password")),
                                                      std::pair("priority", Setting(std::int64_t{3})),
                                                      std::pair("scan_ssid", Setting(std::int64_t{1}))));
    EXPECT_EQ(neighbourhood.configuredNetworks.at(1).front().second, Setting(ByteSetting{"\xfe"}));
}

TEST(NeighbourhoodJson, GivesABssidToWhoHasNone) {
    const auto neighbourhood = neighbourhoodFromJson(R"({"access_points": [{"ssid": "A"}, {"ssid": "B"}]})");
    std::set<std::string> bssids;
    for (const AccessPoint& accessPoint : neighbourhood.accessPoints) {
        EXPECT_TRUE(bssidBytes(accessPoint.bssid)) << accessPoint.bssid;
        bssids.insert(accessPoint.bssid);
    }
    EXPECT_EQ(bssids.size(), 2U);
}

TEST(NeighbourhoodJson, NamesThePlaceOfWhatItRefuses) {
    const std::pair<const char*, const char*> refused[] = {
        {"", "parse error"},
        {"[]", "not an object"},
        {R"({"acces_points": []})", "acces_points"},
        {R"({"access_points": [{"sid": "A"}]})", "#1: unknown member \"sid\""},
        {R"({"access_points": [{}, {"security": "wpa4"}]})", "#2.security: not a kind of security"},
        {R"({"access_points": [{"ssid_hex": "4"}]})", "ssid_hex: not hexadecimal"},
        {R"({"access_points": [{"ssid": "012345678901234567890123456789012"}]})", "longer than 32 bytes"},
        {R"({"access_points": [{"bssid": "home"}]})", "bssid: not a BSSID"},
        {R"({"access_points": [{"bssid": "02:00:00:00:00:01"}, {"bssid": "02:00:00:00:00:01"}]})", "twice"},
        {R"({"access_points": [{"signal": "loud"}]})", "signal"},
        {R"({"access_points": [{"accounts": [{"name": "ada"}]}]})", "account: unknown member \"name\""},
        {R"({"times": {"scam": 1}})", "times: unknown member \"scam\""},
        {R"({"times": 5})", "times: not an object"},
    };
    for (const auto& [text, place] : refused) {
        EXPECT_THAT(refusal(text), HasSubstr(place)) << text;
    }
}

TEST(NeighbourhoodJson, ReadsTheNeighbourhoodThatIsShipped) {
    const auto home = readNeighbourhood(KAZ_HOME_NEIGHBOURHOOD);
    std::set<Security> kinds;
    std::set<std::string> ssids;
    bool hidden = false;
    for (const AccessPoint& accessPoint : home.accessPoints) {
        kinds.insert(accessPoint.security);
        ssids.insert(accessPoint.ssid);
        hidden = hidden || accessPoint.hidden;
    }
    EXPECT_EQ(kinds.size(), 7U);
    EXPECT_GE(ssids.size(), 12U);
    EXPECT_LT(ssids.size(), home.accessPoints.size());
    EXPECT_TRUE(hidden);
}

TEST(NeighbourhoodJson, ComplainsAboutAMissingFileByName) {
    try {
        readNeighbourhood("/nowhere/home.json");
        FAIL() << "read it";
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), HasSubstr("/nowhere/home.json"));
    }
}

TEST(NeighbourhoodJson, AltersOnlyWhatIsNamed) {
    AccessPoint accessPoint =
        accessPointFromJson(R"({"ssid": "A", "bssid": "02:00:00:00:00:01", "signal": -50})");
    alterFromJson(accessPoint, R"({"signal": -70})");
    EXPECT_EQ(accessPoint.signal, -70);
    EXPECT_EQ(accessPoint.ssid, "A");
    EXPECT_THROW(alterFromJson(accessPoint, R"({"bssid": "02:00:00:00:00:02"})"), std::runtime_error);
    EXPECT_THROW(alterFromJson(accessPoint, R"({"signal": -60, "sid": "B"})"), std::runtime_error);
    EXPECT_EQ(accessPoint.signal, -70);
}

}  // namespace
}  // namespace kaz::sim::test
