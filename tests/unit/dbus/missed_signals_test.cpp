// Signals that are dropped because the bus does not tell who owns the name of their sender.
#include "support/bus_proxy/bus_proxy.h"
#include "unit/dbus/bus_fixture.h"

#include <optional>
#include <string>
#include <vector>

namespace kaz::test {
namespace {

class MissedSignals : public BusTest {
  protected:
    MissedSignals() {
        proxy.becomeSystemBus();
        // Half of this is the pause before the next question: long enough for a test to order the next fault.
        bus = std::make_unique<dbus::Bus>(std::chrono::seconds(3));
        bus->onConnectionChanged([this](bool connected) {
            told.emplace_back(connected ? "connected" : "lost");
            ++count;
        });
        bus->setIdleTask([] { return std::nullopt; });
    }

    void refuseTheOwner() { proxy.order({BusProxy::Fault::refuse, "GetNameOwner", peerName}); }

    // Subscribes while the bus refuses to tell the owner, and so does it when a signal comes.
    void missASignal() {
        refuseTheOwner();
        subscribe(dbus::Bus::Lifetime::permanent, [this](dbus::MessageDecoder&) { ++handled; });
        ASSERT_TRUE(proxy.waitForFault());
        refuseTheOwner();
        peer.emit(changed, "missed");
        ASSERT_TRUE(proxy.waitForFault());
    }

    BusProxy proxy{privateBus.address()};
    BusPeer peer{peerName};
    Counter handled;
    Counter count;
    std::vector<std::string> told;  // on the loop thread
};

TEST_F(MissedSignals, AreFollowedByALossAndARestorationOnceTheOwnerIsKnown) {
    const Running running = start();
    missASignal();
    ASSERT_TRUE(count.reaches(2)) << "no other signal comes";
    EXPECT_EQ(onLoop([this] { return told; }), (std::vector<std::string>{"lost", "connected"}));
    EXPECT_EQ(handled.value(), 0U);
    peer.emit(changed, "heard");
    EXPECT_TRUE(handled.reaches(1));
    EXPECT_EQ(log.texts(spdlog::level::info),
              std::vector<std::string>{"Signals of the daemons were missed, so all is read again"});
}

TEST_F(MissedSignals, AreAskedForAgainUntilTheBusTellsTheOwner) {
    const Running running = start();
    missASignal();
    refuseTheOwner();
    ASSERT_TRUE(proxy.waitForFault()) << "the second time nothing but the pause causes the question";
    ASSERT_TRUE(count.reaches(2));
    EXPECT_EQ(log.texts(spdlog::level::warn).size(), 3U);
}

TEST_F(MissedSignals, AreNoneWhenTheOwnerIsKnownInTime) {
    const Running running = start();
    refuseTheOwner();
    subscribe(dbus::Bus::Lifetime::permanent, [this](dbus::MessageDecoder&) { ++handled; });
    ASSERT_TRUE(proxy.waitForFault());
    peer.emit(changed, "heard");
    EXPECT_TRUE(handled.reaches(1));
    EXPECT_TRUE(onLoop([this] { return told; }).empty());
}

}  // namespace
}  // namespace kaz::test
