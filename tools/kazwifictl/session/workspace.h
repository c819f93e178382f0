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

// Where a command does its work: it looks at the state, and then acts in a session.
//
// `what` is the beginning of the error text: "cannot scan". The operations throw CommandFailed and
// Interrupted.
class Workspace : NonCopyable {
  public:
    // One command looks with a Manager of its own, which ends before the state is reported: that is what makes a
    // first state complete (see session.h). A prompt keeps one session for all its commands.
    enum class Kind { oneCommand, prompt };

    // What a command cannot do without.
    enum class Need { nothing, stack };

    Workspace(Kind kind, Interrupts& interrupts, LibraryLog& log, std::chrono::milliseconds startWait,
              Background* background = nullptr)
        : kind_(kind), interrupts_(interrupts), log_(log), startWait_(startWait), background_(background) {}

    // The complete present state.
    Snapshot look(const std::string& what, Need need);

    // The complete present state as a new Manager finds it, whatever the session of act() has heard of yet.
    Snapshot lookAfresh(const std::string& what, Need need) const;

    // A session to make requests in; it stays valid until the workspace ends.
    Session& act(const std::string& what, Need need);

    // Completes requests of which a change has proved that they have begun.
    void finish();

    // Completes requests without such a proof. False when the prompt can do so only when it closes.
    bool fenceAndFinish();

    // Gives the caller its terminal back, after `farewell`, and continues in the background. False at the prompt,
    // whose Manager outlives the command.
    bool continueInBackground(const std::function<void()>& farewell);

    // The session of the prompt, after its first look() or act().
    Session& session() { return *session_; }

    // Completes what fenceAndFinish() left; then ends the prompt's session.
    void close();

    // The on/off choice as the next start of the device will find it.
    static bool storedChoice() { return makeManager()->isEnabled(); }

    Interrupts& interrupts() { return interrupts_; }
    LibraryLog& log() const { return log_; }
    std::chrono::milliseconds startWait() const { return startWait_; }

  private:
    void start(Session& session, const std::string& what, Need need) const;

    Kind kind_;
    Interrupts& interrupts_;
    LibraryLog& log_;
    std::chrono::milliseconds startWait_;
    Background* background_;
    std::unique_ptr<Session> session_;
    bool unproved_ = false;  // whether requests are left for close()
};

// Why there is nothing to work with.
Failure noStack(const std::string& what, const Snapshot& now, const LibraryLog::Hints& hints);

// Waits until `done`; throws Interrupted, and CommandFailed with `failure` when `limit` is over first.
void await(Session& session, std::chrono::milliseconds limit, const Session::Condition& done,
           const Failure& failure, const Session::Observer& observer = {});

}  // namespace kaz::ctl
