#pragma once

#include <string>

namespace kaz::ctl {

// The lines typed at earlier prompts, kept in $XDG_STATE_HOME/kazwifictl/history (~/.local/state by default).
// Without a place to write they last as long as the process. Passwords are not typed at the prompt, so none
// is among them.
class HistoryFile {
  public:
    HistoryFile();
    ~HistoryFile();
    HistoryFile(const HistoryFile&) = delete;
    HistoryFile& operator=(const HistoryFile&) = delete;
    HistoryFile(HistoryFile&&) = delete;
    HistoryFile& operator=(HistoryFile&&) = delete;

    // A line equal to the one before is not repeated.
    void add(const std::string& line);

  private:
    std::string path_;  // empty: nowhere
};

}  // namespace kaz::ctl
