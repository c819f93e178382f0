#include "unit/communicator/communicator_fixture.h"

#include "support/printed_values/printed_reports.h"

#include <algorithm>

namespace kaz::wifi {
namespace {

const std::string settleMark = "settle-";

std::string quoted(const std::string& text) {
    return '"' + text + '"';
}

// Makes it the system bus before the communicator and the daemons connect.
const sim::PrivateBus& asSystemBus(const sim::PrivateBus& bus) {
    bus.becomeSystemBus();
    return bus;
}

}  // namespace

std::string callText(const std::string& path, const std::string& member, const std::string& arguments) {
    return path + ' ' + member + '(' + arguments + ')';
}

std::string getText(const std::string& path, const std::string& interface, const std::string& property) {
    return callText(path, propertiesInterface + ".Get", quoted(interface) + ", " + quoted(property));
}

std::string setText(const std::string& path, const std::string& interface, const std::string& property,
                    const std::string& value) {
    return callText(path, propertiesInterface + ".Set",
                    quoted(interface) + ", " + quoted(property) + ", " + value);
}

std::string getAllText(const std::string& path, const std::string& interface) {
    return callText(path, propertiesInterface + ".GetAll", quoted(interface));
}

std::string interfaceCall(const std::string& member, const std::string& arguments) {
    return callText(interfacePath, interfaceInterface + '.' + member, arguments);
}

ConnectionSettings openNetwork(const std::string& ssid) {
    ConnectionSettings settings;
    settings.ssid = ssid;
    return settings;
}

CommunicatorTest::CommunicatorTest()
    : systemd(asSystemBus(bus).address(), "org.freedesktop.systemd1", calls),
      supplicant(bus.address(), "fi.w1.wpa_supplicant1", calls),
      networkd(bus.address(), "org.freedesktop.network1", calls),
      communicator(std::make_unique<DbusCommunicator>()) {
    onSystemd("LoadUnit", reply("o", unitPath));
    onSystemd("Subscribe", reply(""));
    onInterfaces(reply("v", "ao", 1, interfacePath));
    onInterfaceProperties(reply("a{sv}", 0));
    onNetworkd(reply("a{sv}", 0));
    assignHandlers();
}

CommunicatorTest::~CommunicatorTest() = default;

void CommunicatorTest::limitCalls(std::chrono::milliseconds limit) {
    communicator = std::make_unique<DbusCommunicator>(limit);
    assignHandlers();
}

void CommunicatorTest::assignHandlers() {
    communicator->wifiServiceStatusChangeHandler = [this] {
        calls.add(std::string("status changed: ") + (communicator->isSupplicantOn() ? "on" : "off"));
    };
    communicator->scanningDoneHandler = [this](bool success) {
        calls.add(std::string("scanning done: ") + (success ? "true" : "false"));
    };
    communicator->networkSelectedHandler = [this](const std::optional<std::string>& ssid) {
        calls.add("network selected: " + (ssid ? quoted(*ssid) : "unknown"));
    };
    communicator->configuredNetworksChangedHandler = [this] { calls.add("configured networks changed"); };
    communicator->networkdOnlineHandler = [this](bool online) {
        calls.add(std::string("networkd online: ") + (online ? "true" : "false"));
    };
    communicator->supplicantPropertiesHandler =
        [this](const Communicator::SupplicantInterfaceProperties& report) {
            calls.add("report: " + reportText(report));
        };
}

void CommunicatorTest::start(const std::string& activeState) {
    onUnitState(reply("v", "s", activeState));
    communicator->startEventLoop();
    onLoop([] {});
}

void CommunicatorTest::startAttached() {
    start("active");
    forget();
}

void CommunicatorTest::startDetached() {
    start("inactive");
    forget();
}

void CommunicatorTest::forget() {
    calls.take();
    log.clear();
}

void CommunicatorTest::onSystemd(const std::string& member, Answer answer) {
    systemd.onCall(systemdPath, systemdInterface, member, std::move(answer));
}

void CommunicatorTest::onUnitState(Answer answer) {
    systemd.onGet(unitPath, unitInterface, "ActiveState", std::move(answer));
}

void CommunicatorTest::onInterfaces(Answer answer) {
    supplicant.onGet(rootPath, rootInterface, "Interfaces", std::move(answer));
}

void CommunicatorTest::onInterface(const std::string& member, Answer answer) {
    supplicant.onCall(interfacePath, interfaceInterface, member, std::move(answer));
}

void CommunicatorTest::onInterfaceProperties(Answer answer) {
    supplicant.onGetAll(interfacePath, interfaceInterface, std::move(answer));
}

void CommunicatorTest::onNetworkd(Answer answer) {
    networkd.onGetAll(networkdPath, networkdInterface, std::move(answer));
}

void CommunicatorTest::onNetworkProperties(Answer answer) {
    supplicant.onGet(networkPath, networkInterface, "Properties", std::move(answer));
}

void CommunicatorTest::onBss(Answer answer) {
    supplicant.onGetAll(bssPath, bssInterface, std::move(answer));
}

void CommunicatorTest::emitUnitState(const std::string& activeState) {
    systemd.emit(unitPath, propertiesInterface, "PropertiesChanged",
                 values("sa{sv}as", unitInterface, 1, "ActiveState", "s", activeState, 0));
}

void CommunicatorTest::emitOnlineState(const std::string& onlineState) {
    networkd.emit(networkdPath, propertiesInterface, "PropertiesChanged",
                  values("sa{sv}as", networkdInterface, 1, "OnlineState", "s", onlineState, 0));
}

void CommunicatorTest::settle() {
    const std::string mark = settleMark + std::to_string(++settled_);
    emitFromInterface("EAP", "ss", mark, "");
    EXPECT_TRUE(log.waitForText(spdlog::level::debug, mark + ','));
    onLoop([] {});
}

test::CallLog::Calls CommunicatorTest::takeCalls() {
    return calls.take();
}

test::RecordingLog::Records CommunicatorTest::takeLog() {
    auto records = log.records();
    log.clear();
    std::erase_if(records,
                  [](const LogRecord& record) { return record.text.find(settleMark) != std::string::npos; });
    return records;
}

}  // namespace kaz::wifi
