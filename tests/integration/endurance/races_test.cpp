// Everything at once. Above all for the thread sanitizer; KAZ_RACE_SECONDS says for how long.
#include "support/device_fixture/device_fixture.h"
#include "support/waiting/waiting.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace kaz::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using wifi::Manager;
using wifi::SecurityMode;
using Status = wifi::ConnectionInfo::Status;

std::chrono::seconds duration() {
    const char* chosen = ::getenv("KAZ_RACE_SECONDS");
    return std::chrono::seconds(chosen != nullptr ? std::stoi(chosen) : 5);
}

// How much of everything there was.
class Volume {
  public:
    static constexpr unsigned callbackKinds = 4;

    struct Callback {
        std::atomic<int> ran = 0;
        std::atomic<int> ranAfterAnother = 0;  // which had registered it
    };

    std::array<Callback, callbackKinds> callbacks;
    std::atomic<int> ups = 0;
    std::atomic<int> downs = 0;
    std::atomic<int> connections = 0;
    std::atomic<int> requested = 0;  // what has a record once it is dealt with
    std::atomic<int> dealtWith = 0;
    int added = 0;  // networks, at the device
    int scans = 0;  // at the device

    // The smallest of the counts.
    int least() const {
        int result = std::min({ups.load(), downs.load(), connections.load(), added, scans});
        for (const Callback& callback : callbacks) {
            result = std::min({result, callback.ran.load(), callback.ranAfterAnother.load()});
        }
        return result;
    }

    friend std::ostream& operator<<(std::ostream& out, const Volume& volume) {
        for (const Callback& callback : volume.callbacks) {
            out << callback.ran << " callbacks, " << callback.ranAfterAnother << " after another; ";
        }
        return out << volume.ups << " ups, " << volume.downs << " downs, " << volume.connections
                   << " connections, " << volume.added << " networks added, " << volume.scans << " scans, "
                   << volume.dealtWith << " of " << volume.requested << " requests dealt with";
    }
};

class Races : public DeviceFixture {
  protected:
    // Registers a callback that reads the state and registers a callback of the next kind.
    void registerCallback(unsigned which, bool afterAnother) {
        const unsigned kind = which % Volume::callbackKinds;
        const auto callback = [this, which, kind, afterAnother] {
            Volume::Callback& count = volume_.callbacks.at(kind);
            ++count.ran;
            count.ranAfterAnother += afterAnother ? 1 : 0;
            noteState();
            static_cast<void>(manager_->networks());
            registerCallback(which + 1, true);
        };
        switch (kind) {
            case 0:
                return manager_->onEnabledChanged(callback);
            case 1:
                return manager_->onNetworksListChanged(callback);
            case 2:
                return manager_->onScanningChanged(callback);
            default:
                return manager_->onConnectionInfoChanged(callback);
        }
    }

    void request(unsigned which) {
        if (which % 8 == 0) {
            return manager_->scan();
        }
        ++volume_.requested;
        switch (which % 8) {
            case 1:
                static_cast<void>(manager_->connect(home()));
                return;
            case 2:
                static_cast<void>(manager_->connect(home("wrong password")));
                return;
            case 3:
                static_cast<void>(manager_->connect(cafe()));
                return;
            case 4:
                return manager_->connectConfigured("Home");
            case 5:
                return manager_->disconnect();
            case 6:
                return manager_->forgetNetwork("Cafe");
            default:
                return manager_->setEnabled(which % 3 != 0);
        }
    }

    void look() {
        static_cast<void>(manager_->isEnabled());
        static_cast<void>(manager_->isWifiStackInitialized());
        static_cast<void>(manager_->isScanning());
        static_cast<void>(manager_->networks());
        static_cast<void>(manager_->connectionInfo());
        static_cast<void>(manager_->eapMethods());
        static_cast<void>(manager_->phase2Methods());
    }

    // One of eight threads that make random calls of the Manager.
    void use(unsigned seed) {
        std::minstd_rand random(seed);
        while (!done_) {
            look();
            // Seldom, so that some callbacks that were registered inside another stay until they run.
            if (random() % 4 == 0) {
                registerCallback(static_cast<unsigned>(random()), false);
            }
            if (!peace_ && volume_.requested - volume_.dealtWith < mayWait) {
                request(static_cast<unsigned>(random()));
            }
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
                return setEnabled(true);
        }
    }

    // The threads' requests come too fast for a connection to succeed, and their last requests may still end the first
    // try. If the supplicant restarts while the library attaches, the library finds no interface until the supplicant
    // was off.
    void connectInPeace() {
        peace_ = true;
        const int before = volume_.connections;
        const auto end = steady_clock::now() + timeLimit;
        while (!connects() && steady_clock::now() < end) {
            setEnabled(false);
            waitUntil([this] { return device().unitState() == "inactive"; }, std::chrono::seconds(1));
        }
        EXPECT_GT(volume_.connections, before);
        peace_ = false;
    }

