#pragma once

#include "base/non_copyable.h"
#include "communicator/communicator.h"

#include <wifi/request_failure.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <vector>

namespace kaz::wifi {

// Follows the caller's requests to their end and tells who asked. Each request is a task with a number. Who asks gets a
// number too, and is told when no earlier number is left and the idle pass has published. Thread-safe.
//
// A task that a full queue or the stop drops ends when it is destroyed, so nobody waits for it.
class RequestLedger : NonCopyable {
  public:
    using Failures = RequestFailures;
    using Callback = std::function<void(const Failures&)>;
    // Returns why the request failed, as far as it is known.
    using Request = std::function<std::optional<RequestFailure>()>;

    explicit RequestLedger(Communicator& communicator) : communicator_(communicator) {}

    void post(Request request);

    // A failure that is known before its request is posted.
    void note(RequestFailure failure);

    // Calls the callback on the loop thread, in the idle pass after every request that was posted before.
    void whenCarriedOut(Callback callback);

    // Ends the idle pass. `saved` is empty if it did not save.
    void idle(std::optional<bool> saved);

  private:
    using Number = std::uint64_t;
    struct Asker {
        Number number = 0;
        Callback callback;
        Failures failures;  // of the requests between the asker before and this one
    };
    class Ticket;

    void post(Number number, Request request);
    void end(Number number, std::optional<RequestFailure> failure);
    // The failure with its reason, as far as a daemon told one.
    Failures::value_type explained(RequestFailure failure);
    // The failures to tell to the first who asked after this request.
    Failures& firstFrom(Number number);
    std::vector<Asker> takeDue(std::optional<bool> saved);

    Communicator& communicator_;
    std::mutex mutex_;  // of all that follows; never locked during a call of another class
    Number last_ = 0;
    std::set<Number> open_;     // requests and askers whose tasks have not ended
    std::deque<Asker> askers_;  // in ascending order
    Failures unasked_;          // of the requests after the last asker
};

}  // namespace kaz::wifi
