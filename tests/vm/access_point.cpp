#include "vm/access_point.h"

#include "vm/command.h"

#include <utility>

namespace kaz::vm {

AccessPoint::AccessPoint(std::string name) : name_(std::move(name)) {}

AccessPoint::~AccessPoint() {
    if (changed_) {
        succeeds("/opt/guest/access-points restore " + name_);
    } else if (!up_) {
        succeeds("systemctl start ap@" + name_);
    }
}

void AccessPoint::vanish() {
    up_ = false;
    run("systemctl stop ap@" + name_);
}

void AccessPoint::comeBack() {
    run("systemctl start ap@" + name_);
    up_ = true;
}

void AccessPoint::deauthenticateAll() {
    run("hostapd_cli -p /run/hostapd -i " + name_ + " deauthenticate ff:ff:ff:ff:ff:ff");
}

void AccessPoint::setPower(int dBm) {
    changed_ = true;
    run("ip netns exec " + name_ + " iw dev " + name_ + " set txpower fixed " + std::to_string(dBm * 100));
}

void AccessPoint::reconfigure(const std::string& line) {
    changed_ = true;
    run("echo '" + line + "' >>/etc/hostapd/" + name_ + ".conf && systemctl restart ap@" + name_);
}

}  // namespace kaz::vm
