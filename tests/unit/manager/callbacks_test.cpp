// What a callback may do, and that a failing one disturbs nothing else.
#include "unit/manager/engine_fixture.h"

#include <algorithm>
#include <functional>
#include <stdexcept>

namespace kaz::test {
namespace {

using Registration = void (wifi::ManagerImpl::*)(std::function<void()>);

// A callback whose copy constructor throws while `armed` is set.
class Uncopyable {
  public:
    explicit Uncopyable(const bool& armed) : armed_(&armed) {}
    ~Uncopyable() = default;
    Uncopyable(const Uncopyable& other) : armed_(other.armed_) {
        if (*armed_) {
            throw std::runtime_error("no copy");
        }
    }
    Uncopyable(Uncopyable&&) = default;
    Uncopyable& operator=(const Uncopyable&) = delete;
    Uncopyable& operator=(Uncopyable&&) = delete;

    void operator()() const {}

  private:
    const bool* armed_;
};

class Callback : public EngineWithSupplicant {
  protected:
    // Makes each callback fire once: scanning, enabled, connection and networks.
    void changeEverything() {
        reportScanning(!engine->isScanning());
        engine->setEnabled(!engine->isEnabled());
        online_ = !online_;
        reportOnline(online_);
        reportLinkUp("Home");
        reportBssList({{"Cafe", online_ ? -50 : -60, SecurityMode::none}});
        runUntilIdle();
    }

    template <typename Function>
    void registerEverywhere(const Function& callback) {
        for (const Registration on : registrations) {
            (*engine.*on)(callback);
        }
    }

    const std::vector<Registration> registrations{
        &wifi::ManagerImpl::onEnabledChanged, &wifi::ManagerImpl::onNetworksListChanged,
        &wifi::ManagerImpl::onScanningChanged, &wifi::ManagerImpl::onConnectionInfoChanged};

  private:
    bool online_ = false;
};

TEST_F(Callback, EveryChangeInvokesItsCallbackOnce) {
    changeEverything();
    EXPECT_EQ(takeCallbacks(), (Callbacks{1, 1, 1, 1}));
    changeEverything();
    EXPECT_EQ(takeCallbacks(), (Callbacks{1, 1, 1, 1}));
}

TEST_F(Callback, CallbackMayCallEveryGetter) {
    int calls = 0;
    const auto callEverything = [&] {
        static_cast<void>(engine->networks());
        static_cast<void>(engine->connectionInfo());
        static_cast<void>(engine->eapMethods());
        static_cast<void>(engine->phase2Methods());
        static_cast<void>(engine->isEnabled() || engine->isScanning() || engine->isWifiStackInitialized());
        ++calls;
    };
    registerEverywhere(callEverything);
    changeEverything();
    EXPECT_EQ(calls, 4);
}

TEST_F(Callback, CallbackMayMakeEveryRequest) {
    for (const Registration on : registrations) {
        // Only once, because the requests change the connection, which invokes the callback again.
        (*engine.*on)([this, on] {
            (*engine.*on)(nullptr);
            engine->scan();
            engine->setEnabled(true);
            EXPECT_EQ(engine->connect(settingsFor("Office")), ConnectResult::ok);
            engine->connectConfigured("Office");
            engine->disconnect();
            engine->forgetNetwork("Office");
        });
    }
    changeEverything();
    runUntilIdle();
    const Calls calls = takeCalls();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "scanSync"), 4) << "each request was served";
}

TEST_F(Callback, NoLockIsHeldDuringCallbacksAndCommunicatorCalls) {
    stack->configure("Home");
    int calls = 0;
    stack->onCall = [&](const std::string& /*call*/) {
        static_cast<void>(engine->networks());
        engine->onScanningChanged([] {});
        ++calls;
    };
    changeEverything();
    connectTo("Home");
    reportLinkUp("Home");
    runUntilIdle();
    attachSupplicant();
    detachSupplicant();
    communicator->expireTimer();
    EXPECT_GT(calls, 10);
}

