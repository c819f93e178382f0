#include "kazwifictl/session/workspace.h"

#include <memory>

#include "kazwifictl/text/failure.h"

namespace kaz::ctl {

Failure noStack(const std::string& what, const Snapshot& now, const LibraryLog::Hints& hints) {
    if (hints.noBus) {
        return {ExitCode::noStack, what, "the system bus cannot be reached", "systemctl status dbus.service"};
    }
    if (!now.enabled) {
        return {ExitCode::noStack, what, "Wi-Fi is switched off", "kazwifictl on"};
    }
    return {ExitCode::noStack, what, "wpa_supplicant does not run or has no Wi-Fi interface",
            "systemctl status wpa_supplicant.service"};
}

Snapshot Workspace::look(const std::string& what, Need need) {
    return kind_ == Kind::prompt ? act(what, need).latest() : lookAfresh(what, need);
}

Snapshot Workspace::lookAfresh(const std::string& what, Need need) const {
    Session session(interrupts_);
    start(session, what, need);
    session.close();
    return session.latest();
}

Session& Workspace::act(const std::string& what, Need need) {
    const bool isNew = !session_;
    if (isNew) {
        session_ = std::make_unique<Session>(interrupts_);
    }
    if (kind_ == Kind::oneCommand) {
        if (isNew) {
            start(*session_, what, need);
        }
        return *session_;
    }
    session_->takeAll();
    if (!session_->latest().running) {
        start(*session_, what, need);
        while (session_->latest().running &&
               session_->next(Clock::now() + Session::firstStateLimit) == Session::Wake::change) {
        }
    }
    return *session_;
}

void Workspace::finish() {
    if (kind_ == Kind::oneCommand) {
        session_->close();
    }
}

bool Workspace::fenceAndFinish() {
    // A fence spoils the session's record of a connection. So the prompt postpones it while there is one.
    if (kind_ == Kind::prompt &&
        session_->latest().connection.status != wifi::ConnectionInfo::Status::disconnected) {
        unproved_ = true;
        return false;
    }
    const auto wake = session_->fence(Session::requestLimit);
    if (wake == Session::Wake::interrupted) {
        throw Interrupted(*session_->signal());
    }
    finish();
    return wake == Session::Wake::change;
}

bool Workspace::continueInBackground(const std::function<void()>& farewell) {
    if (background_ == nullptr) {
        return false;
    }
    farewell();
    background_->leaveTerminal();
    return true;
}

void Workspace::close() {
    if (unproved_) {
        session_->fence(Session::requestLimit);
    }
    session_->close();
}

void Workspace::start(Session& session, const std::string& what, Need need) const {
    const bool needed = need == Need::stack;
    switch (session.start(startWait_, needed)) {
        case Session::Start::running:
            return;
        case Session::Start::notRunning:
            if (needed) {
                throw CommandFailed(noStack(what, session.latest(), log_.hints()));
            }
            return;
        case Session::Start::noAnswer:
            throw CommandFailed({ExitCode::noStack, what, "systemd does not answer on the system bus",
                                 "busctl status org.freedesktop.systemd1"});
        case Session::Start::interrupted:
            throw Interrupted(*session.signal());
    }
}

void await(Session& session, std::chrono::milliseconds limit, const Session::Condition& done,
           const Failure& failure, const Session::Observer& observer) {
    switch (session.until(Clock::now() + limit, done, observer)) {
        case Session::Wake::change:
            return;
        case Session::Wake::timedOut:
            throw CommandFailed(failure);
        case Session::Wake::interrupted:
            throw Interrupted(*session.signal());
    }
}

}  // namespace kaz::ctl
