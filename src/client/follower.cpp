#include <wifi/client/follower.h>

#include <sys/eventfd.h>
#include <unistd.h>

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

// Reads the state under the lock, so that a later snapshot is never older.
void Follower::keep(Manager& manager) {
    const std::lock_guard lock(mutex_);
    if (waiting_.size() == limit) {
        waiting_.pop_front();
    }
    waiting_.push_back(snapshotOf(manager));
    // Fails only when the counter is at its maximum, and then the descriptor is readable anyway.
    static_cast<void>(::eventfd_write(wakeUp_.get(), 1));
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
        newest = std::move(next);
    }
    return newest;
}

}  // namespace kaz::wifi::client
