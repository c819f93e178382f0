#pragma once

#include <sys/types.h>

#include <optional>

#include "base/file_descriptor.h"

namespace kaz::ctl {

// Splits the process in two, so that a command can return at once while its request continues. The child does
// the work. The parent waits until the child releases it or ends.
class Background {
  public:
    // Must be called before any thread is started. Returns only in the child. The parent never returns: it
    // exits with status 0 when the child calls leaveTerminal(). If the child ends before that, the parent ends
    // with the same status or signal.
    Background();

    // Detaches the child from the terminal and releases the parent. Only the first call has an effect.
    void leaveTerminal();

  private:
    FileDescriptor release_;
};

}  // namespace kaz::ctl
