#include "vm/chaos_oracle.h"

#include "vm/daemons.h"

#include <algorithm>
#include <set>
#include <sstream>
#include <thread>
#include <utility>

namespace kaz::vm {
namespace {

constexpr std::chrono::seconds lateness{70};  // the signal is polled every 60 s
constexpr std::chrono::seconds unrest{60};
constexpr int quietSamples = 5;
constexpr std::chrono::milliseconds quietPeriod{500};
constexpr std::chrono::milliseconds samplePeriod{200};

Status statusOf(const std::string& wpaState, bool online) {
    static const std::set<std::string> setUp = {"AUTHENTICATING", "ASSOCIATING", "ASSOCIATED",
                                                "4WAY_HANDSHAKE", "GROUP_HANDSHAKE"};
    if (wpaState == "COMPLETED") {
        return online ? Status::connected : Status::connectingIP;
    }
    return setUp.contains(wpaState) ? Status::connectingWifi : Status::disconnected;
}

bool isConnected(Status status) {
    return status == Status::connectingIP || status == Status::connected;
}

std::map<std::string, NetworkInRange> listedByDaemons() {
    std::set<std::string> configured;
    for (const auto& row : table(askSupplicant("LIST_NETWORKS"))) {
        configured.insert(unescaped(row.at(1)));
    }
    std::map<std::string, NetworkInRange> networks;
    for (const auto& row : table(askSupplicant("SCAN_RESULTS"))) {
        const std::string ssid = row.size() > 4 ? unescaped(row[4]) : std::string();
        if (ssid.find_first_not_of('\0') == std::string::npos) {
            continue;  // hidden
        }
        const int signal = std::stoi(row.at(2));
        const auto [entry, isNew] =
            networks.try_emplace(ssid, NetworkInRange{signal, configured.contains(ssid)});
        entry->second.signal = std::max(entry->second.signal, signal);
    }
    return networks;
}

// Returns what differs although there was time, or an empty text.
std::string compare(const std::string& who, wifi::Manager& manager) {
    const auto end = Clock::now() + lateness;
    while (true) {
        const Picture truth = saidByDaemons();
        const Picture said = saidBy(manager);
        if (truth == said) {
            return {};
        }
        if (Clock::now() >= end) {
            return "the daemons: " + text(truth) + '\n' + who + ": " + text(said) + '\n';
        }
        std::this_thread::sleep_for(samplePeriod);
    }
}

std::string differenceOfBoth(World& world) {
    const std::string ofWitness = compare("the witness", world.witness.manager());
    return ofWitness.empty() ? compare("the watcher", world.watcher.manager()) : ofWitness;
}

bool scans(Device& device) {
    constexpr int requests = 10;  // the supplicant refuses a scan while it joins a network
    constexpr std::chrono::seconds patience{10};
    const int before = device.scanningChanges();
    const auto ended = [&] {
        return device.scanningChanges() >= before + 2 && !device.manager().isScanning();
    };
    for (int request = 0; request < requests; ++request) {
        device.manager().scan();
        if (device.eventually(ended, patience)) {
            return true;
        }
    }
    return false;
}

bool connects(Device& device, const wifi::ConnectionSettings& settings) {
    constexpr int attempts = 3;  // the supplicant may know the access point from before it changed
    constexpr std::chrono::seconds patience{30};
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (device.manager().connect(settings) == wifi::ConnectResult::ok &&
            device.reaches(Status::connected, settings.ssid, patience)) {
            return true;
        }
    }
    return false;
}

bool isDisconnectByUser(const wifi::ConnectionInfo& info, const std::string& ssid) {
    return info.status == Status::disconnected && info.disconnectSsid == ssid &&
           info.disconnectReason == Reason::causedByUser;
}

// Only the witness knows what its user wants; to the watcher each disconnect is one by the system.
std::string disconnectFailure(World& world, const std::string& ssid) {
    world.witness.manager().disconnect();
    if (!world.watcher.loses(ssid)) {
        return "the watcher does not notice the disconnect\n";
    }
    waitUntilQuiet();
    const std::string different = differenceOfBoth(world);
    const wifi::ConnectionInfo info = world.witness.manager().connectionInfo();
    return !different.empty() || isDisconnectByUser(info, ssid)
               ? different
               : "not a disconnect by the user: " + ::testing::PrintToString(info) + '\n';
}

std::string lossFailure(World& world, const std::string& ssid, AccessPoint& accessPoint) {
    accessPoint.vanish();
    const bool noticed = world.witness.loses(ssid) && world.watcher.loses(ssid);
    accessPoint.restore();
    return noticed ? std::string() : "the loss of the access point is not noticed\n";
}

std::string connectionFailure(World& world, Random& random) {
    // Without the last two, which are access points of one network: when one vanishes the other is there.
    Neighbour& neighbour = world.neighbours[random() % (world.neighbours.size() - 2)];
    const std::string& ssid = neighbour.settings.ssid;
    if (!connects(world.witness, neighbour.settings)) {
        return "the witness cannot connect to " + ssid + '\n';
    }
    std::string failure = difference(world);
    if (failure.empty()) {
        world.witness.clearHistory();
        world.watcher.clearHistory();
        failure = random() % 2 == 0 ? disconnectFailure(world, ssid)
                                    : lossFailure(world, ssid, neighbour.accessPoint);
    }
    return failure;
}

}  // namespace

