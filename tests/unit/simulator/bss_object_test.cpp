#include "unit/simulator/device_fixture.h"

#include <cstdint>

namespace kaz::sim::test {
namespace {

using nlohmann::json;

class BssObjects : public DeviceTest {
  protected:
    json allOf(const std::string& path) {
        return client_
            ->call({supplicantInterface.service, path, "org.freedesktop.DBus.Properties"}, "GetAll", "s",
                   "fi.w1.wpa_supplicant1.BSS")
            .at(0);
    }
};

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
        around.push_back(accessPoint(std::string(toText(row.security)), row.security, "password"));
    }
    start(around);
    const auto paths = scan();
    ASSERT_EQ(paths.size(), std::size(rows));
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        const json bss = allOf(paths.at(i));
        EXPECT_EQ(bss.at("Privacy"), rows[i].privacy) << toText(rows[i].security);
        EXPECT_EQ(bss.at("WPA").at("KeyMgmt"), rows[i].wpa) << toText(rows[i].security);
        EXPECT_EQ(bss.at("RSN").at("KeyMgmt"), rows[i].rsn) << toText(rows[i].security);
        EXPECT_EQ(bss.at("RSN").contains("Group"), rows[i].rsnGroup) << toText(rows[i].security);
    }
}

TEST_F(BssObjects, HaveEveryPropertyWithTheRealTypes) {
    AccessPoint cafe = accessPoint(std::string("A\0\xff", 3), Security::open);
    cafe.bssid = "02:00:00:00:00:0a";
    cafe.frequency = 5180;
    start({cafe});
    const std::string path = scan().at(0);
    const json bss = allOf(path);
    for (const char* const name : {"SSID", "BSSID", "Privacy", "Mode", "Signal", "Frequency", "Rates", "WPA",
                                   "RSN", "WPS", "IEs", "Age"}) {
        EXPECT_TRUE(bss.contains(name)) << name;
    }
    EXPECT_EQ(bss.at("SSID"), json({0x41, 0, 0xff}));
    EXPECT_EQ(bss.at("BSSID"), json({2, 0, 0, 0, 0, 10}));
    EXPECT_EQ(bss.at("Frequency"), 5180);
    EXPECT_EQ(bss.at("Mode"), "infrastructure");
    const Message call =
        client_->newCall({supplicantInterface.service, path, "org.freedesktop.DBus.Properties"}, "Get");
    checked(sd_bus_message_append(call.get(), "ss", "fi.w1.wpa_supplicant1.BSS", "Signal"), "append");
    sd_bus_message* raw = nullptr;
    checked(sd_bus_call(client_->bus(), call.get(), 0, nullptr, &raw), "call");
    const Message reply(raw);
    std::int16_t signal = 0;
    EXPECT_GT(sd_bus_message_read(raw, "v", "n", &signal), 0);
    EXPECT_EQ(signal, -60);
}

}  // namespace
}  // namespace kaz::sim::test
