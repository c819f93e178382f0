// Every cause on the real stack: the cause, how certain it is, and the evidence for it.
#include "support/printed_values/printed_details.h"
#include "vm/access_point.h"
#include "vm/command.h"
#include "vm/device.h"
#include "vm/neighbourhood.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace kaz::vm {
namespace {

using wifi::Cause;
using wifi::Certainty;
using wifi::ConnectResult;
using wifi::Evidence;
using wifi::Outcome;
using wifi::Stage;
using Eap = Evidence::Eap;
using Sender = Evidence::Sender;

class Causes : public DeviceTest {
  protected:
    Outcome outcome() { return manager().connectionDetails().lastOutcome; }

    // Blocks until the last end is that of this network, with this cause and certainty.
    bool ends(const std::string& ssid, Cause cause, Certainty certainty) {
        const bool ended = device().eventually([&] {
            const Outcome last = outcome();
            return last.ssid == ssid && last.cause == cause && last.certainty == certainty;
        });
        EXPECT_TRUE(ended) << ::testing::PrintToString(outcome());
        return ended;
    }

    bool fails(const wifi::ConnectionSettings& settings, Cause cause, Certainty certainty) {
        EXPECT_EQ(manager().connect(settings), ConnectResult::ok);
        return ends(settings.ssid, cause, certainty);
    }

