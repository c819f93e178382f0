// The communicator's signal handlers, with any signal that a daemon may send. Each signal reaches the engine with
// exactly its content, or not at all.
#include "communicator/bus_names.h"
#include "communicator/dbus_communicator.h"
#include "doubles/stub_bus/stub_bus.h"
#include "fuzz/dbus_value.h"
#include "fuzz/kept_log.h"
#include "fuzz/record_reference.h"
#include "fuzz/require.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <kaz/dbus/message.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kaz::fuzz {
namespace {

using wifi::Communicator;
using wifi::DbusCommunicator;
using Change = Communicator::PropertyChange;
using Report = Communicator::SupplicantInterfaceProperties;
using SupplicantStatus = Communicator::SupplicantConnectionStatus;

enum class Signal {
    interfaceProperties,
    linkProperties,
    unitProperties,
    scanDone,
    eap,
    networkSelected,
    pskMismatch,
    saePasswordMismatch,
    kMaxValue = saePasswordMismatch,
};

// The reports that the engine got.
struct Told {
    std::vector<Report> reports;
    std::vector<bool> onlineStates;
    std::vector<bool> scans;
    std::vector<Communicator::LinkEvidence> evidence;
    std::size_t selections = 0;
    std::size_t serviceChanges = 0;

    std::size_t calls() const {
        return reports.size() + onlineStates.size() + scans.size() + selections + serviceChanges;
    }
};

// A communicator whose loop does not run. Without a bus, all its calls fail.
struct Device {
    Device() {
        communicator.supplicantPropertiesHandler = [this](Report report) {
            told.reports.push_back(std::move(report));
        };
        communicator.networkdOnlineHandler = [this](bool online) { told.onlineStates.push_back(online); };
        communicator.scanningDoneHandler = [this](bool success) { told.scans.push_back(success); };
        communicator.networkSelectedHandler = [this](const std::optional<std::string>& ssid) {
            require(!ssid, "there is no SSID where nobody told one");
            ++told.selections;
        };
        communicator.linkEvidenceHandler = [this](const Communicator::LinkEvidence& evidence) {
            require(evidence != Communicator::LinkEvidence{}, "evidence says something");
            told.evidence.push_back(evidence);
        };
        communicator.wifiServiceStatusChangeHandler = [this] { ++told.serviceChanges; };
    }

    // Called before each signal. An attached supplicant has no interface.
    void reset(bool attached) {
        communicator.connectOrDisconnectFromSupplicantSync(attached ? "active" : "inactive");
        told = {};
        KeptLog::instance().clear();
    }

