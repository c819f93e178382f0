#include "doubles/fake_communicator/fake_communicator.h"

#include <algorithm>
#include <utility>

namespace kaz::test {
namespace {

std::string text(bool value) {
    return value ? "true" : "false";
}

}  // namespace

class FakeCommunicator::Network final : public Communicator::ConfiguredNetwork {
  public:
    Network(FakeWifiStack& stack, const FakeWifiStack::Network& network)
        : stack_(stack), id_(network.id), ssid_(network.ssid) {}

    std::size_t id() override { return id_; }
    const std::optional<std::string>& getSsid() override { return ssid_; }

    bool removeSync() override {
        return apply("removeSync", {}, [&](FakeWifiStack::Network& /*network*/) {
            std::erase_if(stack_.networks, [&](const auto& network) { return network.id == id_; });
        });
    }
    bool selectSync() override {
        return apply("selectSync", {}, [&](FakeWifiStack::Network& /*network*/) {
            for (FakeWifiStack::Network& network : stack_.networks) {
                network.enabled = network.id == id_;
            }
        });
    }
    bool setEnabledSync(bool enabled) override {
        return apply("setEnabledSync", ", " + text(enabled),
                     [&](FakeWifiStack::Network& network) { network.enabled = enabled; });
    }
    bool setPrioritySync(int priority) override {
        return apply("setPrioritySync", ", " + std::to_string(priority),
                     [&](FakeWifiStack::Network& network) { network.priority = priority; });
    }

  private:
    template <typename Change>
    bool apply(const std::string& operation, const std::string& arguments, const Change& change) {
        const bool succeeds = stack_.record(operation, std::to_string(id_) + arguments);
        FakeWifiStack::Network* const network = stack_.find(id_);
        if (!succeeds || network == nullptr) {
            return false;
        }
        change(*network);
        return true;
    }

    FakeWifiStack& stack_;
    std::size_t id_;
    std::optional<std::string> ssid_;
};

FakeCommunicator::FakeCommunicator(std::shared_ptr<FakeWifiStack> stack) : stack_(std::move(stack)) {}

FakeCommunicator::~FakeCommunicator() {
    stack_->record("~Communicator");
    dropTasks();
    runLastIdlePass();
}

void FakeCommunicator::runLastIdlePass() {
    if (const auto task = std::exchange(idleTask_, nullptr)) {
        task();
    }
}

void FakeCommunicator::runOneTask() {
    const auto task = std::move(tasks_.front());
    tasks_.pop_front();
    task();
}

void FakeCommunicator::runTasks() {
    while (!tasks_.empty()) {
        runOneTask();
    }
}

std::optional<std::chrono::milliseconds> FakeCommunicator::runIdlePass() {
    return idleTask_();
}

void FakeCommunicator::expireTimer() {
    timerTask_();
}

void FakeCommunicator::startEventLoop() {
    stack_->record("startEventLoop");
}

void FakeCommunicator::stopEventLoop() {
    stack_->record("stopEventLoop");
}

bool FakeCommunicator::isSupplicantOn() {
    stack_->record("isSupplicantOn");
    return stack_->supplicantOn;
}

bool FakeCommunicator::supplicantSurvived() {
    stack_->record("supplicantSurvived");
    return stack_->supplicantSurvives;
}

void FakeCommunicator::refreshBssListSync() {
    stack_->record("refreshBssListSync");
}

void FakeCommunicator::refreshSync() {
    stack_->record("refreshSync");
    if (onRefresh) {
        onRefresh();
    }
}

void FakeCommunicator::pushTaskAsync_(std::function<void()> task) {
    stack_->record("pushTaskAsync_");
    tasks_.push_back(std::move(task));
    if (onPosted) {
        onPosted();
    }
}

void FakeCommunicator::configureTimerSync(bool enable, std::chrono::milliseconds interval) {
    stack_->record("configureTimerSync", text(enable) + ", " + std::to_string(interval.count()));
}

void FakeCommunicator::setTimerCompletedTask(std::function<void()> task) {
    stack_->record("setTimerCompletedTask");
    timerTask_ = std::move(task);
}

void FakeCommunicator::setIdleTask(std::function<std::optional<std::chrono::milliseconds>()> task) {
    stack_->record("setIdleTask");
    idleTask_ = std::move(task);
}

bool FakeCommunicator::readEnabledConfiguration() {
    stack_->record("readEnabledConfiguration");
    return stack_->enabledConfiguration;
}

bool FakeCommunicator::writeEnabledConfiguration(bool enabled) {
    const bool written = stack_->record("writeEnabledConfiguration", text(enabled));
    if (written) {
        stack_->enabledConfiguration = enabled;
    }
    return written;
}

bool FakeCommunicator::saveNetworkConfigurationSync() {
    return stack_->record("saveNetworkConfigurationSync");
}

bool FakeCommunicator::startStopSupplicantSync(bool start) {
    return stack_->record("startStopSupplicantSync", text(start));
}

bool FakeCommunicator::scanSync() {
    return stack_->record("scanSync");
}

std::unique_ptr<wifi::Communicator::ConfiguredNetwork> FakeCommunicator::addNetworkSync(
    const wifi::ConnectionSettings& settings, const wifi::Certificates& certificates) {
    if (onAddNetwork) {
        onAddNetwork(settings, certificates);
    }
    if (!stack_->record("addNetworkSync", settings.ssid)) {
        return nullptr;
    }
    return std::make_unique<Network>(*stack_, *stack_->find(stack_->configure(settings.ssid)));
}

bool FakeCommunicator::reconnectSync() {
    return stack_->record("reconnectSync");
}

bool FakeCommunicator::disconnectSync() {
    return stack_->record("disconnectSync");
}

std::optional<int> FakeCommunicator::signalPollSync() {
    return stack_->record("signalPollSync") ? stack_->signalPoll : std::nullopt;
}

std::set<std::string> FakeCommunicator::eapMethodsSync() {
    return stack_->record("eapMethodsSync") ? stack_->eapMethods : std::set<std::string>{};
}

std::vector<std::unique_ptr<wifi::Communicator::ConfiguredNetwork>>
FakeCommunicator::getAllConfiguredNetworksSync() {
    std::vector<std::unique_ptr<ConfiguredNetwork>> all;
    if (stack_->record("getAllConfiguredNetworksSync")) {
        for (const FakeWifiStack::Network& network : stack_->networks) {
            all.push_back(std::make_unique<Network>(*stack_, network));
        }
    }
    return all;
}

}  // namespace kaz::test
