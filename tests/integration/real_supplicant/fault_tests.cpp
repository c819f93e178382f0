// Calls fail in the ways in which a bus and its peers can fail, while the Manager works with the wpa_supplicant daemon
// itself.
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "integration/real_supplicant/faulty_wire.h"
#include "support/bus_proxy/bus_proxy.h"

namespace kaz::test {
namespace {

using Fault = BusProxy::Fault;
using Step = void (FaultyWire::*)();

struct Operation {
    const char* name;
    const char* member;    // of the call that gets the fault
    const char* argument;  // a part of its text arguments
    Step prepare;
    Step request;
    std::string failure;   // how the log tells of the failed call
    Step mend = nullptr;   // what ends the effect of a failed call, if it lasts: docs/security.md
    Step after = nullptr;  // what follows in any case
    const char* loss = "Lost the connection to the system bus";
};

void PrintTo(const Operation& operation, std::ostream* out) {
    *out << operation.name;
}

enum class Effect { none, callFails, connectionLost };

struct FaultKind {
    const char* name;
    Fault fault;
    Effect effect;
    bool released = false;  // the reply comes after all
};

void PrintTo(const FaultKind& kind, std::ostream* out) {
    *out << kind.name;
}

class FaultsOnTheWire : public FaultyWire,
                        public testing::WithParamInterface<std::tuple<Operation, FaultKind>> {
  protected:
    void isLogged(const Operation& operation, const FaultKind& kind) const {
        const std::vector<std::string> refused{BusProxy::errorName, "No buffer space available"};
        // The last one is for a signal that comes before the reply to Hello.
        const std::vector<std::string> unanswered{"Connection timed out",
                                                  "org.freedesktop.DBus.Error.Timeout", "Input/output error"};
        switch (kind.effect) {
            case Effect::none:
                return;
            case Effect::callFails:
                EXPECT_TRUE(isToldOf(operation.failure, kind.fault == Fault::refuse ? refused : unanswered));
                return;
            case Effect::connectionLost:
                EXPECT_TRUE(isToldOf(operation.loss, {""}));
                EXPECT_TRUE(log.waitForText(spdlog::level::info, "Connected to the system bus"));
                return;
        }
    }
};

TEST_P(FaultsOnTheWire, EndWithoutATraceWhenTheNextCallsSucceed) {
    const auto& [operation, kind] = GetParam();
    if (operation.prepare != nullptr) {
        ASSERT_NO_FATAL_FAILURE((this->*operation.prepare)());
    }
    forgetLog();
    // A call that carries a secret may get it back.
    const bool secret = operation.request == &FaultyWire::connectWithSecret;
    proxy().order({kind.fault, operation.member, operation.argument, secret ? passphrase : "no room"});
    (this->*operation.request)();
    ASSERT_TRUE(proxy().waitForFault());
    isLogged(operation, kind);
    if (kind.released) {
        proxy().release();
    }
    if (kind.effect == Effect::callFails && operation.mend != nullptr) {
        (this->*operation.mend)();
    }
    if (operation.after != nullptr) {
        (this->*operation.after)();
    }
    ASSERT_TRUE(isAttached());
    EXPECT_TRUE(offersItsMethods());
    comesToRest();
    // A network whose addition was lost is disabled until an attempt ends.
    if (kind.effect == Effect::connectionLost && std::string_view(operation.member) != "AddNetwork") {
        EXPECT_EQ(disabledNetworks(), 0U);
    }
    ASSERT_NO_FATAL_FAILURE(worksAgain());
    saysTheSameAsANewManager();
    ASSERT_NO_FATAL_FAILURE(forgetAllButOld());
    forgetLog();
}

using F = FaultyWire;

Operation ofStart(const char* name, const char* member, const char* argument, std::string failure,
                  Step mend = nullptr, Step after = nullptr) {
    return {name, member, argument, nullptr, &F::attach, std::move(failure), mend, after};
}

Operation ofAttached(const char* name, const char* member, const char* argument, Step request) {
    return {name, member, argument, &F::startAttached, request, std::string("Call of ") + member + " at "};
}

Operation ofConnected(const char* name, const char* member, const char* argument, Step request) {
    return {name, member, argument, &F::startConnected, request, std::string("Call of ") + member + " at "};
}

const std::vector<Operation> operations{
    {"Hello", "Hello", "", nullptr, &F::attach, "Cannot connect to the system bus: ", nullptr, nullptr,
     "Cannot connect to the system bus: "},
    ofStart("OwnerOfTheSupplicant", "GetNameOwner", "wpa_supplicant1",
            "Cannot follow the owner of fi.w1.wpa_supplicant1: "),
    ofStart("MatchOfTheOwner", "AddMatch", "arg0='fi.w1.wpa_supplicant1'",
            "Cannot follow the owner of fi.w1.wpa_supplicant1: ", nullptr, &F::switchOffAndOnOnceAttached),
    ofStart("MatchOfTheUnit", "AddMatch", "/org/freedesktop/systemd1/unit/",
            "Cannot subscribe to PropertiesChanged of org.freedesktop.systemd1: ", nullptr,
            &F::switchOffAndOnOnceAttached),
    ofStart("MatchOfTheInterface", "AddMatch", "/Interfaces/0',interface='org.freedesktop.DBus.Properties'",
            "Cannot subscribe to PropertiesChanged of fi.w1.wpa_supplicant1: "),
    ofStart("MatchOfTheSelection", "AddMatch", "member='NetworkSelected'",
            "Cannot subscribe to NetworkSelected of fi.w1.wpa_supplicant1: "),
    ofStart("LoadUnit", "LoadUnit", "", "Call of LoadUnit at ", &F::switchOn),
    ofStart("Subscribe", "Subscribe", "", "Call of Subscribe at "),
    ofStart("ActiveState", "Get", "ActiveState", "Call of Get at ", &F::switchOn),
    ofStart("Interfaces", "Get", "Interfaces", "Call of Get at ", &F::switchOffAndOn),
    ofStart("EapMethods", "Get", "EapMethods", "Call of Get at ", &F::switchOffAndOn),
    ofStart("Networks", "Get", "Networks", "Call of Get at "),
    ofStart("StateOfTheInterface", "GetAll", "fi.w1.wpa_supplicant1.Interface", "Call of GetAll at "),
    ofStart("StateOfNetworkd", "GetAll", "org.freedesktop.network1", "Call of GetAll at "),
    ofAttached("Scan", "Scan", "", &F::scan),
    ofAttached("SignalPoll", "SignalPoll", "", &F::pollSignal),
    ofAttached("AddNetwork", "AddNetwork", "", &F::connectWithSecret),
    ofAttached("AddOpenNetwork", "AddNetwork", "", &F::connectWire),
    ofAttached("SelectNetwork", "SelectNetwork", "", &F::connectWire),
    ofAttached("SelectConfigured", "SelectNetwork", "", &F::connectConfigured),
    ofAttached("ListNetworks", "Get", "Networks", &F::connectConfigured),
    ofAttached("PropertiesOfANetwork", "Get", "Properties", &F::connectConfigured),
    ofConnected("RemoveTheOlder", "RemoveNetwork", "", &F::connectWire),
    ofConnected("Disconnect", "Disconnect", "", &F::disconnect),
    ofConnected("Enabled", "Set", "Enabled", &F::disconnect),
    ofConnected("SaveConfig", "SaveConfig", "", &F::disconnect),
    ofConnected("RemoveNetwork", "RemoveNetwork", "", &F::forgetWire),
    {"StopUnit", "StopUnit", "", &F::startAttached, &F::switchOff, "Call of StopUnit at ", nullptr,
     &F::switchOffAndOn},
    {"ResetFailedUnit", "ResetFailedUnit", "", &F::startSwitchedOff, &F::switchOn,
     "Call of ResetFailedUnit at ", nullptr, &F::switchOn},
    {"StartUnit", "StartUnit", "", &F::startSwitchedOff, &F::switchOn, "Call of StartUnit at ", nullptr,
     &F::switchOn},
};

const std::vector<FaultKind> faults{
    {"Refused", Fault::refuse, Effect::callFails},
    {"Swallowed", Fault::swallow, Effect::callFails},
    {"ReplyLost", Fault::loseReply, Effect::callFails},
    {"ReplyLate", Fault::holdReply, Effect::callFails, true},
    {"ReplySlow", Fault::holdReply, Effect::none, true},
    {"ReplyTwice", Fault::repeatReply, Effect::none},
    {"ReplyTruncated", Fault::truncateReply, Effect::connectionLost},
    {"CutBefore", Fault::cutBefore, Effect::connectionLost},
    {"CutAfter", Fault::cutAfter, Effect::connectionLost},
};

// One suite, so that each process starts the daemons once.
INSTANTIATE_TEST_SUITE_P(AllCalls, FaultsOnTheWire,
                         testing::Combine(testing::ValuesIn(operations), testing::ValuesIn(faults)),
                         [](const auto& cell) {
                             return std::string(std::get<0>(cell.param).name) + '_' +
                                    std::get<1>(cell.param).name;
                         });

}  // namespace
}  // namespace kaz::test
