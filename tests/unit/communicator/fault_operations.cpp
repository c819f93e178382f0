#include "unit/communicator/fault_operations.h"

#include <map>
#include <ostream>
#include <utility>

namespace kaz::wifi {
namespace {

using Peer = FaultOperation::Peer;
using Kind = FaultOperation::Kind;
using test::Append;
using test::replyWith;

constexpr int manyEntries = 20000;
constexpr const char* noDictionary = "Invalid argument";

Append container(char type, std::string contents, Append inside) {
    return [=](sd_bus_message* message) {
        checked(sd_bus_message_open_container(message, type, contents.c_str()), contents.c_str());
        inside(message);
        checked(sd_bus_message_close_container(message), contents.c_str());
    };
}

Append inVariant(std::string types, Append value) {
    return container('v', std::move(types), std::move(value));
}

// A dictionary with many unknown entries and one that is read.
Append hugeDictionary(std::string key, std::string types, Append value) {
    const Append meant = container('e', "sv", [=](sd_bus_message* message) {
        values("s", key)(message);
        inVariant(types, value)(message);
    });
    return container('a', "{sv}", [=](sd_bus_message* message) {
        for (int i = 0; i < manyEntries; ++i) {
            values("{sv}", "Unknown" + std::to_string(i), "s", "of no importance to anybody")(message);
        }
        meant(message);
    });
}

Append manyTexts(char type, std::string first, std::string each) {
    const std::string types(1, type);
    return container('a', types, [=](sd_bus_message* message) {
        values(types, first)(message);
        for (int i = 1; i < manyEntries; ++i) {
            values(types, each + std::to_string(i))(message);
        }
    });
}

std::string yesOrNo(bool value) {
    return value ? "yes" : "no";
}

std::string attached(DbusCommunicator& communicator) {
    return communicator.isSupplicantOn() ? "attached" : "detached";
}

void detach(DbusCommunicator& communicator) {
    communicator.connectOrDisconnectFromSupplicantSync("inactive");
}

// Calls after the death of a peer fail at once.
LogRecord callOfTheDeadSystemd(const std::string& member) {
    return failedCall(
        Peer::systemd, member,
        "org.freedesktop.DBus.Error.NameHasNoOwner: Name \"org.freedesktop.systemd1\" does not exist");
}

// A call with an empty reply.
FaultOperation command(std::string member, std::function<bool(DbusCommunicator&)> run) {
    FaultOperation made;
    made.name = member;
    made.path = interfacePath;
    made.interface = interfaceInterface;
    made.member = std::move(member);
    made.good = reply("");
    made.run = [run = std::move(run)](DbusCommunicator& communicator) { return yesOrNo(run(communicator)); };
    made.goodOutcome = "yes";
    made.failedOutcome = "no";
    return made;
}

// A read of a property.
FaultOperation get(std::string property, const std::string& path, const std::string& interface) {
    FaultOperation made = command(std::move(property), {});
    made.kind = Kind::get;
    made.path = path;
    made.interface = interface;
    return made;
}

// A read of all properties.
FaultOperation getAll(std::string name, const std::string& path, const std::string& interface) {
    FaultOperation made = get("", path, interface);
    made.name = std::move(name);
    made.kind = Kind::getAll;
    made.wrongNesting = noDictionary;
    return made;
}

FaultOperation withLog(FaultOperation operation, std::vector<LogRecord> alsoLogged) {
    operation.alsoLogged = std::move(alsoLogged);
    return operation;
}

FaultOperation ofSystemd(FaultOperation operation) {
    operation.peer = Peer::systemd;
    operation.path = systemdPath;
    operation.interface = systemdInterface;
    return operation;
}

// The calls of the start. They begin detached, with a unit that runs.
FaultOperation ofTheStart(FaultOperation operation) {
    operation.prepare = detach;
    operation.run = [](DbusCommunicator& communicator) {
        communicator.unit().connectSync();
        return attached(communicator);
    };
    operation.goodOutcome = "attached, report: nothing, status changed: on";
    operation.failedOutcome = "detached";
    return operation;
}

FaultOperation loadUnit() {
    FaultOperation made = ofTheStart(ofSystemd(command("LoadUnit", {})));
    made.good = reply("o", unitPath);
    made.huge = reply("o", longestPath);
    made.hugeOutcome = "detached";  // there is no such unit
    const LogRecord noSuchUnit =
        failedCall(Peer::systemd, "Get", "org.freedesktop.DBus.Error.UnknownMethod: Not in the script");
    made.alsoLogged = {noSuchUnit};  // of the path "/"
    made.alsoLoggedOnDeath = {callOfTheDeadSystemd("Subscribe"), callOfTheDeadSystemd("Get")};
    made.loggedWhenHuge = {
        warning(
            "Cannot subscribe to PropertiesChanged of org.freedesktop.systemd1: No buffer space available"),
        noSuchUnit};
    return made;
}

FaultOperation subscribe() {
    FaultOperation made = ofTheStart(ofSystemd(command("Subscribe", {})));
    made.failedOutcome = made.goodOutcome;
    made.deathOutcome = "detached";
    made.alsoLoggedOnDeath = {callOfTheDeadSystemd("Get")};
    return made;
}

FaultOperation activeState() {
    FaultOperation made = ofTheStart(get("ActiveState", unitPath, unitInterface));
    made.peer = Peer::systemd;
    made.good = reply("v", "s", "active");
    made.huge = replyWith(inVariant("s", values("s", std::string(1'000'000, 'x'))));
    made.hugeOutcome = "detached";  // not a state
    return made;
}

// The calls of attaching. They begin detached.
FaultOperation ofTheAttachment(FaultOperation operation) {
    operation.prepare = detach;
    operation.run = [](DbusCommunicator& communicator) {
        communicator.connectOrDisconnectFromSupplicantSync("active");
        return attached(communicator);
    };
    return operation;
}

FaultOperation interfaces() {
    FaultOperation made = ofTheAttachment(get("Interfaces", rootPath, rootInterface));
    made.good = reply("v", "ao", 1, interfacePath);
    made.huge = replyWith(inVariant("ao", manyTexts('o', interfacePath, "/i/")));
    made.goodOutcome = "attached, report: nothing, status changed: on";
    made.failedOutcome = "attached";
    made.alsoLogged = {error("wpa_supplicant has no configured interfaces, can't control wifi")};
    return made;
}

FaultOperation interfaceProperties() {
    FaultOperation made = ofTheAttachment(getAll("InterfaceProperties", interfacePath, interfaceInterface));
    made.good = reply("a{sv}", 1, "State", "s", "completed");
    made.huge = replyWith(hugeDictionary("State", "s", values("s", "completed")));
    made.goodOutcome = "attached, report: status=Connected, status changed: on";
    made.failedOutcome = "attached, status changed: on";
    made.alsoLoggedWhenUndecodable = {error("Couldn't decode wpa_supplicant PropertiesChanged ({})")};
    return made;
}

FaultOperation networkdProperties() {
    FaultOperation made = ofTheAttachment(getAll("NetworkdProperties", networkdPath, networkdInterface));
    made.peer = Peer::networkd;
    made.good = reply("a{sv}", 1, "OnlineState", "s", "online");
    made.huge = replyWith(hugeDictionary("OnlineState", "s", values("s", "online")));
    made.goodOutcome = "attached, report: nothing, networkd online: true, status changed: on";
    made.failedOutcome = "attached, report: nothing, status changed: on";
    return made;
}

FaultOperation startUnit(const char* member, bool start) {
    return ofSystemd(command(member, [start](DbusCommunicator& communicator) {
        return communicator.startStopSupplicantSync(start);
    }));
}

// The unit is started even if it cannot be reset.
FaultOperation resetFailedUnit() {
    FaultOperation made = startUnit("ResetFailedUnit", true);
    made.failedOutcome = "yes";
    made.deathOutcome = "no";
    made.alsoLoggedOnDeath = {callOfTheDeadSystemd("StartUnit")};
    return made;
}

FaultOperation addNetwork() {
    FaultOperation made = command("AddNetwork", [](auto& communicator) {
        return communicator.addNetworkSync(openNetwork("x"), {}) != nullptr;
    });
    made.good = reply("o", networkPath);
    made.huge = reply("o", longestPath);
    made.sensitive = true;
    return made;
}

FaultOperation signalPoll() {
    FaultOperation made = command("SignalPoll", {});
    made.good = reply("v", "a{sv}", 1, "rssi", "i", -50);
    made.huge = replyWith(inVariant("a{sv}", hugeDictionary("rssi", "i", values("i", -50))));
    made.run = [](DbusCommunicator& communicator) {
        const auto signal = communicator.signalPollSync();
        return signal ? std::to_string(*signal) : "unknown";
    };
    made.goodOutcome = "-50";
    made.failedOutcome = "unknown";
    made.wrongNesting = noDictionary;
    return made;
}

FaultOperation eapMethods() {
    FaultOperation made = get("EapMethods", rootPath, rootInterface);
    made.good = reply("v", "as", 2, "PEAP", "TTLS");
    made.huge = replyWith(inVariant("as", manyTexts('s', "PEAP", "METHOD-")));
    made.run = [](DbusCommunicator& communicator) {
        return std::to_string(communicator.eapMethodsSync().size()) + " methods";
    };
    made.goodOutcome = "2 methods";
    made.failedOutcome = "0 methods";
    made.hugeOutcome = std::to_string(manyEntries) + " methods";
    made.alsoLogged = {warning("Unable to load eapMethods")};
    return made;
}

FaultOperation networks() {
    FaultOperation made = get("Networks", interfacePath, interfaceInterface);
    made.good = reply("v", "ao", 2, "/n/1", "/n/2");
    made.huge = reply("v", "ao", 3, "/n/1", longestPath, "/n/2");
    made.run = [](DbusCommunicator& communicator) {
        return std::to_string(communicator.getAllConfiguredNetworksSync().size()) + " networks";
    };
    made.goodOutcome = "2 networks";
    made.failedOutcome = "0 networks";
    made.hugeOutcome = "3 networks";
    return made;
}

FaultOperation bssList() {
    FaultOperation made = command("BSSs", {});
    made.kind = Kind::get;
    made.good = reply("v", "ao", 0);
    made.huge = reply("v", "ao", 2, "/b/1", longestPath);
    made.run = [](DbusCommunicator& communicator) {
        communicator.refreshBssListSync();
        return "read";
    };
    made.goodOutcome = "read, report: bssList=Cleared";
    made.failedOutcome = "read";
    made.hugeOutcome = "read, report: bssList=Set";
    made.loggedWhenHuge =
        std::vector<LogRecord>(2, failedCall(Peer::supplicant, "GetAll",
                                             "org.freedesktop.DBus.Error.UnknownMethod: Not in the script"));
    return made;
}

FaultOperation networkProperties() {
    FaultOperation made = get("Properties", networkPath, networkInterface);
    made.name = "NetworkProperties";
    made.good = reply("v", "a{sv}", 1, "ssid", "s", "\"Home\"");
    made.huge = replyWith(inVariant("a{sv}", hugeDictionary("ssid", "s", values("s", "\"Home\""))));
    made.run = [](DbusCommunicator& communicator) {
        return communicator.configuredNetworks().ssidSync(networkPath).value_or("unknown");
    };
    made.goodOutcome = "Home";
    made.failedOutcome = "unknown";
    made.wrongNesting = noDictionary;
    made.alsoLogged = {warning("Couldn't get SSID for " + networkPath + ". Error {}")};
    return made;
}

FaultOperation bssProperties() {
    FaultOperation made = getAll("BssProperties", bssPath, bssInterface);
    made.good = reply("a{sv}", 1, "Signal", "n", -40);
    made.huge = replyWith(hugeDictionary("Signal", "n", values("n", -40)));
    made.run = [](DbusCommunicator& communicator) {
        const auto bss = communicator.radio().bssSync(bssPath);
        return bss ? std::to_string(bss->signal) : "unknown";
    };
    made.goodOutcome = "-40";
    made.failedOutcome = "unknown";
    return made;
}

FaultOperation setOfNetwork(const char* property, std::function<bool(DbusCommunicator&)> run) {
    FaultOperation made = command(property, std::move(run));
    made.name = std::string("Set") + property;
    made.kind = Kind::set;
    made.path = networkPath;
    made.interface = networkInterface;
    return made;
}

}  // namespace

const std::string longestPath = "/n/" + std::string(64 * 1024 - 3, 'x');

std::vector<FaultOperation> faultOperations() {
    return {
        loadUnit(),
        subscribe(),
        activeState(),
        interfaces(),
        interfaceProperties(),
        networkdProperties(),
        resetFailedUnit(),
        startUnit("StartUnit", true),
        startUnit("StopUnit", false),
        addNetwork(),
        command("SelectNetwork",
                [](auto& communicator) { return communicator.configuredNetworks().selectSync(networkPath); }),
        command("RemoveNetwork",
                [](auto& communicator) { return communicator.configuredNetworks().removeSync(networkPath); }),
        withLog(command("SaveConfig",
                        [](auto& communicator) { return communicator.saveNetworkConfigurationSync(); }),
                {error("Couldn't save wpa_supplicant config")}),
        command("Disconnect", [](auto& communicator) { return communicator.disconnectSync(); }),
        command("Reconnect", [](auto& communicator) { return communicator.reconnectSync(); }),
        command("Scan", [](auto& communicator) { return communicator.scanSync(); }),
        signalPoll(),
        eapMethods(),
        networks(),
        bssList(),
        networkProperties(),
        bssProperties(),
        setOfNetwork("Enabled",
                     [](auto& communicator) {
                         return communicator.configuredNetworks().setEnabledSync(networkPath, true);
                     }),
        setOfNetwork("Properties",
                     [](auto& communicator) {
                         return communicator.configuredNetworks().setPrioritySync(networkPath, 3);
                     }),
    };
}

LogRecord failedCall(Peer peer, const std::string& member, const std::string& error) {
    static const std::map<Peer, std::string> services{{Peer::systemd, "org.freedesktop.systemd1"},
                                                      {Peer::supplicant, "fi.w1.wpa_supplicant1"},
                                                      {Peer::networkd, "org.freedesktop.network1"}};
    return warning("Call of " + member + " at " + services.at(peer) + " failed: " + error);
}

std::string noteOf(const FaultOperation& operation) {
    const std::string start = operation.path + ' ';
    switch (operation.kind) {
        case Kind::method:
            return start + operation.interface + '.' + operation.member + '(';
        case Kind::get:
            return getText(operation.path, operation.interface, operation.member);
        case Kind::set:
            return start + propertiesInterface + ".Set(\"" + operation.interface + "\", \"" +
                   operation.member + '"';
        case Kind::getAll:
            return getAllText(operation.path, operation.interface);
    }
    return start;
}

void PrintTo(const FaultOperation& operation, std::ostream* out) {
    *out << operation.name;
}

}  // namespace kaz::wifi
