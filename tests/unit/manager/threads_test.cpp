// The engine with its own loop thread, called by other threads at the same time.
#include "doubles/fake_clock/fake_clock.h"
#include "doubles/fake_communicator/threaded_communicator.h"
#include "doubles/recording_log/recording_log.h"
#include "manager/manager_impl.h"
#include "support/waiting/waiting.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <latch>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace kaz::test {
namespace {

using wifi::Communicator;
using wifi::ConnectionInfo;
using wifi::SecurityMode;
using PropertyChange = Communicator::PropertyChange;

constexpr int rounds = 300;
constexpr int threadCount = 3;

class Threads : public ::testing::Test {
  protected:
    Threads() {
        stack->supplicantOn = true;
        stack->eapMethods = {"PEAP", "TTLS"};
        stack->configure("Home");
        auto owned = std::make_unique<ThreadedCommunicator>(stack);
        communicator = owned.get();
        engine = std::make_unique<wifi::ManagerImpl>(std::move(owned), clock);
        onLoop([this] { communicator->wifiServiceStatusChangeHandler(); });
    }

    // The callbacks' captures no longer exist when the last idle pass runs.
    void TearDown() override {
        if (!engine) {
            return;
        }
        onLoop([this] {
            stack->onCall = nullptr;
            engine->onEnabledChanged(nullptr);
            engine->onNetworksListChanged(nullptr);
            engine->onScanningChanged(nullptr);
            engine->onConnectionInfoChanged(nullptr);
        });
    }

    void onLoop(const std::function<void()>& function) { communicator->onLoop(function); }

    // Changes everything that is published; each number gives a different state.
    void publishAnother(int number) {
        Communicator::SupplicantInterfaceProperties report;
        report.scanning = number % 2 == 0;
        report.bssListChange = PropertyChange::Set;
        report.bssList = {{"Home", -50, SecurityMode::rsnPsk},
                          {"Cafe " + std::to_string(number), -number, SecurityMode::none}};
        report.currentBssChange = PropertyChange::Set;
        report.currentBss = {"Home", -number, SecurityMode::rsnPsk};
        report.status = Communicator::SupplicantConnectionStatus::Connected;
        communicator->supplicantPropertiesHandler(report);
        communicator->networkdOnlineHandler(number % 3 == 0);
    }

    // Runs the function repeatedly on `threadCount` threads while the loop thread publishes `rounds` states.
    void whilePublishing(const std::function<void()>& function) {
        std::latch started(threadCount);
        std::atomic<bool> done = false;
        std::vector<std::thread> threads;
        for (int i = 0; i < threadCount; ++i) {
            threads.emplace_back([&] {
                function();
                started.count_down();
                while (!done) {
                    function();
                }
            });
        }
        started.wait();
        for (int number = 1; number <= rounds; ++number) {
            onLoop([this, number] { publishAnother(number); });
        }
        done = true;
        for (std::thread& thread : threads) {
            thread.join();
        }
    }

    // The last call that started or stopped the supplicant, since the calls were last taken.
    std::string lastSwitch() {
        std::string last;
        for (const std::string& call : stack->takeCalls()) {
            last = call.starts_with("startStopSupplicantSync") ? call : last;
        }
        return last;
    }

