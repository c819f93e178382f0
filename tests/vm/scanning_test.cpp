#include "device.h"

#include <algorithm>
#include <map>
#include <string>

namespace kaz::vm {
namespace {

using wifi::SecurityMode;
using wifi::WifiNetwork;

class Scanning : public DeviceTest {
  protected:
    // Scans until the list is complete: on a slow machine a beacon may be missed.
    bool finds(std::size_t count) {
        return device().eventually([&, asked = false]() mutable {
            if (manager().isScanning()) {
                asked = false;
            } else if (manager().networks().size() < count && !asked) {
                manager().scan();
                asked = true;
            }
            return manager().networks().size() >= count;
        });
    }
};

TEST_F(Scanning, ListsEveryNetworkOnceStrongestFirstWithItsSecurity) {
    // guest/access-points says how strong each is. The hidden one is not in the list.
    const std::vector<WifiNetwork> expected = {
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
    ASSERT_TRUE(finds(expected.size()));
    EXPECT_EQ(manager().networks(), expected);
}

TEST_F(Scanning, TellsWhenAScanBeginsAndEnds) {
    ASSERT_TRUE(device().eventually([&] { return !manager().isScanning(); }));
    const int before = device().scanningChanges();
    manager().scan();
    EXPECT_TRUE(device().eventually([&] { return device().scanningChanges() >= before + 2; }));
    EXPECT_TRUE(device().eventually([&] { return !manager().isScanning(); }));
    EXPECT_FALSE(manager().networks().empty());
}

}  // namespace
}  // namespace kaz::vm