std::string summary(const Picture& picture) {
    const auto configured = std::count_if(picture.networks.begin(), picture.networks.end(),
                                          [](const auto& entry) { return entry.second.configured; });
    std::ostringstream out;
    out << (picture.enabled ? "on" : "off") << (picture.attached ? ", attached" : ", not attached")
        << (picture.scanning ? ", scanning, " : ", not scanning, ")
        << ::testing::PrintToString(picture.status) << " '" << picture.ssid << "' " << picture.signal
        << " dBm, " << picture.networks.size() << " others, " << configured << " of them configured";
    return out.str();
}

std::string text(const Picture& picture) {
    std::ostringstream out;
    out << summary(picture);
    for (const auto& [ssid, network] : picture.networks) {
        out << "\n    " << ::testing::PrintToString(ssid) << ' ' << network.signal << " dBm"
            << (network.configured ? ", configured" : "");
    }
    return out.str();
}

Picture saidByDaemons() {
    Picture picture;
    picture.enabled = isSwitchedOn();
    const std::string status = askSupplicant("STATUS");
    picture.attached = unitIsActive() && !status.empty();
    if (!picture.attached) {
        return picture;
    }
    picture.scanning = supplicantIsScanning();
    picture.status = statusOf(value(status, "wpa_state"), isOnline());
    picture.networks = listedByDaemons();
    if (picture.status != Status::disconnected) {
        picture.networks.erase(unescaped(value(status, "ssid")));
    }
    if (isConnected(picture.status)) {
        picture.ssid = unescaped(value(status, "ssid"));
        const std::string signal = value(askSupplicant("SIGNAL_POLL"), "RSSI");
        picture.signal = signal.empty() ? 0 : std::stoi(signal);
    }
    return picture;
}

Picture saidBy(wifi::Manager& manager) {
    const wifi::ConnectionInfo info = manager.connectionInfo();
    Picture picture;
    picture.enabled = manager.isEnabled();
    picture.attached = manager.isWifiStackInitialized();
    picture.scanning = manager.isScanning();
    picture.status = info.status;
    if (isConnected(info.status)) {
        picture.ssid = info.ssid;
        picture.signal = info.signal;
    }
    for (const wifi::WifiNetwork& network : manager.networks()) {
        picture.networks[network.ssid] = {network.signal, network.configured};
    }
    return picture;
}

void waitUntilQuiet() {
    const auto end = Clock::now() + unrest;
    std::string last;
    for (int samples = 0; samples < quietSamples && Clock::now() < end; ++samples) {
        const std::string status = askSupplicant("STATUS");
        std::string now = value(status, "wpa_state") + value(status, "ssid") +
                          (unitIsActive() ? "active" : "") + (isOnline() ? "online" : "");
        if (now != last) {
            samples = 0;
            last = std::move(now);
        }
        std::this_thread::sleep_for(quietPeriod);
    }
}

std::string difference(World& world) {
    const std::string ofBoth = differenceOfBoth(world);
    if (!ofBoth.empty()) {
        return ofBoth;
    }
    wifi::Manager fresh;
    return compare("a Manager just made", fresh);
}

std::string failureToWork(World& world, Random random, bool connects) {
    if (!scans(world.witness)) {
        return "the witness cannot scan\n";
    }
    std::string failure = differenceOfBoth(world);
    return failure.empty() && connects ? connectionFailure(world, random) : failure;
}

}  // namespace kaz::vm
