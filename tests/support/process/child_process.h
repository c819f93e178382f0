#pragma once

#include "base/non_copyable.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <stdexcept>
#include <system_error>

namespace kaz::test {

// A fork of this process that runs a function and exits with its result; 99 if it throws. The destructor
// kills it. Fork while there is only one thread.
class ChildProcess : NonCopyable {
  public:
    explicit ChildProcess(const std::function<int()>& body) : pid_(::fork()) {
        if (pid_ < 0) {
            throw std::system_error(errno, std::generic_category(), "fork");
        }
        if (pid_ == 0) {
            int status = 99;
            try {
                status = body();
            } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): the status tells
            }
            ::_exit(status);
        }
    }
    ~ChildProcess() {
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            wait();
        }
    }

    // Whether it has ended, by itself or by a signal.
    bool ended() const {
        siginfo_t info{};
        return ::waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
               info.si_pid != 0;
    }

    void sendKill() const { ::kill(pid_, SIGKILL); }

    // The exit status, or the negated number of the signal that killed it.
    int wait() {
        int status = 0;
        while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
        }
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

  private:
    pid_t pid_;
};

}  // namespace kaz::test
