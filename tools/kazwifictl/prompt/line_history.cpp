#include "kazwifictl/prompt/line_history.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

// libedit's header needs FILE.
#include <cstdio>

#include <histedit.h>

#include <filesystem>
#include <fstream>
#include <new>
#include <system_error>

#include "kazwifictl/process/file_descriptor.h"

namespace kaz::ctl {
namespace {

constexpr int linesKept = 500;

std::filesystem::path stateFolder() {
    const char* state = ::getenv("XDG_STATE_HOME");
    if (state != nullptr && *state == '/') {
        return state;
    }
    const char* home = ::getenv("HOME");
    return home != nullptr && *home == '/' ? std::filesystem::path(home) / ".local/state"
                                           : std::filesystem::path();
}

}  // namespace

LineHistory::LineHistory() : lines_(::history_init()) {
    if (lines_ == nullptr) {
        throw std::bad_alloc();
    }
    HistEvent event{};
    ::history(lines_, &event, H_SETSIZE, linesKept);
    ::history(lines_, &event, H_SETUNIQUE, 1);
    const std::filesystem::path folder = stateFolder();
    if (folder.empty()) {
        return;
    }
    std::error_code error;
    std::filesystem::create_directories(folder / "kazwifictl", error);
    if (error) {
        return;
    }
    path_ = folder / "kazwifictl/history";
    std::ifstream file(path_);
    for (std::string line; std::getline(file, line);) {
        add(line);
    }
}

LineHistory::~LineHistory() {
    if (!path_.empty()) {
        save();
    }
    ::history_end(lines_);
}

void LineHistory::add(const std::string& line) {
    HistEvent event{};
    ::history(lines_, &event, H_ENTER, line.c_str());
}

// The oldest first, for nobody else to read; the former file stays until the new one is whole.
void LineHistory::save() const {
    std::string text;
    HistEvent event{};
    for (int found = ::history(lines_, &event, H_LAST); found >= 0;
         found = ::history(lines_, &event, H_PREV)) {
        text += std::string(event.str) + '\n';
    }
    const std::string unfinished = path_ + ".new";
    const FileDescriptor file(::open(unfinished.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    if (::write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size())) {
        static_cast<void>(std::rename(unfinished.c_str(), path_.c_str()));
    }
}

}  // namespace kaz::ctl
