#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "kazwifictl/process/background.h"
#include "kazwifictl/session/no_stack.h"
#include "kazwifictl/session/session.h"
#include "kazwifictl/text/failure.h"

namespace kaz::ctl {

// Gives a command the present state, and a session for its requests.
//
// `what` is the beginning of the error text, for example "cannot scan". The operations throw CommandFailed and
// Interrupted.
class Workspace : NonCopyable {
  public:
    // oneCommand: look() makes its own Manager and ends it before it returns the state. This completes the first
    // state. prompt: all commands share one session.
    enum class Kind { oneCommand, prompt };

    // What a command needs; `stack` is a running supplicant.
    enum class Need { nothing, stack };

    // `slow` is called when the state of the system takes more than a second to come.
    Workspace(Kind kind, Interrupts& interrupts, std::chrono::milliseconds startWait,
              Background* background = nullptr, std::function<void()> slow = {})
        : kind_(kind),
          interrupts_(interrupts),
          startWait_(startWait),
          background_(background),
          slow_(std::move(slow)) {}

    // The complete present state.
    Snapshot look(const std::string& what, Need need);

    // The complete present state, read by a new Manager. The session of act() may not have received it yet.
    Snapshot lookAfresh(const std::string& what, Need need) const;

    // The session for requests. Valid until the workspace is destroyed.
    Session& act(const std::string& what, Need need);

    // Ends the session after its last request has been carried out. Does nothing at the prompt, whose session
    // continues.
    void finish();

    // Waits until the requests have been carried out, then calls finish(). False when that took too long.
    bool carryOutAndFinish();

    // Calls `farewell`, releases the terminal and continues in the background. False at the prompt, whose
    // Manager outlives the command.
    bool continueInBackground(const std::function<void()>& farewell);

    // The session of the prompt. Must not be called before the first look() or act().
    Session& session() { return *session_; }

    // Ends the prompt's session.
    void close();

    Interrupts& interrupts() { return interrupts_; }
    std::chrono::milliseconds startWait() const { return startWait_; }

  private:
    void start(Session& session, const std::string& what, Need need) const;

    Kind kind_;
    Interrupts& interrupts_;
    std::chrono::milliseconds startWait_;
    Background* background_;
    std::function<void()> slow_;
    std::unique_ptr<Session> session_;
};

// Waits until `done` returns true. Throws CommandFailed with `failure` after `limit`.
void await(Session& session, std::chrono::milliseconds limit, const Session::Condition& done,
           const Failure& failure, const Session::Observer& observer = {});

}  // namespace kaz::ctl
