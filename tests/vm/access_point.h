#pragma once

#include <string>

namespace kaz::vm {

// One of the access points of guest/access-points, by its name there. It is up, with its usual power and
// configuration, once this object is gone.
class AccessPoint {
  public:
    explicit AccessPoint(std::string name);
    ~AccessPoint();
    AccessPoint(const AccessPoint&) = delete;
    AccessPoint& operator=(const AccessPoint&) = delete;
    AccessPoint(AccessPoint&&) = delete;
    AccessPoint& operator=(AccessPoint&&) = delete;

    // Gone from one moment to the next, as when its plug is pulled: nobody is told.
    void vanish();
    void comeBack();

    // Throws every station out, in one frame to all of them.
    void deauthenticateAll();

    // What the device sees is 50 dB less.
    void setPower(int dBm);

    // Adds a line to hostapd's configuration and starts anew with it.
    void reconfigure(const std::string& line);

  private:
    std::string name_;
    bool up_ = true;
    bool changed_ = false;
};

}  // namespace kaz::vm
