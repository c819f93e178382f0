// Connects to a WPA2 network and prints the outcome:
//
//     echo PASSPHRASE | minimal SSID
//
// The passphrase is not an argument, because every user of a machine can see the arguments of a process.
#include <wifi/manager.h>

#include <chrono>
#include <future>
#include <iostream>
#include <string>

int main(int argc, char** argv) {
    using Status = kaz::wifi::ConnectionInfo::Status;
    if (argc != 2) {
        std::cerr << "usage: echo PASSPHRASE | minimal SSID\n";
        return 2;
    }
    kaz::wifi::ConnectionSettings settings;
    settings.ssid = argv[1];
    settings.securityMode = kaz::wifi::SecurityMode::rsnPsk;
    std::getline(std::cin, settings.password);

    // Declared before the Manager, because its callback uses them until it is destroyed.
    std::promise<bool> verdict;
    bool begun = false;
    bool ended = false;

    kaz::wifi::Manager wifi;
    // Runs on the Manager's thread. No other thread uses `begun` and `ended`.
    wifi.onConnectionInfoChanged([&] {
        const auto info = wifi.connectionInfo();
        begun = begun || (info.status == Status::connectingWifi && info.ssid == settings.ssid);
        const bool connected = info.status == Status::connected && info.ssid == settings.ssid;
        const bool failed = info.status == Status::disconnected;
        if (begun && !ended && (connected || failed)) {
            ended = true;
            verdict.set_value(connected);
        }
    });

    if (wifi.connect(settings) != kaz::wifi::ConnectResult::ok) {
        std::cerr << "an SSID has 1 to 32 bytes, a passphrase 8 to 63\n";
        return 2;
    }
    auto outcome = verdict.get_future();
    const bool connected =
        outcome.wait_for(std::chrono::minutes(1)) == std::future_status::ready && outcome.get();
    std::cout << (connected ? "connected" : "could not connect") << '\n';
    return connected ? 0 : 1;
}
