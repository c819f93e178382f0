#pragma once

#include "communicator/communicator.h"
#include "doubles/fake_communicator/fake_wifi_stack.h"

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kaz::test {

// A communicator without a bus and without a thread. The test runs the tasks and calls the handlers. The
// stack records every call with its name and its arguments, without functions; of connection settings only
// the SSID.
//
// As in a supplicant, selecting a network disables all others, and removing one deletes its configuration. An
// operation on a removed network fails.
class FakeCommunicator : public wifi::Communicator {
  public:
    explicit FakeCommunicator(std::shared_ptr<FakeWifiStack> stack);

    // Drops queued tasks and runs the idle task one last time, as the event loop does when it ends.
    ~FakeCommunicator() override;

    FakeCommunicator(const FakeCommunicator&) = delete;
    FakeCommunicator& operator=(const FakeCommunicator&) = delete;
    FakeCommunicator(FakeCommunicator&&) = delete;
    FakeCommunicator& operator=(FakeCommunicator&&) = delete;

    std::size_t queuedTasks() const { return tasks_.size(); }
    void runOneTask();
    void runTasks();  // also tasks that are queued meanwhile
    void dropTasks() { tasks_.clear(); }
    std::optional<std::chrono::milliseconds> runIdlePass();
    void expireTimer();

    // What the supplicant reports when refreshSync() asks.
    std::function<void()> onRefresh;

    // Called inside pushTaskAsync_(), as if the loop were faster than the thread that posts.
    std::function<void()> onPosted;

    // Called with the arguments of every addNetworkSync().
    std::function<void(const wifi::ConnectionSettings&, const wifi::Certificates&)> onAddNetwork;

    void startEventLoop() override;
    void stopEventLoop() override;
    bool isSupplicantOn() override;
    bool supplicantSurvived() override;
    bool isSupplicantSilent() override { return stack_->silent; }
    wifi::FailureReason lastFailure() override { return stack_->lastFailure; }
    void forgetFailures() override {}
    wifi::StackTrouble stackTrouble() override { return stack_->trouble; }
    void pushTaskAsync_(std::function<void()> task) override;
    void configureTimerSync(bool enable, std::chrono::milliseconds interval) override;
    void setTimerCompletedTask(std::function<void()> task) override;
    void setIdleTask(std::function<std::optional<std::chrono::milliseconds>()> task) override;
    bool readEnabledConfiguration() override;
    bool writeEnabledConfiguration(bool enabled) override;
    bool saveNetworkConfigurationSync() override;
    bool startStopSupplicantSync(bool start) override;
    bool scanSync() override;
    std::unique_ptr<ConfiguredNetwork> addNetworkSync(const wifi::ConnectionSettings& settings,
                                                      const wifi::Certificates& certificates) override;
    bool reconnectSync() override;
    bool disconnectSync() override;
    std::optional<int> signalPollSync() override;
    std::optional<int> polledRate() override { return stack_->polledRate; }
    std::set<std::string> eapMethodsSync() override;
    std::vector<std::unique_ptr<ConfiguredNetwork>> getAllConfiguredNetworksSync() override;
    void refreshBssListSync() override;
    void refreshSync() override;

  protected:
    FakeWifiStack& stack() { return *stack_; }
    void runLastIdlePass();

  private:
    class Network;

    std::shared_ptr<FakeWifiStack> stack_;
    std::deque<std::function<void()>> tasks_;
    std::function<std::optional<std::chrono::milliseconds>()> idleTask_;
    std::function<void()> timerTask_;
};

}  // namespace kaz::test
