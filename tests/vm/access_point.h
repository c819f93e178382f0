#pragma once

#include "base/non_copyable.h"

#include <string>

namespace kaz::vm {

// One of the access points of guest/access-points, by its name there. The destructor restores it.
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

    // The device receives it with -80 dBm.
    void becomeFaint();

    // Tells its stations that it changes the channel, and does so five beacons later.
    void switchChannel(int channel);

    // Without a DHCP server the link comes up, but no address is given.
    void stopAddresses();

    // Adds lines to hostapd's configuration and restarts hostapd.
    void reconfigure(const std::string& line);

    // An ad-hoc network with this name takes its place.
    void becomeAdHoc(const std::string& ssid, int frequency);

    // Is an authentication server with this certificate of /etc/certificates.
    void present(const std::string& certificate);
    // Whether that server, with PEAP, has got as far as the exchange that proves the password.
    bool sawInnerExchange() const;

    // Undoes all of these.
    void restore();

  private:
    void setReception(int dBm) const;

    std::string name_;
    bool up_ = true;
    bool hasAddresses_ = true;
    bool weakened_ = false;
    bool faint_ = false;
    bool changed_ = false;  // the configuration, or what only a restart undoes
};

}  // namespace kaz::vm
