// The published list of networks in range.
#include "unit/manager/engine_fixture.h"

#include <algorithm>
#include <map>
#include <random>
#include <utility>

namespace kaz::test {
namespace {

using Networks = std::vector<WifiNetwork>;

class NetworkList : public EngineWithSupplicant {
  protected:
    void publish(std::vector<Bss> list) {
        reportBssList(std::move(list));
        runUntilIdle();
    }
};

class Scanning : public EngineWithSupplicant {};

constexpr auto none = SecurityMode::none;
constexpr auto wpaPsk = SecurityMode::wpaPsk;
constexpr auto rsnPsk = SecurityMode::rsnPsk;

TEST_F(NetworkList, EntryHasTheStrongestSignalAndTheFirstSecurityMode) {
    publish({{"A", -70, rsnPsk}, {"A", -50, none}, {"A", -60, wpaPsk}});
    EXPECT_EQ(engine->networks(), (Networks{{"A", -50, rsnPsk, false}}));
}

TEST_F(NetworkList, ListBeginsWithTheStrongestSignal) {
    publish({{"A", -70, none}, {"B", -30, none}, {"C", -50, none}, {"A", -40, none}, {"D", 3, none}});
    EXPECT_EQ(engine->networks(), (Networks{{"D", 3, none, false},
                                            {"B", -30, none, false},
                                            {"A", -40, none, false},
                                            {"C", -50, none, false}}));
}

TEST_F(NetworkList, AccessPointsWithoutSsidAreNotListed) {
    publish({{"", -10, none}, {"A", -70, none}, {"", -20, rsnPsk}});
    EXPECT_EQ(engine->networks(), (Networks{{"A", -70, none, false}}));
    publish({{"", -10, none}});
    EXPECT_TRUE(engine->networks().empty());
}

TEST_F(NetworkList, SsidsThatDifferInOneByteAreTwoEntries) {
    const std::string nul("A\0", 2);
    publish(
        {{"A", -10, none}, {nul, -20, none}, {"a", -30, none}, {"A ", -40, none}, {"\xff\xfe", -50, none}});
    EXPECT_EQ(engine->networks(), (Networks{{"A", -10, none, false},
                                            {nul, -20, none, false},
                                            {"a", -30, none, false},
                                            {"A ", -40, none, false},
                                            {"\xff\xfe", -50, none, false}}));
}

TEST_F(NetworkList, ListIsRebuiltByTheNextIdlePass) {
    reportBssList({{"A", -70, none}});
    EXPECT_TRUE(engine->networks().empty());
    EXPECT_EQ(takeCallbacks(), Callbacks{});
    runUntilIdle();
    EXPECT_EQ(engine->networks().size(), 1U);
    EXPECT_EQ(takeCallbacks(), Callbacks{.networks = 1});
}

TEST_F(NetworkList, NewListIsPublishedBeforeItsCallbackAndLogged) {
    Networks seen;
    engine->onNetworksListChanged([&] { seen = engine->networks(); });
    publish({{"A", -70, none}, {"B", -60, none}});
    EXPECT_EQ(seen, engine->networks());
    EXPECT_EQ(seen.size(), 2U);
    EXPECT_EQ(log.records(), Records{debug("Network list changed, size: 2")});
    EXPECT_EQ(takeCalls(), Calls{}) << "the supplicant is not asked";
}

TEST_F(NetworkList, EqualListInvokesNoCallback) {
    publish({{"A", -70, none}, {"B", -60, none}});
    forget();
    publish({{"B", -60, none}, {"A", -70, none}});
    publish({{"B", -60, none}, {"", -10, none}, {"A", -80, none}, {"A", -70, rsnPsk}});
    EXPECT_EQ(takeCallbacks(), Callbacks{});
    EXPECT_TRUE(log.records().empty());
}

TEST_F(NetworkList, ChangeOfAnyFieldInvokesTheCallback) {
    publish({{"A", -70, none}});
    const std::vector<std::vector<Bss>> changes{
        {{"A", -71, none}}, {{"A", -71, rsnPsk}}, {{"B", -71, rsnPsk}}, {}, {{"B", -71, rsnPsk}}};
    for (std::size_t i = 0; i < changes.size(); ++i) {
        forget();
        publish(changes[i]);
        EXPECT_EQ(takeCallbacks(), Callbacks{.networks = 1}) << "change " << i;
    }
    stack->configure("B");
    forget();
    attachSupplicant();
    runUntilIdle();
    EXPECT_EQ(engine->networks(), (Networks{{"B", -71, rsnPsk, true}}));
    EXPECT_EQ(takeCallbacks(), (Callbacks{.networks = 1}));
}

TEST_F(NetworkList, ConfiguredNetworksAreMarked) {
    stack->configure("A");
    stack->configure("A");
    stack->configure(std::nullopt);
    attachSupplicant();
    publish({{"A", -70, none}, {"B", -60, none}});
    EXPECT_EQ(engine->networks(), (Networks{{"B", -60, none, false}, {"A", -70, none, true}}));
}

TEST_F(NetworkList, ConfiguredNetworksOutOfRangeAreNotListed) {
    stack->configure("Far away");
    attachSupplicant();
    publish({{"A", -70, none}});
    EXPECT_EQ(engine->networks(), (Networks{{"A", -70, none, false}}));
}

TEST_F(NetworkList, NetworkInUseIsNotListedUntilItIsDisconnected) {
    publish({{"A", -70, none}, {"B", -60, none}});
    reportOnline(true);
    reportLinkUp("A");
    runUntilIdle();
    ASSERT_EQ(state(), R"(status=connected, ssid="A", signal=-50)");
    EXPECT_EQ(engine->networks(), (Networks{{"B", -60, none, false}}));
    forget();
    reportStatus(SupplicantStatus::Disconnected);
    EXPECT_EQ(engine->networks().size(), 1U);
    runUntilIdle();
    EXPECT_EQ(engine->networks(), (Networks{{"B", -60, none, false}, {"A", -70, none, false}}));
    EXPECT_EQ(takeCallbacks(), (Callbacks{.networks = 1, .connection = 1}));
}

TEST_F(NetworkList, NetworkBeingConnectedToIsNotListed) {
    publish({{"A", -70, none}, {"B", -60, none}});
    engine->connectConfigured("A");
    runUntilIdle();
    EXPECT_EQ(engine->networks(), (Networks{{"B", -60, none, false}}));
    engine->connectConfigured("B");
    runUntilIdle();
    EXPECT_EQ(engine->networks(), (Networks{{"A", -70, none, false}}));
}

Bss demanding(const std::string& ssid, std::vector<bool wifi::NetworkDemands::*> demands,
              SecurityMode announced = SecurityMode::unsupported) {
    Bss bss{ssid, -50, announced};
    for (bool wifi::NetworkDemands::*demand : demands) {
        bss.demands.*demand = true;
    }
    return bss;
}

using Demands = wifi::NetworkDemands;

TEST_F(NetworkList, AccessTellsWhatEachNetworkAsksForAndTheModeThatJoinsIt) {
    publish({demanding("Future", {&Demands::sae}), demanding("Cafe", {&Demands::owe}),
             demanding("Home", {&Demands::rsnPsk}, rsnPsk), demanding("Home", {&Demands::sae}),
             demanding("", {&Demands::sae})});
    const auto access = engine->networkAccess();
    ASSERT_EQ(access.size(), 3U);
    EXPECT_EQ(access.at("Future").mode, SecurityMode::sae);
    EXPECT_EQ(access.at("Cafe").mode, SecurityMode::unsupported);
    EXPECT_TRUE(access.at("Cafe").demands.owe);
    EXPECT_EQ(access.at("Home").mode, rsnPsk);
    EXPECT_TRUE(access.at("Home").demands.rsnPsk && access.at("Home").demands.sae);
}

TEST_F(NetworkList, AccessToTheNetworkInUseIsTold) {
    publish({demanding("Future", {&Demands::sae})});
    reportLinkUp("Future");
    runUntilIdle();
    EXPECT_TRUE(engine->networks().empty());
    EXPECT_EQ(engine->networkAccess().at("Future").mode, SecurityMode::sae);
}

TEST_F(NetworkList, AccessIsPublishedBeforeTheCallbackOfTheListAndHasNoneItself) {
    SecurityMode seen = SecurityMode::none;
    engine->onNetworksListChanged([&] { seen = engine->networkAccess().at("A").mode; });
    publish({demanding("A", {&Demands::sae})});
    EXPECT_EQ(seen, SecurityMode::sae);
    publish({demanding("A", {&Demands::owe})});
    EXPECT_EQ(seen, SecurityMode::sae);
    EXPECT_EQ(engine->networkAccess().at("A").mode, SecurityMode::unsupported);
}

TEST_F(NetworkList, HashToElementCountsAsAnObstacleOnceTheSupplicantSaysThatItLacksIt) {
    publish({demanding("A", {&Demands::sae, &Demands::hashToElement})});
    EXPECT_EQ(engine->networkAccess().at("A").mode, SecurityMode::sae);
    for (const auto& [able, mode] :
         {std::pair{false, SecurityMode::unsupported}, std::pair{true, SecurityMode::sae}}) {
        SupplicantReport ability;
        ability.hashToElement = able;
        report(ability);
        runUntilIdle();
        EXPECT_EQ(engine->networkAccess().at("A").mode, mode);
    }
    EXPECT_EQ(takeCalls(), Calls{}) << "the supplicant is not asked";
}

TEST_F(NetworkList, ListIsEmptyWhenOnlyTheNetworkInUseIsInRange) {
    publish({{"A", -70, none}, {"A", -60, none}});
    reportLinkUp("A");
    runUntilIdle();
    EXPECT_TRUE(engine->networks().empty());
}

TEST_F(NetworkList, ClearedReportEmptiesTheList) {
    publish({{"A", -70, none}});
    forget();
    SupplicantReport cleared;
    cleared.bssListChange = PropertyChange::Cleared;
    report(cleared);
    EXPECT_EQ(engine->networks().size(), 1U);
    runUntilIdle();
    EXPECT_TRUE(engine->networks().empty());
    EXPECT_EQ(takeCallbacks(), Callbacks{.networks = 1});
    EXPECT_EQ(log.texts(), std::vector<std::string>{"Network list changed, size: 0"});
}

TEST_F(NetworkList, ReportWithoutABssListKeepsTheList) {
    publish({{"A", -70, none}});
    SupplicantReport other;
    other.bssList = {{"B", -70, none}};
    report(other);
    runUntilIdle();
    EXPECT_EQ(engine->networks(), (Networks{{"A", -70, none, false}}));
}

TEST_F(NetworkList, RandomAccessPointsGiveAListThatFollowsTheRules) {
    std::mt19937_64 random(20240229);
    const auto pick = [&](int count) { return std::uniform_int_distribution<int>(0, count - 1)(random); };
    for (int round = 0; round < 500; ++round) {
        std::vector<Bss> list;
        std::map<std::string, WifiNetwork> expected;
        for (int i = pick(60); i > 0; --i) {
            const Bss bss{std::string(static_cast<std::size_t>(pick(3)), static_cast<char>(pick(8) - 4)),
                          -pick(100), static_cast<SecurityMode>(pick(8))};
            list.push_back(bss);
            if (!bss.ssid.empty()) {
                WifiNetwork& network =
                    expected.try_emplace(bss.ssid, WifiNetwork{bss.ssid, bss.signal, bss.securityMode, false})
                        .first->second;
                network.signal = std::max(network.signal, bss.signal);
            }
        }
        publish(list);
        const Networks networks = engine->networks();
        EXPECT_TRUE(std::is_sorted(networks.begin(), networks.end(),
                                   [](const auto& a, const auto& b) { return a.signal > b.signal; }))
            << "round " << round;
        EXPECT_EQ(networks.size(), expected.size()) << "round " << round;
        for (const WifiNetwork& network : networks) {
            EXPECT_EQ(expected[network.ssid], network) << "round " << round;
        }
    }
}

TEST_F(Scanning, ScanPostsATaskThatScans) {
    engine->scan();
    EXPECT_EQ(takeCalls(), Calls{posting});
    communicator->runTasks();
    EXPECT_EQ(takeCalls(), Calls{"scanSync"});
    EXPECT_FALSE(engine->isScanning()) << "that is for the supplicant to say";
    EXPECT_EQ(takeCallbacks(), Callbacks{});
}

TEST_F(Scanning, RefusedScanHasNoEffect) {
    stack->failing = {"scanSync"};
    engine->scan();
    runUntilIdle();
    EXPECT_EQ(takeCalls(), (Calls{posting, "scanSync fails"}));
    EXPECT_EQ(takeCallbacks(), Callbacks{});
}

// Once per pass, however many scans end meanwhile.
TEST_F(Scanning, EndOfAScanIsLoggedAndTheListReadAgain) {
    communicator->scanningDoneHandler(true);
    communicator->scanningDoneHandler(false);
    EXPECT_EQ(log.records(), (Records{debug("Scan done, status: true"), debug("Scan done, status: false")}));
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{posting});
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{"refreshBssListSync"});
    EXPECT_EQ(takeCallbacks(), Callbacks{});
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{});
}

// The supplicant reports the list itself when another access point came or went.
TEST_F(Scanning, ListReportedAfterTheScanIsNotReadAgain) {
    communicator->scanningDoneHandler(true);
    reportBssList({{"Home", -50, SecurityMode::none}});
    runUntilIdle();
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{});
}

TEST_F(Scanning, ListOfADetachedSupplicantIsNotReadAgain) {
    communicator->scanningDoneHandler(true);
    detachSupplicant();
    takeCalls();
    runUntilIdle();
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{});
}

TEST_F(Scanning, ListIsReadAgainOnlyAfterAnAttempt) {
    connectTo("Home");
    communicator->scanningDoneHandler(true);
    takeCalls();
    runUntilIdle();
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{});
    reportLinkUp("Home");
    runUntilIdle();
    takeCalls();
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{"refreshBssListSync"});
}

}  // namespace
}  // namespace kaz::test
