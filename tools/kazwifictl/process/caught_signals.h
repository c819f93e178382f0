#pragma once

#include <signal.h>

#include <initializer_list>
#include <optional>

#include "base/file_descriptor.h"
#include "base/non_copyable.h"

namespace kaz::ctl {

// Turns signals into something to poll for: they are blocked from now on, in this thread and those it starts.
class CaughtSignals : NonCopyable {
  public:
    // Throws std::system_error.
    CaughtSignals(std::initializer_list<int> signals);
    // Lets the signals through again.
    ~CaughtSignals();

    // Readable while a signal is pending.
    int fd() const { return signals_.get(); }

    // Takes a pending signal.
    std::optional<int> take();

  private:
    sigset_t former_{};
    FileDescriptor signals_;
};

// The signals that end a program. They are caught, so that nothing is ever left half-way. Made before any thread is
// started.
class Interrupts : public CaughtSignals {
  public:
    Interrupts() : CaughtSignals({SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {}
};

// Ends this process by `signal`, as if it had never been caught.
[[noreturn]] void dieOf(int signal);

}  // namespace kaz::ctl
