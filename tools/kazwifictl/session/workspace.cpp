#include "kazwifictl/session/workspace.h"

#include <memory>

#include "kazwifictl/text/failure.h"

namespace kaz::ctl {

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
    if (isNew || !session_->latest().running) {
        start(*session_, what, need);
    }
    return *session_;
}

void Workspace::finish() {
    if (kind_ == Kind::oneCommand) {
        session_->close();
    }
}

bool Workspace::carryOutAndFinish() {
    const bool done = session_->carriedOut(Session::requestLimit);
    finish();
    return done;
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
    session_->close();
}

void Workspace::start(Session& session, const std::string& what, Need need) const {
    const bool needed = need == Need::stack;
    const Session::Start result = session.start(startWait_, needed, slow_);
    if (result == Session::Start::noAnswer) {
        throw CommandFailed(noAnswer(what));
    }
    if (result == Session::Start::notRunning && needed) {
        throw CommandFailed(noStack(what, session.latest()));
    }
}

void await(Session& session, std::chrono::milliseconds limit, const Session::Condition& done,
           const Failure& failure, const Session::Observer& observer) {
    if (!session.until(Clock::now() + limit, done, observer)) {
        throw CommandFailed(failure);
    }
}

}  // namespace kaz::ctl
