#include "unit/dbus/bus_fixture.h"

namespace kaz::test {

void BusTest::end() {
    bus->stop();
    destroy(bus);
}

std::string BusTest::uniqueName() {
    BusPeer peer;
    onLoop([&] { bus->object(peer.uniqueName().c_str(), "/", "test.Any").call("Echo", std::string("who")); });
    return peer.caller();
}

void BusTest::subscribe(dbus::Bus::Lifetime lifetime, std::function<void(dbus::MessageDecoder&)> handler,
                        const std::string& sender) {
    onLoop([&] {
        bus->subscribe(sender.c_str(), peerPath, peerInterface, "Changed", lifetime, std::move(handler));
    });
}

}  // namespace kaz::test
