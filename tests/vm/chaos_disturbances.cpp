// The requests of other programs and the events in the device itself.
#include "vm/chaos_actions.h"
#include "vm/command.h"
#include "vm/daemons.h"

#include <chrono>
#include <ctime>
#include <stdexcept>

namespace kaz::vm {
namespace {

constexpr const char* supplicantCall =
    "busctl call fi.w1.wpa_supplicant1 /fi/w1/wpa_supplicant1 fi.w1.wpa_supplicant1 ";

void request(const std::string& text) {
    if (askSupplicant(text) != "OK\n") {
        throw std::runtime_error("the supplicant refuses " + text);
    }
}

Act requestOf(const std::string& text) {
    return [text](World& /*world*/, Random& /*random*/) { request(text); };
}

std::string anyConfigured(Random& random, std::size_t column) {
    const auto networks = table(askSupplicant("LIST_NETWORKS"));
    if (networks.empty()) {
        throw std::runtime_error("no network is configured");
    }
    return networks[random() % networks.size()].at(column);
}

void select(World& /*world*/, Random& random) {
    request("SELECT_NETWORK " + anyConfigured(random, 0));
}

void remove(World& /*world*/, Random& random) {
    request("REMOVE_NETWORK " + anyConfigured(random, 0));
}

// To the other access point of the network with two.
void roam(World& world, Random& /*random*/) {
    constexpr std::chrono::seconds patience{20};
    wifi::Manager& manager = world.witness.manager();
    if (!manager.isWifiStackInitialized() || manager.connect(twinNetwork) != wifi::ConnectResult::ok ||
        !world.witness.reaches(Status::connected, twinNetwork.ssid, patience)) {
        throw std::runtime_error("no connection to the network with two access points");
    }
    const std::string own = value(askSupplicant("STATUS"), "bssid");
    for (const auto& accessPoint : table(askSupplicant("SCAN_RESULTS"))) {
        if (accessPoint.size() > 4 && accessPoint[4] == twinNetwork.ssid && accessPoint[0] != own) {
            request("ROAM " + accessPoint[0]);
            return;
        }
    }
    throw std::runtime_error("no other access point");
}

// A refusal and a timeout are effects, too.
std::string kazwifictl(const std::string& arguments) {
    return "{ timeout 10 kazwifictl " + arguments + " || test $? -lt 126; }";
}

void otherUserConnects(World& /*world*/, Random& random) {
    run(kazwifictl("connect '" + anyConfigured(random, 1) + "'"));
}

void otherUserForgets(World& /*world*/, Random& random) {
    run(kazwifictl("forget '" + anyConfigured(random, 1) + "'"));
}

void twoOtherUsers(World& /*world*/, Random& random) {
    run(kazwifictl("connect '" + anyConfigured(random, 1) + "'") + " & " + kazwifictl("disconnect") +
        " & wait");
}

void blockRadio(World& /*world*/, Random& random) {
    run("echo 1 >$(ls /sys/class/net/wlan0/phy80211/rfkill*/soft)");
    pause(random);
    run("echo 0 >$(ls /sys/class/net/wlan0/phy80211/rfkill*/soft)");
}

std::string findInterface(const std::string& name) {
    return std::string("path=$(") + supplicantCall + "GetInterface s " + name + " | cut -d '\"' -f 2)";
}

std::string removal(const std::string& interface) {
    return findInterface(interface) + " && " + supplicantCall + "RemoveInterface o $path";
}

std::string addition(const wifi::ConnectionSettings& settings) {
    return findInterface("wlan0") +
           " && busctl call fi.w1.wpa_supplicant1 $path fi.w1.wpa_supplicant1.Interface AddNetwork 'a{sv}' 2 "
           "key_mgmt s NONE ssid s '" +
           settings.ssid + "'";
}

void replaceInterface(World& /*world*/, Random& random) {
    run(removal("wlan0"));
    pause(random);
    run(std::string(supplicantCall) +
        "CreateInterface 'a{sv}' 3 Ifname s wlan0 Driver s nl80211 ConfigFile s "
        "/etc/wpa_supplicant/device.conf");
}

// Another interface of the radio, as that of a hotspot.
void addSecondInterface(World& world, Random& /*random*/) {
    run("iw dev wlan0 interface add aside type managed addr 02:00:00:00:aa:01");
    world.remedies.insert("{ " + removal("aside") + "; }; iw dev aside del");
    run(std::string(supplicantCall) + "CreateInterface 'a{sv}' 2 Ifname s aside Driver s nl80211");
}

void killWithRestart(World& world, Random& /*random*/) {
    const std::string folder = "/run/systemd/system/wpa_supplicant.service.d";
    world.remedies.insert("rm -rf " + folder + " && systemctl daemon-reload");
    run("mkdir -p " + folder + " && printf '[Service]\\nRestart=on-failure\\nRestartSec=100ms\\n' >" +
        folder + "/restart.conf && systemctl daemon-reload && systemctl kill --signal=KILL wpa_supplicant");
}

// Nobody can start it until it is healed.
void mask(World& world, Random& /*random*/) {
    world.remedies.insert("systemctl unmask --runtime wpa_supplicant");
    run("systemctl mask --runtime --now wpa_supplicant");
    world.witness.manager().setEnabled(true);
}

void stopNetworkd(World& world, Random& /*random*/) {
    run("systemctl stop systemd-networkd");
    world.remedies.insert("systemctl start systemd-networkd");
}

// By up to a day, forwards or backwards.
void setClock(World& /*world*/, Random& random) {
    constexpr std::time_t day = 24 * 60 * 60;
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    now.tv_sec += static_cast<std::time_t>(random() % (2 * day)) - day;
    if (::clock_settime(CLOCK_REALTIME, &now) != 0) {
        throw std::runtime_error("the clock cannot be set");
    }
}

}  // namespace

std::vector<Action> actionsOfOtherPrograms() {
    return {
        {"another program disconnects", requestOf("DISCONNECT")},
        {"another program reconnects", requestOf("RECONNECT")},
        {"another program associates again", requestOf("REASSOCIATE")},
        {"another program scans", requestOf("SCAN")},
        {"another program selects a network", select},
        {"another program disables all networks", requestOf("DISABLE_NETWORK all")},
        {"another program enables all networks", requestOf("ENABLE_NETWORK all")},
        {"another program adds a network", command(addition(openNetwork))},
        {"another program removes a network", remove},
        {"another program saves the configuration", requestOf("SAVE_CONFIG")},
        {"another program roams", roam},
        {"kazwifictl connects", otherUserConnects},
        {"kazwifictl forgets a network", otherUserForgets},
        {"kazwifictl disconnects", command(kazwifictl("disconnect"))},
        {"kazwifictl connects and disconnects at once", twoOtherUsers},
        {"kazwifictl switches Wi-Fi off and on", command(kazwifictl("off") + "; " + kazwifictl("on"))},
        {"kazwifictl scans", command(kazwifictl("scan"))},
        {"another program adds an interface", addSecondInterface},
        {"the interface is removed and made again", replaceInterface},
    };
}

std::vector<Action> actionsOfSystem() {
    return {
        {"the link goes down", command("ip link set wlan0 down")},
        {"the link goes up", command("ip link set wlan0 up")},
        {"the radio is blocked and unblocked", blockRadio},
        {"the supplicant is restarted", command("systemctl restart wpa_supplicant")},
        {"the supplicant is stopped", command("systemctl stop wpa_supplicant")},
        {"the supplicant is killed", command("systemctl kill --signal=KILL wpa_supplicant")},
        {"the supplicant is killed and systemd restarts it", killWithRestart},
        {"the supplicant is stopped and masked", mask},
        {"networkd is restarted", command("systemctl restart systemd-networkd")},
        {"networkd is stopped", stopNetworkd},
        {"systemd reads its units again", command("systemctl daemon-reload")},
        {"systemd executes itself again", command("systemctl daemon-reexec")},
        {"the bus reads its configuration again", command("systemctl reload dbus")},
        {"the clock is set", setClock},
    };
}

}  // namespace kaz::vm