    // The supplicant and the library see what the access points demand now.
    bool rescans() {
        log().clear();
        manager().scan();
        return log().waitForText(spdlog::level::debug, "PropertiesChanged: BSSs=");
    }
};

struct Failure {
    std::string name;
    wifi::ConnectionSettings settings;
    Cause cause;
    Certainty certainty;
    std::function<bool(const Outcome&)> evident;
};

void PrintTo(const Failure& value, std::ostream* out) {
    *out << value.name;
}

class CausesOfFailure : public Causes, public ::testing::WithParamInterface<Failure> {};

// The cause is there when the end is.
TEST_P(CausesOfFailure, AreToldWithTheirEvidence) {
    const Failure& failure = GetParam();
    ASSERT_EQ(manager().connect(failure.settings), ConnectResult::ok);
    ASSERT_TRUE(device().loses(failure.settings.ssid));
    EXPECT_EQ(outcome().ssid, failure.settings.ssid);
    EXPECT_EQ(outcome().cause, failure.cause) << ::testing::PrintToString(outcome());
    EXPECT_TRUE(ends(failure.settings.ssid, failure.cause, failure.certainty));
    EXPECT_TRUE(failure.evident(outcome())) << ::testing::PrintToString(outcome());
}

INSTANTIATE_TEST_SUITE_P(
    Attempts, CausesOfFailure,
    ::testing::Values(
        Failure{"WrongKey", with(wpa2Network, "wrong-secret"), Cause::wrongKey, Certainty::probable,
                [](const Outcome& outcome) {
                    return outcome.stage == Stage::keyExchange && outcome.evidence.reasonCode == 15 &&
                           outcome.evidence.reasonSender == Sender::accessPoint && outcome.evidence.seen;
                }},
        Failure{"WrongSAEPassword", with(saeNetwork, "wrong-secret"), Cause::wrongKey, Certainty::certain,
                [](const Outcome& outcome) {
                    return outcome.stage == Stage::authenticating &&
                           outcome.evidence.authenticationStatus == 1;
                }},
        Failure{"WrongPEAPPassword", with(peapNetwork, "wrong-secret"), Cause::eapRejected,
                Certainty::certain,
                [](const Outcome& outcome) {
                    return outcome.evidence.eap == Eap::rejected && outcome.evidence.reasonCode == 23;
                }},
        Failure{"WrongTTLSPassword", with(ttlsNetwork, "wrong-secret"), Cause::eapRejected,
                Certainty::certain,
                [](const Outcome& outcome) { return outcome.evidence.eap == Eap::rejected; }},
        Failure{"UnknownIdentity", enterprise("PEAP", "MSCHAPV2", "mallory", "wrong-secret"),
                Cause::eapRejected, Certainty::certain,
                [](const Outcome& outcome) { return outcome.evidence.eap == Eap::rejected; }},
        Failure{"MethodThatTheServerLacks", enterprise("PWD", "", "alice", "alice-secret"),
                Cause::noEapMethod, Certainty::certain,
                [](const Outcome& outcome) { return outcome.evidence.eap == Eap::methodRefused; }},
        Failure{"FullAccessPoint", refusingNetwork, Cause::full, Certainty::certain,
                [](const Outcome& outcome) {
                    return outcome.stage == Stage::authenticating &&
                           outcome.evidence.authenticationStatus == 17;
                }},
        Failure{"OutOfRange", absentNetwork, Cause::outOfRange, Certainty::certain,
                [](const Outcome& outcome) { return outcome.evidence.scanned && !outcome.evidence.seen; }},
        Failure{"NetworkOfWPA3Only", settings("Kaz SAE", wifi::SecurityMode::rsnPsk, "wpa-two-secret"),
                Cause::nothingInCommon, Certainty::certain,
                [](const Outcome& outcome) {
                    return outcome.evidence.seen && outcome.evidence.demands.sae &&
                           !outcome.evidence.demands.rsnPsk && outcome.evidence.signal > -60;
                }},
        Failure{"SSIDThatTheBusCannotCarry", bytesNetwork, Cause::requestRefused, Certainty::certain,
                [](const Outcome& outcome) { return outcome.stage == Stage::requested; }}),
    [](const auto& instance) { return instance.param.name; });

// The supplicant tries a wrong key again by itself.
TEST_F(Causes, AKeyThatFailsTwiceInARowIsCertainlyWrong) {
    ASSERT_TRUE(fails(with(wpa2Network, "wrong-secret"), Cause::wrongKey, Certainty::probable));
    EXPECT_TRUE(ends(wpa2Network.ssid, Cause::wrongKey, Certainty::certain));
}

TEST_F(Causes, ADeniedDeviceIsProbablyBanned) {
    AccessPoint accessPoint("wpa2");
    run("cat /sys/class/net/wlan0/address >/run/denied");
    accessPoint.reconfigure("deny_mac_file=/run/denied");
    ASSERT_TRUE(fails(wpa2Network, Cause::banned, Certainty::probable));
    EXPECT_EQ(outcome().evidence.authenticationStatus, 1);
}

// The access point finds the device's signal too weak.
TEST_F(Causes, ARefusalForAnotherReasonIsTold) {
    AccessPoint accessPoint("open");
    accessPoint.reconfigure("rssi_reject_assoc_rssi=-10");
    ASSERT_TRUE(fails(openNetwork, Cause::refused, Certainty::certain));
    EXPECT_EQ(outcome().stage, Stage::associating);
    EXPECT_STREQ(wifi::statusCodeName(outcome().evidence.associationStatus),
                 "DENIED_POOR_CHANNEL_CONDITIONS");
}

TEST_F(Causes, AFullNetworkWithAPasswordIsFull) {
    AccessPoint accessPoint("wpa2");
    accessPoint.reconfigure("max_num_sta=0");
    ASSERT_TRUE(fails(wpa2Network, Cause::full, Certainty::certain));
}

TEST_F(Causes, HashToElementAloneIsNothingInCommon) {
    AccessPoint accessPoint("sae");
    accessPoint.reconfigure("sae_pwe=1");
    ASSERT_TRUE(rescans());
    ASSERT_TRUE(fails(saeNetwork, Cause::nothingInCommon, Certainty::certain));
    EXPECT_TRUE(outcome().evidence.demands.hashToElement);
}

// Restarts the supplicant with sae_pwe=2 in its configuration, and without it at the end of the scope.
class ConfiguredSupplicant {
  public:
    ConfiguredSupplicant() { restart("sed -i '1i sae_pwe=2'"); }
    ~ConfiguredSupplicant() { restart("sed -i /^sae_pwe=/d"); }
    ConfiguredSupplicant(const ConfiguredSupplicant&) = delete;
    ConfiguredSupplicant& operator=(const ConfiguredSupplicant&) = delete;
    ConfiguredSupplicant(ConfiguredSupplicant&&) = delete;
    ConfiguredSupplicant& operator=(ConfiguredSupplicant&&) = delete;

