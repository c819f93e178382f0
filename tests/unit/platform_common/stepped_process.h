#pragma once

#include "base/non_copyable.h"

#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <stdexcept>

namespace kaz::test {

// A process that is stopped before and after each system call it makes. Killed at the end of scope at the latest. Fork
// while there is one thread only.
class SteppedProcess : NonCopyable {
  public:
    explicit SteppedProcess(const std::function<bool()>& body) : pid_(::fork()) {
        if (pid_ == 0) {
            ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
            ::raise(SIGSTOP);
            ::_exit(body() ? 0 : 1);
        }
        int status = 0;
        if (pid_ < 0 || ::waitpid(pid_, &status, 0) != pid_ || !WIFSTOPPED(status)) {
            throw std::runtime_error("cannot trace a process");
        }
    }
    ~SteppedProcess() {
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
    }

    // Lets it run to its next stop. Returns false if it ended, which must be with success.
    bool step() {
        int status = 0;
        ::ptrace(PTRACE_SYSCALL, pid_, nullptr, nullptr);
        ::waitpid(pid_, &status, 0);
        if (WIFSTOPPED(status)) {
            return true;
        }
        pid_ = -1;
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "status " << status;
        return false;
    }

  private:
    pid_t pid_;
};

}  // namespace kaz::test