    test::StubBus bus;
    DbusCommunicator communicator;
    Told told;
};

std::optional<SupplicantStatus> statusOf(const std::string& state) {
    static const std::map<std::string, SupplicantStatus> statuses{
        {"interface_disabled", SupplicantStatus::InterfaceDisabled},
        {"disconnected", SupplicantStatus::Disconnected},
        {"inactive", SupplicantStatus::Disconnected},
        {"scanning", SupplicantStatus::Disconnected},
        {"authenticating", SupplicantStatus::Connecting},
        {"associating", SupplicantStatus::Connecting},
        {"associated", SupplicantStatus::Connecting},
        {"4way_handshake", SupplicantStatus::Connecting},
        {"group_handshake", SupplicantStatus::Connecting},
        {"completed", SupplicantStatus::Connected},
    };
    const auto known = statuses.find(state);
    return known == statuses.end() ? std::nullopt : std::optional(known->second);
}

Change changeOf(const std::optional<dbus::OPath>& path) {
    const bool cleared = path && (path->str().empty() || path->str() == "/");
    return cleared ? Change::Cleared : Change::Unchanged;  // what is behind a path cannot be asked for here
}

Report reportOf(const dbus::SupplicantInterfaceProperties& properties) {
    Report report;
    if (properties.scanning && *properties.scanning) {
        report.scanning = true;
    }
    if (properties.bsss) {
        report.bssListChange = properties.bsss->empty() ? Change::Cleared : Change::Set;
    }
    report.currentNetworkChange = changeOf(properties.currentNetwork);
    report.currentBssChange = changeOf(properties.currentBss);
    if (properties.state) {
        report.status = statusOf(*properties.state);
    }
    report.authMode = properties.currentAuthMode.value;
    if (const auto& saePwe = properties.saePwe.value) {
        report.hashToElement = *saePwe == "1" || *saePwe == "2";
    }
    return report;
}

Communicator::LinkEvidence evidenceOf(const dbus::SupplicantInterfaceProperties& properties) {
    using Step = Communicator::LinkStep;
    static const std::map<std::string, Step> steps{
        {"interface_disabled", Step::down},
        {"disconnected", Step::down},
        {"inactive", Step::down},
        {"scanning", Step::down},
        {"authenticating", Step::authenticating},
        {"associating", Step::associating},
        {"associated", Step::associated},
        {"4way_handshake", Step::keyExchange},
        {"group_handshake", Step::keyExchange},
        {"completed", Step::up},
    };
    Communicator::LinkEvidence evidence;
    const auto step = steps.find(properties.state.value_or(""));
    if (step != steps.end()) {
        evidence.step = step->second;
    }
    evidence.disconnectReason = properties.disconnectReason;
    evidence.authenticationStatus = properties.authStatusCode.value;
    evidence.associationStatus = properties.assocStatusCode.value;
    return evidence;
}

// A signal's arguments, and the values that must be read from them.
class Arguments {
  public:
    explicit Arguments(std::vector<Value> values) : values_(std::move(values)) {}

    template <typename T>
    std::optional<T> expectFirst() const {
        std::optional<T> expected;
        if (!values_.empty()) {
            expect(values_.front(), expected);
        }
        return expected;
    }

    // The dictionary of a PropertiesChanged of this interface.
    template <typename Record>
    std::optional<Record> expectChange(const char* interface) const {
        std::optional<Record> expected;
        if (values_.size() > 1 && expectFirst<std::string>() == std::string(interface)) {
            expect(values_[1], expected);
        }
        return expected;
    }

    // Returns false if a bus would not deliver such a message.
    bool appendTo(sd_bus_message* message) const {
        return std::all_of(values_.begin(), values_.end(), [message](const Value& value) {
            return !nestsTooDeep(value) && append(message, value);
        });
    }

