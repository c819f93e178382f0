#include "kazwifictl/session/live_workspace.h"

#include "kazwifictl/text/failure.h"

namespace kaz::ctl {

LiveWorkspace::LiveWorkspace(const DeviceFactory& make, Interrupts& interrupts, LibraryLog& log,
                             std::chrono::milliseconds startWait)
    : Workspace(make, interrupts, log, startWait), session_(make, interrupts) {}

View LiveWorkspace::look(const std::string& what, Need need) {
    return act(what, need).view();
}

Session& LiveWorkspace::act(const std::string& what, Need need) {
    session_.takeAll();
    if (!session_.view().running) {
        startSession(session_, *this, what, need);
        while (session_.view().running &&
               session_.next(Clock::now() + Session::firstStateSettles) == Session::Wake::event) {
        }
    }
    return session_;
}

// A fence shows in this session's record of a connection, so it has to wait while there is one.
bool LiveWorkspace::settle() {
    if (session_.view().connection.status != wifi::ConnectionInfo::Status::disconnected) {
        owing_ = true;
        return false;
    }
    const auto wake = session_.fence(Session::requestLimit);
    if (wake == Session::Wake::interrupted) {
        throw Interrupted(*session_.signal());
    }
    return wake == Session::Wake::event;
}

void LiveWorkspace::close() {
    if (owing_) {
        session_.fence(Session::requestLimit);
    }
    session_.close();
}

}  // namespace kaz::ctl
