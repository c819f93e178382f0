#include "integration/real_supplicant/faulty_wire.h"

#include <stdlib.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "base/checked.h"
#include "base/sd_bus/handles.h"
#include "base/temporary_folder.h"
#include "communicator/dbus_communicator.h"
#include "connection_info/time_provider.h"
#include "simulator/device/simulated_device.h"
#include "simulator/private_bus/private_bus.h"
#include "support/files/files.h"
#include "support/real_supplicant/real_supplicant.h"
#include "support/waiting/waiting.h"

namespace kaz::test {
namespace {

using wifi::ConnectionSettings;
using wifi::ConnectResult;
using Status = wifi::ConnectionInfo::Status;

// No undisturbed call takes so long, also on a busy machine.
constexpr std::chrono::seconds callLimit{3};

const std::set<std::string> eapMethods{"MSCHAPV2", "PEAP", "PWD", "TTLS"};

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

ConnectionSettings openSettings(const std::string& ssid) {
    ConnectionSettings settings;
    settings.ssid = ssid;
    return settings;
}

bool isAtRest(const wifi::ManagerImpl& manager) {
    return manager.isWifiStackInitialized() && manager.connectionInfo().status == Status::disconnected;
}

// Runs a function on the loop thread and returns its result.
template <typename Function>
auto onLoop(wifi::Communicator& communicator, Function function) -> decltype(function()) {
    auto task = std::make_shared<std::packaged_task<decltype(function())()>>(std::move(function));
    auto result = task->get_future();
    communicator.pushTaskAsync_([task] { (*task)(); });
    if (result.wait_for(timeLimit) != std::future_status::ready) {
        throw std::runtime_error("the loop does not run its tasks");
    }
    return result.get();
}

}  // namespace

// What is started once: the daemons, and the bus with its proxy.
struct FaultyWire::Surroundings {
    TemporaryFolder folder;
    sim::PrivateBus bus;
    sim::SimulatedDevice device{{bus.address(), {}, 1.0, folder / "supplicant.conf", true}};
    BusProxy proxy{bus.address()};
};

// A Manager whose calls have the limit above.
struct FaultyWire::User {
    User() : User(std::make_unique<wifi::DbusCommunicator>(callLimit)) {}
    explicit User(std::unique_ptr<wifi::DbusCommunicator> made)
        : communicator(*made), manager(std::move(made), std::make_shared<wifi::TimeProviderWallClock>()) {}

