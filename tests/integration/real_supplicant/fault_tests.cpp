// Calls fail in the ways in which a bus and its peers can fail, while the Manager works with the wpa_supplicant daemon
// itself. As in the other tests, the daemon has a wire, and systemd and networkd are simulated.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <future>
#include <iostream>
#include <memory>
#include <ostream>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "base/checked.h"
#include "base/sd_bus/handles.h"
#include "base/temporary_folder.h"
#include "communicator/dbus_communicator.h"
#include "connection_info/time_provider.h"
#include "doubles/recording_log/recording_log.h"
#include "manager/manager_impl.h"
#include "simulator/device/simulated_device.h"
#include "simulator/private_bus/private_bus.h"
#include "support/bus_proxy/bus_proxy.h"
#include "support/files/files.h"
#include "support/real_supplicant/real_supplicant.h"
#include "support/waiting/waiting.h"

namespace kaz::test {
namespace {

using wifi::ConnectionSettings;
using wifi::ConnectResult;
using Fault = BusProxy::Fault;
using Status = wifi::ConnectionInfo::Status;

// No undisturbed call takes so long, also on a busy machine.
constexpr std::chrono::seconds callLimit{2};

constexpr const char* passphrase = "a secret that nobody sees";
const std::set<std::string> eapMethods{"MSCHAPV2", "PEAP", "PWD", "TTLS"};

// What is started once: the daemons, and the bus with its proxy.
struct Surroundings {
    TemporaryFolder folder;
    sim::PrivateBus bus;
    sim::SimulatedDevice device{{bus.address(), {}, 1.0, folder / "supplicant.conf", true}};
    BusProxy proxy{bus.address()};
};

// A Manager whose calls have the limit above.
struct User {
    User() : User(std::make_unique<wifi::DbusCommunicator>(callLimit)) {}
    explicit User(std::unique_ptr<wifi::DbusCommunicator> made)
        : communicator(*made), manager(std::move(made), std::make_shared<wifi::TimeProviderWallClock>()) {}

    wifi::DbusCommunicator& communicator;
    wifi::ManagerImpl manager;
};

// What a Manager says.
struct Picture {
    explicit Picture(const wifi::ManagerImpl& manager)
        : attached(manager.isWifiStackInitialized()),
          enabled(manager.isEnabled()),
          scanning(manager.isScanning()),
          methods(manager.eapMethods()),
          networks(manager.networks()),
          status(manager.connectionInfo().status),
          ssid(manager.connectionInfo().ssid) {}

    bool operator==(const Picture&) const = default;

    bool attached;
    bool enabled;
    bool scanning;
    std::set<std::string> methods;
    std::vector<wifi::WifiNetwork> networks;
    Status status;
    std::string ssid;
};

class FaultsOnTheWire;
using Step = void (FaultsOnTheWire::*)();

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
    Fault fault;
    Effect effect;
    bool released = false;  // the reply comes after all
};

void PrintTo(const FaultKind& kind, std::ostream* out) {
    *out << "fault " << static_cast<int>(kind.fault);
}

class FaultsOnTheWire : public testing::TestWithParam<std::tuple<Operation, FaultKind>> {
  public:
    void attach() { user_ = std::make_unique<User>(); }
    void startAttached() {
        attach();
        ASSERT_TRUE(isAttached());
    }
    void startConnected() {
        startAttached();
        connectOpen("Wire");
    }
    void startSwitchedOff() {
        startAttached();
        switchOffAndWait();
    }

    void scan() { manager().scan(); }
    void connectWithSecret() {
        ConnectionSettings settings = openSettings("Secret");
        settings.securityMode = wifi::SecurityMode::rsnPsk;
        settings.password = passphrase;
        EXPECT_EQ(manager().connect(settings), ConnectResult::ok);
    }
    void connectWire() { EXPECT_EQ(manager().connect(openSettings("Wire")), ConnectResult::ok); }
    void connectConfigured() { manager().connectConfigured("Old"); }
    void disconnect() { manager().disconnect(); }
    void forgetWire() { manager().forgetNetwork("Wire"); }
    void pollSignal() {
        user_->communicator.pushTaskAsync_([this] { user_->communicator.signalPollSync(); });
    }
    void switchOff() { manager().setEnabled(false); }
    void switchOn() { manager().setEnabled(true); }
    void switchOffAndWait() {
        switchOff();
        ASSERT_TRUE(eventually([&] {
            return surroundings_->device.unitState() == "inactive" && !manager().isWifiStackInitialized();
        }));
    }
    void switchOffAndOn() {
        switchOffAndWait();
        switchOn();
    }
    void switchOffAndOnOnceAttached() {
        ASSERT_TRUE(isAttached());
        switchOffAndOn();
    }

  protected:
    static void SetUpTestSuite() {
        if (whyNot_ = whyNoRealSupplicant(); !whyNot_.empty()) {
            return;
        }
        surroundings_ = std::make_unique<Surroundings>();
        surroundings_->proxy.becomeSystemBus();
        ::setenv("KAZ_CONFIG_FILE", (surroundings_->folder / "kaz.conf").c_str(), 1);
    }
    static void TearDownTestSuite() {
        surroundings_.reset();
        ::unsetenv("KAZ_CONFIG_FILE");
    }

