#include "kazwifictl/history_file.h"

#include <stdlib.h>

#include <cstdio>

#include <readline/history.h>

#include <filesystem>
#include <system_error>

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

HistoryFile::HistoryFile() {
    const std::filesystem::path folder = stateFolder();
    if (folder.empty()) {
        return;
    }
    std::error_code error;
    std::filesystem::create_directories(folder / "kazwifictl", error);
    if (!error) {
        path_ = folder / "kazwifictl/history";
        ::stifle_history(linesKept);
        ::read_history(path_.c_str());
    }
}

HistoryFile::~HistoryFile() {
    if (!path_.empty()) {
        ::write_history(path_.c_str());
    }
}

void HistoryFile::add(const std::string& line) {
    const HIST_ENTRY* last = history_length > 0 ? ::history_get(history_base + history_length - 1) : nullptr;
    if (last == nullptr || line != last->line) {
        ::add_history(line.c_str());
    }
}

}  // namespace kaz::ctl
