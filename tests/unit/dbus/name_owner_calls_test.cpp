// The calls with which the owner of a name is found out, on a bus that the test drives.
#include "base/sd_bus/handles.h"
#include "dbus/name_owner.h"
#include "doubles/recording_log/recording_log.h"
#include "support/hand_driven_bus/hand_driven_bus.h"
#include "support/out_of_memory/out_of_memory.h"

#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <string>
#include <vector>

namespace kaz::test {
namespace {

using Members = std::vector<std::string>;

class NameOwnerCalls : public ::testing::Test {
  protected:
    NameOwnerCalls() {
        // The client's calls wait for the bus, so they are made on another thread.
        auto opened = std::async([] {
            dbus::BusPtr bus;
            EXPECT_GE(sd_bus_open_system(dbus::out(bus)), 0);
            EXPECT_GE(sd_bus_flush(bus.get()), 0);
            return bus;
        });
        EXPECT_TRUE(broker.letIn());
        client = opened.get();
    }

    // Attaches, and returns the calls that this made.
    Members attach(std::size_t calls) {
        auto attached = std::async([this] { owner.attach(client.get()); });
        Members members = broker.answer(calls);
        attached.get();
        return members;
    }

    void receiveUntil(const std::function<bool()>& condition) {
        while (!condition()) {
            if (sd_bus_process(client.get(), nullptr) == 0) {
                sd_bus_wait(client.get(), UINT64_MAX);
            }
        }
    }

    RecordingLog log;
    HandDrivenBus broker;
    dbus::BusPtr client;
    dbus::NameOwner owner{"test.Peer"};
};

// In the other order a change between the two calls would be missed.
TEST_F(NameOwnerCalls, SubscribeBeforeTheyAsk) {
    EXPECT_EQ(attach(2), (Members{"AddMatch", "GetNameOwner"}));
    EXPECT_FALSE(owner.unknown());
}

// These reports are older than the answer, and are handled after it.
TEST_F(NameOwnerCalls, MeetChangesOnTheWayAndEndWithTheLastOwner) {
    std::vector<bool> told;
    owner.setChangeTask([&](bool owned) { told.push_back(owned); });
    auto attached = std::async([this] { owner.attach(client.get()); });
    broker.answer(1);
    broker.emitOwnerChange("test.Peer", ":1.1", "");
    broker.emitOwnerChange("test.Peer", "", HandDrivenBus::owner);
    broker.answer(1);
    attached.get();
    EXPECT_EQ(owner.owner(), HandDrivenBus::owner);
    receiveUntil([&] { return told.size() == 2; });
    EXPECT_EQ(told, (std::vector<bool>{false, true}));
    EXPECT_EQ(owner.owner(), HandDrivenBus::owner);
}

TEST_F(NameOwnerCalls, MayBeRefusedWhenAnOwnerComesLater) {
    broker.refuse("GetNameOwner");
    attach(2);
    EXPECT_TRUE(owner.unknown());
    broker.emitOwnerChange("test.Peer", "", ":1.9");
    receiveUntil([this] { return !owner.unknown(); });
    EXPECT_EQ(owner.owner(), ":1.9");
}

TEST_F(NameOwnerCalls, EndWithARefusedSubscriptionAndAreMadeAgain) {
    broker.refuse("AddMatch");
    EXPECT_EQ(attach(1), Members{"AddMatch"});
    EXPECT_TRUE(owner.unknown());
    EXPECT_EQ(
        log.records(),
        (RecordingLog::Records{warning("Cannot follow the owner of test.Peer: No buffer space available")}));
    EXPECT_EQ(attach(1), Members{"AddMatch"});
}

TEST_F(NameOwnerCalls, AskAgainAfterARefusal) {
    broker.refuse("GetNameOwner");
    EXPECT_EQ(attach(2), (Members{"AddMatch", "GetNameOwner"}));
    EXPECT_TRUE(owner.unknown());
    EXPECT_EQ(attach(1), Members{"GetNameOwner"}) << "the subscription exists";
}

TEST_F(NameOwnerCalls, AskAgainWhenThereIsNoMemoryForANewOwner) {
    bool told = false;
    owner.setChangeTask([&](bool) { told = true; });
    attach(2);
    broker.emitOwnerChange("test.Peer", HandDrivenBus::owner, ":1." + std::string(100, '7'));
    receiveUntil([&] { return told; });
    EXPECT_FALSE(owner.unknown());

    broker.emitOwnerChange("test.Peer", "", ":1." + std::string(1000, '7'));
    const std::function<bool()> unknown = [&] { return owner.unknown(); };
    {
        const OutOfMemory scope;
        receiveUntil(unknown);
    }
    EXPECT_EQ(attach(1), Members{"GetNameOwner"});
    EXPECT_FALSE(owner.unknown());
}

}  // namespace
}  // namespace kaz::test
