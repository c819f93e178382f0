#pragma once

#include <sys/types.h>

#include <optional>

#include "base/file_descriptor.h"

namespace kaz::ctl {

// Splits the process in two, so that a command can answer at once and still see its request through: the
// child does the work, the parent waits until the child lets it go, or ends.
class Background {
  public:
    // Before any thread is started. Returns in the child. The parent never returns: it ends as the child
    // does, or with status 0 as soon as leaveTerminal() was called.
    Background();

    // Lets the parent go and turns away from the terminal, the first time it is called.
    void leaveTerminal();

  private:
    FileDescriptor release_;
};

}  // namespace kaz::ctl
