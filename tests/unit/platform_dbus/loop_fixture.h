#pragma once

#include "base/non_copyable.h"

#include "base/sd_bus/handles.h"
#include "doubles/recording_log/recording_log.h"
#include "simulator/private_bus/private_bus.h"
#include "support/waiting/waiting.h"
#include "unit/platform_dbus/bus_peer.h"

#include <gtest/gtest.h>
#include <kaz/dbus/event_loop.h>

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace kaz::test {

// A private bus that is the system bus, and a loop that the test starts.
class LoopTest : public ::testing::Test {
  protected:
    LoopTest();

    // Destroys the loop with the scope. Declare before it what its tasks use.
    class Running : NonCopyable {
      public:
        explicit Running(LoopTest& test) : test_(test) {}
        ~Running() { test_.end(); }

      private:
        LoopTest& test_;
    };
    [[nodiscard]] Running start();

    // Destroys the loop. Not reset(), which clears the pointer first: tasks may use it until the loop has ended.
    void end();

    // Runs the function on the loop thread and gives its result back.
    template <typename Function>
    auto onLoop(Function function) -> decltype(function()) {
        auto task = std::make_shared<std::packaged_task<decltype(function())()>>(std::move(function));
        auto result = task->get_future();
        loop->pushTaskAsync([task] { (*task)(); });
        if (result.wait_for(timeLimit) != std::future_status::ready) {
            throw std::runtime_error("the loop does not run its tasks");
        }
        return result.get();
    }

    pid_t loopThread();
    std::string loopUniqueName();

    // One call of the test's peer from the loop thread: whether a reply came.
    bool callFromLoop(const std::string& member, const std::string& argument = "");

    static constexpr const char* peerName = "test.Peer";
    static constexpr const char* peerPath = "/test/peer";
    static constexpr const char* peerInterface = "test.Peer.Interface";
    const BusPeer::Signal changed{peerPath, peerInterface, "Changed"};

    // Changes the limit of calls on the connection.
    void limitCalls(std::chrono::microseconds limit);

    // Subscribes to `changed` on the loop thread.
    void registerForChanged(bool temporary, std::function<void(dbus::MessageDecoder&)> handler);

    RecordingLog log;
    sim::PrivateBus bus;
    std::unique_ptr<dbus::EventLoop> loop;
};

// The string that the message holds next.
std::string readString(dbus::MessageDecoder& decoder);

}  // namespace kaz::test
