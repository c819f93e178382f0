#pragma once

#include "base/non_copyable.h"
#include "doubles/recording_log/recording_log.h"
#include "simulator/private_bus/private_bus.h"
#include "support/bus_peer/bus_peer.h"
#include "support/waiting/waiting.h"

#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace kaz::test {

// A private bus that is the system bus, the names of a peer on it, and an event loop that the test starts.
class PeerTest : public ::testing::Test {
  protected:
    PeerTest() { privateBus.becomeSystemBus(); }

    // Destroys the loop with the scope. Declare before it what its tasks use.
    class Running : NonCopyable {
      public:
        explicit Running(PeerTest& test) : test_(test) {}
        ~Running() { test_.end(); }

      private:
        PeerTest& test_;
    };
    [[nodiscard]] Running start() {
        begin();
        return Running(*this);
    }

    virtual void begin() = 0;
    virtual void end() = 0;
    virtual void push(std::function<void()> task) = 0;

    // Runs the function on the loop thread and returns its result.
    template <typename Function>
    auto onLoop(Function function) -> decltype(function()) {
        auto task = std::make_shared<std::packaged_task<decltype(function())()>>(std::move(function));
        auto result = task->get_future();
        push([task] { (*task)(); });
        if (result.wait_for(timeLimit) != std::future_status::ready) {
            throw std::runtime_error("the loop does not run its tasks");
        }
        return result.get();
    }

    // Not reset(), which clears the pointer first: tasks may use it until the loop has ended.
    template <typename Loop>
    static void destroy(std::unique_ptr<Loop>& loop) {
        delete loop.get();
        static_cast<void>(loop.release());
    }

    static constexpr const char* peerName = "test.Peer";
    static constexpr const char* peerPath = "/test/peer";
    static constexpr const char* peerInterface = "test.Peer.Interface";
    const BusPeer::Signal changed{peerPath, peerInterface, "Changed"};

    RecordingLog log;
    sim::PrivateBus privateBus;
};

}  // namespace kaz::test