  private:
    static void restart(const std::string& edit) {
        succeeds("systemctl stop wpa_supplicant && " + edit +
                 " /etc/wpa_supplicant/device.conf && systemctl start wpa_supplicant");
    }
};

TEST_F(Causes, HashToElementAloneIsJoinedByASupplicantThatIsConfiguredForIt) {
    AccessPoint accessPoint("sae");
    accessPoint.reconfigure("sae_pwe=1");
    {
        const ConfiguredSupplicant configured;
        ASSERT_TRUE(device().attaches());
        ASSERT_TRUE(rescans());
        ASSERT_TRUE(device().eventually([&] {
            const auto access = manager().networkAccess();
            const auto known = access.find(saeNetwork.ssid);
            return known != access.end() && known->second.demands.hashToElement &&
                   known->second.mode == wifi::SecurityMode::sae;
        }));
        EXPECT_TRUE(device().connects(saeNetwork));
        EXPECT_TRUE(fails(with(saeNetwork, "wrong-secret"), Cause::wrongKey, Certainty::certain));
    }
    ASSERT_TRUE(device().attaches());
}

TEST_F(Causes, AnAdHocNetworkIsNothingInCommon) {
    AccessPoint accessPoint("open");
    accessPoint.becomeAdHoc(openNetwork.ssid, 2412);
    run("/opt/guest/device unsee");  // the kernel remembers the access point, too
    ASSERT_TRUE(device().eventually([&] {
        manager().scan();
        const auto access = manager().networkAccess();
        const auto known = access.find(openNetwork.ssid);
        return known != access.end() && known->second.demands.adHoc;
    }));
    EXPECT_EQ(manager().networkAccess().at(openNetwork.ssid).mode, wifi::SecurityMode::unsupported);
    ASSERT_TRUE(fails(openNetwork, Cause::nothingInCommon, Certainty::certain));
    EXPECT_TRUE(outcome().evidence.demands.adHoc);
}

TEST_F(Causes, EnhancedOpenIsNothingInCommon) {
    AccessPoint accessPoint("open");
    accessPoint.reconfigure("wpa=2\nwpa_key_mgmt=OWE\nrsn_pairwise=CCMP\nieee80211w=2");
    run("/opt/guest/device unsee");  // the kernel remembers the open network, too
    ASSERT_TRUE(fails(openNetwork, Cause::nothingInCommon, Certainty::certain));
    EXPECT_TRUE(outcome().evidence.demands.owe);
}

TEST_F(Causes, APreSharedKeyWithSHA256AloneIsNothingInCommon) {
    AccessPoint accessPoint("wpa2");
    accessPoint.reconfigure("wpa_key_mgmt=WPA-PSK-SHA256");
    ASSERT_TRUE(fails(wpa2Network, Cause::nothingInCommon, Certainty::certain));
    EXPECT_TRUE(outcome().evidence.demands.rsnPskSha256 || outcome().evidence.associationStatus == 43);
}

// The router of a saved network was replaced.
TEST_F(Causes, ASavedNetworkThatBecameWPA3OnlyIsProbablyNothingInCommon) {
    AccessPoint accessPoint("wpa2");
    ASSERT_TRUE(device().connects(wpa2Network));
    manager().disconnect();
    ASSERT_TRUE(device().reaches(Status::disconnected));
    accessPoint.reconfigure("wpa_key_mgmt=SAE\nieee80211w=2");
    ASSERT_TRUE(rescans());
    manager().connectConfigured(wpa2Network.ssid);
    ASSERT_TRUE(ends(wpa2Network.ssid, Cause::nothingInCommon, Certainty::probable));
    EXPECT_TRUE(device().eventually([&] { return outcome().evidence.demands.sae; }));
}

TEST_F(Causes, AnAccessPointThatVanishesIsProbablyGone) {
    AccessPoint accessPoint("wpa2");
    ASSERT_TRUE(device().connects(wpa2Network));
    accessPoint.vanish();
    ASSERT_TRUE(ends(wpa2Network.ssid, Cause::accessPointGone, Certainty::probable));
    const auto history = device().history();
    EXPECT_EQ(history.back().disconnectSsid, wpa2Network.ssid);
}

// The signal is polled once per minute.
TEST_F(Causes, AnAccessPointThatVanishesAtAWeakSignalWasProbablyTooWeak) {
    AccessPoint accessPoint("wpa2");
    ASSERT_TRUE(device().connects(wpa2Network));
    accessPoint.becomeFaint();
    device().clearHistory();
    ASSERT_TRUE(device().eventually([&] {
        const int signal = manager().connectionInfo().signal;
        return signal > wifi::NoSignaldBm && signal <= -75;
    })) << manager().connectionInfo().signal;
    ASSERT_EQ(manager().connectionInfo().status, Status::connected);
    accessPoint.vanish();
    ASSERT_TRUE(ends(wpa2Network.ssid, Cause::weakSignal, Certainty::probable));
    EXPECT_EQ(outcome().stage, Stage::online);
    EXPECT_LE(outcome().evidence.signal, -75);
    EXPECT_EQ(outcome().evidence.reasonSender, Sender::device);
}

TEST_F(Causes, ADeauthenticationIsTheAccessPoints) {
    AccessPoint accessPoint("wpa2");
    ASSERT_TRUE(device().connects(wpa2Network));
    accessPoint.deauthenticateAll();
    ASSERT_TRUE(ends(wpa2Network.ssid, Cause::deauthenticated, Certainty::certain));
    EXPECT_EQ(outcome().stage, Stage::online);
    EXPECT_EQ(outcome().evidence.reasonSender, Sender::accessPoint);
    EXPECT_STREQ(wifi::reasonCodeName(outcome().evidence.reasonCode), "PREV_AUTH_NOT_VALID");
}

// Blocks the device's radio until the end of the scope.
class BlockedRadio {
  public:
    BlockedRadio() { set('1'); }
    ~BlockedRadio() { set('0'); }
    BlockedRadio(const BlockedRadio&) = delete;
    BlockedRadio& operator=(const BlockedRadio&) = delete;
    BlockedRadio(BlockedRadio&&) = delete;
    BlockedRadio& operator=(BlockedRadio&&) = delete;

