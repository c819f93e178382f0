#include "unit/simulator/device_fixture.h"

namespace kaz::sim::test {
namespace {

class Scanning : public DeviceTest {};

TEST_F(Scanning, TellsThatItBeginsAndThatItIsDone) {
    start({accessPoint("Cafe", Security::open)});
    client_->call(supplicantInterface, "Scan", "a{sv}", 1, "Type", "s", "passive");
    EXPECT_TRUE(client_->waitForSignal("PropertiesChanged", [](const Signal& s) {
        return s.arguments.dump().find("\"Scanning\":true") != std::string::npos;
    }));
    EXPECT_TRUE(client_->waitForSignal("BSSAdded", [](const Signal&) { return true; }));
    EXPECT_TRUE(
        client_->waitForSignal("ScanDone", [](const Signal& s) { return s.arguments.at(0) == true; }));
    EXPECT_TRUE(client_->waitForSignal("PropertiesChanged", [](const Signal& s) {
        return s.arguments.at(1).value("Scanning", true) == false && s.arguments.at(1).contains("BSSs");
    }));
    EXPECT_EQ(client_->get(supplicantInterface, "Scanning"), false);
}

TEST_F(Scanning, RefusesASecondScanMeanwhile) {
    SimulatedDevice::Options options;
    options.neighbourhood.times.scan = std::chrono::hours(100);
    start(std::move(options));
    client_->call(supplicantInterface, "Scan", "a{sv}", 1, "Type", "s", "passive");
    EXPECT_EQ(errorOf(supplicantInterface, "Scan", "a{sv}", 1, "Type", "s", "passive"),
              "fi.w1.wpa_supplicant1.Interface.ScanError");
    EXPECT_EQ(client_->get(supplicantInterface, "Scanning"), true);
}

TEST_F(Scanning, RefusesWrongArguments) {
    start({accessPoint("Cafe", Security::open)});
    const char* const invalid = "fi.w1.wpa_supplicant1.InvalidArgs";
    EXPECT_EQ(errorOf(supplicantInterface, "Scan", "a{sv}", 0), invalid);
    EXPECT_EQ(errorOf(supplicantInterface, "Scan", "a{sv}", 1, "Type", "s", "thorough"), invalid);
    EXPECT_EQ(errorOf(supplicantInterface, "Scan", "a{sv}", 1, "Type", "u", 1U), invalid);
    EXPECT_EQ(errorOf(supplicantInterface, "Scan", "a{sv}", 2, "Type", "s", "active", "Bogus", "s", "x"),
              invalid);
    EXPECT_EQ(errorOf(supplicantInterface, "Scan", "s", "passive"), "org.freedesktop.DBus.Error.InvalidArgs");
}

TEST_F(Scanning, FindsWhatComesAndForgetsWhatGoes) {
    start({accessPoint("Cafe", Security::open)});
    EXPECT_EQ(scan().size(), 1U);
    const std::string bssid = device_->addAccessPoint(accessPoint("Van", Security::open));
    EXPECT_EQ(scan().size(), 2U);
    ASSERT_TRUE(device_->removeAccessPoint(bssid));
    scan();
    EXPECT_EQ(scan().size(), 1U);
    EXPECT_TRUE(client_->waitForSignal("PropertiesChanged", [](const Signal& s) {
        return s.arguments.at(1).contains("BSSs") && s.arguments.at(1).at("BSSs").size() == 1;
    }));
}

TEST_F(Scanning, ForgetsEverythingAtFlush) {
    start({accessPoint("Cafe", Security::open)});
    const std::string path = scan().at(0);
    client_->call(supplicantInterface, "FlushBSS", "u", 0U);
    EXPECT_EQ(client_->get(supplicantInterface, "BSSs").size(), 0U);
    EXPECT_TRUE(
        client_->waitForSignal("BSSRemoved", [&](const Signal& s) { return s.arguments.at(0) == path; }));
    EXPECT_THROW(client_->get(bssAt(path), "SSID"), CallFailed);
}

TEST_F(Scanning, ShowsAHiddenNetworkWithoutItsSsidUnlessAskedForIt) {
    AccessPoint hidden = accessPoint("Secret", Security::wpa2, "password");
    hidden.hidden = true;
    start({hidden});
    const auto paths = scan();
    ASSERT_EQ(paths.size(), 1U);
    EXPECT_EQ(client_->get(bssAt(paths.at(0)), "SSID").size(), 0U);
    client_->call(supplicantInterface, "Scan", "a{sv}", 2, "Type", "s", "active", "SSIDs", "aay", 1, 6, 'S',
                  'e', 'c', 'r', 'e', 't');
    ASSERT_TRUE(client_->waitForSignal("ScanDone", [](const Signal&) { return true; }));
    EXPECT_EQ(client_->get(supplicantInterface, "BSSs").size(), 2U);
}

TEST_F(Scanning, TellsOfAChangedSignalOnTheBss) {
    AccessPoint cafe = accessPoint("Cafe", Security::open);
    cafe.bssid = "02:00:00:00:00:01";
    start({cafe});
    const std::string path = scan().at(0);
    ASSERT_TRUE(device_->setSignal(cafe.bssid, -90));
    EXPECT_EQ(client_->get(bssAt(path), "Signal"), -60);
    scan();
    EXPECT_TRUE(client_->waitForSignal("PropertiesChanged", [&](const Signal& s) {
        return s.path == path && s.interface == "org.freedesktop.DBus.Properties" &&
               s.arguments.at(1).at("Signal") == -90;
    }));
}

}  // namespace
}  // namespace kaz::sim::test