    RecordingLog log;
    std::shared_ptr<FakeWifiStack> stack = std::make_shared<FakeWifiStack>();
    std::shared_ptr<FakeClock> clock = std::make_shared<FakeClock>();
    ThreadedCommunicator* communicator = nullptr;
    std::unique_ptr<wifi::ManagerImpl> engine;
};

TEST_F(Threads, ReadersSeeConsistentCopiesWhileTheLoopPublishes) {
    std::atomic<int> broken = 0;
    whilePublishing([&] {
        const ConnectionInfo info = engine->connectionInfo();
        const bool live = info.status != ConnectionInfo::Status::disconnected;
        broken += live == info.ssid.empty() ? 1 : 0;
        for (const wifi::WifiNetwork& network : engine->networks()) {
            // SSID and signal have the same number unless the list is torn.
            const bool isCafe = network.ssid == "Cafe " + std::to_string(-network.signal);
            broken += isCafe || network.ssid == "Home" ? 0 : 1;
        }
        broken += engine->eapMethods().size() == 2 ? 0 : 1;
        broken += engine->phase2Methods().size() == 4 ? 0 : 1;
        broken += engine->isEnabled() && engine->isWifiStackInitialized() ? 0 : 1;
        static_cast<void>(engine->isScanning());
    });
    EXPECT_EQ(broken, 0);
    EXPECT_EQ(engine->connectionInfo().signal, -rounds);
}

TEST_F(Threads, RequestsOfSeveralThreadsAreAllServed) {
    constexpr int requestsOfEach = 100;
    wifi::ConnectionSettings settings;
    settings.ssid = "Office";
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i) {
        threads.emplace_back([&] {
            for (int number = 0; number < requestsOfEach; ++number) {
                engine->scan();
                engine->setEnabled(number % 2 == 0);
                EXPECT_EQ(engine->connect(settings), wifi::ConnectResult::ok);
                engine->connectConfigured("Home");
                engine->disconnect();
                engine->forgetNetwork("Office");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    onLoop([] {});
    std::map<std::string, int> counts;
    for (const std::string& call : stack->takeCalls()) {
        ++counts[call];
    }
    EXPECT_EQ(counts["scanSync"], threadCount * requestsOfEach);
    EXPECT_EQ(counts["addNetworkSync(Office)"], threadCount * requestsOfEach);
    EXPECT_EQ(counts["disconnectSync"], threadCount * requestsOfEach);
    EXPECT_EQ(counts["startStopSupplicantSync(true)"] + counts["startStopSupplicantSync(false)"],
              threadCount * requestsOfEach);
}

TEST_F(Threads, ConcurrentChoicesLeaveFlagFileAndSupplicantAgreed) {
    for (int round = 0; round < rounds; ++round) {
        std::latch ready(2);
        const auto turn = [&](bool on) {
            ready.arrive_and_wait();
            engine->setEnabled(on);
        };
        std::thread other(turn, true);
        turn(false);
        other.join();
        onLoop([] {});
        const std::string switched = lastSwitch();
        const bool on = engine->isEnabled();
        ASSERT_EQ(stack->enabledConfiguration, on) << "round " << round;
        ASSERT_EQ(switched, on ? "startStopSupplicantSync(true)" : "startStopSupplicantSync(false)")
            << "round " << round;
    }
}

// Another process holds the lock of the file. The first write then comes last.
TEST_F(Threads, SecondChoiceDoesNotWaitForTheWriteOfTheFirst) {
    Gate fileLock;
    std::atomic<bool> waits = false;
    stack->onCall = [&](const std::string& call) {
        if (call == "writeEnabledConfiguration(false)" && !waits.exchange(true)) {
            fileLock.pass();
        }
    };
    std::thread first([&] { engine->setEnabled(false); });
    fileLock.waitForTask();
    EXPECT_FALSE(engine->isEnabled());
    std::promise<void> secondEnded;
    std::thread second([&] {
        engine->setEnabled(true);
        secondEnded.set_value();
    });
    EXPECT_TRUE(eventually([&] { return engine->isEnabled(); }));
    EXPECT_EQ(secondEnded.get_future().wait_for(timeLimit), std::future_status::ready);
    fileLock.open();
    first.join();
    second.join();
    onLoop([] {});
    EXPECT_TRUE(engine->isEnabled());
    EXPECT_TRUE(stack->enabledConfiguration);
    EXPECT_EQ(lastSwitch(), "startStopSupplicantSync(true)");
}

TEST_F(Threads, ChoiceDuringAnAttachIsKept) {
    for (int round = 0; round < rounds; ++round) {
        const bool on = round % 2 == 0;
        std::latch ready(2);
        std::thread other([&] {
            ready.arrive_and_wait();
            engine->setEnabled(on);
        });
        onLoop([&] {
            ready.arrive_and_wait();
            communicator->wifiServiceStatusChangeHandler();
        });
        other.join();
        ASSERT_EQ(engine->isEnabled(), on) << "round " << round;
        ASSERT_EQ(stack->enabledConfiguration, on) << "round " << round;
    }
}

TEST_F(Threads, CallbacksMayBeReplacedWhileTheLoopInvokesThem) {
    std::atomic<int> invoked = 0;
    whilePublishing([&] {
        const auto payload = std::make_shared<std::string>(100, 'x');
        const auto callback = [payload, &invoked] { invoked += payload->size() == 100 ? 1 : 0; };
        engine->onConnectionInfoChanged(callback);
        engine->onNetworksListChanged(callback);
        engine->onScanningChanged(callback);
        engine->onEnabledChanged(callback);
    });
    EXPECT_GT(invoked, 0);
}

TEST_F(Threads, CallbackRunsOnTheLoopThreadAndSeesTheNewState) {
    std::thread::id loopThread;
    onLoop([&] { loopThread = std::this_thread::get_id(); });
    std::promise<std::pair<std::thread::id, ConnectionInfo>> seen;
    engine->onConnectionInfoChanged([&] {
        const ConnectionInfo info = engine->connectionInfo();
        engine->onConnectionInfoChanged(nullptr);
        seen.set_value({std::this_thread::get_id(), info});
    });
    engine->connectConfigured("Home");
    const auto [thread, info] = seen.get_future().get();
    EXPECT_EQ(thread, loopThread);
    EXPECT_NE(thread, std::this_thread::get_id());
    EXPECT_EQ(info.ssid, "Home");
}

TEST_F(Threads, SlowCallbackDoesNotBlockOtherThreads) {
    Gate gate;
    engine->onConnectionInfoChanged([&] {
        engine->onConnectionInfoChanged(nullptr);
        gate.pass();
    });
    engine->connectConfigured("Home");
    gate.waitForTask();
    EXPECT_EQ(engine->connectionInfo().ssid, "Home");
    EXPECT_TRUE(engine->networks().empty());
    engine->onNetworksListChanged(nullptr);
    engine->scan();
    gate.open();
    onLoop([] {});
}

TEST_F(Threads, CallbackMayReplaceItself) {
    std::atomic<int> former = 0;
    std::atomic<int> latter = 0;
    engine->onScanningChanged([&] {
        engine->onScanningChanged([&] { ++latter; });
        ++former;
    });
    for (int number = 1; number <= 4; ++number) {
        onLoop([&] { publishAnother(number); });
    }
    EXPECT_EQ(former, 1);
    EXPECT_EQ(latter, 2) << "the first of the four numbers brought no change";
}

TEST_F(Threads, CallbackMayCallEveryGetter) {
    std::atomic<int> calls = 0;
    const auto callEverything = [&] {
        static_cast<void>(engine->networks());
        static_cast<void>(engine->connectionInfo());
        static_cast<void>(engine->eapMethods());
        static_cast<void>(engine->phase2Methods());
        static_cast<void>(engine->isEnabled() || engine->isScanning() || engine->isWifiStackInitialized());
        ++calls;
    };
    engine->onConnectionInfoChanged(callEverything);
    engine->onNetworksListChanged(callEverything);
    engine->onScanningChanged(callEverything);
    engine->onEnabledChanged(callEverything);
    onLoop([&] { publishAnother(2); });
    engine->setEnabled(false);
    onLoop([] {});
    EXPECT_EQ(calls, 4);
}

TEST_F(Threads, LoopContinuesAfterAThrowingCallback) {
    const auto fail = [] { throw std::runtime_error("no luck"); };
    engine->onConnectionInfoChanged(fail);
    engine->onNetworksListChanged(fail);
    engine->onScanningChanged(fail);
    for (int number = 1; number <= 10; ++number) {
        onLoop([&] { publishAnother(number); });
    }
    EXPECT_EQ(engine->connectionInfo().signal, -10);
    EXPECT_EQ(engine->networks().front().ssid, "Cafe 10");
    EXPECT_TRUE(log.contains("A callback threw an exception: no luck"));
}

TEST_F(Threads, ExpiredAttemptIsPublishedByTheIdlePassesDelayAlone) {
    std::promise<void> givenUp;
    engine->onConnectionInfoChanged([&] {
        if (engine->connectionInfo().status == ConnectionInfo::Status::disconnected) {
            givenUp.set_value();
        }
    });
    engine->connectConfigured("Nowhere");
    onLoop([&] { clock->advance(std::chrono::milliseconds(1990)); });
    // From now on only the delay of 10 ms makes the loop run the idle pass.
    clock->advance(std::chrono::milliseconds(10));
    givenUp.get_future().wait();
    EXPECT_EQ(engine->connectionInfo().disconnectSsid, "Nowhere");
}

TEST_F(Threads, EngineEndDropsQueuedTasksAndRunsALastIdlePass) {
    Gate gate;
    communicator->pushTaskAsync_([&] {
        gate.pass();
        publishAnother(1);
    });
    gate.waitForTask();
    engine->scan();
    std::string published;
    engine->onNetworksListChanged(
        [&published, ending = engine.get()] { published = ending->networks().front().ssid; });
    stack->onCall = [&](const std::string& call) {
        if (call == "stopEventLoop") {
            gate.open();
        }
    };
    stack->takeCalls();
    engine.reset();
    EXPECT_EQ(published, "Cafe 1");
    EXPECT_EQ(stack->takeCalls(), (std::vector<std::string>{
                                      "stopEventLoop", "configureTimerSync(true, 60000)", "~Communicator"}));
}

}  // namespace
}  // namespace kaz::test
