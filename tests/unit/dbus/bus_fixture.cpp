#include "unit/dbus/bus_fixture.h"

namespace kaz::test {

BusTest::BusTest() {
    privateBus.becomeSystemBus();
    bus = std::make_unique<dbus::Bus>();
}

BusTest::Running BusTest::start() {
    bus->start();
    return Running(*this);
}

// Not reset(), which clears the pointer first: tasks may use it until the loop has ended.
void BusTest::end() {
    bus->stop();
    delete bus.get();
    static_cast<void>(bus.release());
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
