#include "base/signals_blocked.h"

#include <initializer_list>

namespace kaz {

SignalsBlocked::SignalsBlocked() noexcept {
    sigset_t blocked;
    ::sigfillset(&blocked);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS}) {
        ::sigdelset(&blocked, fault);
    }
    ::pthread_sigmask(SIG_SETMASK, &blocked, &former_);
}

SignalsBlocked::~SignalsBlocked() {
    ::pthread_sigmask(SIG_SETMASK, &former_, nullptr);
}

}  // namespace kaz
