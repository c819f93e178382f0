#pragma once

#include <string>

#include "base/non_copyable.h"

struct history;  // libedit's

namespace kaz::ctl {

// The lines typed at this prompt and earlier ones, kept in $XDG_STATE_HOME/kazwifictl/history (~/.local/state by
// default). Without a place to write they last as long as the process. Passwords are not typed at the prompt, so
// none is among them.
class LineHistory : NonCopyable {
  public:
    LineHistory();
    ~LineHistory();

    // A line equal to the one before is not repeated.
    void add(const std::string& line);

    struct history* get() {
        return lines_;
    }

  private:
    void save() const;

    struct history* lines_;
    std::string path_;  // empty: nowhere
};

}  // namespace kaz::ctl
