#include "vm/access_point.h"

#include "base/guard.h"
#include "vm/command.h"

#include <cstdint>
#include <utility>

namespace kaz::vm {

AccessPoint::AccessPoint(std::string name) : name_(std::move(name)) {}

AccessPoint::~AccessPoint() {
    runGuarded("restoring an access point", [this] { restore(); });
}

void AccessPoint::vanish() {
    up_ = false;
    run("systemctl stop ap@" + name_);
}

void AccessPoint::comeBack() {
    run("systemctl start ap@" + name_);
    up_ = true;
    weakened_ = false;
}

void AccessPoint::deauthenticateAll() {
    run("hostapd_cli -p /run/hostapd -i " + name_ + " deauthenticate ff:ff:ff:ff:ff:ff");
}

void AccessPoint::setPower(int dBm) {
    weakened_ = true;
    run("ip netns exec " + name_ + " iw dev " + name_ + " set txpower fixed " + std::to_string(dBm * 100));
}

void AccessPoint::becomeFaint() {
    setPower(0);
    faint_ = true;
    setReception(-80);
}

// The simulated air weakens what this radio sends. The kernel takes the number without its sign.
void AccessPoint::setReception(int dBm) const {
    run("mountpoint -q /sys/kernel/debug || mount -t debugfs debugfs /sys/kernel/debug; "
        "echo " +
        std::to_string(static_cast<std::uint64_t>(dBm)) + " >/sys/kernel/debug/ieee80211/$(ip netns exec " +
        name_ + " cat /sys/class/net/" + name_ + "/phy80211/name)/hwsim/rx_rssi");
}

void AccessPoint::switchChannel(int channel) {
    changed_ = true;
    run("hostapd_cli -p /run/hostapd -i " + name_ + " chan_switch 5 " + std::to_string(2407 + 5 * channel) +
        " | grep -qx OK");
}

void AccessPoint::stopAddresses() {
    hasAddresses_ = false;
    run("systemctl stop dhcp@" + name_);
}

void AccessPoint::reconfigure(const std::string& line) {
    changed_ = true;
    run("echo '" + line + "' >>/etc/hostapd/" + name_ + ".conf && systemctl restart ap@" + name_);
}

void AccessPoint::becomeAdHoc(const std::string& ssid, int frequency) {
    vanish();
    changed_ = true;
    const std::string in = "ip netns exec " + name_;
    run(in + " ip link set " + name_ + " down && " + in + " iw dev " + name_ + " set type ibss && " + in +
        " ip link set " + name_ + " up && " + in + " iw dev " + name_ + " ibss join '" + ssid + "' " +
        std::to_string(frequency) + " fixed-freq 02:ca:fe:00:00:01");
}

void AccessPoint::present(const std::string& certificate) {
    run(": >/run/ap/" + name_ + ".log");
    const std::string path = "/etc/certificates/" + certificate;
    reconfigure("ca_cert=" + path + ".pem\nserver_cert=" + path + ".pem\nprivate_key=" + path + ".key");
    run("hostapd_cli -p /run/hostapd -i " + name_ + " log_level DEBUG");
}

bool AccessPoint::sawInnerExchange() const {
    return succeeds("grep -q -e '-> PHASE2_METHOD' /run/ap/" + name_ + ".log");
}

void AccessPoint::restore() {
    if (std::exchange(faint_, false)) {
        setReception(-50);
    }
    if (changed_) {
        run("/opt/guest/access-points restore " + name_);
    } else if (!up_) {
        run("systemctl start ap@" + name_);
    } else if (weakened_) {
        run("ip netns exec " + name_ + " /opt/guest/access-points set-up " + name_);
    }
    if (!hasAddresses_) {
        run("systemctl start dhcp@" + name_);
    }
    changed_ = false;
    weakened_ = false;
    up_ = true;
    hasAddresses_ = true;
}

}  // namespace kaz::vm
