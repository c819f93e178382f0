#include "simulator/bus/faults.h"

#include "unit/simulator/device_fixture.h"

#include <chrono>
#include <cstdint>

namespace kaz::sim::test {
namespace {

Fault faultOf(const std::string& member, FaultKind kind) {
    return {.peer = "supplicant", .member = member, .kind = kind};
}

Call callOf(const std::string& member, const std::string& arguments = "[]") {
    return {"supplicant", "/path", "interface", member, arguments};
}

TEST(Faults, ApplyOnlyToMatchingCalls) {
    Faults faults;
    Fault fault = faultOf("Get", FaultKind::error);
    fault.path = "/path";
    fault.argument = "State";
    const FaultId id = faults.order(fault);
    EXPECT_FALSE(faults.strike({"systemd", "/path", "i", "Get", "[\"State\"]"}));
    EXPECT_FALSE(faults.strike({"supplicant", "/other", "i", "Get", "[\"State\"]"}));
    EXPECT_FALSE(faults.strike({"supplicant", "/path", "i", "Set", "[\"State\"]"}));
    EXPECT_FALSE(faults.strike({"supplicant", "/path", "i", "Get", "[\"Status\"]"}));
    EXPECT_EQ(faults.timesFired(id), 0U);
    EXPECT_TRUE(faults.strike({"supplicant", "/path", "i", "Get", "[\"i\", \"State\"]"}));
    EXPECT_EQ(faults.timesFired(id), 1U);
}

TEST(Faults, ApplyOnlyToTheNthCallIfOneIsGiven) {
    Faults faults;
    Fault second = faultOf("Scan", FaultKind::error);
    second.nth = 2;
    const FaultId id = faults.order(second);
    EXPECT_FALSE(faults.strike(callOf("Scan")));
    EXPECT_TRUE(faults.strike(callOf("Scan")));
    EXPECT_FALSE(faults.strike(callOf("Scan")));
    EXPECT_EQ(faults.timesFired(id), 1U);
}

TEST(Faults, NoLongerApplyWhenCleared) {
    Faults faults;
    const FaultId id = faults.order(faultOf("Scan", FaultKind::error));
    EXPECT_TRUE(faults.strike(callOf("Scan")));
    faults.clear();
    EXPECT_FALSE(faults.strike(callOf("Scan")));
    EXPECT_EQ(faults.timesFired(id), 1U);
    EXPECT_EQ(faults.timesFired(id + 1), 0U);
}

class FaultyDevice : public DeviceTest {
  protected:
    // The reply to the call under the fault: the error's name, or the signature.
    std::string answerTo(const Message& call, std::chrono::microseconds limit = timeLimit) {
        try {
            const Message reply = client_->replyTo(call, limit);
            const char* contents = nullptr;
            char type = 0;
            checked(sd_bus_message_peek_type(reply.get(), &type, &contents), "peek");
            return type == 'v' ? std::string("v") + contents : sd_bus_message_get_signature(reply.get(), 1);
        } catch (const CallFailed& failed) {
            return failed.name();
        }
    }

