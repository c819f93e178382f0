#include <vector>

#include "unit/platform_dbus/loop_fixture.h"

namespace kaz::test {
namespace {

using dbus::MessageDecoder;

class EventLoopSignals : public LoopTest {
  protected:
    // A handler that counts, and keeps the arguments.
    std::function<void(MessageDecoder&)> counting(Counter& counter) {
        return [this, &counter](MessageDecoder& decoder) {
            arguments.push_back(readString(decoder));
            ++counter;
        };
    }

    // Emits a signal and waits until the loop has handled it and all before it. Needs a handler for Marker.
    void emitAndSettle(const std::string& argument) {
        const auto before = marked.value();
        peer.emit(changed, argument);
        peer.emit({peerPath, peerInterface, "Marker"}, "");
        EXPECT_TRUE(marked.reaches(before + 1));
    }

    void registerMarker() {
        onLoop([this] {
            loop->registerSignalHandlerSync(peerName, peerPath, peerInterface, "Marker", false,
                                            [this](MessageDecoder&) { ++marked; });
        });
    }

    BusPeer peer{peerName};
    Counter permanent;
    Counter temporary;
    Counter marked;
    std::vector<std::string> arguments;
};

TEST_F(EventLoopSignals, ReachTheirHandlerWithTheirArguments) {
    const Running running = start();
    registerForChanged(false, counting(permanent));
    peer.emit(changed, "first");
    peer.emit(changed, "second");
    ASSERT_TRUE(permanent.reaches(2));
    EXPECT_EQ(onLoop([this] { return arguments; }), (std::vector<std::string>{"first", "second"}));
}

TEST_F(EventLoopSignals, ReachOnlyHandlersOfTheirPathInterfaceAndMember) {
    const Running running = start();
    registerForChanged(false, counting(permanent));
    registerMarker();
    peer.emit({"/test/other", peerInterface, "Changed"}, "other path");
    peer.emit({peerPath, "test.Peer.Other", "Changed"}, "other interface");
    peer.emit({peerPath, peerInterface, "Other"}, "other member");
    emitAndSettle("right");
    EXPECT_EQ(onLoop([this] { return arguments; }), (std::vector<std::string>{"right"}));
}

TEST_F(EventLoopSignals, ReachHandlersRegisteredBeforeTheStart) {
    loop->registerSignalHandlerSync(peerName, peerPath, peerInterface, "Changed", false, counting(permanent));
    const Running running = start();
    onLoop([] {});
    peer.emit(changed, "early");
    EXPECT_TRUE(permanent.reaches(1));
}

TEST_F(EventLoopSignals, CanBeReadByEachOfSeveralHandlers) {
    const Running running = start();
    registerForChanged(false, counting(permanent));
    registerForChanged(true, counting(temporary));
    peer.emit(changed, "both");
    ASSERT_TRUE(permanent.reaches(1));
    ASSERT_TRUE(temporary.reaches(1));
    EXPECT_EQ(onLoop([this] { return arguments; }), (std::vector<std::string>{"both", "both"}));
}

TEST_F(EventLoopSignals, RemovingTemporaryHandlersLeavesThePermanentOnesInPlace) {
    const Running running = start();
    registerForChanged(false, counting(permanent));
    registerForChanged(true, counting(temporary));
    registerForChanged(true, counting(temporary));
    registerMarker();
    emitAndSettle("");
    EXPECT_EQ(permanent.value(), 1U);
    EXPECT_EQ(temporary.value(), 2U);

    onLoop([this] { loop->removeTemporarySignalHandlersSync(); });
    emitAndSettle("");
    EXPECT_EQ(permanent.value(), 2U);
    EXPECT_EQ(temporary.value(), 2U);

    registerForChanged(true, counting(temporary));
    emitAndSettle("");
    EXPECT_EQ(permanent.value(), 3U);
    EXPECT_EQ(temporary.value(), 3U);
}

TEST_F(EventLoopSignals, RemovingTemporaryHandlersDestroysThem) {
    auto held = std::make_shared<int>();
    const std::weak_ptr<int> handler = held;
    const Running running = start();
    registerForChanged(true, [held = std::move(held)](MessageDecoder&) {});
    EXPECT_FALSE(handler.expired());
    onLoop([this] { loop->removeTemporarySignalHandlersSync(); });
    EXPECT_TRUE(handler.expired());
}

TEST_F(EventLoopSignals, AHandlerMayRemoveAllTemporaryHandlersIncludingItself) {
    auto held = std::make_shared<int>();
    const std::weak_ptr<int> handler = held;
    const auto removeAll = [this](MessageDecoder&) {
        loop->removeTemporarySignalHandlersSync();
        ++temporary;
    };
    const Running running = start();
    registerMarker();
    registerForChanged(true, [&, held = std::move(held)](MessageDecoder& decoder) {
        removeAll(decoder);
        EXPECT_FALSE(handler.expired()) << "destroyed while it runs";
        EXPECT_EQ(readString(decoder), "argument");
    });
    emitAndSettle("argument");
    EXPECT_EQ(temporary.value(), 1U);
    EXPECT_TRUE(handler.expired());
    emitAndSettle("argument");
    EXPECT_EQ(temporary.value(), 1U);
}

TEST_F(EventLoopSignals, AHandlerRemovedByAnotherDoesNotHearTheSignalAnyMore) {
    const Running running = start();
    registerMarker();
    for (int i = 0; i < 3; ++i) {
        registerForChanged(true, [this](MessageDecoder&) {
            loop->removeTemporarySignalHandlersSync();
            ++temporary;
        });
    }
    emitAndSettle("");
    EXPECT_EQ(temporary.value(), 1U);
}

TEST_F(EventLoopSignals, AHandlerMayRegisterAnotherWhichHearsOnlyLaterSignals) {
    const Running running = start();
    registerMarker();
    registerForChanged(true, [this](MessageDecoder&) {
        loop->registerSignalHandlerSync(peerName, peerPath, peerInterface, "Changed", false,
                                        counting(permanent));
        ++temporary;
    });
    emitAndSettle("first");
    EXPECT_EQ(temporary.value(), 1U);
    EXPECT_EQ(permanent.value(), 0U);
    emitAndSettle("second");
    EXPECT_EQ(permanent.value(), 1U);
    EXPECT_EQ(onLoop([this] { return arguments; }), (std::vector<std::string>{"second"}));
}

TEST_F(EventLoopSignals, AHandlerMayReplaceAllTemporaryHandlersWithNewOnes) {
    std::function<void(MessageDecoder&)> reattach = [&](MessageDecoder&) {
        loop->removeTemporarySignalHandlersSync();
        loop->registerSignalHandlerSync(peerName, peerPath, peerInterface, "Changed", true, reattach);
        ++temporary;
    };
    const Running running = start();
    registerMarker();
    registerForChanged(true, reattach);
    for (std::size_t i = 1; i <= 5; ++i) {
        emitAndSettle("");
        EXPECT_EQ(temporary.value(), i);
    }
}

TEST_F(EventLoopSignals, AHandlerMayMakeCalls) {
    std::string echoed;
    const Running running = start();
    registerForChanged(false, [&](MessageDecoder&) {
        const dbus::MessagePtr reply = callPeer("Echo", "from a handler");
        MessageDecoder decoder{reply.get()};
        echoed = readString(decoder);
        ++permanent;
    });
    peer.emit(changed, "");
    ASSERT_TRUE(permanent.reaches(1));
    EXPECT_EQ(onLoop([&] { return echoed; }), "from a handler");
}

TEST_F(EventLoopSignals, ThatArriveDuringACallAreHandledAfterTheTask) {
    const Running running = start();
    registerForChanged(false, counting(permanent));
    onLoop([this] {
        peer.emit(changed, "during the task");
        EXPECT_NE(callPeer("Echo"), nullptr);
        EXPECT_EQ(permanent.value(), 0U);
    });
    EXPECT_TRUE(permanent.reaches(1));
}

TEST_F(EventLoopSignals, OfAnEmptyPathAreRefusedQuietly) {
    const Running running = start();
    for (const char* path : {static_cast<const char*>(nullptr), ""}) {
        onLoop([&] {
            loop->registerSignalHandlerSync(peerName, path, peerInterface, "Changed", false,
                                            counting(permanent));
        });
    }
    registerMarker();
    emitAndSettle("");
    EXPECT_EQ(permanent.value(), 0U);
    EXPECT_TRUE(log.records().empty());
}

TEST_F(EventLoopSignals, OfTheRootPathAreHandled) {
    const Running running = start();
    onLoop([this] {
        loop->registerSignalHandlerSync(peerName, "/", peerInterface, "Changed", false, counting(permanent));
    });
    peer.emit({"/", peerInterface, "Changed"}, "");
    EXPECT_TRUE(permanent.reaches(1));
}

TEST_F(EventLoopSignals, ThatCannotBeSubscribedToAreAWarning) {
    struct Case {
        const char* sender;
        const char* path;
        const char* interface;
        const char* member;
    };
    const Running running = start();
    for (const Case& bad :
         {Case{"", peerPath, peerInterface, "Changed"}, Case{nullptr, peerPath, peerInterface, "Changed"},
          Case{"no'name',arg1='x", peerPath, peerInterface, "Changed"},
          Case{peerName, "no path", peerInterface, "Changed"},
          Case{peerName, peerPath, "no interface", "Changed"}, Case{peerName, peerPath, peerInterface, ""},
          Case{peerName, peerPath, peerInterface, nullptr}}) {
        log.clear();
        onLoop([&] {
            loop->registerSignalHandlerSync(bad.sender, bad.path, bad.interface, bad.member, false,
                                            counting(permanent));
        });
        EXPECT_FALSE(log.texts(spdlog::level::warn).empty())
            << (bad.sender ? bad.sender : "null") << ' ' << bad.path << ' ' << bad.interface << ' '
            << (bad.member ? bad.member : "null");
    }
    registerMarker();
    emitAndSettle("");
    EXPECT_EQ(permanent.value(), 0U);
}

}  // namespace
}  // namespace kaz::test
