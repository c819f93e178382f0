#include "unit/simulator/device_fixture.h"

namespace kaz::sim::test {
namespace {

using Scanning = DeviceTest;

TEST_F(Scanning, SignalsItsBeginAndItsEnd) {
    startInRangeOf({cafe});
    requestScan();
    EXPECT_TRUE(changes({{"Scanning", true}}));
    EXPECT_TRUE(client_->waitForSignal("BSSAdded"));
    EXPECT_TRUE(client_->waitForSignalOf("ScanDone", true));
    EXPECT_TRUE(client_->waitForSignal("PropertiesChanged", [](const Signal& s) {
        return includes(s.changes(), {{"Scanning", false}}) && s.changes().contains("BSSs");
    }));
    EXPECT_EQ(get("Scanning"), false);
}

TEST_F(Scanning, RefusesASecondScanMeanwhile) {
    start({.neighbourhood = {.times = {.scan = std::chrono::hours(100)}}});
    requestScan();
    EXPECT_EQ(errorOf(supplicantInterface, "Scan", "a{sv}", 1, "Type", "s", "passive"),
              "fi.w1.wpa_supplicant1.Interface.ScanError");
    EXPECT_EQ(get("Scanning"), true);
}

TEST_F(Scanning, RefusesWrongArguments) {
    startInRangeOf({cafe});
    const char* const invalid = "fi.w1.wpa_supplicant1.InvalidArgs";
    EXPECT_EQ(errorOf(supplicantInterface, "Scan", "a{sv}", 0), invalid);
    EXPECT_EQ(errorOf(supplicantInterface, "Scan", "a{sv}", 1, "Type", "s", "thorough"), invalid);
    EXPECT_EQ(errorOf(supplicantInterface, "Scan", "a{sv}", 1, "Type", "u", 1U), invalid);
    EXPECT_EQ(errorOf(supplicantInterface, "Scan", "a{sv}", 2, "Type", "s", "active", "Bogus", "s", "x"),
              invalid);
    EXPECT_EQ(errorOf(supplicantInterface, "Scan", "s", "passive"), "org.freedesktop.DBus.Error.InvalidArgs");
}

TEST_F(Scanning, AddsNewAccessPointsAndRemovesLostOnes) {
    startInRangeOf({cafe});
    EXPECT_EQ(scan().size(), 1U);
    const std::string bssid = device_->addAccessPoint({.ssid = "Van"});
    EXPECT_EQ(scan().size(), 2U);
    ASSERT_TRUE(device_->removeAccessPoint(bssid));
    scan();
    EXPECT_EQ(scan().size(), 1U);
    EXPECT_TRUE(changes({{"BSSs", get("BSSs")}}));
}

TEST_F(Scanning, RemovesEveryBssAtAFlush) {
    startInRangeOf({cafe});
    const std::string path = scan().at(0);
    call("FlushBSS", "u", 0U);
    EXPECT_EQ(get("BSSs").size(), 0U);
    EXPECT_TRUE(client_->waitForSignalOf("BSSRemoved", path));
    EXPECT_THROW(client_->get(bssAt(path), "SSID"), CallFailed);
}

TEST_F(Scanning, ShowsAHiddenNetworkWithoutItsSsidUnlessAskedForIt) {
    startInRangeOf({{.ssid = "Secret", .security = Security::wpa2, .password = "password", .hidden = true}});
    const auto paths = scan();
    ASSERT_EQ(paths.size(), 1U);
    EXPECT_EQ(client_->get(bssAt(paths.at(0)), "SSID").size(), 0U);
    call("Scan", "a{sv}", 2, "Type", "s", "active", "SSIDs", "aay", 1, 6, 'S', 'e', 'c', 'r', 'e', 't');
    ASSERT_TRUE(client_->waitForSignal("ScanDone"));
    EXPECT_EQ(get("BSSs").size(), 2U);
}

TEST_F(Scanning, SignalsAChangedStrengthOnTheBss) {
    const std::string bssid = "02:00:00:00:00:01";
    startInRangeOf({{.ssid = "Cafe", .bssid = bssid}});
    const std::string path = scan().at(0);
    ASSERT_TRUE(device_->setSignal(bssid, -90));
    EXPECT_EQ(client_->get(bssAt(path), "Signal"), -60);
    scan();
    EXPECT_TRUE(changes({{"Signal", -90}}, path));
}

}  // namespace
}  // namespace kaz::sim::test
