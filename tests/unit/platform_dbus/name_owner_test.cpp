// Being told when a name comes and goes.
#include <memory>
#include <string>
#include <vector>

#include "unit/platform_dbus/loop_fixture.h"

namespace kaz::test {
namespace {

class EventLoopNameOwner : public LoopTest {
  protected:
    void follow() {
        onLoop([this] {
            loop->setNameOwnerTaskSync(peerName, [this](bool owned) {
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

TEST_F(EventLoopNameOwner, IsToldEachTimeItChanges) {
    const Running running = start();
    follow();
    BusPeer peer;
    peer.own(peerName);
    ASSERT_TRUE(count.reaches(1));
    peer.disown(peerName);
    ASSERT_TRUE(count.reaches(2));
    peer.own(peerName);
    ASSERT_TRUE(count.reaches(3));
    EXPECT_EQ(toldSoFar(), (std::vector<std::string>{"owned", "free", "owned"}));
}

TEST_F(EventLoopNameOwner, IsNotToldWhenItWasThereBefore) {
    BusPeer peer;
    peer.own(peerName);
    const Running running = start();
    follow();
    peer.settle();
    EXPECT_TRUE(toldSoFar().empty());
}

TEST_F(EventLoopNameOwner, IsToldToTheLastTaskOnly) {
    Counter second;  // outlives the loop, which tells of the peer's end too
    const Running running = start();
    follow();
    onLoop([&] { loop->setNameOwnerTaskSync(peerName, [&](bool) { ++second; }); });
    BusPeer peer;
    peer.own(peerName);
    ASSERT_TRUE(second.reaches(1));
    EXPECT_EQ(count.value(), 0U);
}

TEST_F(EventLoopNameOwner, IsToldWhateverHappensToTheSignalHandlers) {
    const Running running = start();
    registerForChanged(true, [](dbus::MessageDecoder&) {});
    follow();
    onLoop([this] { loop->removeTemporarySignalHandlersSync(); });
    BusPeer peer;
    peer.own(peerName);
    EXPECT_TRUE(count.reaches(1));
}

TEST_F(EventLoopNameOwner, IsToldOnTheNextConnectionToo) {
    const Running running = start();
    follow();
    bus.restart();
    ASSERT_TRUE(log.waitForText(spdlog::level::info, "Connected to the system bus"));
    BusPeer peer;
    peer.own(peerName);
    EXPECT_TRUE(count.reaches(1));
}

TEST_F(EventLoopNameOwner, IsNotTakenFromAForgedReport) {
    const Running running = start();
    follow();
    BusPeer intruder;
    intruder.emitOwnerChange(peerName, "", intruder.uniqueName(), loopUniqueName());
    ASSERT_TRUE(log.waitForText(spdlog::level::debug, "Dropping a NameOwnerChanged of"));
    EXPECT_TRUE(toldSoFar().empty());
}

}  // namespace
}  // namespace kaz::test
