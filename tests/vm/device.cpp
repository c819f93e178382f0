#include "vm/device.h"

#include "vm/command.h"

#include <poll.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace kaz::vm {

void Device::takeAll() {
    while (auto next = follower_.take()) {
        const wifi::client::Snapshot before = std::exchange(latest_, std::move(*next));
        if (latest_.connection.info != before.connection.info) {
            history_.push_back(latest_.connection.info);
        }
        const bool powerChanged = latest_.enabled != before.enabled || latest_.running != before.running;
        enabledChanges_ += powerChanged ? 1 : 0;
        scanningChanges_ += latest_.scanning != before.scanning ? 1 : 0;
    }
}

const std::vector<wifi::ConnectionInfo>& Device::history() {
    takeAll();
    return history_;
}

void Device::clearHistory() {
    takeAll();
    history_.clear();
    history_.shrink_to_fit();
}

int Device::enabledChanges() {
    takeAll();
    return enabledChanges_;
}

int Device::scanningChanges() {
    takeAll();
    return scanningChanges_;
}

bool Device::eventually(const std::function<bool()>& condition, std::chrono::seconds limit) {
    constexpr int nowAndThen = 100;  // ms
    const auto end = Clock::now() + limit;
    while (!condition()) {
        if (Clock::now() >= end) {
            return false;
        }
        pollfd change{follower_.fd(), POLLIN, 0};
        ::poll(&change, 1, nowAndThen);
        takeAll();
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
    return eventually([&] { return std::any_of(history().begin(), history().end(), predicate); }, limit);
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