  private:
    static void set(char blocked) {
        succeeds(std::string("echo ") + blocked + " >$(echo /sys/class/net/wlan0/phy80211/rfkill*/soft)");
    }
};

TEST_F(Causes, ABlockedRadioEndsTheConnectionAndEveryAttempt) {
    ASSERT_TRUE(device().connects(wpa2Network));
    {
        const BlockedRadio blocked;
        ASSERT_TRUE(ends(wpa2Network.ssid, Cause::radioBlocked, Certainty::certain));
        EXPECT_EQ(outcome().stage, Stage::online);
        ASSERT_TRUE(fails(openNetwork, Cause::radioBlocked, Certainty::certain));
        EXPECT_EQ(outcome().stage, Stage::requested);
    }
    EXPECT_TRUE(device().connects(openNetwork));
}

// Stops the supplicant's process until the end of the scope.
class StoppedSupplicant {
  public:
    StoppedSupplicant() { run("systemctl kill --signal=STOP wpa_supplicant"); }
    ~StoppedSupplicant() { succeeds("systemctl kill --signal=CONT wpa_supplicant"); }
    StoppedSupplicant(const StoppedSupplicant&) = delete;
    StoppedSupplicant& operator=(const StoppedSupplicant&) = delete;
    StoppedSupplicant(StoppedSupplicant&&) = delete;
    StoppedSupplicant& operator=(StoppedSupplicant&&) = delete;
};

TEST_F(Causes, ASupplicantThatHangsDoesNotAnswerTheRequest) {
    {
        const StoppedSupplicant stopped;
        ASSERT_TRUE(fails(wpa2Network, Cause::supplicantSilent, Certainty::certain));
        EXPECT_EQ(outcome().stage, Stage::requested);
        EXPECT_EQ(outcome().evidence.reasonCode, 0);
    }
    EXPECT_TRUE(device().connects(openNetwork));
}

// The library notices it when it polls the signal.
TEST_F(Causes, ASupplicantThatHangsLaterIsTroubleAndEndsNothing) {
    ASSERT_TRUE(device().connects(wpa2Network));
    {
        const StoppedSupplicant stopped;
        ASSERT_TRUE(device().eventually(
            [&] { return manager().connectionDetails().trouble == Cause::supplicantSilent; }));
        EXPECT_EQ(manager().connectionInfo().status, Status::connected);
    }
    ASSERT_TRUE(device().eventually([&] { return manager().connectionDetails().trouble == Cause::none; }));
    EXPECT_EQ(manager().connectionInfo().status, Status::connected);
}

// The access points' attempt at the network is under way, or nothing of it was reported yet.
TEST_F(Causes, ASupplicantThatHangsDuringAnAttemptIsSilent) {
    ASSERT_EQ(manager().connect(absentNetwork), ConnectResult::ok);
    ASSERT_TRUE(log().waitForText(spdlog::level::debug, "Selected network"));
    const StoppedSupplicant stopped;
    const auto isTold = [&] {
        const wifi::ConnectionDetails details = manager().connectionDetails();
        return details.trouble == Cause::supplicantSilent ||
               details.lastOutcome.cause == Cause::supplicantSilent;
    };
    EXPECT_TRUE(device().eventually(isTold)) << ::testing::PrintToString(outcome());
}

TEST_F(Causes, AKilledSupplicantIsGone) {
    ASSERT_TRUE(device().connects(wpa2Network));
    run("systemctl kill --signal=KILL wpa_supplicant");
    ASSERT_TRUE(ends(wpa2Network.ssid, Cause::supplicantGone, Certainty::certain));
    EXPECT_EQ(outcome().stage, Stage::online);
}

TEST_F(Causes, TheUserGivesUpReplacesAndSwitchesOff) {
    ASSERT_EQ(manager().connect(peapNetwork), ConnectResult::ok);
    ASSERT_TRUE(device().connects(openNetwork));
    EXPECT_TRUE(ends(peapNetwork.ssid, Cause::replaced, Certainty::certain));
    manager().disconnect();
    EXPECT_TRUE(ends(openNetwork.ssid, Cause::givenUp, Certainty::certain));
    ASSERT_TRUE(device().connects(wpa2Network));
    manager().setEnabled(false);
    EXPECT_TRUE(ends(wpa2Network.ssid, Cause::givenUp, Certainty::certain));
}

// Wrong keys of each kind are told from refusals and from silence, every time.
TEST_F(Causes, AreTheSameInTwentyOfTwentyRepetitions) {
    for (int i = 0; i < 20; ++i) {
        SCOPED_TRACE(i);
        ASSERT_TRUE(fails(with(wpa2Network, "wrong-secret"), Cause::wrongKey, Certainty::probable));
        ASSERT_TRUE(fails(with(saeNetwork, "wrong-secret"), Cause::wrongKey, Certainty::certain));
        ASSERT_TRUE(fails(with(peapNetwork, "wrong-secret"), Cause::eapRejected, Certainty::certain));
        ASSERT_TRUE(fails(refusingNetwork, Cause::full, Certainty::certain));
        ASSERT_TRUE(fails(absentNetwork, Cause::outOfRange, Certainty::certain));
    }
}

TEST_F(Causes, AMissingAddressIsTroubleAndEndsNothing) {
    AccessPoint accessPoint("wpa2");
    accessPoint.stopAddresses();
    manager().setAddressTimeout(std::chrono::seconds(10));
    ASSERT_EQ(manager().connect(wpa2Network), ConnectResult::ok);
    ASSERT_TRUE(device().reaches(Status::connectingIP, wpa2Network.ssid));
    EXPECT_EQ(manager().connectionDetails().trouble, Cause::none);
    ASSERT_TRUE(
        device().eventually([&] { return manager().connectionDetails().trouble == Cause::noAddress; }));
    EXPECT_EQ(manager().connectionInfo().status, Status::connectingIP);
    accessPoint.restore();
    ASSERT_TRUE(device().reaches(Status::connected, wpa2Network.ssid));
    EXPECT_EQ(manager().connectionDetails().trouble, Cause::none);
}

struct NetworkOfMode {
    wifi::ConnectionSettings settings;
    wifi::SecurityMode mode = wifi::SecurityMode::none;
    int frequency = 0;  // MHz
};

TEST_F(Causes, TheNetworkInUseIsTold) {
    for (const auto& [settings, mode, frequency] :
         {NetworkOfMode{wpa2Network, wifi::SecurityMode::rsnPsk, 2427},
          NetworkOfMode{saeNetwork, wifi::SecurityMode::sae, 2437},
          NetworkOfMode{peapNetwork, wifi::SecurityMode::enterprise, 2442},
          NetworkOfMode{openNetwork, wifi::SecurityMode::none, 2412}}) {
        SCOPED_TRACE(settings.ssid);
        ASSERT_TRUE(device().connects(settings));
        const wifi::NetworkInUse network = manager().connectionDetails().network;
        EXPECT_EQ(network.securityMode, mode);
        EXPECT_EQ(network.frequency, frequency);
        EXPECT_EQ(network.bssid[0], 2);  // a locally administered address
    }
}

std::string addressOf(const std::string& accessPoint) {
    const std::string text =
        run("ip netns exec " + accessPoint + " cat /sys/class/net/" + accessPoint + "/address");
    return text.substr(0, text.find('\n'));
}

// Both access points announce the same network. Its states pass by within milliseconds.
TEST_F(Causes, ARoamDoesNotFlicker) {
    ASSERT_TRUE(device().connects(twinNetwork));
    ASSERT_TRUE(device().eventually([&] { return manager().connectionDetails().network.frequency != 0; }));
    const int first = manager().connectionDetails().network.frequency;
    wifi::client::Follower follower;
    const auto isThere = [](const wifi::client::Snapshot& now) {
        return now.connection.info.status == Status::connected;
    };
    ASSERT_TRUE(device().eventually([&] {
        const auto now = follower.takeNewest();
        return now && isThere(*now);
    }));
    device().clearHistory();
    const std::string other = addressOf(first == 2452 ? "twin2" : "twin1");
    run("wpa_cli -p /run/wpa_supplicant -i wlan0 roam " + other);
    std::vector<Status> shown;
    ASSERT_TRUE(device().eventually([&] {
        bool arrived = false;
        while (const auto now = follower.take()) {
            shown.push_back(now->connection.shownStatus);
            const int frequency = now->connection.network.frequency;
            arrived = isThere(*now) && frequency != first && frequency != 0;
        }
        return arrived;
    }));
    ASSERT_TRUE(device().passes(
        [](const wifi::ConnectionInfo& info) { return info.status == Status::connectingWifi; }));
    EXPECT_TRUE(
        std::all_of(shown.begin(), shown.end(), [](Status status) { return status == Status::connected; }));
}

}  // namespace
}  // namespace kaz::vm
