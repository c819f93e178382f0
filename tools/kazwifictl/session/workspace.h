#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "kazwifictl/process/background.h"
#include "kazwifictl/process/library_log.h"
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
    // state (fact 3 in session.h). prompt: all commands share one session.
    enum class Kind { oneCommand, prompt };

    // What a command needs; `stack` is a running supplicant.
    enum class Need { nothing, stack };

    Workspace(Kind kind, Interrupts& interrupts, LibraryLog& log, std::chrono::milliseconds startWait,
              Background* background = nullptr)
        : kind_(kind), interrupts_(interrupts), log_(log), startWait_(startWait), background_(background) {}

    // The complete present state.
    Snapshot look(const std::string& what, Need need);

    // The complete present state, read by a new Manager. The session of act() may not have received it yet.
    Snapshot lookAfresh(const std::string& what, Need need) const;

    // The session for requests. Valid until the workspace is destroyed.
    Session& act(const std::string& what, Need need);

    // Completes requests after a change has proved that they have begun. Does nothing at the prompt, whose
    // session continues.
    void finish();

    // Completes requests without such a proof: calls fence(), then finish(). False when the prompt must postpone
    // the fence to close(), or when the fence timed out.
    bool fenceAndFinish();

    // Calls `farewell`, releases the terminal and continues in the background. False at the prompt, whose
    // Manager outlives the command.
    bool continueInBackground(const std::function<void()>& farewell);

    // The session of the prompt. Must not be called before the first look() or act().
    Session& session() { return *session_; }

    // Calls the fence that fenceAndFinish() postponed, then ends the prompt's session.
    void close();

    // The stored on/off choice, read by a new Manager.
    static bool storedChoice() { return makeManager()->isEnabled(); }

    Interrupts& interrupts() { return interrupts_; }
    LibraryLog& log() const { return log_; }
    std::chrono::milliseconds startWait() const { return startWait_; }

  private:
    void start(Session& session, const std::string& what, Need need) const;
    void completeFirstState(const std::string& what, Need need);

    Kind kind_;
    Interrupts& interrupts_;
    LibraryLog& log_;
    std::chrono::milliseconds startWait_;
    Background* background_;
    std::unique_ptr<Session> session_;
    bool unproved_ = false;  // whether close() must call a postponed fence
};

// Why no supplicant can be used.
Failure noStack(const std::string& what, const Snapshot& now, const LibraryLog::Hints& hints);

// Waits until `done` returns true. Throws CommandFailed with `failure` after `limit`.
void await(Session& session, std::chrono::milliseconds limit, const Session::Condition& done,
           const Failure& failure, const Session::Observer& observer = {});

}  // namespace kaz::ctl
