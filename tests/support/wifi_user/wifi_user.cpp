#include "support/wifi_user/wifi_user.h"

#include "support/waiting/waiting.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace kaz::test {

WifiUser::WifiUser() : manager_(std::make_unique<wifi::Manager>()) {
    manager_->onEnabledChanged([this] { announce([this] { ++enabledCallbacks_; }); });
    manager_->onScanningChanged([this] { announce([this] { ++scanningCallbacks_; }); });
    manager_->onNetworksListChanged([this] { announce([] {}); });
    manager_->onConnectionInfoChanged([this, manager = manager_.get()] {
        announce([&, info = manager->connectionInfo()] { history_.push_back(info); });
    });
    manager_->onConnectionDetailsChanged([this] { announce([] {}); });
}

WifiUser::~WifiUser() = default;

void WifiUser::leave() {
    manager_.reset();
}

bool WifiUser::waitUntil(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + timeLimit;
    for (;;) {
        std::unique_lock lock(mutex_);
        const auto seen = announcements_;
        lock.unlock();
        if (condition()) {
            return true;
        }
        lock.lock();
        if (!changed_.wait_until(lock, deadline, [&] { return announcements_ != seen; })) {
            return false;
        }
    }
}

bool WifiUser::waitForStack(bool up) {
    return waitUntil([&] { return manager_->isWifiStackInitialized() == up; });
}

bool WifiUser::waitForStatus(wifi::ConnectionInfo::Status status, const std::string& ssid) {
    return waitUntil([&] {
        const auto info = manager_->connectionInfo();
        return info.status == status && (ssid.empty() || info.ssid == ssid);
    });
}

bool WifiUser::waitToPass(wifi::ConnectionInfo::Status status, const std::string& ssid) {
    return waitToPass(
        [&](const wifi::ConnectionInfo& info) { return info.status == status && info.ssid == ssid; });
}

bool WifiUser::waitToPass(const std::function<bool(const wifi::ConnectionInfo&)>& predicate) {
    return waitUntil([&] {
        const auto past = history();
        return std::any_of(past.begin(), past.end(), predicate);
    });
}

bool WifiUser::waitForNetwork(const std::string& ssid) {
    return waitUntil([&] { return network(ssid).has_value(); });
}

std::optional<wifi::WifiNetwork> WifiUser::network(const std::string& ssid) {
    const auto list = manager_->networks();
    const auto entry =
        std::find_if(list.begin(), list.end(), [&](const auto& candidate) { return candidate.ssid == ssid; });
    return entry == list.end() ? std::nullopt : std::optional(*entry);
}

std::vector<wifi::ConnectionInfo> WifiUser::history() {
    const std::lock_guard lock(mutex_);
    return history_;
}

void WifiUser::forgetHistory() {
    const std::lock_guard lock(mutex_);
    history_ = std::vector<wifi::ConnectionInfo>();  // with its memory, for tests that measure it
}

int WifiUser::enabledCallbacks() {
    const std::lock_guard lock(mutex_);
    return enabledCallbacks_;
}

int WifiUser::scanningCallbacks() {
    const std::lock_guard lock(mutex_);
    return scanningCallbacks_;
}

}  // namespace kaz::test
