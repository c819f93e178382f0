#include "vm/command.h"
#include "vm/device.h"
#include "vm/neighbourhood.h"
#include "vm/supplicant_file.h"

#include <algorithm>
#include <ostream>
#include <string>

namespace kaz::vm {
namespace {

struct Refusal {
    std::string name;
    wifi::ConnectionSettings settings;
};

void PrintTo(const Refusal& value, std::ostream* out) {
    *out << value.name;
}

class Failing : public DeviceTest, public ::testing::WithParamInterface<Refusal> {
  protected:
    // Configured, but out of range for now, so that the supplicant does not connect to it after the failed
    // attempt.
    static void knowAnotherNetwork() { run("/opt/guest/device save '\"Kaz Saved\"' ''"); }
};

TEST_P(Failing, AFailedAttemptEndsDisconnectedByTheSystemWithTheOtherNetworksEnabledAndSaved) {
    const wifi::ConnectionSettings& settings = GetParam().settings;
    knowAnotherNetwork();
    const auto start = Clock::now();
    ASSERT_EQ(manager().connect(settings), wifi::ConnectResult::ok);
    ASSERT_TRUE(device().loses(settings.ssid));
    record("seconds_to_disconnected", Clock::now() - start);

    const auto history = device().history();
    const auto lost = std::find_if(history.begin(), history.end(), [&](const wifi::ConnectionInfo& info) {
        return info.disconnectSsid == settings.ssid;
    });
    EXPECT_EQ(lost->status, Status::disconnected);
    EXPECT_TRUE(std::none_of(history.begin(), history.end(), [](const wifi::ConnectionInfo& info) {
        return info.status == Status::connected;
    }));
    EXPECT_TRUE(device().eventually([&] {
        const auto other = savedNetwork("Kaz Saved");
        const auto failed = savedNetwork(settings.ssid);
        return other && other->count("disabled") == 0 && failed && failed->count("disabled") == 0;
    }));
    EXPECT_EQ(run("wpa_cli -p /run/wpa_supplicant -i wlan0 list_networks").find("[DISABLED]"),
              std::string::npos);
    for (const std::string& secret : secrets) {
        EXPECT_FALSE(log().contains(secret));
    }
}

INSTANTIATE_TEST_SUITE_P(Attempts, Failing,
                         ::testing::Values(Refusal{"WrongKey", with(wpa2Network, "wrong-secret")},
                                           Refusal{"WrongSAEPassword", with(saeNetwork, "wrong-secret")},
                                           Refusal{"WrongPEAPPassword", with(peapNetwork, "wrong-secret")},
                                           Refusal{"WrongTTLSPassword", with(ttlsNetwork, "wrong-secret")},
                                           Refusal{"RefusedByTheAccessPoint", refusingNetwork},
                                           Refusal{"OutOfReach", absentNetwork}),
                         [](const auto& instance) { return instance.param.name; });

using FailingAtOnce = DeviceTest;

// The SSID is sent to the supplicant as text, and D-Bus cannot carry this text.
TEST_F(FailingAtOnce, AnAttemptAtAnSSIDThatIsNotUTF8IsGivenUpAndLeavesNoConfiguration) {
    ASSERT_EQ(manager().connect(bytesNetwork), wifi::ConnectResult::ok);
    ASSERT_TRUE(device().loses(bytesNetwork.ssid));
    EXPECT_TRUE(savedNetworks().empty());
    EXPECT_TRUE(device().connects(openNetwork));
}

}  // namespace
}  // namespace kaz::vm
