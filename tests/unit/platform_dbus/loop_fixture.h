#pragma once

#include "base/sd_bus/handles.h"
#include "support/bus_peer/peer_fixture.h"

#include <kaz/dbus/event_loop.h>

#include <chrono>
#include <optional>

namespace kaz::test {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// An event loop on a private bus.
class LoopTest : public PeerTest {
  protected:
    void begin() override { loop->startEventLoopAsync(); }
    void end() override { destroy(loop); }
    void push(std::function<void()> task) override { loop->pushTaskAsync(std::move(task)); }

    pid_t loopThread();

    // On the loop thread: calls the test's peer. Returns the reply, or null if the call failed.
    dbus::MessagePtr callPeer(const std::string& member, const std::string& argument = "");
    // The same from another thread. Returns whether a reply came.
    bool callFromLoop(const std::string& member, const std::string& argument = "");

    // Changes the limit of calls on the connection.
    void limitCalls(std::chrono::microseconds limit);

    // Subscribes to `changed` on the loop thread.
    void registerForChanged(bool temporary, std::function<void(dbus::MessageDecoder&)> handler);

    // Sets an idle task that counts its passes and always returns this delay.
    void countIdlePasses(Counter& passes, std::optional<milliseconds> delay = std::nullopt);

    sim::PrivateBus& bus = privateBus;
    std::unique_ptr<dbus::EventLoop> loop = std::make_unique<dbus::EventLoop>();
};

// The string that the message holds next.
std::string readString(dbus::MessageDecoder& decoder);

}  // namespace kaz::test
