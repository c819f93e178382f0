#include "one_shot.h"

#include "command_failed.h"

namespace kaz::ctl {
namespace {

// A call on the bus may take 10 s before the library gives it up.
constexpr std::chrono::milliseconds requestLimit{15000};

}  // namespace

View OneShot::look(const std::string& what, Need need) {
    Session session(factory(), interrupts());
    startSession(session, *this, what, need);
    session.close();
    return session.view();
}

Session& OneShot::act(const std::string& what, Need need) {
    if (!session_) {
        session_ = std::make_unique<Session>(factory(), interrupts());
        startSession(*session_, *this, what, need);
    }
    return *session_;
}

void OneShot::finish() {
    session_->close();
}

bool OneShot::settle() {
    const auto wake = session_->fence(requestLimit);
    if (wake == Session::Wake::interrupted) {
        throw Interrupted(*session_->signal());
    }
    session_->close();
    return wake == Session::Wake::event;
}

bool OneShot::goOnUnseen(const std::function<void()>& farewell) {
    if (background_ == nullptr) {
        return false;
    }
    farewell();
    background_->goOnUnseen();
    return true;
}

}  // namespace kaz::ctl
