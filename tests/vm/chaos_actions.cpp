#include "vm/chaos_actions.h"

#include "vm/command.h"

#include <chrono>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace kaz::vm {
namespace {

constexpr const char* supplicant = "fi.w1.wpa_supplicant1 /fi/w1/wpa_supplicant1 fi.w1.wpa_supplicant1 ";

Neighbour& any(World& world, Random& random) {
    return world.neighbours[random() % world.neighbours.size()];
}

void pause(Random& random) {
    std::this_thread::sleep_for(std::chrono::milliseconds(random() % 2000));
}

// The requests of the witness need a supplicant.
wifi::Manager& attached(World& world) {
    if (!world.witness.isWifiStackInitialized()) {
        throw std::runtime_error("the witness has no supplicant");
    }
    return world.witness;
}

void connect(World& world, const wifi::ConnectionSettings& settings) {
    if (attached(world).connect(settings) != wifi::ConnectResult::ok) {
        throw std::runtime_error("the settings are refused");
    }
}

auto connectTo(std::size_t neighbour) {
    return [neighbour](World& world, Random& /*random*/) {
        connect(world, world.neighbours[neighbour].settings);
    };
}

auto command(const std::string& text) {
    return [text](World& /*world*/, Random& /*random*/) { run(text); };
}

std::string wpaCli(const std::string& request) {
    return "wpa_cli -p /run/wpa_supplicant -i wlan0 " + request;
}

auto otherClient(const std::string& request) {
    return command(wpaCli(request) + " | grep -qx OK");
}

void connectWithWrongKey(World& world, Random& random) {
    wifi::ConnectionSettings settings = world.neighbours[1 + random() % 3].settings;
    settings.password = "wrong-secret";
    connect(world, settings);
}

void connectConfigured(World& world, Random& random) {
    attached(world).connectConfigured(any(world, random).settings.ssid);
}

void disconnect(World& world, Random& /*random*/) {
    attached(world).disconnect();
}

void forget(World& world, Random& random) {
    attached(world).forgetNetwork(any(world, random).settings.ssid);
}

void scan(World& world, Random& /*random*/) {
    attached(world).scan();
}

void switchOffAndOn(World& world, Random& random) {
    world.witness.setEnabled(false);
    pause(random);
    world.witness.setEnabled(true);
}

void vanish(World& world, Random& random) {
    any(world, random).accessPoint.vanish();
}

void vanishAndComeBack(World& world, Random& random) {
    AccessPoint& accessPoint = any(world, random).accessPoint;
    accessPoint.vanish();
    pause(random);
    accessPoint.comeBack();
}

void deauthenticateAll(World& world, Random& random) {
    any(world, random).accessPoint.deauthenticateAll();
}

void changePower(World& world, Random& random) {
    any(world, random).accessPoint.setPower(static_cast<int>(random() % 15));
}

void blockRadio(World& /*world*/, Random& random) {
    run("echo 1 >$(ls /sys/class/net/wlan0/phy80211/rfkill*/soft)");
    pause(random);
    run("echo 0 >$(ls /sys/class/net/wlan0/phy80211/rfkill*/soft)");
}

void replaceInterface(World& /*world*/, Random& random) {
    const std::string call = std::string("busctl call ") + supplicant;
    run("interface=$(" + call + "GetInterface s wlan0 | cut -d '\"' -f 2) && " + call +
        "RemoveInterface o $interface");
    pause(random);
    run(call +
        "CreateInterface 'a{sv}' 3 Ifname s wlan0 Driver s nl80211 ConfigFile s "
        "/etc/wpa_supplicant/device.conf");
}

std::vector<std::string> configured(const std::string& column) {
    std::istringstream lines(run(wpaCli("list_networks | sed 1d | cut -f " + column)));
    std::vector<std::string> all;
    for (std::string line; std::getline(lines, line);) {
        all.push_back(line);
    }
    if (all.empty()) {
        throw std::runtime_error("no network is configured");
    }
    return all;
}

void otherSelects(World& world, Random& random) {
    const std::vector<std::string> ids = configured("1");
    otherClient("select_network " + ids[random() % ids.size()])(world, random);
}

// Only to a configured network: a Manager notices that another client has added or removed one when it next attaches,
// connects or forgets.
void otherProgramConnects(World& /*world*/, Random& random) {
    const std::vector<std::string> ssids = configured("2");
    const std::string attempt = "timeout 10 kazwifictl connect '" + ssids[random() % ssids.size()] + "'";
    run(attempt + " || test $? = 1");  // a refusal is an effect, too
}

}  // namespace

const std::vector<Action>& actions() {
    static const std::vector<Action> all = {
        {"connect to the open network", connectTo(0)},
        {"connect to the WPA2 network", connectTo(1)},
        {"connect to the mixed network", connectTo(2)},
        {"connect to the SAE network", connectTo(3)},
        {"connect with a wrong key", connectWithWrongKey},
        {"connect to a configured network", connectConfigured},
        {"disconnect", disconnect},
        {"forget a network", forget},
        {"scan", scan},
        {"switch Wi-Fi off and on", switchOffAndOn},
        {"an access point vanishes", vanish},
        {"an access point vanishes and comes back", vanishAndComeBack},
        {"an access point disconnects its stations", deauthenticateAll},
        {"an access point changes its power", changePower},
        {"the link goes down", command("ip link set wlan0 down")},
        {"the link goes up", command("ip link set wlan0 up")},
        {"the radio is blocked and unblocked", blockRadio},
        {"the supplicant is restarted", command("systemctl restart wpa_supplicant")},
        {"the supplicant is killed", command("systemctl kill --signal=KILL wpa_supplicant")},
        {"networkd is restarted", command("systemctl restart systemd-networkd")},
        {"systemd executes itself again", command("systemctl daemon-reexec")},
        {"the interface is removed and made again", replaceInterface},
        {"wpa_cli disconnects", otherClient("disconnect")},
        {"wpa_cli reconnects", otherClient("reconnect")},
        {"wpa_cli scans", otherClient("scan")},
        {"wpa_cli selects a network", otherSelects},
        {"kazwifictl connects", otherProgramConnects},
        {"kazwifictl disconnects", command("timeout 10 kazwifictl disconnect")},
    };
    return all;
}

}  // namespace kaz::vm
