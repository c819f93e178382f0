#include "vm/chaos_oracle.h"

#include "vm/command.h"

#include <algorithm>
#include <set>
#include <sstream>
#include <thread>
#include <utility>

namespace kaz::vm {
namespace {

constexpr std::chrono::seconds lateness{70};  // the signal is polled every 60 s
constexpr std::chrono::seconds unrest{60};
constexpr int quietSamples = 4;
constexpr std::chrono::seconds samplePeriod{1};

// Empty when the supplicant does not run.
std::string cli(const std::string& request) {
    return run("wpa_cli -p /run/wpa_supplicant -i wlan0 " + request + " 2>/dev/null || true");
}

// The value of NAME=value in the output of a command, or nothing.
std::string value(const std::string& output, const std::string& name) {
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind(name + '=', 0) == 0) {
            return line.substr(name.size() + 1);
        }
    }
    return {};
}

// The supplicant's tools print other bytes than printable ASCII as \xNN, and a backslash before \ and ".
std::string unescaped(const std::string& printed) {
    std::string result;
    for (std::size_t i = 0; i < printed.size(); ++i) {
        if (printed.compare(i, 2, "\\x") == 0) {
            result += static_cast<char>(std::stoi(printed.substr(i + 2, 2), nullptr, 16));
            i += 3;
        } else {
            i += printed[i] == '\\' ? 1U : 0U;
            result += printed[i];
        }
    }
    return result;
}

// The fields of the lines after the heading.
std::vector<std::vector<std::string>> table(const std::string& output) {
    std::vector<std::vector<std::string>> rows;
    std::istringstream lines(output);
    std::string line;
    for (std::getline(lines, line); std::getline(lines, line);) {
        std::istringstream fields(line);
        rows.emplace_back();
        for (std::string field; std::getline(fields, field, '\t');) {
            rows.back().push_back(field);
        }
    }
    return rows;
}

std::string onlineState() {
    return run(
        "busctl get-property org.freedesktop.network1 /org/freedesktop/network1 "
        "org.freedesktop.network1.Manager OnlineState || true");
}

std::string unitState() {
    return run("systemctl is-active wpa_supplicant || true");
}

bool isScanning() {
    return succeeds(
        "call='fi.w1.wpa_supplicant1 /fi/w1/wpa_supplicant1 fi.w1.wpa_supplicant1'; "
        "interface=$(busctl call $call GetInterface s wlan0 | cut -d '\"' -f 2) && "
        "busctl get-property fi.w1.wpa_supplicant1 $interface fi.w1.wpa_supplicant1.Interface Scanning | "
        "grep -q true");
}

Status statusOf(const std::string& wpaState, bool online) {
    static const std::set<std::string> setUp = {"AUTHENTICATING", "ASSOCIATING", "ASSOCIATED",
                                                "4WAY_HANDSHAKE", "GROUP_HANDSHAKE"};
    if (wpaState == "COMPLETED") {
        return online ? Status::connected : Status::connectingIP;
    }
    return setUp.contains(wpaState) ? Status::connectingWifi : Status::disconnected;
}

bool linkIsUp(Status status) {
    return status == Status::connectingIP || status == Status::connected;
}

std::map<std::string, NetworkInRange> listedByDaemons() {
    std::set<std::string> configured;
    for (const auto& row : table(cli("list_networks"))) {
        configured.insert(unescaped(row.at(1)));
    }
    std::map<std::string, NetworkInRange> networks;
    for (const auto& row : table(cli("scan_results"))) {
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

// Returns whether the Manager says what the daemons say, now or soon, and both pictures.
struct Comparison {
    bool same = false;
    Picture truth;
    Picture said;
};

Comparison compare(wifi::Manager& manager) {
    const auto end = Clock::now() + lateness;
    Comparison result;
    do {
        result.truth = saidByDaemons();
        result.said = saidBy(manager);
        result.same = result.truth == result.said;
        if (!result.same) {
            std::this_thread::sleep_for(samplePeriod);
        }
    } while (!result.same && Clock::now() < end);
    return result;
}

std::string told(const std::string& who, const Comparison& comparison) {
    return comparison.same
               ? std::string()
               : "the daemons: " + text(comparison.truth) + '\n' + who + ": " + text(comparison.said) + '\n';
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
    picture.enabled = !succeeds("grep -qx wifi=off /home/root/.config/tessaline/kaz.conf");
    const std::string status = cli("status");
    picture.attached = unitState() == "active\n" && !status.empty();
    if (!picture.attached) {
        return picture;
    }
    picture.scanning = isScanning();
    picture.status = statusOf(value(status, "wpa_state"), onlineState() == "s \"online\"\n");
    picture.networks = listedByDaemons();
    if (picture.status != Status::disconnected) {
        picture.networks.erase(unescaped(value(status, "ssid")));
    }
    if (linkIsUp(picture.status)) {
        picture.ssid = unescaped(value(status, "ssid"));
        const std::string signal = value(cli("signal_poll"), "RSSI");
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
    if (linkIsUp(info.status)) {
        picture.ssid = info.ssid;
        picture.signal = info.signal;
    }
    for (const wifi::WifiNetwork& network : manager.networks()) {
        picture.networks[network.ssid] = {network.signal, network.configured};
    }
    return picture;
}

void heal(World& world) {
    for (Neighbour& neighbour : world.neighbours) {
        neighbour.accessPoint.comeBack();
        neighbour.accessPoint.setPower(neighbour.power);
    }
    run("ip link set wlan0 up");
    if (world.witness.isEnabled() && unitState() != "active\n") {
        succeeds("systemctl reset-failed wpa_supplicant");
        run("systemctl start wpa_supplicant");
    }
}

void waitUntilQuiet() {
    const auto end = Clock::now() + unrest;
    std::string last;
    for (int samples = 0; samples < quietSamples && Clock::now() < end; ++samples) {
        const std::string status = cli("status");
        std::string now = unitState() + value(status, "wpa_state") + value(status, "ssid") + onlineState();
        if (now != last) {
            samples = 0;
            last = std::move(now);
        }
        std::this_thread::sleep_for(samplePeriod);
    }
}

std::string difference(World& world) {
    const Comparison witness = compare(world.witness);
    if (!witness.same) {
        return told("the witness", witness);
    }
    wifi::Manager fresh;
    return told("a Manager just made", compare(fresh));
}

}  // namespace kaz::vm
