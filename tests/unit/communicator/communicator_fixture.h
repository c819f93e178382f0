#pragma once

#include "communicator/dbus_communicator.h"
#include "doubles/recording_log/recording_log.h"
#include "simulator/private_bus/private_bus.h"
#include "support/scripted_peer/scripted_peer.h"
#include "support/waiting/waiting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <type_traits>

namespace kaz::wifi {

using test::Answer;
using test::debug;
using test::error;
using test::errorReply;
using test::LogRecord;
using test::noReply;
using test::reply;
using test::values;
using test::warning;
using testing::ElementsAre;
using testing::IsEmpty;

inline const std::string unitPath = "/org/freedesktop/systemd1/unit/wpa_5fsupplicant_2eservice";
inline const std::string rootPath = "/fi/w1/wpa_supplicant1";
inline const std::string interfacePath = "/fi/w1/wpa_supplicant1/Interfaces/7";
inline const std::string networkPath = interfacePath + "/Networks/0";
inline const std::string bssPath = interfacePath + "/BSSs/0";
inline const std::string systemdPath = "/org/freedesktop/systemd1";
inline const std::string networkdPath = "/org/freedesktop/network1";

inline const std::string interfaceInterface = "fi.w1.wpa_supplicant1.Interface";
inline const std::string networkInterface = "fi.w1.wpa_supplicant1.Network";
inline const std::string bssInterface = "fi.w1.wpa_supplicant1.BSS";
inline const std::string rootInterface = "fi.w1.wpa_supplicant1";
inline const std::string systemdInterface = "org.freedesktop.systemd1.Manager";
inline const std::string unitInterface = "org.freedesktop.systemd1.Unit";
inline const std::string networkdInterface = "org.freedesktop.network1.Manager";
inline const std::string propertiesInterface = "org.freedesktop.DBus.Properties";

// The log records for an undecodable reply or signal.
inline const std::string decodingFailed = "Error while decoding dbus data. Details: ";
inline const std::string noSuchType = "No such device or address";
inline const std::string noSuchValue = "Value decoding error: Unable to read from variant: " + noSuchType;

// The texts in which a peer records the calls it receives.
std::string callText(const std::string& path, const std::string& member, const std::string& arguments = "");
std::string getText(const std::string& path, const std::string& interface, const std::string& property);
std::string setText(const std::string& path, const std::string& interface, const std::string& property,
                    const std::string& value);
std::string getAllText(const std::string& path, const std::string& interface);

// A call on the supplicant's interface.
std::string interfaceCall(const std::string& member, const std::string& arguments = "");

// The calls of a start and of an attach, and those that resolve a path.
inline const std::string callLoadUnit =
    callText(systemdPath, systemdInterface + ".LoadUnit", "\"wpa_supplicant.service\"");
inline const std::string callSubscribe = callText(systemdPath, systemdInterface + ".Subscribe");
inline const std::string getUnitState = getText(unitPath, unitInterface, "ActiveState");
inline const std::string getInterfaces = getText(rootPath, rootInterface, "Interfaces");
inline const std::string getInterfaceProperties = getAllText(interfacePath, interfaceInterface);
inline const std::string getNetworkdProperties = getAllText(networkdPath, networkdInterface);
inline const std::string getNetworkProperties = getText(networkPath, networkInterface, "Properties");
inline const std::string getBssProperties = getAllText(bssPath, bssInterface);

ConnectionSettings openNetwork(const std::string& ssid);

// A communicator and three scripted daemons on a private bus: systemd with the unit, the supplicant with one interface
// without properties, and networkd without properties. `calls` records the calls of all three and of the handlers in
// order.
class CommunicatorTest : public testing::Test {
  protected:
    CommunicatorTest();
    ~CommunicatorTest() override;

    // Replaces the communicator by one with this limit of calls. Start it afterwards.
    void limitCalls(std::chrono::milliseconds limit);

    // Makes each handler record its call and arguments.
    void assignHandlers();

    // Starts the loop with the unit in this state and waits for the end of the first task.
    void start(const std::string& activeState);

    // The same, then clears the recorded calls and the log.
    void startAttached();
    void startDetached();
    void forget();

    // Runs a function on the loop thread and returns its result.
    template <typename Function>
    auto onLoop(Function function) {
        using Result = std::invoke_result_t<Function>;
        std::packaged_task<Result()> task(std::move(function));
        std::future<Result> result = task.get_future();
        communicator->pushTaskAsync_([&task] { task(); });
        if (result.wait_for(test::timeLimit) != std::future_status::ready) {
            ADD_FAILURE() << "The loop is stuck.";
            std::abort();
        }
        return result.get();
    }

    // The daemons' answers to the calls above, and to calls of members.
    void onSystemd(const std::string& member, Answer answer);
    void onUnitState(Answer answer);
    void onInterfaces(Answer answer);
    void onInterface(const std::string& member, Answer answer);
    void onInterfaceProperties(Answer answer);
    void onNetworkd(Answer answer);
    void onNetworkProperties(Answer answer);
    void onBss(Answer answer);

    // Signals of the daemons.
    void emitUnitState(const std::string& activeState);
    void emitOnlineState(const std::string& onlineState);
    template <typename... Values>
    void emitFromInterface(const std::string& member, const std::string& types, Values... given) {
        supplicant.emit(interfacePath, interfaceInterface, member, values(types, given...));
    }
    // The changed properties, each as key, type and value.
    template <typename... Values>
    void emitPropertiesChanged(int count, Values... given) {
        supplicant.emit(interfacePath, propertiesInterface, "PropertiesChanged",
                        values("sa{sv}as", interfaceInterface, count, given..., 0));
    }

    // Blocks until all signals that the supplicant has emitted are handled.
    void settle();

    // The calls since the last take, without those of settle().
    test::CallLog::Calls takeCalls();
    // The same for the log.
    test::RecordingLog::Records takeLog();

    test::RecordingLog log;
    sim::PrivateBus bus;
    test::CallLog calls;
    test::ScriptedPeer systemd;
    test::ScriptedPeer supplicant;
    test::ScriptedPeer networkd;
    std::unique_ptr<DbusCommunicator> communicator;

  private:
    int settled_ = 0;
};

}  // namespace kaz::wifi
