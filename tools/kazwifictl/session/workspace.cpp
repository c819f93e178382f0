#include "kazwifictl/session/workspace.h"

#include "kazwifictl/text/failure.h"

namespace kaz::ctl {

Failure noStack(const std::string& what, const View& view, const LibraryLog::Hints& hints) {
    if (hints.noBus) {
        return {ExitCode::noStack, what, "the system bus cannot be reached", "systemctl status dbus.service"};
    }
    if (!view.enabled) {
        return {ExitCode::noStack, what, "Wi-Fi is switched off", "kazwifictl on"};
    }
    return {ExitCode::noStack, what, "wpa_supplicant does not run or has no Wi-Fi interface",
            "systemctl status wpa_supplicant.service"};
}

View Workspace::lookAfresh(const std::string& what, Need need) const {
    Session session(make_, interrupts_);
    startSession(session, *this, what, need);
    session.close();
    return session.view();
}

void startSession(Session& session, const Workspace& place, const std::string& what, Workspace::Need need) {
    const bool needed = need == Workspace::Need::stack;
    switch (session.start(place.startWait(), needed)) {
        case Session::Start::running:
            return;
        case Session::Start::notRunning:
            if (needed) {
                throw CommandFailed(noStack(what, session.view(), place.log().hints()));
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
           const Failure& failure) {
    switch (session.until(Clock::now() + limit, done)) {
        case Session::Wake::event:
            return;
        case Session::Wake::timedOut:
            throw CommandFailed(failure);
        case Session::Wake::interrupted:
            throw Interrupted(*session.signal());
    }
}

}  // namespace kaz::ctl
