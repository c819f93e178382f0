#pragma once

#include <exception>
#include <string>
#include <string_view>
#include <utility>

namespace kaz::ctl {

// The exit status of the process. The manual page documents the numbers; they never change. A command that a
// signal ends has none of them: the process dies of that signal, as shells expect.
enum class ExitCode : int {
    done = 0,
    failed = 1,
    usage = 2,
    timedOut = 3,
    noStack = 4,   // Wi-Fi is off, or the supplicant does not run
    notFound = 5,  // no such network
    refused = 6,   // the settings break a rule; nothing was changed
};

// Why a command failed. The three texts are safe to print: SSIDs in them are escaped (see ssid_text.h).
struct Failure {
    ExitCode code = ExitCode::failed;
    std::string what;    // "cannot connect to \"Home\""
    std::string why;     // "the password is wrong"
    std::string advice;  // what to try: "kazwifictl connect Home"; may be empty
};

// One line without a line break: "kazwifictl: WHAT: WHY; try: ADVICE".
std::string errorLine(const Failure& failure);

// The same for a terminal, on several lines if it is wider. A command to try has a line of its own and is not broken, so
// that it can be pasted.
std::string errorText(const Failure& failure, int columns);

// "failed", "usage", "timed-out", "no-stack", "not-found", "refused"; "done" for no failure.
std::string_view nameOf(ExitCode code);

// Thrown by a command that fails.
class CommandFailed : public std::exception {
  public:
    explicit CommandFailed(Failure failure) : failure_(std::move(failure)) {}
    const Failure& failure() const { return failure_; }
    const char* what() const noexcept override { return failure_.what.c_str(); }

  private:
    Failure failure_;
};

// Thrown when a signal interrupts a command.
class Interrupted : public std::exception {
  public:
    explicit Interrupted(int signal) : signal_(signal) {}
    int signal() const { return signal_; }
    const char* what() const noexcept override { return "interrupted"; }

  private:
    int signal_;
};

}  // namespace kaz::ctl
