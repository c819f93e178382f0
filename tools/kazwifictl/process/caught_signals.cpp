#include "kazwifictl/process/caught_signals.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include "base/checked.h"
#include "kazwifictl/text/failure.h"

namespace kaz::ctl {

CaughtSignals::CaughtSignals(std::initializer_list<int> signals) {
    sigset_t set;
    ::sigemptyset(&set);
    for (const int signal : signals) {
        ::sigaddset(&set, signal);
    }
    ::pthread_sigmask(SIG_BLOCK, &set, &former_);
    signals_ = FileDescriptor(::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!signals_.isOpen()) {
        throwErrno("signalfd");
    }
}

CaughtSignals::~CaughtSignals() {
    ::pthread_sigmask(SIG_SETMASK, &former_, nullptr);
}

std::optional<int> CaughtSignals::take() {
    signalfd_siginfo info{};
    const bool taken = ::read(signals_.get(), &info, sizeof(info)) == static_cast<ssize_t>(sizeof(info));
    return taken ? std::optional(static_cast<int>(info.ssi_signo)) : std::nullopt;
}

void Interrupts::check() {
    if (const auto signal = take()) {
        throw Interrupted(*signal);
    }
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
