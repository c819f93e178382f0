#pragma once

#include <signal.h>

#include <optional>

#include "kazwifictl/file_descriptor.h"

namespace kaz::ctl {

// Turns the signals that end a program (SIGHUP, SIGINT, SIGQUIT, SIGTERM) into something to poll for, so that
// nothing is ever left half-way: they are blocked from now on, in this thread and those it starts.
class Interrupts {
  public:
    // Before any thread is started. Throws std::system_error.
    Interrupts();
    // Lets the signals through again.
    ~Interrupts();
    Interrupts(const Interrupts&) = delete;
    Interrupts& operator=(const Interrupts&) = delete;
    Interrupts(Interrupts&&) = delete;
    Interrupts& operator=(Interrupts&&) = delete;

    // Readable while a signal is pending.
    int fd() const { return signals_.get(); }

    // Takes a pending signal.
    std::optional<int> take();

    // The signals as they were handled before, for a child process.
    const sigset_t& formerMask() const { return former_; }

  private:
    sigset_t former_{};
    FileDescriptor signals_;
};

// Ends this process by `signal`, as if it had never been caught.
[[noreturn]] void dieOf(int signal);

}  // namespace kaz::ctl
