#include "device_fixture.h"

namespace kaz::sim::test {
namespace {

class Scanning : public DeviceTest {};

TEST_F(Scanning, FindsTheAccessPointsAround) {
    start({accessPoint("Home", Security::wpa2, "correct horse"), accessPoint("Cafe", Security::open)});
    client_->call(supplicantInterface, "Scan", "a{sv}", 1, "Type", "s", "passive");
    ASSERT_TRUE(
        client_->waitForSignal("ScanDone", [](const Signal& s) { return s.arguments.at(0) == true; }));
    const auto paths = client_->get(supplicantInterface, "BSSs");
    ASSERT_EQ(paths.size(), 2U);
    EXPECT_EQ(client_->get(bssAt(paths.at(0)), "SSID"), nlohmann::json({'H', 'o', 'm', 'e'}));
    EXPECT_EQ(client_->get(bssAt(paths.at(0)), "RSN").at("KeyMgmt"), nlohmann::json({"wpa-psk"}));
    EXPECT_EQ(client_->get(bssAt(paths.at(1)), "Privacy"), false);
}

}  // namespace
}  // namespace kaz::sim::test
