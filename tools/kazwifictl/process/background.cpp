#include "kazwifictl/process/background.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "base/checked.h"
#include "base/pipe.h"
#include "kazwifictl/process/caught_signals.h"

namespace kaz::ctl {
namespace {

[[noreturn]] void endAs(pid_t child, int released) {
    char byte = 0;
    ssize_t count = -1;
    do {
        count = ::read(released, &byte, 1);
    } while (count < 0 && errno == EINTR);
    if (count == 1) {
        ::_exit(0);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFSIGNALED(status)) {
        dieOf(WTERMSIG(status));
    }
    ::_exit(WEXITSTATUS(status));
}

// The child handles these signals: it cleans up and dies of the signal. Then the parent dies of it too.
void ignoreKeyboard() {
    static_cast<void>(::signal(SIGINT, SIG_IGN));
    static_cast<void>(::signal(SIGQUIT, SIG_IGN));
}

}  // namespace

Background::Background() {
    Pipe release;
    const pid_t child = ::fork();
    if (child < 0) {
        throwErrno("fork");
    }
    if (child > 0) {
        release.writing = FileDescriptor();
        ignoreKeyboard();
        endAs(child, release.reading.get());
    }
    release_ = std::move(release.writing);
}

void Background::leaveTerminal() {
    if (!release_.isOpen()) {
        return;
    }
    ::setsid();
    const FileDescriptor null(::open("/dev/null", O_RDWR | O_CLOEXEC));
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        ::dup2(null.get(), standard);
    }
    const char byte = 1;
    if (::write(release_.get(), &byte, 1) == 1) {
        release_ = FileDescriptor();
    }
}

}  // namespace kaz::ctl
