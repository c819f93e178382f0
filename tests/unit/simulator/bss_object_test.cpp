#include "unit/simulator/device_fixture.h"

#include <cstdint>

namespace kaz::sim::test {
namespace {

using BssObjects = DeviceTest;

TEST_F(BssObjects, ShowTheSecurityOfTheirAccessPoint) {
    struct Row {
        Security security;
        bool privacy;
        json wpa;
        json rsn;
        bool rsnGroup;
    };
    const json none = json::array();
    const Row rows[] = {
        {Security::open, false, none, none, false},
        {Security::wep, true, none, none, false},
        {Security::wpa, true, {"wpa-psk"}, none, false},
        {Security::wpa2, true, none, {"wpa-psk"}, true},
        {Security::wpa2Wpa3, true, none, {"wpa-psk", "sae"}, true},
        {Security::wpa3, true, none, {"sae"}, true},
        {Security::eap, true, none, {"wpa-eap"}, true},
    };
    std::vector<AccessPoint> around;
    for (const Row& row : rows) {
        around.push_back({.ssid = std::string(toText(row.security)), .security = row.security});
    }
    startInRangeOf(around);
    const auto paths = scan();
    ASSERT_EQ(paths.size(), std::size(rows));
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        const json bss = client_->getAll(bssAt(paths.at(i)));
        EXPECT_EQ(bss.at("Privacy"), rows[i].privacy) << toText(rows[i].security);
        EXPECT_EQ(bss.at("WPA").at("KeyMgmt"), rows[i].wpa) << toText(rows[i].security);
        EXPECT_EQ(bss.at("RSN").at("KeyMgmt"), rows[i].rsn) << toText(rows[i].security);
        EXPECT_EQ(bss.at("RSN").contains("Group"), rows[i].rsnGroup) << toText(rows[i].security);
    }
}

TEST_F(BssObjects, HaveEveryPropertyWithTheRealTypes) {
    startInRangeOf({{.ssid = std::string("A\0\xff", 3), .bssid = "02:00:00:00:00:0a", .frequency = 5180}});
    const Target object = bssAt(scan().at(0));
    const json bss = client_->getAll(object);
    for (const char* const name : {"SSID", "BSSID", "Privacy", "Mode", "Signal", "Frequency", "Rates", "WPA",
                                   "RSN", "WPS", "IEs", "Age"}) {
        EXPECT_TRUE(bss.contains(name)) << name;
    }
    EXPECT_EQ(bss.at("SSID"), json({0x41, 0, 0xff}));
    EXPECT_EQ(bss.at("BSSID"), json({2, 0, 0, 0, 0, 10}));
    EXPECT_EQ(bss.at("Frequency"), 5180);
    EXPECT_EQ(bss.at("Mode"), "infrastructure");
    const Message reply = client_->replyTo(
        client_->newCall(object.properties(), "Get", "ss", object.interface.c_str(), "Signal"));
    std::int16_t signal = 0;
    EXPECT_GT(sd_bus_message_read(reply.get(), "v", "n", &signal), 0);
    EXPECT_EQ(signal, -60);
}

}  // namespace
}  // namespace kaz::sim::test