    void SetUp() override {
        if (!whyNot_.empty()) {
            GTEST_SKIP() << whyNot_;
        }
        if (saved().networks.empty()) {
            startAttached();
            connectOpen("Old");
            disconnectAndSave("Old");
        }
        user_.reset();
        ASSERT_EQ(saved().networks, std::multiset<std::string>{"Old"});
        forgetLog();
    }

    void TearDown() override {
        if (HasFailure()) {
            for (const LogRecord& record : log.records()) {
                std::cout << record << '\n';
            }
            // The next test begins with new daemons.
            user_.reset();
            TearDownTestSuite();
            SetUpTestSuite();
        }
    }

    wifi::ManagerImpl& manager() { return user_->manager; }
    static BusProxy& proxy() { return surroundings_->proxy; }
    bool isAttached() {
        return eventually([&] { return manager().isWifiStackInitialized(); });
    }

    static ConnectionSettings openSettings(const std::string& ssid) {
        ConnectionSettings settings;
        settings.ssid = ssid;
        return settings;
    }

    // A passphrase must be in no record that is forgotten.
    void forgetLog() {
        EXPECT_FALSE(log.contains(passphrase));
        log.clear();
    }

    void connectOpen(const std::string& ssid) {
        forgetLog();
        ASSERT_EQ(manager().connect(openSettings(ssid)), ConnectResult::ok);
        // The former network may be reported as completed until the new one is selected.
        const auto isCompleted = [&](const RecordingLog::Records& records) {
            const auto selected = std::find_if(records.begin(), records.end(), [&](const LogRecord& record) {
                return record.text == "NetworkSelected is ssid=\"" + ssid + '"';
            });
            return std::any_of(selected, records.end(), [](const LogRecord& record) {
                return record.text == "PropertiesChanged: State=completed";
            });
        };
        ASSERT_TRUE(log.waitFor(isCompleted));
    }
    void disconnectAndSave(const std::string& ssid) {
        disconnect();
        ASSERT_TRUE(eventually([&] {
            const SavedFile file = saved();
            return file.networks.count(ssid) == 1 && file.allEnabled;
        }));
    }
    void forget(const std::string& ssid) {
        manager().forgetNetwork(ssid);
        ASSERT_TRUE(eventually([&] { return !saved().networks.contains(ssid); })) << ssid;
    }

    // The supplicant's configuration file. Every block of it is whole.
    struct SavedFile {
        std::multiset<std::string> networks;  // their SSIDs
        bool allEnabled = true;
    };
    static SavedFile saved() {
        const std::string ssidKey = "\tssid=\"";
        std::istringstream lines(readFile(surroundings_->folder / "supplicant.conf"));
        SavedFile file;
        bool inBlock = false;
        for (std::string line; std::getline(lines, line);) {
            EXPECT_EQ(inBlock, line == "}" || line.starts_with('\t')) << line;
            inBlock = line == "network={" || (inBlock && line != "}");
            file.allEnabled = file.allEnabled && line != "\tdisabled=1";
            if (line.starts_with(ssidKey)) {
                file.networks.insert(line.substr(ssidKey.size(), line.size() - ssidKey.size() - 1));
            }
        }
        EXPECT_FALSE(inBlock);
        return file;
    }

    // How many networks the supplicant does not use.
    static unsigned disabledNetworks() {
        const dbus::BusPtr bus = dbus::connectTo(surroundings_->bus.address());
        const auto get = [&](const std::string& path, const char* interface, const char* property,
                             const char* type) {
            dbus::MessagePtr reply;
            checked(sd_bus_get_property(bus.get(), "fi.w1.wpa_supplicant1", path.c_str(), interface, property,
                                        nullptr, dbus::out(reply), type),
                    property);
            return reply;
        };
        const char* const interface = "/fi/w1/wpa_supplicant1/Interfaces/0";
        const dbus::MessagePtr list = get(interface, "fi.w1.wpa_supplicant1.Interface", "Networks", "ao");
        checked(sd_bus_message_enter_container(list.get(), 'a', "o"), "enter");
        unsigned disabled = 0;
        for (const char* path = nullptr; sd_bus_message_read_basic(list.get(), 'o', &path) > 0;) {
            const dbus::MessagePtr reply = get(path, "fi.w1.wpa_supplicant1.Network", "Enabled", "b");
            int enabled = 0;
            checked(sd_bus_message_read_basic(reply.get(), 'b', &enabled), "read");
            disabled += enabled == 0 ? 1U : 0U;
        }
        return disabled;
    }

    // Runs a function on the loop thread and returns its result.
    template <typename Function>
    auto onLoop(Function function) -> decltype(function()) {
        auto task = std::make_shared<std::packaged_task<decltype(function())()>>(std::move(function));
        auto result = task->get_future();
        user_->communicator.pushTaskAsync_([task] { (*task)(); });
        if (result.wait_for(timeLimit) != std::future_status::ready) {
            throw std::runtime_error("the loop does not run its tasks");
        }
        return result.get();
    }

