#include "vm/command.h"
#include "vm/device.h"

#include <algorithm>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace kaz::vm {
namespace {

using wifi::SecurityMode;
using wifi::WifiNetwork;

// In the order of guest/access-points, each a little weaker than the one before. The hidden one is never
// listed.
const std::vector<WifiNetwork> around = {
    {"Kaz Open", -30, SecurityMode::none, false},
    {"Kaz WEP", -31, SecurityMode::wep, false},
    {"Kaz WPA", -32, SecurityMode::wpaPsk, false},
    {"Kaz WPA2", -33, SecurityMode::rsnPsk, false},
    {"Kaz Mixed", -34, SecurityMode::rsnPsk, false},
    {"Kaz SAE", -35, SecurityMode::unsupported, false},
    {"Kaz Enterprise", -36, SecurityMode::enterprise, false},
    {"Kaz Twin", -38, SecurityMode::rsnPsk, false},
    {R"(Say "Kaz" \o/)", -39, SecurityMode::none, false},
    {"Kaz \xc3(\xff", -40, SecurityMode::none, false},
    {"Kaz Full", -42, SecurityMode::none, false},
};

// Scans until the list is complete, because a scan may miss a beacon.
std::vector<WifiNetwork> scanned(Device& device) {
    wifi::Manager& manager = device.manager();
    device.eventually([&, asked = false]() mutable {
        if (manager.isScanning()) {
            asked = false;
        } else if (manager.networks().size() < around.size() && !asked) {
            manager.scan();
            asked = true;
        }
        return manager.networks().size() >= around.size();
    });
    return manager.networks();
}

using Scanning = DeviceTest;

TEST_F(Scanning, TheListHasAllNetworksInRangeStrongestFirst) {
    EXPECT_EQ(scanned(device()), around);
}

TEST_F(Scanning, AScanTellsWhenItBeginsAndEnds) {
    ASSERT_TRUE(device().eventually([&] { return !manager().isScanning(); }));
    const int before = device().scanningChanges();
    manager().scan();
    EXPECT_TRUE(device().eventually([&] { return device().scanningChanges() >= before + 2; }));
    EXPECT_TRUE(device().eventually([&] { return !manager().isScanning(); }));
    EXPECT_FALSE(manager().networks().empty());
}

struct ListedNetwork {
    std::string name;
    std::string ssid;
    std::optional<WifiNetwork> expected;
};

void PrintTo(const ListedNetwork& value, std::ostream* out) {
    *out << value.name;
}

ListedNetwork listed(const std::string& name, const std::string& ssid) {
    const auto found = std::find_if(around.begin(), around.end(),
                                    [&](const WifiNetwork& network) { return network.ssid == ssid; });
    return {name, ssid, *found};
}

// One scan for all of them.
class ScannedNetwork : public DeviceTest, public ::testing::WithParamInterface<ListedNetwork> {
  protected:
    void SetUp() override {
        if (list_.empty()) {
            // An earlier test may have revealed the hidden network's SSID.
            run("/opt/guest/device reset && /opt/guest/device unsee");
            DeviceTest::SetUp();
            list_ = scanned(device());
        }
    }

    static const std::vector<WifiNetwork>& list() { return list_; }

  private:
    inline static std::vector<WifiNetwork> list_;
};

TEST_P(ScannedNetwork, AScannedNetworkHasOneEntryWithItsSecurityAndStrength) {
    std::vector<WifiNetwork> found;
    std::copy_if(list().begin(), list().end(), std::back_inserter(found),
                 [](const WifiNetwork& network) { return network.ssid == GetParam().ssid; });
    std::vector<WifiNetwork> expected;
    if (GetParam().expected) {
        expected.push_back(*GetParam().expected);
    }
    EXPECT_EQ(found, expected);
    EXPECT_FALSE(list().empty());
}

INSTANTIATE_TEST_SUITE_P(
    All, ScannedNetwork,
    ::testing::Values(listed("Open", "Kaz Open"), listed("WEP", "Kaz WEP"), listed("WPA", "Kaz WPA"),
                      listed("WPA2", "Kaz WPA2"), listed("WPA2AndWPA3", "Kaz Mixed"),
                      listed("SAEIsUnsupported", "Kaz SAE"), listed("Enterprise", "Kaz Enterprise"),
                      listed("TwoAccessPointsAreOneNetworkAsStrongAsTheStronger", "Kaz Twin"),
                      listed("SSIDWithQuotesAndBackslashes", R"(Say "Kaz" \o/)"),
                      listed("SSIDThatIsNotUTF8", "Kaz \xc3(\xff"),
                      ListedNetwork{"HiddenIsNotListed", "Kaz Hidden", std::nullopt}),
    [](const auto& instance) { return instance.param.name; });

}  // namespace
}  // namespace kaz::vm
