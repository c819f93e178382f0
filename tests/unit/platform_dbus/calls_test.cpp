#include <dlfcn.h>
#include <kaz/dbus/calls.h>

#include <atomic>
#include <string>
#include <tuple>
#include <vector>

#include "unit/platform_dbus/loop_fixture.h"

namespace kaz::test {
namespace {

std::atomic<uint64_t> limitOfTheLastCall = 0;  // us

}  // namespace
}  // namespace kaz::test

// Replaces that of sd-bus for all libraries of this program.
extern "C" int sd_bus_call(sd_bus* bus, sd_bus_message* call, uint64_t limit, sd_bus_error* error,
                           sd_bus_message** reply) {
    static const auto next = reinterpret_cast<decltype(&sd_bus_call)>(::dlsym(RTLD_NEXT, "sd_bus_call"));
    kaz::test::limitOfTheLastCall = limit;
    return next(bus, call, limit, error, reply);
}

namespace kaz::test {
namespace {

using dbus::makeDbusCall;
using dbus::makeDbusGetProperty;
using dbus::makeDbusSetProperty;
using dbus::MessageBuilder;
using dbus::MessageDecoder;
using dbus::MessageEndpoint;
using dbus::MessagePtr;
using dbus::sendMessage;

class Calls : public LoopTest {
  protected:
    const MessageEndpoint endpoint{peerName, peerPath, peerInterface};
    BusPeer peer{peerName};
};

TEST_F(Calls, GoToTheEndpointWithTheirArgumentsAndBringTheReply) {
    const Running running = start();
    onLoop([this] {
        sd_bus* handle = loop->getSdBusHandle();
        MessageBuilder call = makeDbusCall(handle, endpoint, "Echo");
        ASSERT_NE(call.message(), nullptr);
        EXPECT_TRUE(call.ok());
        EXPECT_STREQ(sd_bus_message_get_destination(call.message()), peerName);
        EXPECT_STREQ(sd_bus_message_get_path(call.message()), peerPath);
        EXPECT_STREQ(sd_bus_message_get_interface(call.message()), peerInterface);
        EXPECT_STREQ(sd_bus_message_get_member(call.message()), "Echo");
        sd_bus_message_append(call.message(), "s", "there and back");
        MessageDecoder reply = sendMessage(handle, call);
        const MessagePtr owned(reply.message);
        ASSERT_NE(reply.message, nullptr);
        EXPECT_TRUE(reply.ok);
        EXPECT_EQ(readString(reply), "there and back");
    });
    EXPECT_TRUE(log.records().empty());
}

TEST_F(Calls, ThatGetAPropertyNameItsInterfaceAndBringOneVariant) {
    const Running running = start();
    onLoop([this] {
        MessageBuilder call = makeDbusGetProperty(loop->getSdBusHandle(), endpoint, "Colour");
        EXPECT_STREQ(sd_bus_message_get_interface(call.message()), "org.freedesktop.DBus.Properties");
        EXPECT_STREQ(sd_bus_message_get_member(call.message()), "Get");
        MessageDecoder reply = sendMessage(loop->getSdBusHandle(), call);
        const MessagePtr owned(reply.message);
        ASSERT_NE(reply.message, nullptr);
        const char* value = "";
        EXPECT_GE(sd_bus_message_read(reply.message, "v", "s", &value), 0);
        EXPECT_STREQ(value, "value of test.Peer.Interface.Colour");
    });
}

TEST_F(Calls, ThatSetAPropertyLackOnlyTheValue) {
    const Running running = start();
    onLoop([this] {
        MessageBuilder call = makeDbusSetProperty(loop->getSdBusHandle(), endpoint, "Colour");
        EXPECT_STREQ(sd_bus_message_get_interface(call.message()), "org.freedesktop.DBus.Properties");
        EXPECT_STREQ(sd_bus_message_get_member(call.message()), "Set");
        EXPECT_GE(sd_bus_message_append(call.message(), "v", "s", "blue"), 0);
        EXPECT_STREQ(sd_bus_message_get_signature(call.message(), 1), "ssv");
        const MessagePtr reply(sendMessage(loop->getSdBusHandle(), call).message);
        EXPECT_NE(reply, nullptr);
    });
    EXPECT_EQ(peer.calls(), (std::vector<std::string>{"Set(test.Peer.Interface)"}));
}

TEST_F(Calls, WhoseReplyIsAnErrorYieldANullMessageWhoseUnrefIsHarmless) {
    const Running running = start();
    onLoop([this] {
        MessageBuilder call = makeDbusCall(loop->getSdBusHandle(), endpoint, "Refuse");
        sd_bus_message_append(call.message(), "s", "this");
        const MessageDecoder reply = sendMessage(loop->getSdBusHandle(), call);
        EXPECT_EQ(reply.message, nullptr);
        EXPECT_EQ(sd_bus_message_unref(reply.message), nullptr);
    });
    EXPECT_EQ(log.records(), (RecordingLog::Records{{spdlog::level::warn,
                                                     "Call of Refuse at test.Peer failed: "
                                                     "test.Error.Refused: will not take this"}}));
}

TEST_F(Calls, OfNobodyYieldANullMessageAndAWarning) {
    const Running running = start();
    onLoop([this] {
        MessageBuilder call = makeDbusCall(loop->getSdBusHandle(), {"test.Nobody", "/a", "test.I"}, "Do");
        EXPECT_EQ(sendMessage(loop->getSdBusHandle(), call).message, nullptr);
    });
    const auto records = log.records();
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].level, spdlog::level::warn);
    EXPECT_EQ(records[0].text.find("Call of Do at test.Nobody failed: "
                                   "org.freedesktop.DBus.Error.ServiceUnknown: "),
              0U)
        << records[0];
}

