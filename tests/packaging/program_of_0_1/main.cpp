// A program as it was built for 0.1.0: against the headers beside it. It uses every function of that version on a
// simulated device, and prints what it waits for.
#include <wifi/manager.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <mutex>

namespace {

using kaz::wifi::ConnectionInfo;
using kaz::wifi::ConnectionSettings;
using kaz::wifi::ConnectResult;
using kaz::wifi::SecurityMode;
using kaz::wifi::WifiNetwork;
using Status = ConnectionInfo::Status;

std::mutex mutex;
std::condition_variable changed;

void require(bool holds, const char* what) {
    if (!holds) {
        std::printf("does not hold: %s\n", what);
        std::exit(1);
    }
}

void await(const char* what, const std::function<bool()>& condition) {
    std::puts(what);
    std::unique_lock lock(mutex);
    require(changed.wait_for(lock, std::chrono::seconds(60), condition), what);
}

void wake() {
    const std::lock_guard lock(mutex);
    changed.notify_all();
}

const WifiNetwork* find(const std::vector<WifiNetwork>& all, const std::string& ssid) {
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const WifiNetwork& one) { return one.ssid == ssid; });
    return found == all.end() ? nullptr : &*found;
}

bool is(kaz::wifi::Manager& wifi, Status status, const std::string& ssid) {
    const ConnectionInfo info = wifi.connectionInfo();
    return info.status == status && info.ssid == ssid;
}

// Several records in a row show that program and library agree on their size.
void readTheList(kaz::wifi::Manager& wifi) {
    wifi.scan();
    await("the list", [&] { return !wifi.isScanning() && wifi.networks().size() >= 10; });
    const std::vector<WifiNetwork> all = wifi.networks();
    const WifiNetwork* const home = find(all, "Home");
    require(home != nullptr && home->securityMode == SecurityMode::rsnPsk && home->signal == -48, "Home");
    const WifiNetwork* const campus = find(all, "Campus");
    require(campus != nullptr && campus->securityMode == SecurityMode::enterprise && !campus->configured,
            "Campus");
}

void connect(kaz::wifi::Manager& wifi) {
    ConnectionSettings home;
    home.ssid = "Home";
    home.securityMode = SecurityMode::rsnPsk;
    require(wifi.connect(home) == ConnectResult::passwordTooShort, "a password is needed");
    home.password = "correct horse";
    require(wifi.connect(home) == ConnectResult::ok, "connect");
    await("a connection", [&] { return is(wifi, Status::connected, "Home"); });
    wifi.disconnect();
    await("its end", [&] { return is(wifi, Status::disconnected, ""); });
    const ConnectionInfo info = wifi.connectionInfo();
    require(info.disconnectReason == ConnectionInfo::DisconnectReason::causedByUser &&
                info.disconnectSsid == "Home",
            "the reason");
    await("a configured network", [&] {
        const std::vector<WifiNetwork> all = wifi.networks();
        const WifiNetwork* const configured = find(all, "Home");
        return configured != nullptr && configured->configured;
    });
    wifi.connectConfigured("Home");
    await("the same connection", [&] { return is(wifi, Status::connected, "Home"); });
    wifi.forgetNetwork("Home");
    await("its end, forgotten", [&] { return is(wifi, Status::disconnected, ""); });
}

}  // namespace

int main() {
    kaz::wifi::Manager wifi;
    wifi.onEnabledChanged(wake);
    wifi.onScanningChanged(wake);
    wifi.onNetworksListChanged(wake);
    wifi.onConnectionInfoChanged(wake);
    wifi.setEnabled(true);
    await("a supplicant", [&] { return wifi.isWifiStackInitialized(); });
    require(wifi.isEnabled(), "switched on");
    require(wifi.eapMethods().count("PEAP") == 1 && wifi.eapMethods().count("TLS") == 0, "EAP methods");
    require(wifi.phase2Methods().size() == 4, "inner methods");
    require(toUISecurityMode(SecurityMode::sae) == kaz::wifi::UISecurityMode::password,
            "SAE takes a password");
    readTheList(wifi);
    connect(wifi);
    wifi.setEnabled(false);
    await("no supplicant", [&] { return !wifi.isWifiStackInitialized(); });
    std::puts("done");
}
