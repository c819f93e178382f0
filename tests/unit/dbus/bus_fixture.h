#pragma once

#include "dbus/bus.h"
#include "doubles/recording_log/recording_log.h"
#include "simulator/private_bus/private_bus.h"
#include "support/waiting/waiting.h"
#include "unit/platform_dbus/bus_peer.h"

#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace kaz::test {

// A private bus that is the system bus, and a dbus::Bus on it that the test starts.
class BusTest : public ::testing::Test {
  protected:
    BusTest();

    // Destroys the dbus::Bus with the scope. Declare before it what its tasks use.
    class Running {
      public:
        explicit Running(BusTest& test) : test_(test) {}
        ~Running() { test_.end(); }
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;
        Running(Running&&) = delete;
        Running& operator=(Running&&) = delete;

      private:
        BusTest& test_;
    };
    [[nodiscard]] Running start();
    void end();

    // Runs the function on the loop thread and returns its result.
    template <typename Function>
    auto onLoop(Function function) -> decltype(function()) {
        auto task = std::make_shared<std::packaged_task<decltype(function())()>>(std::move(function));
        auto result = task->get_future();
        bus->pushTask([task] { (*task)(); });
        if (result.wait_for(timeLimit) != std::future_status::ready) {
            throw std::runtime_error("the loop does not run its tasks");
        }
        return result.get();
    }

    // The unique name of the connection under test, as a peer sees it.
    std::string uniqueName();

    static constexpr const char* peerName = "test.Peer";
    static constexpr const char* peerPath = "/test/peer";
    static constexpr const char* peerInterface = "test.Peer.Interface";
    const BusPeer::Signal changed{peerPath, peerInterface, "Changed"};

    // Subscribes to `changed` of this sender on the loop thread.
    void subscribe(dbus::Bus::Lifetime lifetime, std::function<void(dbus::MessageDecoder&)> handler,
                   const std::string& sender = peerName);

    RecordingLog log;
    sim::PrivateBus privateBus;
    std::unique_ptr<dbus::Bus> bus;
};

}  // namespace kaz::test
