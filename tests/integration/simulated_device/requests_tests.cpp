// When requests have been carried out, and what is told of them.
#include "support/device_fixture/device_fixture.h"
#include "support/waiting/waiting.h"

#include <wifi/manager.h>

#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <set>

namespace kaz::test {
namespace {

using wifi::ConnectResult;
using wifi::RequestFailure;
using Failures = std::set<RequestFailure>;

class Requests : public DeviceFixture {
  protected:
    static std::future<Failures> ask(wifi::Manager& manager) {
        auto promise = std::make_shared<std::promise<Failures>>();
        manager.whenCarriedOut([promise](const Failures& failures) { promise->set_value(failures); });
        return promise->get_future();
    }

    // Nothing if nobody is told.
    static std::optional<Failures> toldOf(std::future<Failures> answer) {
        return answer.wait_for(timeLimit) == std::future_status::ready ? std::optional(answer.get())
                                                                       : std::nullopt;
    }

    std::optional<Failures> carriedOut() { return toldOf(ask(manager())); }
};

TEST_F(Requests, TheFirstStateIsCompleteWhenANewManagerHasCarriedOutNothing) {
    start();
    connect(home());
    for (int i = 0; i < 5; ++i) {
        wifi::Manager another;
        EXPECT_EQ(toldOf(ask(another)), Failures());
        EXPECT_TRUE(another.isWifiStackInitialized());
        EXPECT_EQ(another.connectionInfo().ssid, "Home");
        EXPECT_FALSE(another.networks().empty());
        EXPECT_FALSE(another.eapMethods().empty());
    }
}

TEST_F(Requests, ARequestThatHasBeenCarriedOutHasReachedTheSupplicant) {
    start();
    EXPECT_EQ(manager().connect(home()), ConnectResult::ok);
    EXPECT_EQ(carriedOut(), Failures());
    EXPECT_EQ(callsOf("SelectNetwork").size(), 1U);
    manager().forgetNetwork("Home");
    EXPECT_EQ(carriedOut(), Failures());
    EXPECT_EQ(callsOf("RemoveNetwork").size(), 1U);
    EXPECT_FALSE(callsOf("SaveConfig").empty());
}

TEST_F(Requests, WhatTheSupplicantRefusesIsTold) {
    neighbourhood.updateConfig = false;
    start();
    manager().forgetNetwork("Unknown");
    EXPECT_EQ(carriedOut(), (Failures{RequestFailure::unknownNetwork, RequestFailure::notSaved}));
    device().orderFault({.peer = "supplicant", .member = "AddNetwork"});
    EXPECT_EQ(manager().connect(home()), ConnectResult::ok);
    EXPECT_EQ(carriedOut(), Failures{RequestFailure::refused});
}

TEST_F(Requests, WithoutASupplicantNobodyIsAsked) {
    neighbourhood.unitActive = false;
    start();
    manager().scan();
    manager().connectConfigured("Home");
    EXPECT_EQ(carriedOut(), Failures{RequestFailure::notAttached});
}

TEST_F(Requests, RequestsThatAFullQueueDropsAreTold) {
    constexpr int bound = 4096;
    start();
    std::once_flag once;
    std::promise<void> blocked;
    std::promise<void> unblock;
    manager().onScanningChanged([&, goOn = unblock.get_future().share()] {
        std::call_once(once, [&] { blocked.set_value(); });
        goOn.wait();
    });
    manager().scan();
    blocked.get_future().wait();
    for (int i = 0; i < bound; ++i) {
        manager().connectConfigured("Unknown");
    }
    auto before = ask(manager());  // its own task is dropped, too
    manager().scan();
    auto after = ask(manager());
    unblock.set_value();
    EXPECT_EQ(toldOf(std::move(before)), Failures{RequestFailure::unknownNetwork});
    EXPECT_EQ(toldOf(std::move(after)), Failures{RequestFailure::dropped});
}

TEST_F(Requests, WhoWaitsWhenTheManagerEndsIsNotTold) {
    start();
    device().orderFault({.peer = "supplicant", .member = "Scan", .kind = sim::FaultKind::noReply});
    manager().scan();
    ASSERT_TRUE(waitForCall("Scan"));
    auto answer = ask(manager());
    user().leave();
    EXPECT_THROW(answer.get(), std::future_error) << "the callback is destroyed";
}

}  // namespace
}  // namespace kaz::test
