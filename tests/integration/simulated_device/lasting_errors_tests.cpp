// Errors that last because the library does not repeat the call: each row of the second table of docs/security.md, with
// each trigger.
#include "support/device_fixture/device_fixture.h"
#include "support/waiting/waiting.h"

#include <algorithm>
#include <ostream>

namespace kaz::test {
namespace {

using wifi::ConnectionSettings;
using wifi::ConnectResult;
using wifi::SecurityMode;
using Status = wifi::ConnectionInfo::Status;

class LastingErrors;
using Step = void (LastingErrors::*)();
using Fact = bool (LastingErrors::*)();

struct LastingError {
    const char* name;
    sim::Fault fault;
    Step begin;  // makes us call
    Fact spoilt;
    Step trigger;
    Fact mended;
};

void PrintTo(const LastingError& error, std::ostream* out) {
    *out << error.name;
}

// The user begins connected to Home, with two further networks in the configuration.
class LastingErrors : public DeviceFixture, public testing::WithParamInterface<LastingError> {
  public:
    void startAnew() {
        spoil();
        replaceUser();
    }

    // Restarts systemd too, because otherwise it would still send signals due to the former user's Subscribe.
    void startAnewAndLoseTheSupplicant() {
        user().leave();
        restartDevice();
        startAnew();
        ASSERT_TRUE(user().waitForStack(true));
        device().crashSupplicant();
    }

    void loseTheAccessPoint() {
        spoil();
        ASSERT_TRUE(device().removeAccessPoint(accessPoint("Home").bssid));
    }

    void switchOn() { manager().setEnabled(true); }

    void switchOffAndOn() {
        manager().setEnabled(false);
        ASSERT_TRUE(log().waitForText(spdlog::level::debug, "wpa_supplicant is stopped"));
        manager().setEnabled(true);
    }

    void restartTheSupplicant() { device().restartSupplicant(); }
    void addAnInterface() { device().addOtherInterface(); }

    void crashTheSupplicant() {
        device().crashSupplicant();
        manager().setEnabled(true);
    }

    void restartTheServices() { restartDevice(); }

    void restartTheBus() {
        crashBus();
        restartBus();
    }

    void restartTheServicesAndLoseTheSupplicant() {
        restartDevice();
        loseTheSupplicantOnceItIsFollowed();
    }

    void restartTheBusAndLoseTheSupplicant() {
        restartTheBus();
        loseTheSupplicantOnceItIsFollowed();
    }

    void reportAnotherListAndState() {
        device().addAccessPoint({.ssid = "Kiosk", .signal = accessPoint("Cafe").signal});
        device().deauthenticate(3);
    }

    void connectToAnother() { connect(settings("Neighbour", SecurityMode::rsnPsk, "next door")); }
    void forgetAnother() { manager().forgetNetwork("Old"); }
    void scan() { manager().scan(); }

    void goOfflineAndOnline() {
        device().setOnlineState("offline");
        device().setOnlineState("online");
    }

    bool isInitialised() { return manager().isWifiStackInitialized(); }
    bool isNotInitialised() { return !isInitialised(); }
    bool knowsNothing() { return isInitialised() && manager().networks().empty() && !isOnItsWay(); }
    bool knowsListAndStatus() { return user().network("Kiosk") && isConnected(); }
    bool isConnected() { return manager().connectionInfo().status == Status::connected; }
    bool waitsForAnAddress() { return manager().connectionInfo().status == Status::connectingIP; }
    bool knowsCafe() {
        const auto cafe = user().network("Cafe");
        return cafe && cafe->configured;
    }
    bool doesNotKnowCafe() { return user().network("Cafe") && !knowsCafe(); }

    bool hasEapMethods() { return connectToTheOffice() == ConnectResult::ok; }
    bool hasNoEapMethods() {
        return manager().eapMethods().empty() && connectToTheOffice() == ConnectResult::eapMethodUnsupported;
    }

  protected:
    void SetUp() override {
        start();
        connect(cafe());
        connect(settings("Old", SecurityMode::wep, "12345"));
        connect(home());
        ASSERT_TRUE(user().waitForNetwork("Cafe"));
        ASSERT_TRUE(waitForSaved("priority=2"));
    }

