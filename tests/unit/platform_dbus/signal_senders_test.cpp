#include <memory>
#include <string>

#include "unit/platform_dbus/loop_fixture.h"

namespace kaz::test {
namespace {

using dbus::MessageDecoder;

// Who may make a handler run.
class EventLoopSignalSenders : public LoopTest {
  protected:
    void comeUp() {
        peer = std::make_unique<BusPeer>();
        peer->own(peerName);
    }

    void registerCounting() {
        registerForChanged(false, [this](MessageDecoder& decoder) {
            lastArgument = readString(decoder);
            ++handled;
        });
    }

    // The owner's signal arrives, and it is the only one that did since `before`.
    void expectOnlyTheOwnersArrives(std::size_t before) {
        peer->emit(changed, "genuine");
        EXPECT_TRUE(handled.reaches(before + 1));
        EXPECT_EQ(onLoop([this] { return lastArgument; }), "genuine");
        EXPECT_EQ(handled.value(), before + 1);
    }

    std::size_t dropped() const {
        std::size_t count = 0;
        for (const std::string& text : log.texts(spdlog::level::debug)) {
            count += text.find("Dropping Changed: sent by " + intruder.uniqueName()) == 0 ? 1U : 0U;
        }
        return count;
    }

    // The intruder's signal reaches the loop and is dropped.
    void expectForgedIsDropped(const std::string& target) {
        const auto before = handled.value();
        const auto droppedBefore = dropped();
        intruder.emit(changed, "forged", target);
        EXPECT_TRUE(eventually([&] { return dropped() == droppedBefore + 1; }));
        EXPECT_EQ(handled.value(), before);
    }

    BusPeer intruder;
    std::unique_ptr<BusPeer> peer;
    Counter handled;
    std::string lastArgument;
};

TEST_F(EventLoopSignalSenders, OtherThanTheOwnerAreDroppedWithOneDebugLine) {
    comeUp();
    const Running running = start();
    registerCounting();
    expectForgedIsDropped(loopUniqueName());
    expectOnlyTheOwnersArrives(0);
    EXPECT_EQ(dropped(), 1U);
    EXPECT_EQ(log.records().size(), 1U);
}

TEST_F(EventLoopSignalSenders, OtherThanTheOwnerAreDroppedAlsoAfterTheOwnerRestarted) {
    comeUp();
    const Running running = start();
    registerCounting();
    const std::string target = loopUniqueName();
    const std::string first = peer->uniqueName();
    expectForgedIsDropped(target);
    expectOnlyTheOwnersArrives(0);

    peer.reset();
    expectForgedIsDropped(target);

    comeUp();
    ASSERT_NE(peer->uniqueName(), first);
    expectOnlyTheOwnersArrives(1);
    expectForgedIsDropped(target);
    expectOnlyTheOwnersArrives(2);
}

TEST_F(EventLoopSignalSenders, ThatBroadcastUnderAnotherNameAreKeptAwayByTheBus) {
    comeUp();
    const Running running = start();
    registerCounting();
    intruder.emit(changed, "not for us");
    intruder.settle();
    expectOnlyTheOwnersArrives(0);

    peer.reset();
    comeUp();
    intruder.emit(changed, "not for us");
    intruder.settle();
    expectOnlyTheOwnersArrives(1);
    EXPECT_TRUE(log.records().empty());
}

TEST_F(EventLoopSignalSenders, OfANameWithoutAnOwnerYetAreAwaitedQuietly) {
    const Running running = start();
    registerCounting();
    EXPECT_TRUE(log.records().empty());
    expectForgedIsDropped(loopUniqueName());
    comeUp();
    expectOnlyTheOwnersArrives(0);
    EXPECT_TRUE(log.texts(spdlog::level::warn).empty());
}

TEST_F(EventLoopSignalSenders, ThatUsedToOwnTheNameAreDropped) {
    comeUp();
    const Running running = start();
    registerCounting();
    const std::string target = loopUniqueName();
    expectOnlyTheOwnersArrives(0);
    auto former = std::move(peer);
    former->disown(peerName);
    comeUp();
    expectOnlyTheOwnersArrives(1);
    former->emit(changed, "too late", target);
    EXPECT_TRUE(log.waitForText(spdlog::level::debug, "Dropping Changed: sent by " + former->uniqueName()));
    EXPECT_EQ(handled.value(), 2U);
}

TEST_F(EventLoopSignalSenders, CannotMakeThemselvesTheOwnerWithAForgedNotice) {
    comeUp();
    const Running running = start();
    registerCounting();
    const std::string target = loopUniqueName();
    intruder.emitOwnerChange(peerName, peer->uniqueName(), intruder.uniqueName(), target);
    EXPECT_TRUE(log.waitForText(spdlog::level::debug,
                                "Dropping a NameOwnerChanged of test.Peer that " + intruder.uniqueName()));
    expectForgedIsDropped(target);
    expectOnlyTheOwnersArrives(0);
}

TEST_F(EventLoopSignalSenders, AreFollowedAfterTemporaryHandlersCameAndWent) {
    comeUp();
    const Running running = start();
    for (std::size_t i = 0; i < 3; ++i) {
        registerForChanged(true, [this](MessageDecoder& decoder) {
            lastArgument = readString(decoder);
            ++handled;
        });
        const std::string target = loopUniqueName();
        expectForgedIsDropped(target);
        expectOnlyTheOwnersArrives(2 * i);
        peer.reset();
        comeUp();
        expectOnlyTheOwnersArrives(2 * i + 1);
        onLoop([this] { loop->removeTemporarySignalHandlersSync(); });
    }
}

TEST_F(EventLoopSignalSenders, MayBeGivenByTheirUniqueName) {
    comeUp();
    const Running running = start();
    onLoop([this] {
        loop->registerSignalHandlerSync(peer->uniqueName().c_str(), peerPath, peerInterface, "Changed", false,
                                        [this](MessageDecoder& decoder) {
                                            lastArgument = readString(decoder);
                                            ++handled;
                                        });
    });
    intruder.emit(changed, "forged", loopUniqueName());
    intruder.settle();
    expectOnlyTheOwnersArrives(0);
}

}  // namespace
}  // namespace kaz::test