TEST_F(Calls, ThatAreSensitiveKeepTheErrorTextOutOfTheLog) {
    const std::string secret = "correct horse battery staple";
    const Running running = start();
    onLoop([&] {
        MessageBuilder call = makeDbusCall(loop->getSdBusHandle(), endpoint, "Refuse");
        call.markSensitive();
        sd_bus_message_append(call.message(), "s", secret.c_str());
        EXPECT_EQ(sendMessage(loop->getSdBusHandle(), call).message, nullptr);
    });
    ASSERT_EQ(peer.calls(), (std::vector<std::string>{"Refuse(" + secret + ")"}))
        << "which the error repeats";
    EXPECT_EQ(log.records(),
              (RecordingLog::Records{
                  {spdlog::level::warn, "Call of Refuse at test.Peer failed: test.Error.Refused"}}));
}

// A missing reply has one of two names, which depends on the version of sd-bus.
TEST_F(Calls, TellTheNameOfTheErrorThatTheyFailedWith) {
    const Running running = start();
    onLoop([&] {
        sd_bus* handle = loop->getSdBusHandle();
        sd_bus_set_method_call_timeout(handle, 50'000);  // us
        std::string error;
        const auto send = [&](const char* member) {
            MessageBuilder call = makeDbusCall(handle, endpoint, member);
            sd_bus_message_append(call.message(), "s", "text");
            return MessagePtr(sendMessage(handle, call, error).message) != nullptr;
        };
        EXPECT_FALSE(send("Ignore"));
        EXPECT_TRUE(error == SD_BUS_ERROR_TIMEOUT || error == SD_BUS_ERROR_NO_REPLY) << error;
        EXPECT_FALSE(send("Refuse"));
        EXPECT_EQ(error, "test.Error.Refused");
        EXPECT_TRUE(send("Echo"));
        EXPECT_EQ(error, "");
    });
}

TEST_F(Calls, OnANullBusOrWithoutAPathAreRefusedQuietly) {
    const Running running = start();
    onLoop([this] {
        sd_bus* handle = loop->getSdBusHandle();
        const MessageEndpoint pathless{peerName, "", peerInterface};
        for (const auto& make : {makeDbusCall, makeDbusGetProperty, makeDbusSetProperty}) {
            MessageBuilder noBus = make(nullptr, endpoint, "Echo");
            EXPECT_EQ(noBus.message(), nullptr);
            EXPECT_EQ(sendMessage(nullptr, noBus).message, nullptr);
            EXPECT_EQ(sendMessage(handle, noBus).message, nullptr);
            MessageBuilder noPath = make(handle, pathless, "Echo");
            EXPECT_EQ(noPath.message(), nullptr);
            EXPECT_EQ(sendMessage(handle, noPath).message, nullptr);
        }
        MessageBuilder good = makeDbusCall(handle, endpoint, "Echo");
        EXPECT_EQ(sendMessage(nullptr, good).message, nullptr);
    });
    EXPECT_TRUE(log.records().empty());
    EXPECT_TRUE(peer.calls().empty());
}

TEST_F(Calls, OfTheRootPathAreMade) {
    const Running running = start();
    onLoop([this] {
        MessageBuilder call = makeDbusCall(loop->getSdBusHandle(), {peerName, "/", peerInterface}, "Echo");
        sd_bus_message_append(call.message(), "s", "root");
        const MessagePtr reply(sendMessage(loop->getSdBusHandle(), call).message);
        EXPECT_NE(reply, nullptr);
    });
}

TEST_F(Calls, ThatCannotBeWrittenAreAWarning) {
    const std::vector<std::pair<MessageEndpoint, std::string>> cases{
        {{"no name", peerPath, peerInterface}, "Echo"}, {{peerName, "no path", peerInterface}, "Echo"},
        {{peerName, peerPath, "no interface"}, "Echo"}, {{peerName, peerPath, peerInterface}, "no member"},
        {{peerName, peerPath, peerInterface}, ""},
    };
    const Running running = start();
    for (const auto& [bad, member] : cases) {
        const std::string shown = bad.destination + bad.path + bad.interface + member;
        log.clear();
        onLoop([&, &bad = bad, &member = member] {
            MessageBuilder call = makeDbusCall(loop->getSdBusHandle(), bad, member);
            EXPECT_EQ(call.message(), nullptr) << shown;
            EXPECT_EQ(sendMessage(loop->getSdBusHandle(), call).message, nullptr) << shown;
        });
        EXPECT_EQ(log.texts(spdlog::level::warn).size(), 1U) << shown;
    }
}

TEST_F(Calls, AreSentAlsoWhenAnArgumentFailed) {
    const Running running = start();
    onLoop([this] {
        MessageBuilder call = makeDbusCall(loop->getSdBusHandle(), endpoint, "Set");
        call.fail("Invalid argument");
        const MessagePtr reply(sendMessage(loop->getSdBusHandle(), call).message);
        EXPECT_NE(reply, nullptr);
    });
    EXPECT_EQ(peer.calls(), (std::vector<std::string>{"Set()"}));
}

TEST_F(Calls, OfAPropertyWhoseNameIsNoTextAreMarkedFailed) {
    const Running running = start();
    onLoop([this] {
        const MessageBuilder call = makeDbusGetProperty(loop->getSdBusHandle(), endpoint, "\xff");
        EXPECT_FALSE(call.ok());
        EXPECT_EQ(call.error(), "Invalid argument");
    });
}

TEST_F(Calls, WaitTenSecondsForAReplyUnlessTheConnectionHasAShorterLimit) {
    constexpr uint64_t second = 1'000'000;
    const Running running = start();
    EXPECT_EQ(onLoop([this] {
                  uint64_t limit = 0;
                  EXPECT_GE(sd_bus_get_method_call_timeout(loop->getSdBusHandle(), &limit), 0);
                  return limit;
              }),
              10 * second);
    EXPECT_TRUE(callFromLoop("Echo"));
    EXPECT_EQ(limitOfTheLastCall, 10 * second);
    for (const auto& [ofTheConnection, ofTheCall] :
         {std::pair(5 * second, 5 * second), std::pair(25 * second, 10 * second),
          std::pair(UINT64_MAX, 10 * second)}) {
        onLoop([this, limit = ofTheConnection] {
            EXPECT_GE(sd_bus_set_method_call_timeout(loop->getSdBusHandle(), limit), 0);
        });
        EXPECT_TRUE(callFromLoop("Echo"));
        EXPECT_EQ(limitOfTheLastCall, ofTheCall);
    }
}

TEST_F(Calls, GiveUpAtTheLimitWithoutAReply) {
    constexpr std::chrono::milliseconds limit{300};
    const Running running = start();
    limitCalls(limit);
    const auto from = std::chrono::steady_clock::now();
    EXPECT_FALSE(callFromLoop("Ignore"));
    const auto elapsed = std::chrono::steady_clock::now() - from;
    limitCalls(std::chrono::seconds(10));
    EXPECT_GE(elapsed, limit);
    EXPECT_LT(elapsed, std::chrono::seconds(10));
    ASSERT_EQ(log.texts(spdlog::level::warn).size(), 1U);
    EXPECT_EQ(log.texts(spdlog::level::warn)[0].find("Call of Ignore at test.Peer failed: "), 0U);
    EXPECT_TRUE(callFromLoop("Echo"));
}

}  // namespace
}  // namespace kaz::test
