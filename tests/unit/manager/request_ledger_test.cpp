#include "unit/manager/engine_fixture.h"

#include <wifi/request_failure.h>

#include <functional>
#include <memory>
#include <set>
#include <stdexcept>

namespace kaz::test {
namespace {

using wifi::RequestFailure;
using Failures = wifi::RequestFailures;
using wifi::FailureReason;

class Requests : public EngineTest {
  protected:
    void ask() {
        engine->whenCarriedOut([this](const Failures& failures) { told.push_back(failures); });
    }

    std::vector<Failures> takeTold() { return std::exchange(told, {}); }

    // What is told of a request.
    Failures failuresOf(const std::function<void()>& request) {
        request();
        ask();
        runUntilIdle();
        const auto all = takeTold();
        EXPECT_EQ(all.size(), 1U);
        return all.empty() ? Failures() : all.front();
    }

    std::vector<Failures> told;
};

TEST_F(Requests, RequestsAreToldOnceTheirResultIsPublished) {
    startWithSupplicant();
    wifi::ConnectionInfo seen;
    EXPECT_EQ(engine->connect(settingsFor("Home", SecurityMode::none)), ConnectResult::ok);
    engine->whenCarriedOut([&](const Failures& failures) {
        told.push_back(failures);
        seen = engine->connectionInfo();
    });
    communicator->runTasks();
    EXPECT_TRUE(told.empty()) << "the idle pass publishes";
    communicator->runIdlePass();
    EXPECT_EQ(takeTold(), std::vector{Failures()});
    EXPECT_EQ(seen.ssid, "Home");
    runUntilIdle();
    EXPECT_TRUE(told.empty()) << "only once";
}

TEST_F(Requests, AnIdlePassTellsAlsoWhileTheRequestIsStillBeingPosted) {
    startWithSupplicant();
    communicator->onPosted = [this] {
        communicator->runTasks();
        communicator->runIdlePass();
    };
    ask();
    communicator->onPosted = nullptr;
    EXPECT_EQ(takeTold(), std::vector{Failures()}) << "no other pass may follow";
}

TEST_F(Requests, AskingCallsNothing) {
    startWithSupplicant();
    ask();
    EXPECT_EQ(takeCalls(), Calls{posting});
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{});
    EXPECT_EQ(takeTold(), std::vector{Failures()}) << "there were no requests";
}

TEST_F(Requests, EachFailureIsTold) {
    startWithSupplicant();
    stack->configure("Saved");
    const auto connect = [this] { engine->connect(settingsFor("Home", SecurityMode::none)); };
    const auto scan = [this] { engine->scan(); };
    const auto select = [this] { engine->connectConfigured("Saved"); };
    const auto selectUnknown = [this] { engine->connectConfigured("Unknown"); };
    const auto disconnect = [this] { engine->disconnect(); };
    const auto forget = [this] { engine->forgetNetwork("Saved"); };
    const auto forgetUnknown = [this] { engine->forgetNetwork("Unknown"); };
    const auto switchOn = [this] { engine->setEnabled(true); };
    struct Row {
        std::string failing;
        std::function<void()> request;
        Failures failures;
    };
    for (const auto& [failing, request, failures] : std::vector<Row>{
             {"", scan, {}},
             {"scanSync", scan, {{RequestFailure::refused, FailureReason::refused}}},
             {"addNetworkSync", connect, {{RequestFailure::refused, FailureReason::refused}}},
             {"selectSync(1)", select, {{RequestFailure::refused, FailureReason::refused}}},
             {"", selectUnknown, {{RequestFailure::unknownNetwork, FailureReason::none}}},
             {"disconnectSync", disconnect, {{RequestFailure::refused, FailureReason::refused}}},
             {"removeSync(1)", forget, {{RequestFailure::refused, FailureReason::refused}}},
             {"", forgetUnknown, {{RequestFailure::unknownNetwork, FailureReason::none}}},
             {"saveNetworkConfigurationSync",
              forgetUnknown,
              {{RequestFailure::unknownNetwork, FailureReason::none},
               {RequestFailure::notSaved, FailureReason::refused}}},
             {"writeEnabledConfiguration",
              switchOn,
              {{RequestFailure::choiceNotWritten, FailureReason::none}}},
             {"startStopSupplicantSync", switchOn, {{RequestFailure::unitRefused, FailureReason::refused}}},
             {"", switchOn, {}},
         }) {
        stack->failing = {failing};
        EXPECT_EQ(failuresOf(request), failures) << failing;
    }
}

TEST_F(Requests, WithoutASupplicantNobodyWasAsked) {
    start();
    stack->failing = {"scanSync", "addNetworkSync", "disconnectSync", "getAllConfiguredNetworksSync"};
    const Failures notAttached{{RequestFailure::notAttached, FailureReason::none}};
    EXPECT_EQ(failuresOf([this] { engine->scan(); }), notAttached);
    EXPECT_EQ(failuresOf([this] { engine->connect(settingsFor("Home", SecurityMode::none)); }), notAttached);
    EXPECT_EQ(failuresOf([this] { engine->connectConfigured("Home"); }), notAttached);
    EXPECT_EQ(failuresOf([this] { engine->disconnect(); }), notAttached);
    EXPECT_EQ(failuresOf([this] { engine->forgetNetwork("Home"); }), notAttached);
}

TEST_F(Requests, EachAskerIsToldOfTheRequestsSinceTheOneBefore) {
    startWithSupplicant();
    stack->failing = {"scanSync"};
    ask();
    engine->scan();
    engine->connectConfigured("Unknown");
    ask();
    ask();
    engine->disconnect();
    runUntilIdle();
    EXPECT_EQ(takeTold(), (std::vector<Failures>{{},
                                                 {{RequestFailure::refused, FailureReason::refused},
                                                  {RequestFailure::unknownNetwork, FailureReason::none}},
                                                 {}}));
    engine->scan();
    runUntilIdle();
    ask();
    runUntilIdle();
    EXPECT_EQ(takeTold(), std::vector{(Failures{{RequestFailure::refused, FailureReason::refused}})})
        << "asked when it had run already";
}

TEST_F(Requests, AskerWaitsForEarlierRequestsAndForNoLaterOne) {
    startWithSupplicant();
    engine->scan();
    ask();
    engine->scan();
    communicator->runIdlePass();
    communicator->runOneTask();
    communicator->runIdlePass();
    EXPECT_TRUE(told.empty()) << "its own task keeps the order";
    communicator->runOneTask();
    communicator->runIdlePass();
    EXPECT_EQ(takeTold(), std::vector{Failures()});
    EXPECT_EQ(communicator->queuedTasks(), 1U);
}

TEST_F(Requests, DroppedRequestsAreTold) {
    startWithSupplicant();
    engine->scan();
    ask();
    communicator->dropTasks();
    communicator->runIdlePass();
    EXPECT_EQ(takeTold(), std::vector{(Failures{{RequestFailure::dropped, FailureReason::none}})});
    ask();
    communicator->dropTasks();
    communicator->runIdlePass();
    EXPECT_EQ(takeTold(), std::vector{Failures()}) << "asking is no request";
}

TEST_F(Requests, RequestThatThrowsHasFailed) {
    startWithSupplicant();
    stack->onCall = [](const std::string& call) {
        if (call == "scanSync") {
            throw std::runtime_error("out of luck");
        }
    };
    engine->scan();
    EXPECT_THROW(communicator->runOneTask(), std::runtime_error);
    stack->onCall = nullptr;
    EXPECT_EQ(failuresOf([] {}), (Failures{{RequestFailure::refused, FailureReason::refused}}));
}

// While a selection keeps the other networks disabled, nothing is saved.
TEST_F(Requests, SaveThatFailsLaterIsToldToTheNextAsker) {
    startWithSupplicant();
    stack->configure("Home");
    stack->configure("Cafe");
    stack->failing = {"saveNetworkConfigurationSync"};
    EXPECT_EQ(failuresOf([this] {
                  engine->connectConfigured("Home");
                  engine->forgetNetwork("Cafe");
              }),
              Failures());
    EXPECT_EQ(failuresOf([this] { engine->forgetNetwork("Home"); }),
              (Failures{{RequestFailure::notSaved, FailureReason::refused}}));
    EXPECT_EQ(failuresOf([] {}), Failures());
    engine->forgetNetwork("Unknown");
    runUntilIdle();
    EXPECT_EQ(failuresOf([] {}), (Failures{{RequestFailure::unknownNetwork, FailureReason::none},
                                           {RequestFailure::notSaved, FailureReason::refused}}));
}

TEST_F(Requests, NobodyIsToldOnceTheEngineEnds) {
    startWithSupplicant();
    const auto kept = std::make_shared<int>(0);
    engine->whenCarriedOut([this, kept](const Failures& failures) { told.push_back(failures); });
    communicator->runTasks();
    engine.reset();
    EXPECT_TRUE(told.empty());
    EXPECT_EQ(kept.use_count(), 1) << "the callback is destroyed";
}

TEST_F(Requests, CallbackMayAskAgainAndThrow) {
    startWithSupplicant();
    engine->whenCarriedOut([this](const Failures&) {
        ask();
        throw std::runtime_error("not today");
    });
    engine->whenCarriedOut(nullptr);
    ask();
    runUntilIdle();
    EXPECT_EQ(takeTold().size(), 1U);
    EXPECT_TRUE(log.contains("A callback threw an exception: not today"));
    runUntilIdle();
    EXPECT_EQ(takeTold().size(), 1U);
}

}  // namespace
}  // namespace kaz::test
