#pragma once

#include "base/journal.h"

#include <wifi/failure_reason.h>

#include <atomic>
#include <cstddef>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kaz::test {

// The state behind a FakeCommunicator: the supplicant, its configuration, and the record of every call. Test
// and communicator share it, so it outlives the engine.
//
// Any thread may record calls and use the two flags. Everything else belongs to the thread that runs the
// tasks.
class FakeWifiStack {
  public:
    struct Network {
        std::size_t id = 0;
        std::optional<std::string> ssid;
        bool enabled = true;
        int priority = 0;

        friend bool operator==(const Network&, const Network&) = default;
    };

    // The results of the operations.
    std::atomic<bool> supplicantOn = false;
    std::atomic<bool> enabledConfiguration = true;
    bool supplicantSurvives = false;  // the loss of the bus
    bool silent = false;              // the supplicant did not answer the last call
    wifi::FailureReason lastFailure = wifi::FailureReason::refused;  // of an operation that fails
    wifi::StackTrouble trouble;
    std::optional<int> signalPoll;
    std::optional<int> polledRate;
    std::set<std::string> eapMethods;
    std::vector<Network> networks;

    // The operations that fail: a name, or a call with its arguments. The record of such a call ends with "
    // fails".
    std::set<std::string> failing;

    // Called with every call, after it was recorded and before it takes effect.
    std::function<void(const std::string& call)> onCall;

    // Adds a network to the configuration. Returns its id; ids count from 1.
    std::size_t configure(std::optional<std::string> ssid);

    // Null if there is none.
    Network* find(std::size_t id);

    // Records "operation(arguments)". Returns false if the operation must fail.
    bool record(const std::string& operation, const std::string& arguments = {});

    // Every call since the last call of this, in order.
    std::vector<std::string> takeCalls() { return calls_.take(); }

  private:
    Journal<std::string> calls_;
    std::size_t lastId_ = 0;
};

}  // namespace kaz::test
