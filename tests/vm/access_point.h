#pragma once

#include "base/non_copyable.h"

#include <string>

namespace kaz::vm {

// One of the access points of guest/access-points, by its name there. The destructor restores its power and
// configuration.
class AccessPoint : NonCopyable {
  public:
    explicit AccessPoint(std::string name);
    ~AccessPoint();

    // Disappears at once without a frame, as after a power cut.
    void vanish();
    void comeBack();

    // Disconnects every station, with one frame to all of them.
    void deauthenticateAll();

    // The device receives it 50 dB weaker.
    void setPower(int dBm);

    // Adds a line to hostapd's configuration and restarts hostapd.
    void reconfigure(const std::string& line);

  private:
    std::string name_;
    bool up_ = true;
    bool changed_ = false;
};

}  // namespace kaz::vm
