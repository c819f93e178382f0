#pragma once

#include "base/event_fd.h"
#include "base/file_descriptor.h"
#include "base/non_copyable.h"

#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <thread>

namespace kaz::vm {

// Counts how often two files are written: the supplicant's configuration and the user's choice. Attributes each write to
// what the device does at that time. A thread of its own reads the content after each write.
class FileWrites : NonCopyable {
  public:
    struct Count {
        long supplicant = 0;
        long choice = 0;
        long unchanged = 0;  // of both, those that left the content as it was
    };

    FileWrites();
    ~FileWrites();

    // The cause of the writes from now on.
    void attributeTo(const std::string& cause);

    std::map<std::string, Count> byCause() const;
    Count total() const;

  private:
    void watch();
    void handle(const std::filesystem::path& folder, const std::string& name);

    FileDescriptor inotify_;
    EventFd stop_;
    std::map<int, std::filesystem::path> folders_;           // by the watch of inotify
    std::map<std::filesystem::path, std::string> contents_;  // of the watched files
    mutable std::mutex mutex_;
    std::string cause_;
    std::map<std::string, Count> counts_;
    std::thread thread_;  // the last member, because it uses the others
};

}  // namespace kaz::vm
