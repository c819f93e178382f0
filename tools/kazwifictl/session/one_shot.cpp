#include "kazwifictl/session/one_shot.h"

#include "kazwifictl/text/failure.h"

namespace kaz::ctl {

View OneShot::look(const std::string& what, Need need) {
    return lookAfresh(what, need);
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
    const auto wake = session_->fence(Session::requestLimit);
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
