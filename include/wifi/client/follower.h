/// @file
/// Follows a Manager from another thread, or from a program's own event loop. In the library kazwifi-client.
#pragma once

#include <wifi/manager.h>

#include <chrono>
#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace kaz::wifi::client {

/// Everything that a Manager publishes, at one moment. It equals what the getters returned then.
struct Snapshot {
    std::chrono::steady_clock::time_point time;  ///< when the getters were read
    bool enabled = true;                         ///< Manager::isEnabled()
    bool running = false;                        ///< Manager::isWifiStackInitialized()
    bool scanning = false;              ///< Manager::isScanning(); false while the supplicant does not run
    std::vector<WifiNetwork> networks;  ///< Manager::networks()
    ConnectionDetails connection;       ///< Manager::connectionDetails()
    std::map<std::string, NetworkAccess> access{};  ///< Manager::networkAccess()

    /// How many calls of Follower::ask() have been answered: all requests before them have been carried out.
    unsigned answered = 0;
    /// What failed of these requests, as far as no snapshot that was taken before told it.
    RequestFailures failures{};
};

/// Owns a Manager and keeps a snapshot for each of its callbacks, until the program takes it.
///
/// A program's loop polls fd() and takes the snapshots when it is readable: no code of the program runs on the
/// Manager's thread. fd(), take() and takeNewest() may be called from any thread at any time. close() and the destructor
/// must not run at the same time as another operation.
class Follower {
  public:
    /// Starts a Manager. The first snapshot is the state at this moment. Throws std::system_error as Manager does, and
    /// when no file descriptor is left.
    Follower();

    /// Destroys the Manager, if close() has not, and the snapshots. Blocks for about a second at most.
    ~Follower();

    Follower(const Follower&) = delete;
    Follower& operator=(const Follower&) = delete;
    Follower(Follower&&) = delete;
    Follower& operator=(Follower&&) = delete;

    /// For requests. Do not register callbacks: the follower has all of them. Must not be called after close().
    Manager& manager() { return *manager_; }

    /// Calls Manager::whenCarriedOut(); a snapshot brings the answer. Returns the value that its `answered` will have. Must
    /// not be called after close().
    unsigned ask();

    /// Readable while a snapshot waits. Valid as long as the follower. Do not read from it.
    int fd() const { return wakeUp_.get(); }

    /// The oldest snapshot that waits, or nothing. Does not block.
    std::optional<Snapshot> take();

    /// The newest snapshot that waits, or nothing; drops the older ones. Does not block.
    std::optional<Snapshot> takeNewest();

    /// At most so many snapshots wait. A further one replaces the oldest.
    static constexpr std::size_t limit = 1000;

    /// Destroys the Manager. The snapshots of its last pass can still be taken. Blocks as the destructor does.
    void close() { manager_.reset(); }

  private:
    class Descriptor {
      public:
        Descriptor();
        ~Descriptor();
        Descriptor(const Descriptor&) = delete;
        Descriptor& operator=(const Descriptor&) = delete;
        Descriptor(Descriptor&&) = delete;
        Descriptor& operator=(Descriptor&&) = delete;
        int get() const { return fd_; }

      private:
        int fd_;
    };

    void keep(Manager& manager, unsigned answered = 0, RequestFailures failures = {});
    void dropOldest();

    std::mutex mutex_;
    std::deque<Snapshot> waiting_;
    unsigned asked_ = 0;
    unsigned answered_ = 0;
    Descriptor wakeUp_;
    std::unique_ptr<Manager> manager_;  // the last member: its callbacks use the others until it is destroyed
};

}  // namespace kaz::wifi::client
