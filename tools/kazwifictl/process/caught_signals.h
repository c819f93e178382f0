#pragma once

#include <signal.h>

#include <initializer_list>
#include <optional>

#include "base/file_descriptor.h"
#include "base/non_copyable.h"

namespace kaz::ctl {

// Makes signals readable from a file descriptor (signalfd). Blocks them in this thread and in every thread
// that it starts later.
class CaughtSignals : NonCopyable {
  public:
    // Throws std::system_error.
    CaughtSignals(std::initializer_list<int> signals);
    // Restores this thread's former signal mask.
    ~CaughtSignals();

    // Readable while a signal is pending.
    int fd() const { return signals_.get(); }

    // Takes a pending signal; nothing when there is none.
    std::optional<int> take();

  private:
    sigset_t former_{};
    FileDescriptor signals_;
};

// The signals that end a program. They are caught, so that a command can clean up first. Must be constructed
// before any thread is started.
class Interrupts : public CaughtSignals {
  public:
    Interrupts() : CaughtSignals({SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {}

    // Throws Interrupted if a signal is pending, and takes it.
    void check();
};

// Ends this process with `signal`, as if the signal had not been caught.
[[noreturn]] void dieOf(int signal);

}  // namespace kaz::ctl
