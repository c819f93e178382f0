// Calls every operation once, on a machine without a bus.
#include <wifi/manager.h>

#include <iostream>

static_assert(__cplusplus == 201703L, "users compile as C++17");

namespace {

int failures = 0;

void expect(bool holds, const char* what) {
    if (!holds) {
        std::cerr << "does not hold: " << what << '\n';
        ++failures;
    }
}

void callTheGetters(kaz::wifi::Manager& wifi) {
    expect(wifi.networks().empty(), "no networks without a supplicant");
    expect(!wifi.isWifiStackInitialized(), "no supplicant without a bus");
    expect(!wifi.isScanning(), "no scan without a supplicant");
    expect(wifi.eapMethods().empty(), "no EAP methods without a supplicant");
    expect(wifi.phase2Methods().count("PAP") == 1, "PAP is an inner method");
    expect(wifi.connectionInfo().status == kaz::wifi::ConnectionInfo::Status::disconnected, "disconnected");
}

void makeTheRequests(kaz::wifi::Manager& wifi) {
    wifi.setEnabled(false);
    expect(!wifi.isEnabled(), "switched off");
    wifi.setEnabled(true);
    expect(wifi.isEnabled(), "switched on");
    wifi.scan();
    expect(wifi.connect({}) == kaz::wifi::ConnectResult::ssidEmpty, "an SSID is needed");
    wifi.connectConfigured("Home");
    wifi.forgetNetwork("Home");
    wifi.disconnect();
    wifi.whenCarriedOut([](const kaz::wifi::RequestFailures&) {});
}

}  // namespace

int main() {
    kaz::wifi::Manager wifi;
    wifi.onEnabledChanged([] {});
    wifi.onNetworksListChanged([] {});
    wifi.onScanningChanged([] {});
    wifi.onConnectionInfoChanged([] {});
    callTheGetters(wifi);
    makeTheRequests(wifi);
    expect(kaz::wifi::toUISecurityMode(kaz::wifi::SecurityMode::sae) == kaz::wifi::UISecurityMode::password,
           "SAE takes a password");
    return failures == 0 ? 0 : 1;
}
