#include "unit/communicator/communicator_fixture.h"

#include <functional>

namespace kaz::wifi {
namespace {

class Networkd : public CommunicatorTest {
  protected:
    // Blocks until all signals that networkd has emitted are handled.
    void settleNetworkd() {
        emitOnlineState("end");
        EXPECT_TRUE(log.waitForText(spdlog::level::debug, "OnlineState=end"));
        onLoop([] {});
    }

    // These signals do nothing but log this.
    void expectIgnored(const std::vector<test::Append>& signals, test::RecordingLog::Records logged) {
        startAttached();
        for (const test::Append& signal : signals) {
            networkd.emit(networkdPath, propertiesInterface, "PropertiesChanged", signal);
        }
        settleNetworkd();
        EXPECT_THAT(takeCalls(), ElementsAre("networkd online: false"));
        logged.push_back(debug("OnlineState=end"));
        EXPECT_EQ(takeLog(), logged);
    }
};

TEST_F(Networkd, LinkIsOnlineForExactlyThatValue) {
    startAttached();
    emitOnlineState("online");
    for (const char* value :
         {"", "offline", "partial", "unknown", "Online", "ONLINE", "online ", "onlin", "onlinee"}) {
        emitOnlineState(value);
    }
    settleNetworkd();
    const auto reports = takeCalls();
    ASSERT_EQ(reports.size(), 11U);
    EXPECT_EQ(reports.front(), "networkd online: true");
    EXPECT_EQ(std::count(reports.begin(), reports.end(), "networkd online: false"), 10);
    const auto logged = takeLog();
    ASSERT_EQ(logged.size(), 11U);
    EXPECT_EQ(logged[0], debug("OnlineState=online"));
    EXPECT_EQ(logged[1], debug("OnlineState="));
    EXPECT_EQ(logged[2], debug("OnlineState=offline"));
}

TEST_F(Networkd, PropertiesWithoutOnlineStateAreNotReported) {
    expectIgnored(
        {values("sa{sv}as", networkdInterface, 0, 0),
         values("sa{sv}as", networkdInterface, 1, "AddressState", "s", "routable", 1, "OnlineState")},
        {});
}

TEST_F(Networkd, PropertiesOfAnotherInterfaceAreIgnored) {
    std::vector<test::Append> signals;
    for (const char* interface : {"org.freedesktop.network1.Link", "org.freedesktop.network1.manager", ""}) {
        signals.push_back(values("sa{sv}as", interface, 1, "OnlineState", "s", "online", 0));
    }
    expectIgnored(signals, {});
}

TEST_F(Networkd, UndecodablePropertiesAreLoggedAndDropped) {
    const LogRecord undecodable = warning(decodingFailed + noSuchType);
    expectIgnored({values("i", 1), values("s", networkdInterface),
                   values("sa{sv}as", networkdInterface, 1, "OnlineState", "b", 1, 0)},
                  {undecodable, undecodable, warning(decodingFailed + noSuchValue)});
}

TEST_F(Networkd, UndecodablePropertiesOfAnotherInterfaceAreLogged) {
    expectIgnored({values("sa{sv}as", "org.freedesktop.network1.Link", 1, "OnlineState", "b", 1, 0)},
                  {warning(decodingFailed + noSuchValue)});
}

TEST_F(Networkd, AttachReadsTheOnlineStateOnce) {
    onNetworkd(reply("a{sv}", 1, "OnlineState", "s", "partial"));
    start("active");
    const auto all = calls.calls();
    ASSERT_GT(all.size(), 2U);
    EXPECT_THAT(std::vector<std::string>(all.end() - 3, all.end()),
                ElementsAre(getNetworkdProperties, "networkd online: false", "status changed: on"));
}

TEST_F(Networkd, NetworkdThatStartsAfterTheAttachIsRead) {
    networkd.leave();
    startAttached();
    onNetworkd(reply("a{sv}", 1, "OnlineState", "s", "online"));
    networkd.comeBack();
    ASSERT_TRUE(calls.waitForCall("networkd online: true"));
    emitOnlineState("offline");
    ASSERT_TRUE(calls.waitForCall("networkd online: false"));
    EXPECT_THAT(takeCalls(),
                ElementsAre(getNetworkdProperties, "networkd online: true", "networkd online: false"));
}

TEST_F(Networkd, NetworkdThatAnsweredIsNotReadAgainAfterItsRestart) {
    startAttached();
    networkd.leave();
    networkd.comeBack();
    settleNetworkd();
    EXPECT_THAT(takeCalls(), ElementsAre("networkd online: false"));
}

TEST_F(Networkd, NetworkdThatStartsWhileDetachedIsNotRead) {
    networkd.leave();
    startAttached();
    emitUnitState("inactive");
    ASSERT_TRUE(calls.waitForCall("status changed: off"));
    networkd.comeBack();
    emitUnitState("active");
    ASSERT_TRUE(calls.waitForCall("status changed: on"));
    const auto all = takeCalls();
    EXPECT_EQ(std::count(all.begin(), all.end(), getNetworkdProperties), 1);
}

TEST_F(Networkd, UnassignedOnlineHandlerThrowsAndTheLoopContinues) {
    communicator->networkdOnlineHandler = nullptr;
    startAttached();
    EXPECT_THROW(onLoop([&] { communicator->onlineState().report({"online"}); }), std::bad_function_call);
    emitOnlineState("online");
    EXPECT_TRUE(log.waitFor([](const auto& records) {
        return std::any_of(records.begin(), records.end(),
                           [](const LogRecord& record) { return record.level == spdlog::level::err; });
    }));
    settle();
    EXPECT_TRUE(communicator->isSupplicantOn());
}

}  // namespace
}  // namespace kaz::wifi
