#pragma once

#include "base/non_copyable.h"

#include <wifi/manager.h>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace kaz::test {

// A small model of a user-interface process: a Manager, and a thread that waits for its callbacks.
class WifiUser : NonCopyable {
  public:
    WifiUser();
    ~WifiUser();

    wifi::Manager& manager() { return *manager_; }

    // Destroys the Manager, like a process that exits.
    void leave();

    // Blocks until the condition is true. Checks it now and after every callback. Returns false on timeout.
    bool waitUntil(const std::function<bool()>& condition);

    bool waitForStack(bool up);
    bool waitForStatus(wifi::ConnectionInfo::Status status, const std::string& ssid = {});
    // Waits until this state, or one for which the predicate is true, was published since the start or
    // forgetHistory(), even if only for a moment.
    bool waitToPass(wifi::ConnectionInfo::Status status, const std::string& ssid);
    bool waitToPass(const std::function<bool(const wifi::ConnectionInfo&)>& predicate);
    bool waitForNetwork(const std::string& ssid);

    // The entry in the published list.
    std::optional<wifi::WifiNetwork> network(const std::string& ssid);

    // Every distinct connection info published so far, in order.
    std::vector<wifi::ConnectionInfo> history();
    void forgetHistory();

    int enabledCallbacks();
    int scanningCallbacks();

  private:
    template <typename Note>
    void announce(Note note) {
        {
            const std::lock_guard lock(mutex_);
            note();
            ++announcements_;
        }
        changed_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    unsigned announcements_ = 0;
    std::vector<wifi::ConnectionInfo> history_;
    int enabledCallbacks_ = 0;
    int scanningCallbacks_ = 0;
    std::unique_ptr<wifi::Manager> manager_;
};

}  // namespace kaz::test
