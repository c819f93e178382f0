#pragma once

#include "kazwifictl/session/workspace.h"

namespace kaz::ctl {

// The workspace of a prompt: one session for all commands.
class LiveWorkspace final : public Workspace {
  public:
    LiveWorkspace(const DeviceFactory& make, Interrupts& interrupts, LibraryLog& log,
                  std::chrono::milliseconds startWait);

    View look(const std::string& what, Need need) override;
    Session& act(const std::string& what, Need need) override;
    void finish() override {}
    bool settle() override;
    bool goOnUnseen(const std::function<void()>& /*farewell*/) override { return false; }

    Session& session() { return session_; }

    // Sees requests through that nothing has proved to be done; then ends the device.
    void close();

  private:
    Session session_;
    bool owing_ = false;
};

}  // namespace kaz::ctl