TEST_F(Callback, CallbackThatReplacesItselfFinishesAndIsNotInvokedAgain) {
    for (const Registration on : registrations) {
        int former = 0;
        int latter = 0;
        const auto alive = std::make_shared<int>(7);
        (*engine.*on)([&, on, alive] {
            (*engine.*on)([&latter] { ++latter; });
            EXPECT_EQ(*alive, 7) << "the running copy still owns what it captured";
            ++former;
        });
        changeEverything();
        EXPECT_EQ(former, 1);
        EXPECT_EQ(latter, 0);
        EXPECT_EQ(alive.use_count(), 1) << "and released it afterwards";
        changeEverything();
        EXPECT_EQ(former, 1);
        EXPECT_EQ(latter, 1);
        (*engine.*on)(nullptr);
    }
}

TEST_F(Callback, EmptyFunctionSwitchesCallbackOff) {
    registerEverywhere(nullptr);
    changeEverything();
    EXPECT_EQ(takeCallbacks(), Callbacks{});
}

TEST_F(Callback, ReplacedCallbackIsDestroyedAtOnce) {
    for (const Registration on : registrations) {
        const auto captured = std::make_shared<int>(7);
        (*engine.*on)([captured] {});
        EXPECT_EQ(captured.use_count(), 2);
        (*engine.*on)([] {});
        EXPECT_EQ(captured.use_count(), 1);
    }
}

TEST_F(Callback, ThrowingCallbackIsLoggedAndPublicationContinues) {
    registerEverywhere([] { throw std::runtime_error("no luck"); });
    stack->configure("Home");
    communicator->networkSelectedHandler("Home");
    reportBssList({{"Home", -50, SecurityMode::none}, {"Cafe", -60, SecurityMode::none}});
    runUntilIdle();
    EXPECT_EQ(log.texts(spdlog::level::err),
              (std::vector<std::string>{"A callback threw an exception: no luck",
                                        "A callback threw an exception: no luck"}));
    EXPECT_EQ(engine->networks(), (std::vector<WifiNetwork>{{"Cafe", -60, SecurityMode::none, false}}));
    takeCalls();
    reportScanning(true);
    reportLinkUp("Home");
    runUntilIdle();
    EXPECT_EQ(state(), R"(status=connectingIP, ssid="Home", signal=-50)");
    EXPECT_EQ(takeCalls(), (Calls{listing, "setPrioritySync(1, 2)", saving}));
    engine->setEnabled(false);
    EXPECT_EQ(callsUntilIdle(), Calls{"startStopSupplicantSync(false)"});
    EXPECT_EQ(log.texts(spdlog::level::err).size(), 5U);
}

TEST_F(Callback, CallbackThatThrowsNoStdExceptionIsLogged) {
    engine->onScanningChanged([] { throw 42; });
    reportScanning(true);
    EXPECT_EQ(log.records(), Records{error("A callback threw an exception of unknown type")});
}

TEST_F(Callback, CallbackWithThrowingCopyIsLoggedAndPublicationContinues) {
    bool armed = false;
    registerEverywhere(Uncopyable(armed));
    armed = true;
    SupplicantReport everything;
    everything.scanning = true;
    everything.bssListChange = PropertyChange::Set;
    everything.bssList = {{"Cafe", -60, SecurityMode::none}};
    everything.currentBssChange = PropertyChange::Set;
    everything.currentBss = {"Home", -50, SecurityMode::none};
    everything.status = SupplicantStatus::Connected;
    report(everything);
    runUntilIdle();
    EXPECT_TRUE(engine->isScanning());
    EXPECT_EQ(state(), R"(status=connectingIP, ssid="Home", signal=-50)");
    EXPECT_EQ(engine->networks(), (std::vector<WifiNetwork>{{"Cafe", -60, SecurityMode::none, false}}));
    EXPECT_EQ(log.texts(spdlog::level::err),
              std::vector<std::string>(3, "A callback threw an exception: no copy"));
}

TEST_F(Callback, TaskContinuesAfterAThrowingCallback) {
    engine->onConnectionInfoChanged([] { throw std::runtime_error("no luck"); });
    EXPECT_EQ(engine->connect(settingsFor("Home")), ConnectResult::ok);
    takeCalls();
    communicator->runTasks();
    EXPECT_EQ(takeCalls(), (Calls{timerOn, "addNetworkSync(Home)", "selectSync(1)", listing, listing}));
}

}  // namespace
}  // namespace kaz::test
