#include "kazwifictl/interrupts.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace kaz::ctl {
namespace {

sigset_t endingSignals() {
    sigset_t set;
    ::sigemptyset(&set);
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
        ::sigaddset(&set, signal);
    }
    return set;
}

}  // namespace

Interrupts::Interrupts() {
    const sigset_t set = endingSignals();
    ::pthread_sigmask(SIG_BLOCK, &set, &former_);
    signals_ = FileDescriptor(::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
    if (signals_.get() < 0) {
        throw std::system_error(errno, std::generic_category(), "signalfd");
    }
}

Interrupts::~Interrupts() {
    ::pthread_sigmask(SIG_SETMASK, &former_, nullptr);
}

std::optional<int> Interrupts::take() {
    signalfd_siginfo info{};
    const bool taken = ::read(signals_.get(), &info, sizeof(info)) == static_cast<ssize_t>(sizeof(info));
    return taken ? std::optional(static_cast<int>(info.ssi_signo)) : std::nullopt;
}

void dieOf(int signal) {
    static_cast<void>(::signal(signal, SIG_DFL));
    sigset_t set;
    ::sigemptyset(&set);
    ::sigaddset(&set, signal);
    static_cast<void>(::raise(signal));
    ::pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    ::_exit(128 + signal);
}

}  // namespace kaz::ctl