    std::string answerToGetAll() {
        return answerTo(client_->newCall(supplicantInterface.properties(), "GetAll", "s",
                                         supplicantInterface.interface.c_str()));
    }
    std::string answerToGet(const char* property) {
        return answerTo(client_->newCall(supplicantInterface.properties(), "Get", "ss",
                                         supplicantInterface.interface.c_str(), property));
    }
};

TEST_F(FaultyDevice, RepliesAsOrderedAndCounts) {
    startInRangeOf({cafe});
    struct Row {
        FaultKind kind;
        const char* answer;
    };
    const Row rows[] = {
        {FaultKind::error, "com.example.Broken"},
        {FaultKind::wrongType, "a{sv}"},
        {FaultKind::wrongNesting, "a(ss)"},
        {FaultKind::emptyValue, "a{sv}"},
        {FaultKind::noBody, ""},
        {FaultKind::vanished, "org.freedesktop.DBus.Error.UnknownMethod"},
    };
    for (const Row& row : rows) {
        Fault fault = faultOf("GetAll", row.kind);
        fault.errorName = "com.example.Broken";
        const FaultId id = device_->orderFault(fault);
        EXPECT_EQ(answerToGetAll(), row.answer);
        EXPECT_EQ(device_->timesFired(id), 1U);
        device_->clearFaults();
    }
    EXPECT_EQ(answerToGetAll(), "a{sv}");
}

TEST_F(FaultyDevice, SpoilsOneNamedPropertyOnly) {
    startInRangeOf({cafe});
    struct Row {
        FaultKind kind;
        const char* property;
        const char* answer;
    };
    const Row rows[] = {
        {FaultKind::wrongType, "Networks", "vu"},    {FaultKind::wrongNesting, "Networks", "va(ss)"},
        {FaultKind::emptyValue, "Networks", "vao"},  {FaultKind::emptyValue, "State", "vs"},
        {FaultKind::emptyValue, "Something", "vas"},
    };
    for (const Row& row : rows) {
        Fault fault = faultOf("Get", row.kind);
        fault.argument = row.property;
        device_->orderFault(fault);
        EXPECT_EQ(answerToGet(row.property), row.answer);
        EXPECT_EQ(answerToGet("Scanning"), "vb");
        device_->clearFaults();
    }
}

TEST_F(FaultyDevice, DropsACallWithoutExecutingIt) {
    startInRangeOf({cafe});
    const FaultId id = device_->orderFault(faultOf("RemoveAllNetworks", FaultKind::noReply));
    addNetwork(openNetwork("Cafe"));
    EXPECT_EQ(
        answerTo(client_->newCall(supplicantInterface, "RemoveAllNetworks"), std::chrono::milliseconds(200)),
        "org.freedesktop.DBus.Error.Timeout");
    EXPECT_EQ(device_->timesFired(id), 1U);
    EXPECT_EQ(get("Networks").size(), 1U);
}

TEST_F(FaultyDevice, ExecutesADelayedCallOnceAfterTheDelay) {
    startInRangeOf({cafe});
    Fault fault = faultOf("AddNetwork", FaultKind::delay);
    fault.delay = std::chrono::milliseconds(50);
    device_->orderFault(fault);
    const auto before = std::chrono::steady_clock::now();
    const std::string path = addNetwork(openNetwork("Cafe"));
    EXPECT_GE(std::chrono::steady_clock::now() - before, fault.delay);
    EXPECT_EQ(client_->get(networkAt(path), "Properties").at("ssid"), "\"Cafe\"");
    EXPECT_EQ(countCalls("AddNetwork"), 1U);
    EXPECT_THROW(addNetwork(pskNetwork("Home", "short")), CallFailed);
}

TEST_F(FaultyDevice, ForgetsDelayedCallsWhenTheSupplicantCrashes) {
    startInRangeOf({cafe});
    Fault fault = faultOf("SaveConfig", FaultKind::delay);
    fault.delay = std::chrono::hours(1);
    device_->orderFault(fault);
    const Message call = client_->newCall(supplicantInterface, "SaveConfig");
    checked(sd_bus_send(client_->bus(), call.get(), nullptr), "send");
    ASSERT_TRUE(device_->waitForCalls(
        [](const auto& calls) { return !calls.empty() && calls.back().member == "SaveConfig"; }, timeLimit));
    device_->crashSupplicant();
    EXPECT_EQ(device_->unitState(), "failed");
}

TEST_F(FaultyDevice, CrashesInsteadOfReplying) {
    startInRangeOf({cafe});
    device_->orderFault(faultOf("Scan", FaultKind::crash));
    EXPECT_EQ(errorOf(supplicantInterface, "Scan", "a{sv}", 1, "Type", "s", "passive"),
              "org.freedesktop.DBus.Error.NoReply");
    EXPECT_EQ(device_->unitState(), "failed");
    EXPECT_EQ(client_->ownerOf("fi.w1.wpa_supplicant1"), "");
}

TEST_F(FaultyDevice, LogsCallsWithTheirArguments) {
    startInRangeOf({cafe});
    device_->forgetCalls();
    addNetwork(pskNetwork("Home", "correct horse"));
    const auto calls = device_->calls();
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls.front().peer, "supplicant");
    EXPECT_EQ(calls.front().path, supplicantInterface.path);
    EXPECT_EQ(calls.front().interface, supplicantInterface.interface);
    EXPECT_EQ(calls.front().member, "AddNetwork");
    EXPECT_EQ(
        json::parse(calls.front().arguments),
        json::parse(R"([{"ssid": "Home", "key_mgmt": "WPA-PSK", "psk": "correct horse", "ieee80211w": 1}])"));
}

TEST_F(FaultyDevice, SendsAStormOfSignals) {
    startInRangeOf({cafe});
    ASSERT_TRUE(client_->waitUntil([&] { return get("State") == "inactive"; }));
    client_->signals().clear();
    device_->storm(500);
    EXPECT_TRUE(client_->waitUntil([&] { return client_->valuesOf("State").size() >= 500; }));
}

TEST_F(FaultyDevice, OutlivesItsBus) {
    startInRangeOf({cafe});
    select(addNetwork(openNetwork("Cafe")));
    bus_.kill();
    ASSERT_TRUE(eventually([&] { return device_->supplicantState() == "completed"; }));
    device_->crashSupplicant();
    EXPECT_EQ(device_->unitState(), "failed");
}

TEST_F(FaultyDevice, ListsMoreInterfacesThanItHas) {
    start({.neighbourhood = {.moreInterfaces = 1}});
    EXPECT_EQ(client_->get(supplicantRoot, "Interfaces"),
              json({supplicantInterface.path, "/fi/w1/wpa_supplicant1/Interfaces/1"}));
}

}  // namespace
}  // namespace kaz::sim::test