    // Blocks until a task has run, and after it an idle pass, which publishes and then saves.
    void settle() {
        forgetLog();
        manager().forgetNetwork("Nobody");
        const auto tellsOfSaving = [](const LogRecord& record) {
            return record.text.starts_with("Saved new wpa_supplicant config") ||
                   record.text.starts_with("Couldn't save wpa_supplicant config") ||
                   record.text.starts_with("Can't save configuration");
        };
        ASSERT_TRUE(log().waitFor(
            [&](const auto& records) { return std::any_of(records.begin(), records.end(), tellsOfSaving); }));
    }

    sim::FaultId ordered = 0;

  private:
    void spoil() { ordered = device().orderFault(GetParam().fault); }

    bool isOnItsWay() { return manager().connectionInfo().status != Status::disconnected; }

    void loseTheSupplicantOnceItIsFollowed() {
        ASSERT_TRUE(device().waitForCalls(
            [](const auto& calls) {
                return std::any_of(calls.begin(), calls.end(), [](const sim::Call& call) {
                    return call.arguments.find("ActiveState") != std::string::npos;
                });
            },
            timeLimit));
        device().crashSupplicant();
    }

    ConnectResult connectToTheOffice() {
        ConnectionSettings office = settings("Office", SecurityMode::enterprise, "wonderland");
        office.identity = "alice";
        office.eapMethod = "PEAP";
        return manager().connect(office);
    }
};

TEST_P(LastingErrors, ALastingErrorEndsWithWhatTheTableNames) {
    const LastingError& error = GetParam();
    forgetLog();
    (this->*error.begin)();
    const bool empty = error.fault.kind == sim::FaultKind::emptyValue;
    ASSERT_TRUE(empty ? log().waitForText(spdlog::level::err, "wpa_supplicant has no configured interfaces")
                      : log().waitForText(spdlog::level::warn, "Call of " + error.fault.member + " at "));
    device().clearFaults();
    EXPECT_GE(device().timesFired(ordered), 1U);
    for (int i = 0; i < 3; ++i) {
        ASSERT_NO_FATAL_FAILURE(settle());
        EXPECT_TRUE((this->*error.spoilt)());
    }

    (this->*error.trigger)();
    EXPECT_TRUE(user().waitUntil([&] { return (this->*error.mended)(); }));
}

sim::Fault faultOf(const char* peer, const char* member, const char* argument = "",
                   sim::FaultKind kind = sim::FaultKind::error) {
    return {.peer = peer, .member = member, .argument = argument, .kind = kind};
}

using E = LastingErrors;

const sim::Fault loadUnit = faultOf("systemd", "LoadUnit");
const sim::Fault activeState = faultOf("systemd", "Get", "ActiveState");
const sim::Fault subscribe = faultOf("systemd", "Subscribe");
const sim::Fault interfaces = faultOf("supplicant", "Get", "Interfaces");
const sim::Fault noInterfaces = faultOf("supplicant", "Get", "Interfaces", sim::FaultKind::emptyValue);
const sim::Fault properties = faultOf("supplicant", "GetAll", "fi.w1.wpa_supplicant1.Interface");
const sim::Fault eapMethods = faultOf("supplicant", "Get", "EapMethods");
const sim::Fault networks = faultOf("supplicant", "Get", "Networks");
const sim::Fault bss = faultOf("supplicant", "GetAll", "fi.w1.wpa_supplicant1.BSS");
const sim::Fault networkd = faultOf("networkd", "GetAll");

const std::vector<LastingError> lastingErrors{
    {"LoadUnitUntilSwitchedOn", loadUnit, &E::startAnew, &E::isNotInitialised, &E::switchOn,
     &E::isInitialised},
    {"LoadUnitUntilSystemdComes", loadUnit, &E::startAnew, &E::isNotInitialised, &E::restartTheServices,
     &E::isInitialised},
    {"LoadUnitUntilTheBusComes", loadUnit, &E::startAnew, &E::isNotInitialised, &E::restartTheBus,
     &E::isInitialised},
    {"ActiveStateUntilSwitchedOn", activeState, &E::startAnew, &E::isNotInitialised, &E::switchOn,
     &E::isInitialised},
    {"ActiveStateUntilSystemdComes", activeState, &E::startAnew, &E::isNotInitialised, &E::restartTheServices,
     &E::isInitialised},
    {"ActiveStateUntilTheBusComes", activeState, &E::startAnew, &E::isNotInitialised, &E::restartTheBus,
     &E::isInitialised},
    {"ActiveStateUntilTheUnitChanges", activeState, &E::startAnew, &E::isNotInitialised,
     &E::restartTheSupplicant, &E::isInitialised},
    {"SubscribeUntilSystemdComes", subscribe, &E::startAnewAndLoseTheSupplicant, &E::isInitialised,
     &E::restartTheServicesAndLoseTheSupplicant, &E::isNotInitialised},
    {"SubscribeUntilTheBusComes", subscribe, &E::startAnewAndLoseTheSupplicant, &E::isInitialised,
     &E::restartTheBusAndLoseTheSupplicant, &E::isNotInitialised},
    {"InterfacesUntilTheSupplicantIsSwitched", interfaces, &E::startAnew, &E::isNotInitialised,
     &E::switchOffAndOn, &E::isInitialised},
    {"InterfacesUntilTheSupplicantCrashes", interfaces, &E::startAnew, &E::isNotInitialised,
     &E::crashTheSupplicant, &E::isInitialised},
    {"InterfacesUntilTheSupplicantIsRestarted", interfaces, &E::startAnew, &E::isNotInitialised,
     &E::restartTheSupplicant, &E::isInitialised},
    {"InterfacesUntilOneIsAdded", interfaces, &E::startAnew, &E::isNotInitialised, &E::addAnInterface,
     &E::isInitialised},
    {"InterfacesUntilTheBusIsLost", interfaces, &E::startAnew, &E::isNotInitialised, &E::restartTheBus,
     &E::isInitialised},
    {"NoInterfacesUntilTheSupplicantIsSwitched", noInterfaces, &E::startAnew, &E::isNotInitialised,
     &E::switchOffAndOn, &E::isInitialised},
    {"NoInterfacesUntilTheSupplicantIsRestarted", noInterfaces, &E::startAnew, &E::isNotInitialised,
     &E::restartTheSupplicant, &E::isInitialised},
    {"NoInterfacesUntilOneIsAdded", noInterfaces, &E::startAnew, &E::isNotInitialised, &E::addAnInterface,
     &E::isInitialised},
    {"NoInterfacesUntilTheBusIsLost", noInterfaces, &E::startAnew, &E::isNotInitialised, &E::restartTheBus,
     &E::isInitialised},
    {"PropertiesUntilTheyChange", properties, &E::startAnew, &E::knowsNothing, &E::reportAnotherListAndState,
     &E::knowsListAndStatus},
    {"EapMethodsUntilTheSupplicantIsSwitched", eapMethods, &E::startAnew, &E::hasNoEapMethods,
     &E::switchOffAndOn, &E::hasEapMethods},
    {"EapMethodsUntilTheSupplicantCrashes", eapMethods, &E::startAnew, &E::hasNoEapMethods,
     &E::crashTheSupplicant, &E::hasEapMethods},
    {"EapMethodsUntilTheSupplicantIsRestarted", eapMethods, &E::startAnew, &E::hasNoEapMethods,
     &E::restartTheSupplicant, &E::hasEapMethods},
    {"EapMethodsUntilTheBusIsLost", eapMethods, &E::startAnew, &E::hasNoEapMethods, &E::restartTheBus,
     &E::hasEapMethods},
    {"NetworksUntilAConnect", networks, &E::startAnew, &E::doesNotKnowCafe, &E::connectToAnother,
     &E::knowsCafe},
    {"NetworksUntilAForget", networks, &E::startAnew, &E::doesNotKnowCafe, &E::forgetAnother, &E::knowsCafe},
    // A report that came with the error may have been the next one already.
    {"AccessPointUntilTheNextReport", bss, &E::loseTheAccessPoint, &E::isInitialised, &E::scan,
     &E::isConnected},
    {"NetworkdUntilAChange", networkd, &E::startAnew, &E::waitsForAnAddress, &E::goOfflineAndOnline,
     &E::isConnected},
    {"NetworkdUntilItComesAnew", networkd, &E::startAnew, &E::waitsForAnAddress, &E::restartTheServices,
     &E::isConnected},
};

INSTANTIATE_TEST_SUITE_P(OfTheTable, LastingErrors, testing::ValuesIn(lastingErrors),
                         [](const auto& tested) { return tested.param.name; });

}  // namespace
}  // namespace kaz::test
