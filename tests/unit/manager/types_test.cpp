// The value types that cross the library's boundary.
#include <wifi/types.h>

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <functional>
#include <vector>

namespace kaz::test {
namespace {

using wifi::ConnectionInfo;
using wifi::SecurityMode;
using wifi::UISecurityMode;
using wifi::WifiNetwork;

TEST(UiSecurityMode, UnknownModesMapToNone) {
    for (const int mode : {0, 8, 9, -1, 1000, INT_MAX, INT_MIN}) {
        EXPECT_EQ(wifi::toUISecurityMode(static_cast<SecurityMode>(mode)), UISecurityMode::none) << mode;
    }
}

TEST(UiSecurityMode, EveryModeMapsToItsCoarseForm) {
    struct Row {
        SecurityMode mode;
        UISecurityMode shown;
    };
    constexpr std::array rows{
        Row{SecurityMode::none, UISecurityMode::none},
        Row{SecurityMode::wep, UISecurityMode::password},
        Row{SecurityMode::wpaPsk, UISecurityMode::password},
        Row{SecurityMode::rsnPsk, UISecurityMode::password},
        Row{SecurityMode::sae, UISecurityMode::password},
        Row{SecurityMode::enterprise, UISecurityMode::enterprise},
        Row{SecurityMode::enterpriseVariant, UISecurityMode::enterprise},
        Row{SecurityMode::unsupported, UISecurityMode::unsupported},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(wifi::toUISecurityMode(row.mode), row.shown) << ::testing::PrintToString(row.mode);
    }
}

TEST(SecurityMode, SecurityModesHaveFixedNumbers) {
    constexpr std::array inOrder{SecurityMode::none,
                                 SecurityMode::wep,
                                 SecurityMode::wpaPsk,
                                 SecurityMode::rsnPsk,
                                 SecurityMode::sae,
                                 SecurityMode::enterprise,
                                 SecurityMode::enterpriseVariant,
                                 SecurityMode::unsupported};
    for (std::size_t number = 0; number < inOrder.size(); ++number) {
        EXPECT_EQ(static_cast<std::size_t>(inOrder[number]), number);
    }
}

TEST(WifiNetwork, NetworksThatDifferInConfiguredAreUnequal) {
    const WifiNetwork network{"Home", -50, SecurityMode::rsnPsk, false};
    const WifiNetwork configured{"Home", -50, SecurityMode::rsnPsk, true};
    EXPECT_FALSE(network == configured);
    EXPECT_TRUE(network != configured);
}

TEST(WifiNetwork, NetworksAreEqualOnlyInAllFields) {
    const WifiNetwork network{"Home", -50, SecurityMode::rsnPsk, true};
    EXPECT_TRUE(network == (WifiNetwork{"Home", -50, SecurityMode::rsnPsk, true}));
    const std::vector<WifiNetwork> others{{"home", -50, SecurityMode::rsnPsk, true},
                                          {"Home", -51, SecurityMode::rsnPsk, true},
                                          {"Home", -50, SecurityMode::wpaPsk, true}};
    for (const WifiNetwork& other : others) {
        EXPECT_FALSE(network == other) << other.ssid << ' ' << other.signal;
        EXPECT_TRUE(network != other) << other.ssid << ' ' << other.signal;
    }
}

TEST(ConnectionInfo, RecordsAreEqualOnlyInAllSixFields) {
    const std::vector<std::function<void(ConnectionInfo&)>> changes{
        [](ConnectionInfo& info) { info.status = ConnectionInfo::Status::connectingIP; },
        [](ConnectionInfo& info) { info.ssid = "Home"; },
        [](ConnectionInfo& info) { info.signal = -1; },
        [](ConnectionInfo& info) { info.disconnectReason = ConnectionInfo::DisconnectReason::causedByUser; },
        [](ConnectionInfo& info) { info.disconnectTime += std::chrono::nanoseconds(1); },
        [](ConnectionInfo& info) { info.disconnectSsid = "Home"; },
    };
    for (std::size_t field = 0; field < changes.size(); ++field) {
        ConnectionInfo changed;
        EXPECT_TRUE(changed == ConnectionInfo());
        changes[field](changed);
        EXPECT_FALSE(changed == ConnectionInfo()) << "field " << field;
        EXPECT_TRUE(changed != ConnectionInfo()) << "field " << field;
    }
}

TEST(ConnectionInfo, NewRecordIsAllZero) {
    const ConnectionInfo info;
    EXPECT_EQ(info.status, ConnectionInfo::Status::disconnected);
    EXPECT_EQ(info.ssid, "");
    EXPECT_EQ(info.signal, 0);
    EXPECT_EQ(info.disconnectReason, ConnectionInfo::DisconnectReason::unknown);
    EXPECT_EQ(info.disconnectTime.time_since_epoch().count(), 0);
    EXPECT_EQ(info.disconnectSsid, "");
}

}  // namespace
}  // namespace kaz::test