    wifi::DbusCommunicator& communicator;
    wifi::ManagerImpl manager;
};

std::string FaultyWire::whyNot_;
std::unique_ptr<FaultyWire::Surroundings> FaultyWire::surroundings_;

FaultyWire::FaultyWire() = default;
FaultyWire::~FaultyWire() = default;

void FaultyWire::attach() {
    user_ = std::make_unique<User>();
}
void FaultyWire::startAttached() {
    attach();
    ASSERT_TRUE(isAttached());
}

void FaultyWire::startConnected() {
    ASSERT_NO_FATAL_FAILURE(startAttached());
    connectOpen("Wire");
}

void FaultyWire::startSwitchedOff() {
    ASSERT_NO_FATAL_FAILURE(startAttached());
    switchOffAndWait();
}

void FaultyWire::connectWithSecret() {
    ConnectionSettings settings = openSettings("Secret");
    settings.securityMode = wifi::SecurityMode::rsnPsk;
    settings.password = passphrase;
    EXPECT_EQ(manager().connect(settings), ConnectResult::ok);
}

void FaultyWire::connectWire() {
    EXPECT_EQ(manager().connect(openSettings("Wire")), ConnectResult::ok);
}
void FaultyWire::pollSignal() {
    user_->communicator.pushTaskAsync_([this] { user_->communicator.signalPollSync(); });
}

void FaultyWire::switchOffAndWait() {
    switchOff();
    ASSERT_TRUE(eventually([&] {
        return surroundings_->device.unitState() == "inactive" && !manager().isWifiStackInitialized();
    }));
}

void FaultyWire::switchOffAndOn() {
    switchOffAndWait();
    switchOn();
}

void FaultyWire::switchOffAndOnOnceAttached() {
    ASSERT_TRUE(isAttached());
    switchOffAndOn();
}

void FaultyWire::SetUpTestSuite() {
    if (whyNot_ = whyNoRealSupplicant(); !whyNot_.empty()) {
        return;
    }
    surroundings_ = std::make_unique<Surroundings>();
    surroundings_->proxy.becomeSystemBus();
    ::setenv("KAZ_CONFIG_FILE", (surroundings_->folder / "kaz.conf").c_str(), 1);
}

void FaultyWire::TearDownTestSuite() {
    surroundings_.reset();
    ::unsetenv("KAZ_CONFIG_FILE");
}

void FaultyWire::SetUp() {
    if (!whyNot_.empty()) {
        GTEST_SKIP() << whyNot_;
    }
    if (saved().networks.empty()) {
        // Each of them forgets the log, which would tell what failed before.
        ASSERT_NO_FATAL_FAILURE(startAttached());
        ASSERT_NO_FATAL_FAILURE(connectOpen("Old"));
        ASSERT_NO_FATAL_FAILURE(disconnectAndSave("Old"));
    }
    user_.reset();
    ASSERT_EQ(saved().networks, std::multiset<std::string>{"Old"});
    forgetLog();
}

void FaultyWire::TearDown() {
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

wifi::ManagerImpl& FaultyWire::manager() {
    return user_->manager;
}
BusProxy& FaultyWire::proxy() {
    return surroundings_->proxy;
}
bool FaultyWire::isAttached() {
    return eventually([&] { return manager().isWifiStackInitialized(); });
}

void FaultyWire::forgetLog() {
    EXPECT_FALSE(log.contains(passphrase));
    log.clear();
}

void FaultyWire::connectOpen(const std::string& ssid) {
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

void FaultyWire::disconnectAndSave(const std::string& ssid) {
    disconnect();
    ASSERT_TRUE(eventually([&] {
        const SavedFile file = saved();
        return file.networks.count(ssid) == 1 && file.allEnabled;
    }));
}

void FaultyWire::forget(const std::string& ssid) {
    manager().forgetNetwork(ssid);
    ASSERT_TRUE(eventually([&] { return !saved().networks.contains(ssid); })) << ssid;
}

FaultyWire::SavedFile FaultyWire::saved() {
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

unsigned FaultyWire::disabledNetworks() {
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

void FaultyWire::comesToRest() {
    const pid_t loop = onLoop(user_->communicator, [] { return ::gettid(); });
    EXPECT_TRUE(fallsAsleep(loop));
}

bool FaultyWire::isToldOf(const std::string& text, const std::vector<std::string>& causes) const {
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

bool FaultyWire::offersItsMethods() {
    return eventually([&] { return manager().eapMethods() == eapMethods; });
}

void FaultyWire::worksAgain() {
    proxy().forgetCalls();
    manager().scan();
    EXPECT_TRUE(proxy().waitForCall("Scan("));
    ASSERT_NO_FATAL_FAILURE(connectOpen("New"));
    ASSERT_NO_FATAL_FAILURE(disconnectAndSave("New"));
    EXPECT_EQ(saved().networks.count("Old"), 1U);
}

void FaultyWire::saysTheSameAsANewManager() {
    User witness;
    EXPECT_TRUE(
        eventually([&] { return Picture(witness.manager) == Picture(manager()) && isAtRest(manager()); }));
}

void FaultyWire::forgetAllButOld() {
    const auto before = saved().networks;
    for (const std::string& ssid : std::set<std::string>(before.begin(), before.end())) {
        if (ssid != "Old") {
            ASSERT_NO_FATAL_FAILURE(forget(ssid));
        }
    }
    EXPECT_EQ(saved().networks, std::multiset<std::string>{"Old"});
}

}  // namespace kaz::test
