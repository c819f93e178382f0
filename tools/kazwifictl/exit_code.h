#pragma once

namespace kaz::ctl {

// What the process reports to its parent. The numbers are documented in the manual page and do not change.
// A run ended by a signal is not among them: it dies of that signal, as shells expect.
enum class ExitCode : int {
    done = 0,
    failed = 1,
    usage = 2,
    timedOut = 3,
    noStack = 4,   // Wi-Fi is off, or the supplicant does not run
    notFound = 5,  // no such network
    refused = 6,   // the settings break a rule; nothing was changed
};

}  // namespace kaz::ctl
