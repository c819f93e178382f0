#include "dbus/remote_object.h"

#include "doubles/recording_log/recording_log.h"
#include "simulator/private_bus/private_bus.h"
#include "support/scripted_peer/scripted_peer.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

namespace kaz::dbus {
namespace {

using test::errorReply;
using test::LogRecord;
using test::reply;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string service = "com.example.Radio";
const std::string path = "/radio";
const std::string interface = "com.example.Radio.Tuner";

struct CloseBus {
    void operator()(sd_bus* bus) const noexcept { sd_bus_flush_close_unref(bus); }
};

class RemoteObjectTest : public testing::Test {
  protected:
    RemoteObjectTest() {
        sd_bus* opened = nullptr;
        sd_bus_new(&opened);
        bus.reset(opened);
        sd_bus_set_address(opened, privateBus.address().c_str());
        sd_bus_set_bus_client(opened, 1);
        EXPECT_GE(sd_bus_start(opened), 0);
    }

    RemoteObject radio() const { return {bus.get(), {service, path, interface}}; }

    test::RecordingLog log;
    sim::PrivateBus privateBus;
    test::CallLog calls;
    test::ScriptedPeer peer{privateBus.address(), service, calls};
    std::unique_ptr<sd_bus, CloseBus> bus;
};

TEST_F(RemoteObjectTest, CallsWithItsArgumentsInOrderAndHandsTheReplyOn) {
    peer.onCall(path, interface, "Tune", reply("so", "done", "/station"));
    Reply answer = radio().call("Tune", std::string("loud"), OPath("/band"), 5,
                                Variant::Map{{"b", true}, {"a", "text"}});
    EXPECT_TRUE(answer);
    EXPECT_EQ(answer.read<std::string>(), "done");
    EXPECT_EQ(answer.read<OPath>(), OPath("/station"));
    EXPECT_THAT(calls.calls(), ElementsAre(R"(/radio com.example.Radio.Tuner.Tune("loud", o"/band", i5, )"
                                           R"({"a": <"text">, "b": <true>}))"));
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(RemoteObjectTest, NeverStartsAService) {
    std::vector<int> autoStarts;
    const test::Answer note = [&](sd_bus_message* call) {
        autoStarts.push_back(sd_bus_message_get_auto_start(call));
        return reply("")(call);
    };
    peer.onCall(path, interface, "Tune", note);
    peer.onGet(path, interface, "Station", note);
    peer.onSet(path, interface, "Station", note);
    radio().call("Tune");
    radio().callWithSecrets("Tune", std::string("passphrase"));
    radio().get("Station");
    radio().set("Station", "Home");
    EXPECT_THAT(autoStarts, ElementsAre(0, 0, 0, 0));
}

TEST_F(RemoteObjectTest, TakesAnEmptyReplyForASuccess) {
    peer.onCall(path, interface, "Tune", reply(""));
    EXPECT_TRUE(radio().call("Tune"));
    EXPECT_THAT(calls.calls(), ElementsAre("/radio com.example.Radio.Tuner.Tune()"));
}

TEST_F(RemoteObjectTest, TellsSilenceFromRefusal) {
    sd_bus_set_method_call_timeout(bus.get(), 50'000);  // us
    peer.onCall(path, interface, "Ignore", test::noReply());
    peer.onCall(path, interface, "Refuse", errorReply("com.example.Broken", "No aerial"));
    peer.onCall(path, interface, "Tune", reply("s", "done"));
    CallRecord record;
    const RemoteObject observed(bus.get(), {service, path, interface}, &record);
    for (const char* answering : {"Refuse", "Tune"}) {
        EXPECT_FALSE(observed.call("Ignore"));
        EXPECT_TRUE(record.silent);
        EXPECT_TRUE(isSilence(record.failure.value_or(""))) << record.failure.value_or("none");
        observed.call(answering);
        EXPECT_FALSE(record.silent) << answering;
    }
}

TEST_F(RemoteObjectTest, KeepsTheErrorOfTheLastCallThatFailed) {
    peer.onCall(path, interface, "Refuse", errorReply("com.example.Broken", "No aerial"));
    peer.onCall(path, interface, "Tune", reply("s", "done"));
    CallRecord record;
    const RemoteObject observed(bus.get(), {service, path, interface}, &record);
    EXPECT_TRUE(observed.call("Tune"));
    EXPECT_EQ(record.failure, std::nullopt);
    EXPECT_FALSE(observed.call("Refuse"));
    EXPECT_TRUE(observed.call("Tune"));
    EXPECT_EQ(record.failure, "com.example.Broken");
    EXPECT_FALSE(observed.call("Tune", std::string("\xff")));
    EXPECT_EQ(record.failure, SD_BUS_ERROR_INVALID_ARGS);
    EXPECT_FALSE(RemoteObject(nullptr, {service, path, interface}, &record).call("Tune"));
    EXPECT_EQ(record.failure, SD_BUS_ERROR_DISCONNECTED);
}

TEST_F(RemoteObjectTest, TakesAnErrorForAFailure) {
    peer.onCall(path, interface, "Tune", errorReply("com.example.Broken", "No aerial"));
    Reply answer = radio().call("Tune");
    EXPECT_FALSE(answer);
    EXPECT_FALSE(answer.read<int>());
    EXPECT_EQ(log.records().size(), 1U);
}

TEST_F(RemoteObjectTest, GetsAProperty) {
    peer.onGet(path, interface, "Station", reply("v", "s", "Home"));
    EXPECT_EQ(radio().get("Station").read<std::string>(), "Home");
    EXPECT_THAT(calls.calls(), ElementsAre(R"(/radio org.freedesktop.DBus.Properties.Get()"
                                           R"("com.example.Radio.Tuner", "Station"))"));
}

TEST_F(RemoteObjectTest, SetsAProperty) {
    peer.onSet(path, interface, "Volume", reply(""));
    EXPECT_TRUE(radio().set("Volume", 7));
    EXPECT_TRUE(radio().set("Volume", Variant::Map{{"left", 3}}));
    EXPECT_THAT(calls.calls(), ElementsAre(R"(/radio org.freedesktop.DBus.Properties.Set()"
                                           R"("com.example.Radio.Tuner", "Volume", <i7>))",
                                           R"(/radio org.freedesktop.DBus.Properties.Set()"
                                           R"("com.example.Radio.Tuner", "Volume", <{"left": <i3>}>))"));
}

TEST_F(RemoteObjectTest, TellsWhenAPropertyWasNotSet) {
    peer.onSet(path, interface, "Volume", errorReply("com.example.Broken", "Too loud"));
    EXPECT_FALSE(radio().set("Volume", 11));
}

TEST_F(RemoteObjectTest, LogsAnArgumentThatCannotBeSentOnceAndFails) {
    peer.onCall(path, interface, "Tune", reply(""));
    peer.onSet(path, interface, "Station", reply(""));
    const Variant::Map unsendable{{"ssid", "\xff"}};
    const LogRecord failure{spdlog::level::warn,
                            "Error while encoding dbus data. Details: Unable to write value: "
                            "Unable to write to variant: Invalid argument"};
    EXPECT_FALSE(radio().call("Tune", unsendable));
    EXPECT_THAT(log.records(), ElementsAre(failure));
    log.clear();
    EXPECT_FALSE(radio().callWithSecrets("Tune", unsendable));
    EXPECT_THAT(log.records(), ElementsAre(failure));
    log.clear();
    EXPECT_FALSE(radio().set("Station", "\xff"));
    EXPECT_EQ(log.records().size(), 1U);
    EXPECT_THAT(calls.calls(), IsEmpty());
}

TEST_F(RemoteObjectTest, KeepsTheConnectionWhenATextCannotBeSent) {
    peer.onCall(path, interface, "Tune", reply(""));
    EXPECT_FALSE(radio().call("Tune", std::string("\xff")));
    EXPECT_FALSE(radio().call("Tune", std::string("fine"), std::string("\xff")));
    EXPECT_FALSE(radio().call("Tune", std::string("a\0b", 3)));
    EXPECT_FALSE(radio().call("Tune", OPath("no path")));
    EXPECT_FALSE(radio().call("Tune", OPath()));
    EXPECT_THAT(calls.calls(), IsEmpty());
    EXPECT_TRUE(radio().call("Tune", std::string("fine")));
}

TEST_F(RemoteObjectTest, KeepsAnErrorTextThatRepeatsASecretOutOfTheLog) {
    peer.onCall(path, interface, "Tune", [](sd_bus_message* call) {
        const char* secret = "";
        sd_bus_message_read(call, "s", &secret);
        return errorReply("com.example.Broken", std::string("Cannot use ") + secret)(call);
    });
    EXPECT_FALSE(radio().callWithSecrets("Tune", std::string("passphrase")));
    EXPECT_THAT(calls.calls(), ElementsAre(R"(/radio com.example.Radio.Tuner.Tune("passphrase"))"));
    EXPECT_EQ(log.records().size(), 1U);
    EXPECT_FALSE(log.contains("passphrase"));
    // The very same without the care.
    EXPECT_FALSE(radio().call("Tune", std::string("passphrase")));
    EXPECT_TRUE(log.contains("passphrase"));
}

TEST_F(RemoteObjectTest, WithoutABusFailsQuietly) {
    const RemoteObject nowhere(nullptr, {service, path, interface});
    EXPECT_FALSE(nowhere.call("Tune", std::string("\xff")));
    EXPECT_FALSE(nowhere.callWithSecrets("Tune", std::string("x")));
    EXPECT_FALSE(nowhere.get("Station"));
    EXPECT_FALSE(nowhere.get("Station").read<std::string>());
    EXPECT_FALSE(nowhere.set("Volume", 1));
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(RemoteObjectTest, WithoutAPathFailsQuietly) {
    const RemoteObject nothing(bus.get(), {service, "", interface});
    EXPECT_FALSE(nothing.call("Tune", std::string("x")));
    EXPECT_FALSE(nothing.get("Station"));
    EXPECT_FALSE(nothing.set("Volume", 1));
    EXPECT_THAT(log.records(), IsEmpty());
    EXPECT_THAT(calls.calls(), IsEmpty());
}

}  // namespace
}  // namespace kaz::dbus
