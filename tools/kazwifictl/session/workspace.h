#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "kazwifictl/process/caught_signals.h"
#include "kazwifictl/process/library_log.h"
#include "kazwifictl/session/device.h"
#include "kazwifictl/session/session.h"
#include "kazwifictl/text/failure.h"

namespace kaz::ctl {

// Where a command does its work. A command first looks and then acts; how both are done differs between a
// program that runs one command and a prompt that keeps one device for many.
//
// `what` is the beginning of the error text: "cannot scan". The operations throw CommandFailed and
// Interrupted.
class Workspace {
  public:
    // What a command cannot do without.
    enum class Need { nothing, stack };

    Workspace(DeviceFactory make, Interrupts& interrupts, LibraryLog& log,
              std::chrono::milliseconds startWait)
        : make_(std::move(make)), interrupts_(interrupts), log_(log), startWait_(startWait) {}
    virtual ~Workspace() = default;
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;
    Workspace(Workspace&&) = delete;
    Workspace& operator=(Workspace&&) = delete;

    // The complete present state.
    virtual View look(const std::string& what, Need need) = 0;

    // The complete present state as a device finds it that is made for the occasion, whatever the session of
    // act() has heard of yet.
    View lookAfresh(const std::string& what, Need need) const;

    // A session to make requests in; it stays valid until the workspace ends.
    virtual Session& act(const std::string& what, Need need) = 0;

    // Sees to it that the requests have been carried out and saved, after an event that proves that they have
    // begun.
    virtual void finish() = 0;

    // The same without such an event. False when it cannot be told yet; it will happen in any case.
    virtual bool settle() = 0;

    // Gives the caller its terminal back, after `farewell`, and goes on unseen to see a request through.
    // False when there is no need to, because the device outlives the command.
    virtual bool goOnUnseen(const std::function<void()>& farewell) = 0;

    // The on/off choice as the next start of the device will find it.
    bool storedChoice() const { return make_()->isEnabled(); }

    Interrupts& interrupts() { return interrupts_; }
    LibraryLog& log() const { return log_; }
    std::chrono::milliseconds startWait() const { return startWait_; }

  protected:
    const DeviceFactory& factory() const { return make_; }

  private:
    DeviceFactory make_;
    Interrupts& interrupts_;
    LibraryLog& log_;
    std::chrono::milliseconds startWait_;
};

// Why there is nothing to work with.
Failure noStack(const std::string& what, const View& view, const LibraryLog::Hints& hints);

// Starts a session, and throws when `need` is not met.
void startSession(Session& session, const Workspace& place, const std::string& what, Workspace::Need need);

// Waits until `done`; throws Interrupted, and CommandFailed with `failure` when `limit` is over first.
void await(Session& session, std::chrono::milliseconds limit, const Session::Condition& done,
           const Failure& failure);

}  // namespace kaz::ctl
