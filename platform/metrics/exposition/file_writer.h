#pragma once

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "platform/metrics/exposition/wake_up.h"

namespace kaz::metrics_reporting {

// Keeps a file up to date with something that changes often. A thread, which the first change starts, writes
// the file soon after a change but not more often than once an interval, and sleeps until the next change.
class FileWriter {
  public:
    using Render = std::function<std::string()>;

    // `render` gives the text for the file. It is called by the thread and by close(), never by both at once.
    FileWriter(std::filesystem::path file, std::chrono::steady_clock::duration interval, Render render);
    ~FileWriter();
    FileWriter(const FileWriter&) = delete;
    FileWriter& operator=(const FileWriter&) = delete;
    FileWriter(FileWriter&&) = delete;
    FileWriter& operator=(FileWriter&&) = delete;

    // Any thread, at any time; what changed before is in the file when it is written next. Takes no lock once
    // the thread runs. Where it cannot be started, each change tries again, and one record of the log says so.
    void noteChange() noexcept;

    // Ends the thread, and writes what has changed since it wrote last, without waiting for the interval.
    // Later changes are not written. In a child forked after the thread was started it does nothing, and the
    // child must not destroy this object.
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
    WakeUp wakeUp_;              // posted once for each time changed_ becomes true, and by close()
    bool failedBefore_ = false;  // belongs to whom render_ is called by

    std::mutex threadMutex_;  // guards starting and ending the thread against each other
    std::thread thread_;
    bool startFailedBefore_ = false;
    std::atomic<pid_t> process_ = 0;  // that started the thread
};

}  // namespace kaz::metrics_reporting
