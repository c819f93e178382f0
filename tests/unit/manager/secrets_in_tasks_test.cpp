// However a connect task ends, no memory is freed with a password in it.
#include "doubles/fake_clock/fake_clock.h"
#include "doubles/fake_communicator/fake_communicator.h"
#include "doubles/recording_log/recording_log.h"
#include "manager/manager_impl.h"
#include "support/freed_memory_watch/freed_memory_watch.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace kaz::test {
namespace {

// Both forms of std::string: short texts are stored inside the object.
class SecretsOfAConnectTask : public ::testing::TestWithParam<std::string> {
  protected:
    SecretsOfAConnectTask() {
        auto owned = std::make_unique<FakeCommunicator>(stack);
        communicator = owned.get();
        stack->eapMethods = {"TLS"};
        stack->supplicantOn = true;
        engine = std::make_unique<wifi::ManagerImpl>(std::move(owned), std::make_shared<FakeClock>());
        communicator->wifiServiceStatusChangeHandler();
        communicator->runTasks();
        settings.ssid = "Home";
        settings.securityMode = wifi::SecurityMode::enterprise;
    }

    // Requests a connection with the secret in each member in turn. It must be wiped after what follows.
    template <typename Function>
    void requestWithEachSecret(const Function& whatFollows) {
        using Settings = wifi::ConnectionSettings;
        for (const auto member : {&Settings::password, &Settings::identity, &Settings::anonymousIdentity}) {
            settings.*member = GetParam();
            const FreedMemoryWatch watch(GetParam());
            EXPECT_EQ(engine->connect(settings), wifi::ConnectResult::ok);
            whatFollows();
            EXPECT_EQ(watch.leaks(), 0U);
            settings.*member = "";
        }
        certificates.keyPassword = GetParam();
        const FreedMemoryWatch watch(GetParam());
        EXPECT_EQ(engine->connect(settings, certificates), wifi::ConnectResult::ok);
        whatFollows();
        EXPECT_EQ(watch.leaks(), 0U);
    }

    RecordingLog log;
    std::shared_ptr<FakeWifiStack> stack = std::make_shared<FakeWifiStack>();
    FakeCommunicator* communicator = nullptr;
    std::unique_ptr<wifi::ManagerImpl> engine;
    wifi::ConnectionSettings settings;
    wifi::Certificates certificates{"/ca.pem", "example.org", "/own.pem", "/key", ""};
};

INSTANTIATE_TEST_SUITE_P(ShortAndLong, SecretsOfAConnectTask,
                         ::testing::Values("hunter2hunter2",
                                           std::string(63, 'x') + "correct horse battery staple"),
                         [](const auto& secret) { return secret.param.size() < 16 ? "Short" : "Long"; });

TEST_P(SecretsOfAConnectTask, WatchSeesASecretThatIsFreedUnwiped) {
    const FreedMemoryWatch watch(GetParam());
    std::make_unique<wifi::ConnectionSettings>()->password = GetParam();
    EXPECT_GE(watch.leaks(), 1U);
}

TEST_P(SecretsOfAConnectTask, SecretsAreWipedAfterTheTask) {
    requestWithEachSecret([&] {
        communicator->runTasks();
        communicator->runIdlePass();
    });
}

TEST_P(SecretsOfAConnectTask, SecretsAreWipedWhenTheAdditionFails) {
    stack->failing = {"addNetworkSync"};
    requestWithEachSecret([&] { communicator->runTasks(); });
}

TEST_P(SecretsOfAConnectTask, SecretsAreWipedWhenTheTaskThrows) {
    stack->onCall = [](const std::string& call) {
        if (call == "addNetworkSync(Home)") {
            throw std::runtime_error("out of luck");
        }
    };
    requestWithEachSecret([&] { EXPECT_THROW(communicator->runTasks(), std::runtime_error); });
}

TEST_P(SecretsOfAConnectTask, SecretsAreWipedWhenTheTaskIsDropped) {
    requestWithEachSecret([&] {
        EXPECT_EQ(communicator->queuedTasks(), 1U);
        communicator->dropTasks();
    });
}

TEST_P(SecretsOfAConnectTask, SecretsAreWipedWhenTheEngineEndsFirst) {
    settings.password = GetParam();
    const FreedMemoryWatch watch(GetParam());
    EXPECT_EQ(engine->connect(settings), wifi::ConnectResult::ok);
    engine.reset();
    EXPECT_EQ(watch.leaks(), 0U);
}

TEST_P(SecretsOfAConnectTask, RefusedRequestCopiesNoSecrets) {
    settings.password = GetParam();
    settings.securityMode = wifi::SecurityMode::unsupported;
    const FreedMemoryWatch watch(GetParam());
    EXPECT_EQ(engine->connect(settings), wifi::ConnectResult::securityModeUnsupported);
    EXPECT_EQ(communicator->queuedTasks(), 0U);
    EXPECT_EQ(watch.leaks(), 0U);
}

TEST_P(SecretsOfAConnectTask, SecretsAreNeverLogged) {
    requestWithEachSecret([&] {
        communicator->runTasks();
        communicator->runIdlePass();
    });
    EXPECT_FALSE(log.records().empty());
    EXPECT_FALSE(log.contains(GetParam()));
}

}  // namespace
}  // namespace kaz::test
