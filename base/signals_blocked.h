#pragma once

#include <signal.h>

#include "base/non_copyable.h"

namespace kaz {

// While this lives, threads that the calling thread starts have their signals blocked, so the host's signal handlers
// run on the host's own threads. Fault signals, such as SIGSEGV, are not blocked: the thread that causes one handles
// it.
class SignalsBlocked : NonCopyable {
  public:
    SignalsBlocked() noexcept;
    ~SignalsBlocked();

  private:
    sigset_t former_{};
};

}  // namespace kaz
