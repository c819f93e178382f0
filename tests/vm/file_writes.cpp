#include "vm/file_writes.h"

#include "base/checked.h"

#include <poll.h>
#include <sys/inotify.h>

#include <array>
#include <cstring>
#include <fstream>
#include <iterator>
#include <utility>

namespace kaz::vm {
namespace {

const std::filesystem::path supplicantFile = "/etc/wpa_supplicant/device.conf";
const std::filesystem::path choiceFile = "/home/root/.config/tessaline/kaz.conf";

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace

FileWrites::FileWrites() : inotify_(::inotify_init1(IN_CLOEXEC)) {
    for (const std::filesystem::path& file : {supplicantFile, choiceFile}) {
        const std::filesystem::path folder = file.parent_path();
        std::filesystem::create_directories(folder);
        // A file is written in place, or as a temporary file that replaces it.
        const int watch = ::inotify_add_watch(inotify_.get(), folder.c_str(), IN_CLOSE_WRITE | IN_MOVED_TO);
        if (watch < 0) {
            throwErrno("cannot watch " + folder.string());
        }
        folders_[watch] = folder;
        contents_[file] = contentOf(file);
    }
    thread_ = std::thread([this] { watch(); });
}

FileWrites::~FileWrites() {
    stop_.set();
    thread_.join();
}

void FileWrites::attributeTo(const std::string& cause) {
    const std::lock_guard lock(mutex_);
    cause_ = cause;
}

std::map<std::string, FileWrites::Count> FileWrites::byCause() const {
    const std::lock_guard lock(mutex_);
    return counts_;
}

FileWrites::Count FileWrites::total() const {
    Count sum;
    for (const auto& [cause, count] : byCause()) {
        sum.supplicant += count.supplicant;
        sum.choice += count.choice;
        sum.unchanged += count.unchanged;
    }
    return sum;
}

void FileWrites::watch() {
    std::array<pollfd, 2> ready{{{inotify_.get(), POLLIN, 0}, {stop_.get(), POLLIN, 0}}};
    std::array<char, 4096> buffer{};
    while (::poll(ready.data(), ready.size(), -1) >= 0 && ready[1].revents == 0) {
        const ssize_t size = ::read(inotify_.get(), buffer.data(), buffer.size());
        for (const char* next = buffer.data(); next < buffer.data() + size;) {
            inotify_event event{};
            std::memcpy(&event, next, sizeof event);
            handle(folders_[event.wd], next + sizeof event);
            next += sizeof event + event.len;
        }
    }
}

void FileWrites::handle(const std::filesystem::path& folder, const std::string& name) {
    const auto known = contents_.find(folder / name);
    if (known == contents_.end()) {
        return;
    }
    std::string content = contentOf(known->first);
    const bool same = content == known->second;
    known->second = std::move(content);
    const std::lock_guard lock(mutex_);
    Count& count = counts_[cause_];
    ++(known->first == supplicantFile ? count.supplicant : count.choice);
    count.unchanged += same ? 1 : 0;
}

}  // namespace kaz::vm
