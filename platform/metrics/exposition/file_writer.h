#pragma once

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "base/non_copyable.h"
#include "platform/metrics/exposition/wake_up.h"

namespace kaz::metrics_reporting {

// Keeps a file up to date with values that change often. The first change starts a thread. The thread writes
// the file soon after a change, at most once per interval, and sleeps until the next change.
class FileWriter : NonCopyable {
  public:
    using Render = std::function<std::string()>;

    // `render` returns the text for the file. The thread and close() call it, never at the same time.
    FileWriter(std::filesystem::path file, std::chrono::steady_clock::duration interval, Render render);
    ~FileWriter();

    // Reports a change. Callable from any thread at any time. The next write contains all earlier changes.
    // Takes no lock once the thread runs. If the thread cannot be started, one warning is logged, and
    // each change tries to start it again.
    void noteChange() noexcept;

    // Ends the thread and writes pending changes, without waiting for the interval. Later changes are not
    // written. In a child that was forked after the thread started, it does nothing, and the child must not
    // destroy this object.
    void close() noexcept;

  private:
    void start() noexcept;
    void run();
    void write() noexcept;
    bool isInherited() const noexcept;

    const std::filesystem::path file_;
    const std::chrono::steady_clock::duration interval_;
    const Render render_;

    std::atomic<bool> changed_ = false;
    std::atomic<bool> closing_ = false;
    WakeUp wakeUp_;              // posted when changed_ becomes true, and by close()
    bool failedBefore_ = false;  // used only where render_ is called

    std::mutex threadMutex_;  // held while the thread is started or ended
    std::thread thread_;
    bool startFailedBefore_ = false;
    std::atomic<pid_t> process_ = 0;  // the process that started the thread
};

}  // namespace kaz::metrics_reporting
