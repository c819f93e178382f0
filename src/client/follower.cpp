#include <wifi/client/follower.h>

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace kaz::wifi::client {
namespace {

Snapshot snapshotOf(Manager& manager) {
    Snapshot now;
    now.time = std::chrono::steady_clock::now();
    now.enabled = manager.isEnabled();
    now.running = manager.isWifiStackInitialized();
    // A supplicant that stops ends its scan without a callback.
    now.scanning = now.running && manager.isScanning();
    now.networks = manager.networks();
    now.connection = manager.connectionDetails();
    now.access = manager.networkAccess();
    return now;
}

}  // namespace

Follower::Descriptor::Descriptor() : fd_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (fd_ < 0) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
}

Follower::Descriptor::~Descriptor() {
    ::close(fd_);
}

Follower::Follower() : manager_(std::make_unique<Manager>()) {
    // The callbacks must not use manager_: the last ones run while it is being reset.
    const auto changed = [this, &manager = *manager_] { keep(manager); };
    manager_->onEnabledChanged(changed);
    manager_->onScanningChanged(changed);
    manager_->onNetworksListChanged(changed);
    manager_->onConnectionDetailsChanged(changed);  // also after a change of the connection info
    keep(*manager_);
}

Follower::~Follower() = default;

unsigned Follower::ask() {
    unsigned number = 0;
    {
        const std::lock_guard lock(mutex_);
        number = ++asked_;
    }
    manager_->whenCarriedOut([this, number, &manager = *manager_](const RequestFailures& failures) {
        keep(manager, number, failures);
    });
    return number;
}

// Reads the state under the lock, so that a later snapshot is never older.
void Follower::keep(Manager& manager, unsigned answered, RequestFailures failures) {
    const std::lock_guard lock(mutex_);
    if (waiting_.size() == limit) {
        dropOldest();
    }
    answered_ = std::max(answered_, answered);
    waiting_.push_back(snapshotOf(manager));
    waiting_.back().answered = answered_;
    waiting_.back().failures = std::move(failures);
    // Fails only when the counter is at its maximum, and then the descriptor is readable anyway.
    static_cast<void>(::eventfd_write(wakeUp_.get(), 1));
}

// A failure is told only once, so the next snapshot tells it.
void Follower::dropOldest() {
    RequestFailures untold = std::move(waiting_.front().failures);
    waiting_.pop_front();
    waiting_.front().failures.merge(untold);
}

std::optional<Snapshot> Follower::take() {
    const std::lock_guard lock(mutex_);
    if (waiting_.empty()) {
        return std::nullopt;
    }
    Snapshot oldest = std::move(waiting_.front());
    waiting_.pop_front();
    if (waiting_.empty()) {
        eventfd_t count = 0;
        static_cast<void>(::eventfd_read(wakeUp_.get(), &count));
    }
    return oldest;
}

std::optional<Snapshot> Follower::takeNewest() {
    std::optional<Snapshot> newest;
    while (auto next = take()) {
        if (newest) {
            next->failures.merge(newest->failures);
        }
        newest = std::move(next);
    }
    return newest;
}

}  // namespace kaz::wifi::client
