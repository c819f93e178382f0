#include "unit/dbus/bus_fixture.h"

namespace kaz::test {
namespace {

using dbus::Bus;
using dbus::MessageDecoder;

// Who may make a handler run.
class SignalSenders : public BusTest {
  protected:
    void comeUp() { peer = std::make_unique<BusPeer>(peerName); }

    std::function<void(MessageDecoder&)> counting() {
        return [this](MessageDecoder& decoder) {
            lastArgument = dbus::read<std::string>(decoder).value_or("nothing");
            ++handled;
        };
    }

    void registerCounting() { subscribe(Bus::Lifetime::permanent, counting()); }

    // The owner's signal arrives. No other signal has arrived since `before`.
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

TEST_F(SignalSenders, OtherThanTheOwnerAreDroppedWithOneDebugLine) {
    comeUp();
    const Running running = start();
    registerCounting();
    expectForgedIsDropped(uniqueName());
    expectOnlyTheOwnersArrives(0);
    EXPECT_EQ(dropped(), 1U);
    EXPECT_EQ(log.records().size(), 1U);
}

TEST_F(SignalSenders, OtherThanTheOwnerAreDroppedAlsoAfterTheOwnerRestarted) {
    comeUp();
    const Running running = start();
    registerCounting();
    const std::string target = uniqueName();
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

TEST_F(SignalSenders, ThatBroadcastUnderAnotherNameAreKeptAwayByTheBus) {
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

TEST_F(SignalSenders, OfANameWithoutAnOwnerYetAreAwaitedQuietly) {
    const Running running = start();
    registerCounting();
    EXPECT_TRUE(log.records().empty());
    expectForgedIsDropped(uniqueName());
    comeUp();
    expectOnlyTheOwnersArrives(0);
    EXPECT_TRUE(log.texts(spdlog::level::warn).empty());
}

TEST_F(SignalSenders, ThatUsedToOwnTheNameAreDropped) {
    comeUp();
    const Running running = start();
    registerCounting();
    const std::string target = uniqueName();
    expectOnlyTheOwnersArrives(0);
    auto former = std::move(peer);
    former->disown(peerName);
    comeUp();
    expectOnlyTheOwnersArrives(1);
    former->emit(changed, "too late", target);
    EXPECT_TRUE(log.waitForText(spdlog::level::debug, "Dropping Changed: sent by " + former->uniqueName()));
    EXPECT_EQ(handled.value(), 2U);
}

TEST_F(SignalSenders, CannotMakeThemselvesTheOwnerWithAForgedNotice) {
    comeUp();
    const Running running = start();
    registerCounting();
    const std::string target = uniqueName();
    intruder.emitOwnerChange(peerName, peer->uniqueName(), intruder.uniqueName(), target);
    EXPECT_TRUE(log.waitForText(spdlog::level::debug,
                                "Dropping a NameOwnerChanged of test.Peer that " + intruder.uniqueName()));
    expectForgedIsDropped(target);
    expectOnlyTheOwnersArrives(0);
}

TEST_F(SignalSenders, AreFollowedAfterTemporaryHandlersCameAndWent) {
    comeUp();
    const Running running = start();
    for (std::size_t i = 0; i < 3; ++i) {
        subscribe(Bus::Lifetime::temporary, counting());
        const std::string target = uniqueName();
        expectForgedIsDropped(target);
        expectOnlyTheOwnersArrives(2 * i);
        peer.reset();
        comeUp();
        expectOnlyTheOwnersArrives(2 * i + 1);
        onLoop([this] { bus->dropTemporarySubscriptions(); });
    }
}

TEST_F(SignalSenders, MayBeGivenByTheirUniqueName) {
    comeUp();
    const Running running = start();
    subscribe(Bus::Lifetime::permanent, counting(), peer->uniqueName());
    intruder.emit(changed, "forged", uniqueName());
    intruder.settle();
    expectOnlyTheOwnersArrives(0);
}

}  // namespace
}  // namespace kaz::test
