#include "vm/device.h"

#include "vm/command.h"

#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace kaz::vm {

Device::Device() {
    manager_.onConnectionInfoChanged([this] {
        const wifi::ConnectionInfo info = manager_.connectionInfo();
        const std::lock_guard lock(mutex_);
        history_.push_back(info);
        changed_.notify_all();
    });
    manager_.onEnabledChanged([this] { note(enabledChanges_); });
    manager_.onScanningChanged([this] { note(scanningChanges_); });
    manager_.onNetworksListChanged([this] { note(listChanges_); });
}

void Device::note(int& counter) {
    const std::lock_guard lock(mutex_);
    ++counter;
    changed_.notify_all();
}

std::vector<wifi::ConnectionInfo> Device::history() const {
    const std::lock_guard lock(mutex_);
    return history_;
}

void Device::clearHistory() {
    const std::lock_guard lock(mutex_);
    history_.clear();
    history_.shrink_to_fit();
}

int Device::enabledChanges() const {
    const std::lock_guard lock(mutex_);
    return enabledChanges_;
}

int Device::scanningChanges() const {
    const std::lock_guard lock(mutex_);
    return scanningChanges_;
}

bool Device::eventually(const std::function<bool()>& condition, std::chrono::seconds limit) {
    constexpr std::chrono::milliseconds nowAndThen{100};
    const auto end = Clock::now() + limit;
    while (!condition()) {
        std::unique_lock lock(mutex_);
        if (Clock::now() >= end) {
            return false;
        }
        changed_.wait_for(lock, nowAndThen);
    }
    return true;
}

bool Device::reaches(Status status, const std::string& ssid, std::chrono::seconds limit) {
    return eventually(
        [&] {
            const wifi::ConnectionInfo info = manager().connectionInfo();
            return info.status == status && (ssid.empty() || info.ssid == ssid);
        },
        limit);
}

bool Device::passes(const std::function<bool(const wifi::ConnectionInfo&)>& predicate,
                    std::chrono::seconds limit) {
    return eventually(
        [&] {
            const std::vector<wifi::ConnectionInfo> all = history();
            return std::any_of(all.begin(), all.end(), predicate);
        },
        limit);
}

bool Device::loses(const std::string& ssid, std::chrono::seconds limit) {
    return passes(
        [&](const wifi::ConnectionInfo& info) {
            return info.disconnectSsid == ssid && info.disconnectReason == Reason::causedBySystem;
        },
        limit);
}

bool Device::connects(const wifi::ConnectionSettings& settings) {
    return manager().connect(settings) == wifi::ConnectResult::ok &&
           reaches(Status::connected, settings.ssid);
}

void DeviceTest::SetUp() {
    run("/opt/guest/device reset");
    startManager();
    ASSERT_TRUE(device_->attaches());
    device_->clearHistory();
}

void DeviceTest::startManager() {
    auto& logger = *spdlog::default_logger();
    if (device_ == nullptr) {
        logger.sinks().push_back(
            std::make_shared<spdlog::sinks::basic_file_sink_mt>("/run/results/library.log"));
    }
    logger.flush_on(spdlog::level::trace);
    const auto* const info = ::testing::UnitTest::GetInstance()->current_test_info();
    spdlog::info("==== {}.{}", info->test_suite_name(), info->name());
    log_.clear();
    device_ = std::make_unique<Device>();
}

void DeviceTest::TearDown() {
    if (HasFailure() && device_ != nullptr) {
        std::puts("states published:");
        for (const wifi::ConnectionInfo& info : device_->history()) {
            std::puts(("  " + ::testing::PrintToString(info)).c_str());
        }
        std::puts(("now: " + ::testing::PrintToString(manager().connectionInfo())).c_str());
        std::puts(run("/opt/guest/device show").c_str());
    }
    device_.reset();
    std::fflush(stdout);
}

void DeviceTest::record(const std::string& name, Clock::duration duration) {
    const auto tenths = std::chrono::round<std::chrono::duration<long, std::deci>>(duration).count();
    const std::string text = std::to_string(tenths / 10) + '.' + std::to_string(tenths % 10);
    RecordProperty(name, text);
    std::printf("%s: %s s\n", name.c_str(), text.c_str());
}

}  // namespace kaz::vm
