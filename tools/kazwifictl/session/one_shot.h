#pragma once

#include "kazwifictl/process/background.h"
#include "kazwifictl/session/workspace.h"

namespace kaz::ctl {

// The workspace of a program that runs one command and ends. It looks with a device of its own, which it ends
// before it reports: that is what makes a first state complete (see session.h).
class OneShot final : public Workspace {
  public:
    OneShot(DeviceFactory make, Interrupts& interrupts, LibraryLog& log, std::chrono::milliseconds startWait,
            Background* background)
        : Workspace(std::move(make), interrupts, log, startWait), background_(background) {}

    View look(const std::string& what, Need need) override;
    Session& act(const std::string& what, Need need) override;
    void finish() override;
    bool settle() override;
    bool goOnUnseen(const std::function<void()>& farewell) override;

  private:
    Background* background_;
    std::unique_ptr<Session> session_;
};

}  // namespace kaz::ctl
