// The machine that fake Managers control. A test program links them (fake_manager.cpp) instead of the library. Every
// Manager belongs to the FakeWorld that exists when it is constructed.
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

// Outlives the Managers. A test sets it up, and checks it afterwards.
struct FakeWorld : NonCopyable {
    FakeWorld();
    ~FakeWorld();

    using Info = wifi::ConnectionInfo;
    // A state that the device reaches by itself after it has started an attempt.
    struct Step {
        Info::Status status = Info::Status::disconnected;
        std::string ssid;
        int signal = wifi::NoSignaldBm;
        wifi::Outcome why = {};  // if it is an end
    };

    std::mutex mutex;
    std::condition_variable changed;
    bool running = true;
    bool storedChoice = true;
    bool canStore = true;
    bool canSave = true;
    bool startsAndStops = true;             // whether setEnabled() starts and stops the supplicant
    std::chrono::milliseconds slowness{0};  // the delay before each task and save
    std::atomic<bool> holdsTasks = false;   // whether no further task begins
    bool followsOnceAsked = false;    // whether Managers find the supplicant only after a request to connect
    bool connectsAtOnce = false;      // whether connect() returns only after the whole attempt
    bool resultsReachNobody = false;  // whether a Manager that scanned keeps its old list
    std::vector<wifi::WifiNetwork> inRange;
    std::vector<wifi::WifiNetwork> foundByScan;  // also in range after a scan
    std::map<std::string, wifi::NetworkAccess> access;
    std::set<std::string> saved;
    Info connection;
    std::map<std::string, std::vector<Step>> afterConnect;
    std::set<std::string> eapMethods{"PEAP", "TTLS"};
    bool scansEnd = true;
    bool scansBegin = true;
    bool removalFails = false;

    std::function<void(wifi::Manager&)> whenMade;   // called in the constructor of each Manager
    std::function<void(wifi::Manager&)> whenHeard;  // called before a Manager's first callback is registered
    std::function<void()> whenAttached;  // called by each Manager's thread once the supplicant is followed

    bool asked = false;  // whether there has been a request to connect

    // The operations that were carried out, in order: "connect Home", "save".
    std::vector<std::string> done;
    std::string password;  // of the last connect

    static FakeWorld& current();
    void record(const std::string& what);
    bool did(const std::string& what);
    bool hasSaved(const std::string& ssid);
    std::vector<std::string> everything();
};

wifi::WifiNetwork network(std::string ssid, int signal, wifi::SecurityMode mode, bool configured = false);
wifi::ConnectionInfo connectedTo(std::string ssid, int signal);

}  // namespace kaz::test