    // The loop neither spins nor waits for a reply for ever.
    void comesToRest() {
        const pid_t loop = onLoop([] { return ::gettid(); });
        EXPECT_TRUE(fallsAsleep(loop));
    }

    // A warning or an error, with one of these causes.
    bool isToldOf(const std::string& text, const std::vector<std::string>& causes) const {
        const auto has = [](const LogRecord& record, const std::string& part) {
            return record.text.find(part) != std::string::npos;
        };
        return log.waitFor([&](const auto& records) {
            return std::any_of(records.begin(), records.end(), [&](const LogRecord& record) {
                return record.level >= spdlog::level::warn && has(record, text) &&
                       std::any_of(causes.begin(), causes.end(),
                                   [&](const std::string& cause) { return has(record, cause); });
            });
        });
    }

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

    void worksAgain() {
        proxy().forgetCalls();
        manager().scan();
        EXPECT_TRUE(proxy().waitForCall("Scan("));
        ASSERT_NO_FATAL_FAILURE(connectOpen("New"));
        ASSERT_NO_FATAL_FAILURE(disconnectAndSave("New"));
        EXPECT_EQ(saved().networks.count("Old"), 1U);
    }

    void saysTheSameAsANewManager() {
        User witness;
        EXPECT_TRUE(eventually(
            [&] { return Picture(witness.manager) == Picture(manager()) && isAtRest(manager()); }));
    }
    static bool isAtRest(const wifi::ManagerImpl& manager) {
        return manager.isWifiStackInitialized() && manager.connectionInfo().status == Status::disconnected;
    }

    void forgetAllButOld() {
        const auto before = saved().networks;
        for (const std::string& ssid : std::set<std::string>(before.begin(), before.end())) {
            if (ssid != "Old") {
                ASSERT_NO_FATAL_FAILURE(forget(ssid));
            }
        }
        EXPECT_EQ(saved().networks, std::multiset<std::string>{"Old"});
    }

    RecordingLog log;
    std::unique_ptr<User> user_;

    static std::string whyNot_;
    static std::unique_ptr<Surroundings> surroundings_;
};

std::string FaultsOnTheWire::whyNot_;
std::unique_ptr<Surroundings> FaultsOnTheWire::surroundings_;

TEST_P(FaultsOnTheWire, EndWithoutATraceWhenTheNextCallsSucceed) {
    const auto& [operation, kind] = GetParam();
    if (operation.prepare != nullptr) {
        ASSERT_NO_FATAL_FAILURE((this->*operation.prepare)());
    }
    forgetLog();
    // A call that carries a secret may get it back.
    const bool secret = operation.request == &FaultsOnTheWire::connectWithSecret;
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
    EXPECT_TRUE(eventually([&] { return manager().eapMethods() == eapMethods; }));
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

using F = FaultsOnTheWire;

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

auto eachCallWith(const FaultKind& kind) {
    return testing::Combine(testing::ValuesIn(operations), testing::Values(kind));
}

const auto nameOfCall = [](const auto& cell) { return std::string(std::get<0>(cell.param).name); };

// One process for each fault, because most of them wait for time-outs.
INSTANTIATE_TEST_SUITE_P(Refused, FaultsOnTheWire, eachCallWith({Fault::refuse, Effect::callFails}),
                         nameOfCall);
INSTANTIATE_TEST_SUITE_P(Swallowed, FaultsOnTheWire, eachCallWith({Fault::swallow, Effect::callFails}),
                         nameOfCall);
INSTANTIATE_TEST_SUITE_P(ReplyLost, FaultsOnTheWire, eachCallWith({Fault::loseReply, Effect::callFails}),
                         nameOfCall);
INSTANTIATE_TEST_SUITE_P(ReplyLate, FaultsOnTheWire,
                         eachCallWith({Fault::holdReply, Effect::callFails, true}), nameOfCall);
INSTANTIATE_TEST_SUITE_P(ReplySlow, FaultsOnTheWire, eachCallWith({Fault::holdReply, Effect::none, true}),
                         nameOfCall);
INSTANTIATE_TEST_SUITE_P(ReplyTwice, FaultsOnTheWire, eachCallWith({Fault::repeatReply, Effect::none}),
                         nameOfCall);
INSTANTIATE_TEST_SUITE_P(ReplyTruncated, FaultsOnTheWire,
                         eachCallWith({Fault::truncateReply, Effect::connectionLost}), nameOfCall);
INSTANTIATE_TEST_SUITE_P(CutBefore, FaultsOnTheWire, eachCallWith({Fault::cutBefore, Effect::connectionLost}),
                         nameOfCall);
INSTANTIATE_TEST_SUITE_P(CutAfter, FaultsOnTheWire, eachCallWith({Fault::cutAfter, Effect::connectionLost}),
                         nameOfCall);

}  // namespace
}  // namespace kaz::test
