#pragma once

#include <string>

#include "base/non_copyable.h"

struct history;  // libedit's

namespace kaz::ctl {

// The lines typed at this prompt and at earlier ones, saved in $XDG_STATE_HOME/kazwifictl/history (~/.local/state by
// default). If the file cannot be written, the lines last as long as the process. They contain no passwords: these
// are asked for separately, not typed at the prompt.
class LineHistory : NonCopyable {
  public:
    LineHistory();
    ~LineHistory();

    // Does not add a line that equals the last one.
    void add(const std::string& line);

    struct history* get() {
        return lines_;
    }

  private:
    void save() const;

    struct history* lines_;
    std::string path_;  // empty: not saved
};

}  // namespace kaz::ctl
