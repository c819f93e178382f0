// The task that runs when a bus name gets or loses its owner.
#include "unit/dbus/bus_fixture.h"

#include <vector>

namespace kaz::test {
namespace {

class NameOwnerChange : public BusTest {
  protected:
    void follow() {
        onLoop([this] {
            bus->onOwnerChanged(peerName, [this](bool owned) {
                told.emplace_back(owned ? "owned" : "free");
                ++count;
            });
        });
    }

    std::vector<std::string> toldSoFar() {
        return onLoop([this] { return told; });
    }

    Counter count;
    std::vector<std::string> told;  // on the loop thread
};

TEST_F(NameOwnerChange, IsToldEachTimeItChanges) {
    const Running running = start();
    follow();
    BusPeer peer{peerName};
    ASSERT_TRUE(count.reaches(1));
    peer.disown(peerName);
    ASSERT_TRUE(count.reaches(2));
    peer.own(peerName);
    ASSERT_TRUE(count.reaches(3));
    EXPECT_EQ(toldSoFar(), (std::vector<std::string>{"owned", "free", "owned"}));
}

TEST_F(NameOwnerChange, IsNotToldWhenItWasThereBefore) {
    BusPeer peer{peerName};
    const Running running = start();
    follow();
    peer.settle();
    EXPECT_TRUE(toldSoFar().empty());
}

TEST_F(NameOwnerChange, IsToldToTheLastTaskOnly) {
    Counter second;  // outlives the loop, which tells of the peer's end too
    const Running running = start();
    follow();
    onLoop([&] { bus->onOwnerChanged(peerName, [&](bool) { ++second; }); });
    BusPeer peer{peerName};
    ASSERT_TRUE(second.reaches(1));
    EXPECT_EQ(count.value(), 0U);
}

TEST_F(NameOwnerChange, IsToldWhateverHappensToTheSignalHandlers) {
    const Running running = start();
    subscribe(dbus::Bus::Lifetime::temporary, [](dbus::MessageDecoder&) {});
    follow();
    onLoop([this] { bus->dropTemporarySubscriptions(); });
    BusPeer peer{peerName};
    EXPECT_TRUE(count.reaches(1));
}

TEST_F(NameOwnerChange, IsNotTakenFromAForgedReport) {
    const Running running = start();
    follow();
    BusPeer intruder;
    intruder.emitOwnerChange(peerName, "", intruder.uniqueName(), uniqueName());
    ASSERT_TRUE(log.waitForText(spdlog::level::debug, "Dropping a NameOwnerChanged of"));
    EXPECT_TRUE(toldSoFar().empty());
}

}  // namespace
}  // namespace kaz::test
