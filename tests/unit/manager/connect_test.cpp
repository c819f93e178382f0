// Connecting to new and to configured networks.
#include "unit/manager/engine_fixture.h"

namespace kaz::test {
namespace {

using namespace std::chrono_literals;
using Stored = FakeWifiStack::Network;

class Connect : public EngineWithSupplicant {
  protected:
    void connect(const ConnectionSettings& settings) {
        EXPECT_EQ(engine->connect(settings), ConnectResult::ok);
        takeCalls();
        communicator->runTasks();
    }
};

class ConnectConfigured : public EngineTest {
  protected:
    void connect(const std::string& ssid) {
        engine->connectConfigured(ssid);
        takeCalls();
        communicator->runTasks();
    }
};

TEST_F(Connect, ConnectAddsThenSelectsThenLists) {
    connect(settingsFor("Home"));
    EXPECT_EQ(takeCalls(), (Calls{timerOn, "addNetworkSync(Home)", "selectSync(1)", listing, listing}));
    EXPECT_EQ(stack->networks, (std::vector<Stored>{{1, "Home", true, 0}}));
}

TEST_F(Connect, ConnectRemovesOlderConfigurationsAfterTheSelection) {
    stack->configure("Home");
    stack->configure("Cafe");
    stack->configure("Home");
    stack->configure(std::nullopt);
    stack->configure("home");
    connect(settingsFor("Home"));
    EXPECT_EQ(takeCalls(), (Calls{timerOn, "addNetworkSync(Home)", "selectSync(6)", listing, "removeSync(1)",
                                  "removeSync(3)", listing}));
    EXPECT_EQ(stack->networks, (std::vector<Stored>{{2, "Cafe", false, 0},
                                                    {4, std::nullopt, false, 0},
                                                    {5, "home", false, 0},
                                                    {6, "Home", true, 0}}));
}

TEST_F(Connect, TwoConnectsToOneNetworkLeaveOneConfiguration) {
    connect(settingsFor("Home"));
    takeCalls();
    connect(settingsFor("Home", SecurityMode::sae));
    EXPECT_EQ(takeCalls(),
              (Calls{"addNetworkSync(Home)", "selectSync(2)", listing, "removeSync(1)", listing}));
    EXPECT_EQ(stack->networks, (std::vector<Stored>{{2, "Home", true, 0}}));
}

TEST_F(Connect, FailedRemovalDoesNotStopTheConnect) {
    stack->configure("Home");
    stack->configure("Home");
    stack->failing = {"removeSync"};
    connect(settingsFor("Home"));
    EXPECT_EQ(takeCalls(), (Calls{timerOn, "addNetworkSync(Home)", "selectSync(3)", listing,
                                  "removeSync(1) fails", "removeSync(2) fails", listing}));
}

TEST_F(Connect, ConnectIsPublishedBeforeTheSupplicantIsCalled) {
    std::string published;
    stack->onCall = [&](const std::string& call) {
        if (call == "addNetworkSync(Home)") {
            published = state();
        }
    };
    connect(settingsFor("Home"));
    EXPECT_EQ(published, R"(status=connectingWifi, ssid="Home")");
    EXPECT_EQ(takeCallbacks(), Callbacks{.connection = 1});
}

TEST_F(Connect, ConnectPassesACopyOfAllSettings) {
    ConnectionSettings settings{"Home",     SecurityMode::enterprise, true, "password", "identity", "", "PAP",
                                "anonymous"};
    ConnectionSettings seen;
    communicator->onAddNetwork = [&](const ConnectionSettings& given, const auto&) { seen = given; };
    EXPECT_EQ(engine->connect(settings), ConnectResult::ok);
    settings = ConnectionSettings();
    communicator->runTasks();
    EXPECT_EQ(seen.ssid, "Home");
    EXPECT_EQ(seen.securityMode, SecurityMode::enterprise);
    EXPECT_TRUE(seen.hidden);
    EXPECT_EQ(seen.password, "password");
    EXPECT_EQ(seen.identity, "identity");
    EXPECT_EQ(seen.eapMethod, "");
    EXPECT_EQ(seen.phase2Method, "PAP");
    EXPECT_EQ(seen.anonymousIdentity, "anonymous");
}

TEST_F(Connect, ConnectIsLoggedBeforeAndAfterAdding) {
    connect(settingsFor("Home"));
    EXPECT_EQ(log.records(), (Records{debug(R"(Connecting to ssid="Home")"),
                                      debug(R"(connectionInfo changed: status=connectingWifi, ssid="Home")"),
                                      info(R"(Connecting to ssid="Home")")}));
}

TEST_F(Connect, ConnectToAHiddenNetworkIsLogged) {
    ConnectionSettings settings = settingsFor("Home");
    settings.hidden = true;
    connect(settings);
    EXPECT_EQ(log.records(), (Records{debug(R"(Connecting to ssid="Home")"),
                                      debug(R"(connectionInfo changed: status=connectingWifi, ssid="Home")"),
                                      debug(R"(Assuming that network might be hidden. ssid="Home")"),
                                      info(R"(Connecting to ssid="Home")")}));
}

TEST_F(Connect, ConnectLogsRedactableSsidsAndNoSecrets) {
    ConnectionSettings settings{std::string("a\"b\\\0\xff", 6),
                                SecurityMode::enterprise,
                                true,
                                "secret password",
                                "secret identity",
                                "",
                                "PAP",
                                "secret anonymous identity"};
    connect(settings);
    communicator->networkSelectedHandler(settings.ssid);
    engine->connectConfigured(settings.ssid);
    engine->forgetNetwork(settings.ssid);
    runUntilIdle();
    EXPECT_FALSE(log.records().empty());
    const std::string redactable("ssid=\"a\\\"b\\\\\0\xff\"", 15);
    for (const std::string& text : log.texts()) {
        EXPECT_EQ(text.find("secret"), std::string::npos) << text;
        std::string rest = text;
        for (auto at = rest.find(redactable); at != std::string::npos; at = rest.find(redactable)) {
            rest.erase(at, redactable.size());
        }
        EXPECT_EQ(rest.find('\xff'), std::string::npos) << "a bare SSID in: " << text;
    }
}

TEST_F(Connect, FailedAdditionEndsTheConnectByItsTimeout) {
    stack->failing = {"addNetworkSync"};
    connect(settingsFor("Home"));
    EXPECT_EQ(takeCalls(), (Calls{timerOn, "addNetworkSync(Home) fails"}));
    EXPECT_EQ(runUntilIdle(), 2000ms);
    clock->advance(2s);
    EXPECT_EQ(runUntilIdle(), std::nullopt);
    EXPECT_EQ(state(), R"(status=disconnected, disconnectReason=causedBySystem, disconnectssid="Home")");
    EXPECT_EQ(takeCalls(), Calls{timerOff});
}

TEST_F(Connect, FailedSelectionKeepsTheOtherConfigurations) {
    stack->configure("Home");
    stack->failing = {"selectSync"};
    connect(settingsFor("Home"));
    EXPECT_EQ(takeCalls(), (Calls{timerOn, "addNetworkSync(Home)", "selectSync(2) fails", listing}))
        << "the only listing is that of the configured names";
    EXPECT_EQ(stack->networks.size(), 2U);
    clock->advance(2s);
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{timerOff}) << "there is nothing to enable again";
}

TEST_F(Connect, ConnectMarksTheNetworkAsConfigured) {
    reportBssList({{"Home", -50, SecurityMode::rsnPsk}});
    connect(settingsFor("Home"));
    engine->disconnect();
    runUntilIdle();
    EXPECT_EQ(engine->networks(), (std::vector<WifiNetwork>{{"Home", -50, SecurityMode::rsnPsk, true}}));
}

TEST_F(Connect, ConnectEndsTheFormerConnectionByUser) {
    becomeConnected("Old");
    connect(settingsFor("Home"));
    EXPECT_EQ(state(), R"(status=connectingWifi, ssid="Home")");
    EXPECT_EQ(engine->connectionInfo().disconnectReason, ConnectionInfo::DisconnectReason::causedByUser);
    EXPECT_EQ(engine->connectionInfo().disconnectSsid, "Old");
    EXPECT_EQ(takeCalls().front(), "addNetworkSync(Home)") << "the timer keeps running";
}

TEST_F(ConnectConfigured, ConnectConfiguredSelectsTheFirstConfigurationAndRemovesTheOther) {
    stack->configure(std::nullopt);
    stack->configure("Cafe");
    stack->configure("Home");
    stack->configure("Home");
    startWithSupplicant();
    connect("Home");
    EXPECT_EQ(takeCalls(), (Calls{timerOn, listing, "selectSync(3)", listing, "removeSync(4)"}));
    EXPECT_EQ(
        stack->networks,
        (std::vector<Stored>{{1, std::nullopt, false, 0}, {2, "Cafe", false, 0}, {3, "Home", true, 0}}));
}

TEST_F(ConnectConfigured, ConnectConfiguredIsLogged) {
    stack->configure("Home");
    startWithSupplicant();
    connect("Home");
    EXPECT_EQ(log.records(), (Records{debug(R"(Connecting to configured network ssid="Home")"),
                                      debug(R"(connectionInfo changed: status=connectingWifi, ssid="Home")"),
                                      info(R"(Connecting to ssid="Home")")}));
}

TEST_F(ConnectConfigured, ConnectConfiguredIsPublishedBeforeTheSupplicantIsCalled) {
    stack->configure("Home");
    startWithSupplicant();
    std::string published;
    stack->onCall = [&](const std::string& call) {
        if (call == "getAllConfiguredNetworksSync" && published.empty()) {
            published = state();
        }
    };
    connect("Home");
    EXPECT_EQ(published, R"(status=connectingWifi, ssid="Home")");
}

TEST_F(ConnectConfigured, FailedSelectionEndsTheConnectConfigured) {
    stack->configure("Home");
    stack->configure("Home");
    stack->failing = {"selectSync"};
    startWithSupplicant();
    connect("Home");
    EXPECT_EQ(takeCalls(), (Calls{timerOn, listing, "selectSync(1) fails"}))
        << "the second configuration is not tried";
}

TEST_F(ConnectConfigured, UnknownNetworkWarnsAndIsPublishedUntilTheTimeout) {
    stack->configure("Cafe");
    stack->configure(std::nullopt);
    startWithSupplicant();
    connect("Home");
    EXPECT_EQ(takeCalls(), (Calls{timerOn, listing}));
    EXPECT_EQ(log.records().back(),
              warning(R"(Tried connecting to configured network, but it isn't known to us. ssid="Home")"));
    EXPECT_EQ(state(), R"(status=connectingWifi, ssid="Home")");
    EXPECT_EQ(runUntilIdle(), 2000ms);
    clock->advance(2s);
    runUntilIdle();
    EXPECT_EQ(state(), R"(status=disconnected, disconnectReason=causedBySystem, disconnectssid="Home")");
}

TEST_F(ConnectConfigured, UnknownNetworkEndsOnTheFormerConnection) {
    stack->configure("Home");
    startWithSupplicant();
    becomeConnected("Home");
    engine->connectConfigured("Nowhere");
    runUntilIdle();
    EXPECT_EQ(state(), R"(status=connectingWifi, ssid="Nowhere")");
    clock->advance(2s);
    forget();
    runUntilIdle();
    EXPECT_EQ(state(), R"(status=connected, ssid="Home", signal=-50)");
    EXPECT_EQ(engine->connectionInfo().disconnectSsid, "Nowhere");
    EXPECT_EQ(engine->connectionInfo().disconnectReason, ConnectionInfo::DisconnectReason::causedBySystem);
    // A change from an attempt to a connection counts as a success.
    EXPECT_EQ(takeCalls(), (Calls{listing, "setPrioritySync(1, 2)", saving}));
    EXPECT_EQ(takeGaugeReports(), (GaugeReports{{"quarn.wifi.connected", 1.0},
                                                {"quarn.wifi.signal-strength-dbm", -50.0},
                                                {"quarn.wifi.connection-attempt.success", 1.0},
                                                {"quarn.wifi.connection-attempt.total", 1.0}}));
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{});
}

TEST_F(ConnectConfigured, FailedListingMakesTheNetworkUnknown) {
    stack->configure("Home");
    startWithSupplicant();
    stack->failing = {"getAllConfiguredNetworksSync"};
    connect("Home");
    EXPECT_EQ(takeCalls(), (Calls{timerOn, "getAllConfiguredNetworksSync fails"}));
    EXPECT_EQ(log.texts(spdlog::level::warn).size(), 1U);
}

TEST_F(ConnectConfigured, ConnectConfiguredPostsItsTaskForAnySsid) {
    startWithSupplicant();
    engine->connectConfigured("");
    engine->connectConfigured(std::string(100, 'x'));
    EXPECT_EQ(takeCalls(), (Calls{posting, posting}));
}

}  // namespace
}  // namespace kaz::test
