// The requests of the device's user and the events in its neighbourhood.
#include "vm/chaos_actions.h"

#include "vm/command.h"

#include <chrono>
#include <stdexcept>
#include <thread>

namespace kaz::vm {
namespace {

Neighbour& any(World& world, Random& random) {
    return world.neighbours[random() % world.neighbours.size()];
}

// The requests of the witness need a supplicant.
wifi::Manager& attached(World& world) {
    if (!world.witness.manager().isWifiStackInitialized()) {
        throw std::runtime_error("the witness has no supplicant");
    }
    return world.witness.manager();
}

void connect(World& world, const wifi::ConnectionSettings& settings) {
    if (attached(world).connect(settings) != wifi::ConnectResult::ok) {
        throw std::runtime_error("the settings are refused");
    }
}

Act connectTo(std::size_t neighbour) {
    return [neighbour](World& world, Random& /*random*/) {
        connect(world, world.neighbours.at(neighbour).settings);
    };
}

void connectWithWrongKey(World& world, Random& random) {
    wifi::ConnectionSettings settings = world.neighbours[1 + random() % 4].settings;
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
    world.witness.manager().setEnabled(false);
    pause(random);
    world.witness.manager().setEnabled(true);
}

// An action on one of the access points.
Act neighbour(void (*act)(AccessPoint& accessPoint, Random& random)) {
    return [act](World& world, Random& random) { act(any(world, random).accessPoint, random); };
}

void vanishAndComeBack(AccessPoint& accessPoint, Random& random) {
    accessPoint.vanish();
    pause(random);
    accessPoint.comeBack();
}

void stopAddressesForAWhile(AccessPoint& accessPoint, Random& random) {
    accessPoint.stopAddresses();
    pause(random);
    accessPoint.deauthenticateAll();
    pause(random);
    accessPoint.restore();
}

// Of the networks that have one key.
void changeKey(World& world, Random& random) {
    constexpr std::array<std::size_t, 4> withKey{1, 2, 4, 5};
    world.neighbours.at(withKey[random() % withKey.size()])
        .accessPoint.reconfigure("wpa_passphrase=another-secret");
}

}  // namespace

void pause(Random& random) {
    std::this_thread::sleep_for(std::chrono::milliseconds(random() % 2000));
}

Act command(const std::string& text) {
    return [text](World& /*world*/, Random& /*random*/) { run(text); };
}

std::vector<Action> actionsOfUser() {
    return {
        {"connect to the open network", connectTo(0)},
        {"connect to the WPA2 network", connectTo(1)},
        {"connect to the mixed network", connectTo(2)},
        {"connect to the SAE network", connectTo(3)},
        {"connect to the network with two access points", connectTo(4)},
        {"connect with a wrong key", connectWithWrongKey},
        {"connect to a configured network", connectConfigured},
        {"disconnect", disconnect},
        {"forget a network", forget},
        {"scan", scan},
        {"switch Wi-Fi off and on", switchOffAndOn},
    };
}

std::vector<Action> actionsOfNeighbourhood() {
    return {
        {"an access point vanishes", neighbour([](auto& accessPoint, auto&) { accessPoint.vanish(); })},
        {"an access point vanishes and comes back", neighbour(vanishAndComeBack)},
        {"an access point disconnects its stations",
         neighbour([](auto& accessPoint, auto&) { accessPoint.deauthenticateAll(); })},
        {"an access point changes its power", neighbour([](auto& accessPoint, auto& random) {
             accessPoint.setPower(static_cast<int>(random() % 15));
         })},
        {"an access point changes its channel", neighbour([](auto& accessPoint, auto& random) {
             accessPoint.switchChannel(1 + static_cast<int>(random() % 11));
         })},
        {"an access point changes its key", changeKey},
        {"an access point changes its name",
         neighbour([](auto& accessPoint, auto&) { accessPoint.reconfigure(R"(ssid2=P"Kaz Renamed")"); })},
        {"an access point gives no addresses",
         neighbour([](auto& accessPoint, auto&) { accessPoint.stopAddresses(); })},
        {"an access point gives no addresses for a while", neighbour(stopAddressesForAWhile)},
    };
}

const std::vector<Action>& actions() {
    static const std::vector<Action> all = [] {
        std::vector<Action> result;
        for (const auto& some :
             {actionsOfUser(), actionsOfOtherPrograms(), actionsOfSystem(), actionsOfNeighbourhood()}) {
            result.insert(result.end(), some.begin(), some.end());
        }
        return result;
    }();
    return all;
}

}  // namespace kaz::vm
