// When requests have been carried out, and what is told of them.
#include "support/device_fixture/device_fixture.h"
#include "support/waiting/waiting.h"

#include <wifi/manager.h>

#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace kaz::test {
namespace {

using wifi::ConnectResult;
using wifi::RequestFailure;
using Failures = wifi::RequestFailures;
using wifi::FailureReason;

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

    static std::set<RequestFailure> kindsOf(const Failures& failures) {
        std::set<RequestFailure> kinds;
        for (const auto& [kind, reason] : failures) {
            kinds.insert(kind);
        }
        return kinds;
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
    const auto forgetting = carriedOut();
    ASSERT_TRUE(forgetting);
    EXPECT_EQ(kindsOf(*forgetting), (std::set{RequestFailure::unknownNetwork, RequestFailure::notSaved}));
    EXPECT_EQ(forgetting->at(RequestFailure::unknownNetwork), FailureReason::none);
    device().orderFault({.peer = "supplicant", .member = "AddNetwork"});
    EXPECT_EQ(manager().connect(home()), ConnectResult::ok);
    const auto connecting = carriedOut();
    ASSERT_TRUE(connecting);
    EXPECT_EQ(kindsOf(*connecting), std::set{RequestFailure::refused});
}

TEST_F(Requests, WhyADaemonDidNotDoItIsTold) {
    neighbourhood.updateConfig = false;
    start();
    manager().forgetNetwork("Unknown");
    EXPECT_EQ(carriedOut(), (Failures{{RequestFailure::unknownNetwork, FailureReason::none},
                                      {RequestFailure::notSaved, FailureReason::refused}}));
    const std::string bus = "org.freedesktop.DBus.Error.";
    for (const auto& [error, reason] :
         {std::pair{bus + "AccessDenied", FailureReason::denied},
          std::pair{bus + "NoReply", FailureReason::noAnswer},
          std::pair{bus + "ServiceUnknown", FailureReason::notOnBus},
          std::pair{std::string("fi.w1.wpa_supplicant1.UnknownError"), FailureReason::refused}}) {
        device().orderFault({.peer = "supplicant", .member = "AddNetwork", .errorName = error});
        EXPECT_EQ(manager().connect(home()), ConnectResult::ok);
        EXPECT_EQ(carriedOut(), (Failures{{RequestFailure::refused, reason}})) << error;
        device().clearFaults();
    }
    for (const auto& [error, reason] : {std::pair{"UnitMasked", FailureReason::unitMasked},
                                        std::pair{"NoSuchUnit", FailureReason::unitMissing},
                                        std::pair{"LoadFailed", FailureReason::refused}}) {
        device().orderFault({.peer = "systemd",
                             .member = "StartUnit",
                             .errorName = std::string("org.freedesktop.systemd1.") + error});
        manager().setEnabled(true);
        EXPECT_EQ(carriedOut(), (Failures{{RequestFailure::unitRefused, reason}})) << error;
        device().clearFaults();
    }
}

TEST_F(Requests, WithoutASupplicantNobodyIsAsked) {
    neighbourhood.unitActive = false;
    start();
    manager().scan();
    manager().connectConfigured("Home");
    EXPECT_EQ(carriedOut(), (Failures{{RequestFailure::notAttached, FailureReason::none}}));
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
    EXPECT_EQ(toldOf(std::move(before)), (Failures{{RequestFailure::unknownNetwork, FailureReason::none}}));
    EXPECT_EQ(toldOf(std::move(after)), (Failures{{RequestFailure::dropped, FailureReason::none}}));
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
