#include "vm/command.h"
#include "vm/device.h"
#include "vm/neighbourhood.h"
#include "vm/supplicant_file.h"

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

namespace kaz::vm {
namespace {

struct KindOfNetwork {
    std::string name;
    wifi::ConnectionSettings settings;
    std::string addresses;  // the prefix of the addresses from the network's DHCP server
};

void PrintTo(const KindOfNetwork& value, std::ostream* out) {
    *out << value.name;
}

bool isListed(wifi::Manager& manager, const std::string& ssid) {
    const std::vector<wifi::WifiNetwork> all = manager.networks();
    return std::any_of(all.begin(), all.end(),
                       [&](const wifi::WifiNetwork& one) { return one.ssid == ssid; });
}

class Connecting : public DeviceTest, public ::testing::WithParamInterface<KindOfNetwork> {};

TEST_P(Connecting, AConnectionGoesThroughItsStagesToAnAddressLeavesTheListAndIsSaved) {
    const auto& [name, settings, addresses] = GetParam();
    const auto start = Clock::now();
    ASSERT_EQ(manager().connect(settings), wifi::ConnectResult::ok);
    ASSERT_TRUE(device().reaches(Status::connected, settings.ssid));
    record("seconds_to_connected", Clock::now() - start);

    std::vector<Status> stages;
    for (const wifi::ConnectionInfo& info : device().history()) {
        EXPECT_EQ(info.ssid, settings.ssid);
        if (stages.empty() || stages.back() != info.status) {
            stages.push_back(info.status);
        }
    }
    EXPECT_EQ(stages, (std::vector{Status::connectingWifi, Status::connectingIP, Status::connected}));
    EXPECT_NE(run("ip -4 -oneline address show dev wlan0").find("inet " + addresses), std::string::npos);
    EXPECT_TRUE(
        device().eventually([&, &settings = settings] { return !isListed(manager(), settings.ssid); }));

    ASSERT_TRUE(
        device().eventually([&settings = settings] { return savedNetwork(settings.ssid).has_value(); }));
    EXPECT_EQ(savedNetwork(settings.ssid)->at("priority"), "2");
    EXPECT_EQ(savedNetwork(settings.ssid)->count("disabled"), 0U);
    for (const std::string& secret : secrets) {
        EXPECT_FALSE(log().contains(secret));
    }
    EXPECT_FALSE(log().contains("No response from wpa_supplicant"));
}

INSTANTIATE_TEST_SUITE_P(Networks, Connecting,
                         ::testing::Values(KindOfNetwork{"Open", openNetwork, "10.77.1."},
                                           KindOfNetwork{"WEP", wepNetwork, "10.77.2."},
                                           KindOfNetwork{"WPA", wpaNetwork, "10.77.3."},
                                           KindOfNetwork{"WPA2", wpa2Network, "10.77.4."},
                                           KindOfNetwork{"WPA2AndWPA3", mixedNetwork, "10.77.5."},
                                           KindOfNetwork{"SAE", saeNetwork, "10.77.6."},
                                           KindOfNetwork{"PEAPWithMSCHAPV2", peapNetwork, "10.77.7."},
                                           KindOfNetwork{"TTLSWithPAP", ttlsNetwork, "10.77.7."},
                                           KindOfNetwork{"Hidden", hiddenNetwork(), "10.77.8."},
                                           KindOfNetwork{"SSIDWithQuotesAndBackslashes", quotedNetwork,
                                                         "10.77.11."}),
                         [](const auto& instance) { return instance.param.name; });

using ConnectingTwice = DeviceTest;

TEST_F(ConnectingTwice, TheNetworkInUseHasPriorityTwoAndEveryOtherOne) {
    ASSERT_TRUE(device().connects(wpa2Network));
    ASSERT_TRUE(device().connects(wpaNetwork));
    EXPECT_TRUE(device().eventually([] {
        const auto first = savedNetwork("Kaz WPA2");
        const auto second = savedNetwork("Kaz WPA");
        return first && second && first->count("priority") == 1 && second->count("priority") == 1 &&
               first->at("priority") == "1" && second->at("priority") == "2" && first->count("disabled") == 0;
    }));
}

}  // namespace
}  // namespace kaz::vm
