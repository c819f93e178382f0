#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

namespace kaz {

// Entries in the order in which they were added. Any thread may add, read, and wait for entries.
template <typename Entry>
class Journal {
  public:
    using Entries = std::vector<Entry>;

    void add(Entry entry) {
        const std::lock_guard lock(mutex_);
        entries_.push_back(std::move(entry));
        changed_.notify_all();
    }

    Entries entries() const {
        const std::lock_guard lock(mutex_);
        return entries_;
    }

    // Removes and returns the entries added since the last take(). Keeps none of their memory.
    Entries take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(entries_, {});
    }

    // Blocks until the condition is true for the entries since the last take(). Returns false on timeout.
    bool waitUntil(const std::function<bool(const Entries&)>& condition,
                   std::chrono::milliseconds limit) const {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, limit, [&] { return condition(entries_); });
    }

  private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    Entries entries_;
};

}  // namespace kaz
