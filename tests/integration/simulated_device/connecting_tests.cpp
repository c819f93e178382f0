#include "support/device_fixture/device_fixture.h"
#include "support/waiting/waiting.h"

#include <chrono>

namespace kaz::test {
namespace {

using wifi::ConnectionInfo;
using wifi::ConnectionSettings;
using wifi::ConnectResult;
using wifi::SecurityMode;
using Status = ConnectionInfo::Status;
using Reason = ConnectionInfo::DisconnectReason;

using Connecting = DeviceFixture;

// An account of the office's network.
ConnectionSettings office() {
    ConnectionSettings settings;
    settings.ssid = "Office";
    settings.securityMode = SecurityMode::enterprise;
    settings.password = "wonderland";
    settings.identity = "alice";
    settings.eapMethod = "PEAP";
    settings.phase2Method = "MSCHAPV2";
    return settings;
}

// The address comes when the test has seen that it is waited for.
TEST_F(Connecting, AWpa2ConnectionGoesThroughEveryStage) {
    neighbourhood.times.dhcp = std::chrono::hours(24);
    start();
    manager().scan();
    ASSERT_TRUE(user().waitForNetwork("Home"));
    user().forgetHistory();
    ASSERT_EQ(manager().connect(home()), ConnectResult::ok);
    ASSERT_TRUE(user().waitForStatus(Status::connectingIP, "Home"));
    device().setOnlineState("online");
    ASSERT_TRUE(user().waitForStatus(Status::connected, "Home"));

    std::vector<Status> stages;
    for (const ConnectionInfo& info : user().history()) {
        EXPECT_EQ(info.ssid, "Home");
        if (stages.empty() || stages.back() != info.status) {
            stages.push_back(info.status);
        }
    }
    EXPECT_EQ(stages, (std::vector{Status::connectingWifi, Status::connectingIP, Status::connected}));
    EXPECT_EQ(manager().connectionInfo().signal, -50);
}

TEST_F(Connecting, AConnectedNetworkLeavesTheListAndIsSavedWithItsPriority) {
    start();
    manager().scan();
    ASSERT_TRUE(user().waitForNetwork("Home"));
    connect(home());
    ASSERT_TRUE(user().waitUntil([&] { return !user().network("Home"); }));
    ASSERT_TRUE(waitForSaved("ssid=\"Home\""));
    ASSERT_TRUE(waitForSaved("priority=2"));
}

TEST_F(Connecting, EveryKindOfNetworkConnects) {
    ConnectionSettings hidden = settings("Hidden", SecurityMode::rsnPsk, "hidden away");
    hidden.hidden = true;
    start();
    for (const ConnectionSettings& target : {
             cafe(),
             settings("Old", SecurityMode::wep, "12345"),
             settings("Neighbour", SecurityMode::rsnPsk, "next door"),
             settings("Future", SecurityMode::sae, "tomorrow"),
             office(),
             hidden,
         }) {
        SCOPED_TRACE(target.ssid);
        ASSERT_NO_FATAL_FAILURE(connect(target));
    }
    EXPECT_EQ(callsOf("AddNetwork").size(), 6U);
}

TEST_F(Connecting, AWrongKeyEndsTheAttemptAndTheOtherNetworksAreEnabledAgain) {
    start();
    connect(cafe());
    ASSERT_TRUE(waitForSaved("ssid=\"Cafe\""));
    device().forgetCalls();

    ASSERT_EQ(manager().connect(home("wrong password")), ConnectResult::ok);
    ASSERT_TRUE(user().waitToPass(Status::connectingWifi, "Home"));
    ASSERT_TRUE(user().waitToPass([](const ConnectionInfo& info) {
        return info.status == Status::disconnected && info.disconnectSsid == "Home" &&
               info.disconnectReason == Reason::causedBySystem;
    }));
    ASSERT_TRUE(waitForCall("SaveConfig"));
    EXPECT_EQ(savedConfiguration().find("disabled=1"), std::string::npos) << savedConfiguration();
}

TEST_F(Connecting, ASecondConnectWithNewSettingsLeavesOneConfiguration) {
    start();
    ASSERT_EQ(manager().connect(home("wrong password")), ConnectResult::ok);
    ASSERT_TRUE(user().waitToPass(Status::connectingWifi, "Home"));
    connect(home());
    ASSERT_TRUE(waitForSaved("priority=2"));
    const std::string saved = savedConfiguration();
    EXPECT_EQ(saved.find("ssid=\"Home\""), saved.rfind("ssid=\"Home\"")) << saved;
    EXPECT_EQ(callsOf("RemoveNetwork").size(), 1U);
}

TEST_F(Connecting, ConnectingToAnotherNetworkRecordsTheEndOfTheFirst) {
    start();
    connect(cafe());
    connect(home());
    const ConnectionInfo info = manager().connectionInfo();
    EXPECT_EQ(info.disconnectSsid, "Cafe");
    EXPECT_EQ(info.disconnectReason, Reason::causedByUser);
    ASSERT_TRUE(waitForSaved("priority=1"));
}

TEST_F(Connecting, AConfiguredNetworkConnectsByItsName) {
    start();
    connect(home());
    connect(cafe());
    ASSERT_TRUE(user().waitUntil([&] {
        const auto home = user().network("Home");
        return home && home->configured;
    }));
    manager().connectConfigured("Home");
    ASSERT_TRUE(user().waitForStatus(Status::connected, "Home"));
}

TEST_F(Connecting, AnAttemptAtANetworkThatIsNotConfiguredIsGivenUpAfterTwoSeconds) {
    start();
    manager().connectConfigured("Nowhere");
    ASSERT_TRUE(user().waitToPass(Status::connectingWifi, "Nowhere"));
    ASSERT_TRUE(user().waitForStatus(Status::disconnected));
    EXPECT_EQ(manager().connectionInfo().disconnectSsid, "Nowhere");
    EXPECT_EQ(manager().connectionInfo().disconnectReason, Reason::causedBySystem);
    EXPECT_TRUE(log().waitForText(
        spdlog::level::warn,
        R"(Tried connecting to configured network, but it isn't known to us. ssid="Nowhere")"));
}

TEST_F(Connecting, DisconnectUndoesAConnect) {
    start();
    connect(home());
    manager().disconnect();
    ASSERT_TRUE(user().waitForStatus(Status::disconnected));
    EXPECT_EQ(manager().connectionInfo().disconnectSsid, "Home");
    EXPECT_EQ(manager().connectionInfo().disconnectReason, Reason::causedByUser);
    ASSERT_TRUE(user().waitForNetwork("Home"));
}

TEST_F(Connecting, AConnectionWhoseLinkIsLostComesBack) {
    start();
    connect(home());
    user().forgetHistory();
    device().deauthenticate(3);
    ASSERT_TRUE(user().waitToPass([](const ConnectionInfo& info) {
        return info.disconnectSsid == "Home" && info.disconnectReason == Reason::causedBySystem;
    }));
    ASSERT_TRUE(user().waitForStatus(Status::connected, "Home"));
}

TEST_F(Connecting, ADisconnectWhileTheSupplicantSearchesHoldsAlsoOnceItHasFoundTheNetwork) {
    start();
    connect(home());
    ASSERT_TRUE(device().removeAccessPoint(accessPoint("Home").bssid));
    ASSERT_TRUE(user().waitForStatus(Status::disconnected));
    forgetLog();
    manager().disconnect();
    ASSERT_TRUE(waitForCall("Disconnect"));
    device().addAccessPoint(accessPoint("Home"));
    ASSERT_TRUE(
        log().waitForText(spdlog::level::info, "Disconnecting again, the supplicant has found a network"));
    ASSERT_TRUE(user().waitForStatus(Status::disconnected));
    EXPECT_TRUE(eventually([&] { return device().supplicantState() == "disconnected"; }));
    ASSERT_NO_FATAL_FAILURE(connect(home()));
}

TEST_F(Connecting, ANetworkThatAnotherClientSelectsIsFollowed) {
    start();
    connect(home());
    connect(cafe());
    ASSERT_TRUE(device().selectNetwork("Home"));
    ASSERT_TRUE(user().waitForStatus(Status::connected, "Home"));
    EXPECT_EQ(manager().connectionInfo().disconnectSsid, "Cafe");
    EXPECT_EQ(manager().connectionInfo().disconnectReason, Reason::causedBySystem);

    manager().connectConfigured("Cafe");
    ASSERT_TRUE(user().waitForStatus(Status::connected, "Cafe"));
    EXPECT_TRUE(log().waitFor([&](const RecordingLog::Records&) {
        return savedConfiguration().find("disabled=1") == std::string::npos;
    }));
}

// The supplicant has reported the access point before the attempt, and reports no selection.
TEST_F(Connecting, AConnectToTheNetworkThatTheSupplicantIsJoiningSucceeds) {
    neighbourhood.configuredNetworks = {{{"ssid", "Home"}, {"key_mgmt", "WPA-PSK"}, {"psk", homePassword}}};
    accessPoint("Home").busy = true;
    start();
    ASSERT_TRUE(eventually([&] { return device().supplicantState() == "4way_handshake"; }));
    device().forgetCalls();
    manager().connectConfigured("Home");
    ASSERT_TRUE(waitForCall("SelectNetwork"));
    ASSERT_TRUE(device().alterAccessPoint(accessPoint("Home").bssid,
                                          [](sim::AccessPoint& point) { point.busy = false; }));
    EXPECT_TRUE(user().waitForStatus(Status::connected, "Home"));
}

TEST_F(Connecting, ConnectAcceptsOnlyTheEapMethodsOnOffer) {
    start();
    EXPECT_EQ(manager().eapMethods(), (std::set<std::string>{"MSCHAPV2", "PEAP", "PWD", "TTLS"}));
    ConnectionSettings unsupported = office();
    unsupported.eapMethod = "TLS";
    EXPECT_EQ(manager().connect(unsupported), ConnectResult::eapMethodUnsupported);
    EXPECT_TRUE(callsOf("AddNetwork").empty());
}

TEST_F(Connecting, AServerIsTrustedOnlyWithItsCaAndDomain) {
    accessPoint("Office").caFile = "/etc/office-ca.pem";
    accessPoint("Office").serverDomain = "radius.example.org";
    start();
    ConnectionSettings target = office();
    target.eapMethod.clear();
    const wifi::Certificates right{"/etc/office-ca.pem", "example.org", "", "", ""};
    for (const wifi::Certificates& wrong : {wifi::Certificates{"/etc/other-ca.pem", "", "", "", ""},
                                            wifi::Certificates{right.caFile, "example.com", "", "", ""}}) {
        user().forgetHistory();
        ASSERT_EQ(manager().connect(target, wrong), ConnectResult::ok);
        ASSERT_TRUE(user().waitToPass(Status::connectingWifi, "Office"));
        ASSERT_TRUE(user().waitForStatus(Status::disconnected));
    }
    ASSERT_EQ(manager().connect(target, right), ConnectResult::ok);
    ASSERT_TRUE(user().waitForStatus(Status::connected, "Office"));
    ASSERT_TRUE(waitForSaved("domain_suffix_match=\"example.org\""));
    ASSERT_TRUE(waitForSaved("eap=PEAP TTLS"));
}

TEST_F(Connecting, ADeviceWithACertificateNeedsNoPassword) {
    accessPoint("Office").accounts = {{"device", "", "TLS", ""}};
    start();
    ConnectionSettings target;
    target.ssid = "Office";
    target.securityMode = SecurityMode::enterprise;
    target.identity = "device";
    ASSERT_EQ(manager().connect(target, {"", "", "/etc/device.pem", "/etc/device.key", "key secret"}),
              ConnectResult::ok);
    ASSERT_TRUE(user().waitForStatus(Status::connected, "Office"));
    ASSERT_TRUE(waitForSaved("private_key_passwd=\"key secret\""));
    EXPECT_FALSE(log().contains("key secret"));
}

TEST_F(Connecting, APasswordNeverReachesTheLog) {
    ConnectionSettings target = office();
    target.anonymousIdentity = "somebody";
    start();
    connect(home());
    connect(target);
    for (const char* secret : {homePassword, "wonderland", "alice", "somebody"}) {
        EXPECT_FALSE(log().contains(secret)) << secret;
    }
}

TEST_F(Connecting, APasswordThatTheSupplicantRepeatsNeverReachesTheLog) {
    start();
    const auto ordered = device().orderFault(
        {.peer = "supplicant", .member = "AddNetwork", .errorText = std::string("bad psk ") + homePassword});
    ASSERT_EQ(manager().connect(home()), ConnectResult::ok);
    ASSERT_TRUE(user().waitToPass(Status::connectingWifi, "Home"));
    ASSERT_TRUE(user().waitForStatus(Status::disconnected));
    EXPECT_EQ(device().timesFired(ordered), 1U);
    EXPECT_FALSE(log().contains(homePassword));
}

}  // namespace
}  // namespace kaz::test
