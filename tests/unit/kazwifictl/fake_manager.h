// wifi::Manager as a test plays it: programs that link this have no other. Every Manager belongs to the FakeWorld that
// lives at the time.
#pragma once

#include <wifi/manager.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "base/non_copyable.h"

namespace kaz::test {

// What outlives a Manager: the machine it controls. A test sets it up, and looks at it afterwards.
struct FakeWorld : NonCopyable {
    FakeWorld();
    ~FakeWorld();

    using Info = wifi::ConnectionInfo;
    // What the device does by itself after it has taken up an attempt, one step after the other.
    struct Step {
        Info::Status status = Info::Status::disconnected;
        std::string ssid;
        int signal = wifi::NoSignaldBm;
    };

    std::mutex mutex;
    std::condition_variable changed;
    bool running = true;
    bool storedChoice = true;
    bool canStore = true;
    bool startsAndStops = true;             // whether the supplicant follows the choice
    std::chrono::milliseconds slowness{0};  // how long before each task begins
    std::atomic<bool> holdsTasks = false;   // whether none begins any more
    bool followsOnceAsked = false;    // whether devices find the supplicant only after a request to connect
    bool connectsAtOnce = false;      // whether connect() returns after all that comes of it
    bool resultsReachNobody = false;  // whether a device that scanned keeps the list it had
    std::vector<wifi::WifiNetwork> inRange;
    std::vector<wifi::WifiNetwork> foundByScan;  // also in range after a scan
    std::set<std::string> saved;
    Info connection;
    std::map<std::string, std::vector<Step>> afterConnect;
    std::set<std::string> eapMethods{"PEAP", "TTLS"};
    bool scansEnd = true;
    bool scansBegin = true;
    bool removalFails = false;

    std::function<void(wifi::Manager&)> whenMade;  // in the constructor of each Manager

    bool asked = false;  // whether there has been a request to connect

    // What has been done, in order: "connect Home", "save".
    std::vector<std::string> done;
    std::string password;  // of the last connect

    void record(const std::string& what);
    bool did(const std::string& what);
    std::vector<std::string> everything();
};

wifi::WifiNetwork network(std::string ssid, int signal, wifi::SecurityMode mode, bool configured = false);
wifi::ConnectionInfo connectedTo(std::string ssid, int signal);

}  // namespace kaz::test
