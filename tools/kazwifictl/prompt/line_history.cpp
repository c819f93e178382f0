#include "kazwifictl/prompt/line_history.h"

#include <stdlib.h>

// libedit's header needs FILE.
#include <cstdio>

#include <histedit.h>

#include <filesystem>
#include <fstream>
#include <new>
#include <system_error>

#include "base/file_error.h"
#include "base/file_replacement.h"

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

// Writes the oldest line first. Only the user may read the file.
void LineHistory::save() const {
    std::string text;
    HistEvent event{};
    for (int found = ::history(lines_, &event, H_LAST); found >= 0;
         found = ::history(lines_, &event, H_PREV)) {
        text += std::string(event.str) + '\n';
    }
    try {
        replaceFile({path_, path_ + ".new", 0600, {}}, text);
    } catch (const FileError&) {
        return;  // the old file is kept
    }
}

}  // namespace kaz::ctl
