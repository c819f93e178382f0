// Subscriptions of one connection are renewed on the next. Needs a platform that reconnects.
#include "dbus/platform_help.h"
#include "unit/dbus/bus_fixture.h"

namespace kaz::test {
namespace {

class Reconnecting : public BusTest {
  protected:
    void SetUp() override {
        if (!dbus::Reconnects<dbus::EventLoop>) {
            GTEST_SKIP() << "the platform library does not reconnect";
        }
        bus->onConnectionChanged([this](bool connected) { ++(connected ? cameBack : wentAway); });
    }

    void reconnect() {
        privateBus.restart();
        ASSERT_TRUE(cameBack.reaches(1));
    }

    Counter cameBack;
    Counter wentAway;
    Counter count;
};

TEST_F(Reconnecting, IsReportedWithTheLossBeforeIt) {
    const Running running = start();
    onLoop([] {});
    reconnect();
    EXPECT_EQ(wentAway.value(), 1U);
}

TEST_F(Reconnecting, FollowsTheOwnersOfNamesOnTheNewConnection) {
    const Running running = start();
    onLoop([this] { bus->onOwnerChanged(peerName, [this](bool) { ++count; }); });
    reconnect();
    BusPeer peer{peerName};
    EXPECT_TRUE(count.reaches(1));
}

TEST_F(Reconnecting, KeepsForgedSignalsOutOnTheNewConnectionToo) {
    const Running running = start();
    subscribe(dbus::Bus::Lifetime::permanent, [this](dbus::MessageDecoder&) { ++count; });
    reconnect();
    BusPeer intruder;
    intruder.emit(changed, "forged", uniqueName());
    EXPECT_TRUE(log.waitForText(spdlog::level::debug, "Dropping Changed: sent by " + intruder.uniqueName()));
    EXPECT_EQ(count.value(), 0U);
    BusPeer peer{peerName};
    peer.emit(changed, "genuine");
    EXPECT_TRUE(count.reaches(1));
}

}  // namespace
}  // namespace kaz::test