  private:
    std::vector<Value> values_;
};

std::string makeInterface(FuzzedDataProvider& bytes) {
    static constexpr std::array interfaces{
        wifi::bus::supplicant::interfaceInterface, wifi::bus::networkd::managerInterface,
        wifi::bus::systemd::unitInterface, wifi::bus::supplicant::bssInterface, ""};
    return bytes.PickValueInArray(interfaces);
}

Arguments makeArguments(FuzzedDataProvider& bytes) {
    std::vector<Value> values;
    if (bytes.ConsumeIntegralInRange(0, 7) != 7) {
        values.push_back(textValue(makeInterface(bytes)));
        values.push_back(makeWrapped(bytes, makeDictionary(bytes)));
    }
    while (bytes.remaining_bytes() > 0 && values.size() < 4) {
        const std::string type = makeType(bytes);
        values.push_back(makeWrapped(bytes, makeValue(bytes, type)));
    }
    return Arguments(std::move(values));
}

void checkInterfaceProperties(const Device& device, const Arguments& arguments) {
    const auto properties = arguments.expectChange<dbus::SupplicantInterfaceProperties>(
        wifi::bus::supplicant::interfaceInterface);
    require(device.told.reports.size() == (properties ? 1U : 0U),
            "what the supplicant says of its interface is reported once, what it says of others never");
    require(!properties || device.told.reports.front() == reportOf(*properties), "and as it was said");
    const auto evidence = properties ? evidenceOf(*properties) : Communicator::LinkEvidence{};
    const bool tells = evidence != Communicator::LinkEvidence{};
    require(device.told.evidence.size() == (tells ? 1U : 0U), "evidence is told when there is some");
    require(!tells || device.told.evidence.front() == evidence, "and as it was said");
}

void checkLinkProperties(const Device& device, const Arguments& arguments) {
    const auto properties =
        arguments.expectChange<dbus::NetworkdLinkProperties>(wifi::bus::networkd::managerInterface);
    const bool tells = properties && properties->onlineState;
    require(device.told.onlineStates.size() == (tells ? 1U : 0U),
            "an online state is reported when there is one");
    require(!tells || device.told.onlineStates.front() == (properties->onlineState == "online"),
            "and as it was said");
}

void checkUnitProperties(Device& device, const Arguments& arguments, bool attached) {
    const auto properties =
        arguments.expectChange<wifi::SystemdUnitProperty>(wifi::bus::systemd::unitInterface);
    const std::string state = properties ? properties->activeState.value_or("") : "";
    const bool starts = state == "active" || state == "reloading";
    const bool stops = state == "inactive" || state == "failed";
    const bool now = device.communicator.isSupplicantOn();
    require(now == (starts || (attached && !stops)), "the supplicant is there while its unit runs");
    // The attach of a supplicant without an interface is not reported, only its detach.
    require(device.told.serviceChanges == (attached && !now ? 1 : 0), "its leave is told");
}

void checkSignal(FuzzedDataProvider& bytes, Device& device) {
    const auto signal = bytes.ConsumeEnum<Signal>();
    const bool attached = bytes.ConsumeBool();
    const Arguments arguments = makeArguments(bytes);
    const dbus::MessagePtr message = device.bus.message();
    if (!arguments.appendTo(message.get())) {
        return;
    }
    test::StubBus::seal(message.get());
    dbus::MessageDecoder decoder{message.get()};
    device.reset(attached);
    const Told& told = device.told;
    switch (signal) {
        case Signal::interfaceProperties:
            device.communicator.signals().onSignalPropertiesChanged(decoder);
            checkInterfaceProperties(device, arguments);
            return require(told.calls() == told.reports.size(), "and nothing else is");
        case Signal::linkProperties:
            device.communicator.onlineState().onSignalPropertiesChanged(decoder);
            checkLinkProperties(device, arguments);
            return require(told.calls() == told.onlineStates.size(), "and nothing else is");
        case Signal::unitProperties:
            device.communicator.unit().onSignalPropertiesChanged(decoder);
            checkUnitProperties(device, arguments, attached);
            return require(told.calls() == told.serviceChanges, "and nothing else is");
        case Signal::scanDone: {
            device.communicator.signals().onSignalScanDone(decoder);
            const bool success = arguments.expectFirst<bool>().value_or(false);
            Report ended;
            ended.scanning = false;
            require(told.scans == std::vector{success}, "the end of a scan is told with its outcome");
            return require(told.reports == std::vector{ended} && told.calls() == 2, "and reported as such");
        }
        case Signal::eap:
            device.communicator.signals().onSignalEap(decoder);
            require(told.evidence.size() <= 1, "a step of EAP is told at most once");
            return require(told.calls() == 0, "and nothing else is");
        case Signal::pskMismatch:
            device.communicator.signals().onSignalPskMismatch(decoder);
            return require(told.evidence.size() == 1 && told.calls() == 0,
                           "a mismatch is told, nothing else is");
        case Signal::saePasswordMismatch:
            device.communicator.signals().onSignalSaePasswordMismatch(decoder);
            return require(told.evidence.size() == 1 && told.calls() == 0,
                           "a mismatch is told, nothing else is");
        case Signal::networkSelected:
            device.communicator.signals().onSignalNetworkSelected(decoder);
            require(told.selections == (arguments.expectFirst<dbus::OPath>() ? 1U : 0U),
                    "a selection is told when there is one");
            return require(told.calls() == told.selections, "and nothing else is");
    }
}

}  // namespace
}  // namespace kaz::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static kaz::fuzz::Device device;
    FuzzedDataProvider bytes(data, size);
    kaz::fuzz::checkSignal(bytes, device);
    return 0;
}
