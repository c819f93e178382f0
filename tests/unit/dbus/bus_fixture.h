#pragma once

#include "dbus/bus.h"
#include "support/bus_peer/peer_fixture.h"

namespace kaz::test {

// A dbus::Bus on a private bus.
class BusTest : public PeerTest {
  protected:
    void begin() override { bus->start(); }
    void end() override;
    void push(std::function<void()> task) override { bus->pushTask(std::move(task)); }

    // The unique name of the connection under test, as a peer sees it.
    std::string uniqueName();

    // Subscribes to `changed` of this sender on the loop thread.
    void subscribe(dbus::Bus::Lifetime lifetime, std::function<void(dbus::MessageDecoder&)> handler,
                   const std::string& sender = peerName);

    std::unique_ptr<dbus::Bus> bus = std::make_unique<dbus::Bus>();
};

}  // namespace kaz::test
