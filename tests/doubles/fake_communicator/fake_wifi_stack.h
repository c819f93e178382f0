#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kaz::test {

// What a FakeCommunicator stands in front of: the supplicant, its configuration, and the record of every
// call. Test and communicator share it, so it outlives the engine.
//
// Recording is safe from any thread, and so are the two flags; everything else belongs to the thread that
// runs the tasks.
class FakeWifiStack {
  public:
    struct Network {
        std::size_t id = 0;
        std::optional<std::string> ssid;
        bool enabled = true;
        int priority = 0;

        friend bool operator==(const Network&, const Network&) = default;
    };

    // What the operations answer.
    std::atomic<bool> supplicantOn = false;
    std::atomic<bool> enabledConfiguration = true;
    bool supplicantSurvives = false;  // the loss of the bus
    std::optional<int> signalPoll;
    std::set<std::string> eapMethods;
    std::vector<Network> networks;

    // The operations that fail, by name or as one call with its arguments. Such a call is recorded with " fails" at
    // its end.
    std::set<std::string> failing;

    // Called with every call, after it was recorded and before it does anything.
    std::function<void(const std::string& call)> onCall;

    // Adds a network to the configuration, as if it had been there before. Returns its id; ids count from 1.
    std::size_t configure(std::optional<std::string> ssid);

    // Null when there is none.
    Network* find(std::size_t id);

    // Records "operation(arguments)". False when the operation is to fail.
    bool record(const std::string& operation, const std::string& arguments = {});

    // Every call since this was last called, in order.
    std::vector<std::string> takeCalls();

  private:
    std::mutex mutex_;
    std::vector<std::string> calls_;
    std::size_t lastId_ = 0;
};

}  // namespace kaz::test