    bool connects() {
        const int before = volume_.connections;
        const auto hasConnected = [&] { return volume_.connections > before; };
        setEnabled(true);
        waitUntilAllIsDealtWith();
        waitUntil([this] { return manager_->isWifiStackInitialized(); }, std::chrono::seconds(1));
        ++volume_.requested;
        static_cast<void>(manager_->connect(home()));
        waitUntil(hasConnected, std::chrono::seconds(2));
        return hasConnected();
    }

    void setEnabled(bool enabled) {
        ++volume_.requested;
        manager_->setEnabled(enabled);
    }

    void play() {
        manager_ = &manager();
        std::vector<std::thread> threads;
        for (unsigned seed = 1; seed <= 8; ++seed) {
            threads.emplace_back([this, seed] { use(seed); });
        }
        const auto end = steady_clock::now() + duration();
        const auto limit = end + timeLimit;
        while (!HasFailure() && steady_clock::now() < (isEnough() ? end : limit)) {
            disturb();
            connectInPeace();
        }
        done_ = true;
        for (std::thread& thread : threads) {
            thread.join();
        }
    }

    void disturb() {
        for (int i = 0; i < 10; ++i) {
            trouble(static_cast<unsigned>(random_()));
            std::this_thread::sleep_for(milliseconds(50));
            count();
        }
    }

    // No request may have been dropped.
    bool waitUntilAllIsDealtWith() {
        const auto isDealtWith = [this] { return volume_.dealtWith == volume_.requested; };
        waitUntil(isDealtWith, timeLimit);
        return isDealtWith();
    }

    bool isEnough() const { return volume_.least() >= 3 + duration().count() / 6; }
    const Volume& volume() const { return volume_; }

  private:
    // Far below 4096, from which on requests are dropped.
    static constexpr int mayWait = 100;

    // On the Manager's thread.
    void noteState() {
        const bool up = manager_->isWifiStackInitialized();
        if (up != wasUp_) {
            ++(up ? volume_.ups : volume_.downs);
        }
        wasUp_ = up;
        const Status status = manager_->connectionInfo().status;
        volume_.connections += status == Status::connected && lastStatus_ != status ? 1 : 0;
        lastStatus_ = status;
    }

    void waitUntil(const std::function<bool()>& condition, steady_clock::duration limit) {
        const auto end = steady_clock::now() + limit;
        while (!condition() && steady_clock::now() < end) {
            std::this_thread::sleep_for(milliseconds(1));
            count();
        }
    }

    void count() {
        static_cast<void>(device().waitForCalls(
            [this](const auto& calls) {
                for (; seenCalls_ < calls.size(); ++seenCalls_) {
                    volume_.added += calls[seenCalls_].member == "AddNetwork" ? 1 : 0;
                    volume_.scans += calls[seenCalls_].member == "Scan" ? 1 : 0;
                }
                return true;
            },
            milliseconds(0)));
        static_cast<void>(log().waitFor([this](const auto& records) {
            for (; seenRecords_ < records.size(); ++seenRecords_) {
                volume_.dealtWith += isOfARequest(records[seenRecords_]) ? 1 : 0;
            }
            return true;
        }));
    }

    // The record that the Manager's thread logs for each request except a scan.
    static bool isOfARequest(const LogRecord& record) {
        const bool connects =
            record.level == spdlog::level::debug && record.text.starts_with("Connecting to ");
        return connects || record.text == "Disconnecting" || record.text.starts_with("Forgetting ") ||
               record.text.starts_with("Turning wpa_supplicant ");
    }

    std::atomic<bool> peace_ = false;
    std::atomic<bool> done_ = false;
    std::minstd_rand random_{99};
    Manager* manager_ = nullptr;
    Volume volume_;
    bool wasUp_ = true;
    Status lastStatus_ = Status::disconnected;
    std::size_t seenCalls_ = 0;
    std::size_t seenRecords_ = 0;
};

TEST_F(Races, RequestsOfEightThreadsAreAllHandledWhileTheSupplicantComesAndGoes) {
    start();
    play();
    EXPECT_TRUE(waitUntilAllIsDealtWith()) << volume();
    EXPECT_FALSE(log().contains("tasks are waiting"));
    EXPECT_TRUE(isEnough()) << volume();

    // After all that the Manager still works.
    user().leave();
    WifiUser next;
    next.manager().setEnabled(true);
    ASSERT_TRUE(next.waitForStack(true));
    ASSERT_EQ(next.manager().connect(home()), wifi::ConnectResult::ok);
    ASSERT_TRUE(next.waitForStatus(Status::connected, "Home"));
}

}  // namespace
}  // namespace kaz::test
