// Everything at once. Above all for the thread sanitizer; KAZ_RACE_SECONDS says for how long.
#include "device_fixture.h"

#include <atomic>
#include <chrono>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace kaz::test {
namespace {

using std::chrono::milliseconds;
using wifi::Manager;
using wifi::SecurityMode;
using Status = wifi::ConnectionInfo::Status;

std::chrono::seconds duration() {
    const char* chosen = ::getenv("KAZ_RACE_SECONDS");
    return std::chrono::seconds(chosen != nullptr ? std::stoi(chosen) : 5);
}

class Races : public DeviceFixture {
  protected:
    // Registers a callback that registers the next one in its place, and looks at everything.
    static void registerCallback(Manager& manager, unsigned which) {
        const auto callback = [&manager, which] {
            static_cast<void>(manager.networks());
            static_cast<void>(manager.connectionInfo());
            registerCallback(manager, which + 1);
        };
        switch (which % 4) {
            case 0:
                return manager.onEnabledChanged(callback);
            case 1:
                return manager.onNetworksListChanged(callback);
            case 2:
                return manager.onScanningChanged(callback);
            default:
                return manager.onConnectionInfoChanged(callback);
        }
    }

    static void request(Manager& manager, unsigned which) {
        switch (which % 8) {
            case 0:
                return manager.scan();
            case 1:
                static_cast<void>(manager.connect(settings("Home", SecurityMode::rsnPsk, homePassword)));
                return;
            case 2:
                static_cast<void>(manager.connect(settings("Home", SecurityMode::rsnPsk, "wrong password")));
                return;
            case 3:
                static_cast<void>(manager.connect(settings("Cafe", SecurityMode::none)));
                return;
            case 4:
                return manager.connectConfigured("Home");
            case 5:
                return manager.disconnect();
            case 6:
                return manager.forgetNetwork("Cafe");
            default:
                return manager.setEnabled(which % 3 != 0);
        }
    }

    static void look(Manager& manager) {
        static_cast<void>(manager.isEnabled());
        static_cast<void>(manager.isWifiStackInitialized());
        static_cast<void>(manager.isScanning());
        static_cast<void>(manager.networks());
        static_cast<void>(manager.connectionInfo());
        static_cast<void>(manager.eapMethods());
        static_cast<void>(manager.phase2Methods());
    }

    // One of eight threads that use the Manager as they like.
    static void use(Manager& manager, unsigned seed, const std::atomic<bool>& done) {
        std::minstd_rand random(seed);
        while (!done) {
            look(manager);
            registerCallback(manager, static_cast<unsigned>(random()));
            request(manager, static_cast<unsigned>(random()));
            // As fast as the device can follow, so that the queue does not drop most of it.
            std::this_thread::sleep_for(milliseconds(20));
        }
    }

    // The device has its own troubles meanwhile.
    void trouble(unsigned which) {
        switch (which % 5) {
            case 0:
                return device().crashSupplicant();
            case 1:
                return device().restartSupplicant();
            case 2:
                return device().deauthenticate(3);
            case 3:
                return device().storm(100);
            default:
                return manager().setEnabled(true);
        }
    }
};

TEST_F(Races, OfEightThreadsCallbacksAndASupplicantThatComesAndGoes) {
    start();
    std::atomic<bool> done = false;
    std::vector<std::thread> threads;
    for (unsigned i = 1; i <= 8; ++i) {
        threads.emplace_back([&, i] { use(manager(), i, done); });
    }
    std::minstd_rand random(99);
    const auto end = std::chrono::steady_clock::now() + duration();
    while (std::chrono::steady_clock::now() < end) {
        trouble(static_cast<unsigned>(random()));
        std::this_thread::sleep_for(milliseconds(50));
    }
    done = true;
    for (std::thread& thread : threads) {
        thread.join();
    }

    // And after all that, it works.
    user().leave();
    WifiUser next;
    next.manager().setEnabled(true);
    ASSERT_TRUE(next.waitForStack(true));
    ASSERT_EQ(next.manager().connect(settings("Home", SecurityMode::rsnPsk, homePassword)),
              wifi::ConnectResult::ok);
    ASSERT_TRUE(next.waitForStatus(Status::connected, "Home"));
}

}  // namespace
}  // namespace kaz::test
