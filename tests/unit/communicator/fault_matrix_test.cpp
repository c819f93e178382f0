// Each call that the library makes, with each fault of a peer.
#include "unit/communicator/fault_operations.h"

#include <array>
#include <atomic>
#include <map>
#include <optional>
#include <ostream>
#include <thread>
#include <tuple>
#include <utility>

namespace kaz::wifi {
namespace {

using std::chrono::seconds;
using std::chrono::steady_clock;
using Peer = FaultOperation::Peer;
using Kind = FaultOperation::Kind;

enum class Fault {
    errorReply,
    objectVanished,
    noReply,
    replyAfterTheTimeOut,
    peerDied,
    wrongType,
    wrongNesting,
    emptyReply,
    hugeReply,
    slowReply,
};

struct FaultKind {
    Fault fault;
    const char* name;
    // The error of the call; empty if the call succeeds.
    std::string error;
    std::string message;
};

// The limit of calls for the faults that reach it. No other call takes so long, also on a busy machine.
constexpr seconds shortLimit{2};
// The delay of a slow reply, for which the limit is the default.
constexpr seconds slow{3};

constexpr const char* timeOut = "org.freedesktop.DBus.Error.Timeout";
constexpr const char* timedOut = "Connection timed out";

const std::array faultKinds{
    FaultKind{Fault::errorReply, "ErrorReply", "test.Error.Mishap", "it did not work"},
    FaultKind{Fault::objectVanished, "ObjectVanished", "org.freedesktop.DBus.Error.UnknownObject",
              "no such object"},
    FaultKind{Fault::noReply, "NoReply", timeOut, timedOut},
    FaultKind{Fault::replyAfterTheTimeOut, "ReplyAfterTheTimeOut", timeOut, timedOut},
    FaultKind{Fault::peerDied, "PeerDied", "org.freedesktop.DBus.Error.NoReply",
              "Message recipient disconnected from message bus without replying"},
    FaultKind{Fault::wrongType, "WrongType", {}, {}},
    FaultKind{Fault::wrongNesting, "WrongNesting", {}, {}},
    FaultKind{Fault::emptyReply, "EmptyReply", {}, {}},
    FaultKind{Fault::hugeReply, "HugeReply", {}, {}},
    FaultKind{Fault::slowReply, "SlowReply", {}, {}},
};

void PrintTo(const FaultKind& kind, std::ostream* out) {
    *out << kind.name;
}

// Waits on the thread of the peer before it answers.
Answer delayed(Answer answer, std::function<void()> wait) {
    return [answer = std::move(answer), wait = std::move(wait)](sd_bus_message* call) {
        wait();
        return answer(call);
    };
}

class FaultMatrix : public CommunicatorTest,
                    public testing::WithParamInterface<std::tuple<FaultOperation, FaultKind>> {
  protected:
    const FaultOperation& operation = std::get<0>(GetParam());
    const FaultKind& kind = std::get<1>(GetParam());
    const Fault fault = kind.fault;
    const std::chrono::milliseconds callLimit =
        kind.error == timeOut ? shortLimit : dbus::Bus::defaultCallLimit;

    FaultMatrix() {
        limitCalls(callLimit);
        supplicant.onCall(interfacePath, interfaceInterface, "AddNetwork", reply("o", networkPath));
        for (const char* member : {"ResetFailedUnit", "StartUnit", "StopUnit"}) {
            systemd.onCall(systemdPath, systemdInterface, member, reply(""));
        }
        for (const char* network : {"/n/1", "/n/2", longestPath.c_str()}) {
            supplicant.onGet(network, networkInterface, "Properties",
                             reply("v", "a{sv}", 1, "ssid", "s", "\"n\""));
        }
    }

    test::ScriptedPeer& peer() {
        switch (operation.peer) {
            case Peer::systemd:
                return systemd;
            case Peer::supplicant:
                return supplicant;
            case Peer::networkd:
                return networkd;
        }
        return supplicant;
    }

    void setAnswer(Answer answer) {
        switch (operation.kind) {
            case Kind::method:
                return peer().onCall(operation.path, operation.interface, operation.member,
                                     std::move(answer));
            case Kind::get:
                return peer().onGet(operation.path, operation.interface, operation.member, std::move(answer));
            case Kind::set:
                return peer().onSet(operation.path, operation.interface, operation.member, std::move(answer));
            case Kind::getAll:
                return peer().onGetAll(operation.path, operation.interface, std::move(answer));
        }
    }

    Answer faultyAnswer() {
        const bool property = operation.kind == Kind::get;
        switch (fault) {
            case Fault::errorReply:
            case Fault::objectVanished:
                return errorReply(kind.error, kind.message);
            case Fault::noReply:
            case Fault::peerDied:
                return noReply();
            case Fault::replyAfterTheTimeOut:
                return delayed(operation.good, [this] {
                    const LogRecord record = recordOfTheCall();
                    EXPECT_TRUE(log.waitForText(record.level, record.text));
                });
            case Fault::wrongType:
                return property ? reply("v", "u", 7U) : reply("u", 7U);
            case Fault::wrongNesting:
                return property ? reply("v", "av", 1, "v", "as", 0) : reply("aav", 1, 1, "v", "as", 0);
            case Fault::emptyReply:
                return reply("");
            case Fault::hugeReply:
                return operation.huge ? operation.huge : reply("s", std::string(1'000'000, 'x'));
            case Fault::slowReply:
                return delayed(operation.good, [] { std::this_thread::sleep_for(slow); });
        }
        return {};
    }

    bool callFails() const { return !kind.error.empty(); }

    bool answerIsBad() const {
        return operation.huge &&
               (fault == Fault::wrongType || fault == Fault::wrongNesting || fault == Fault::emptyReply);
    }

    std::string expectedOutcome() const {
        if (fault == Fault::peerDied && !operation.deathOutcome.empty()) {
            return operation.deathOutcome;
        }
        if (callFails() || answerIsBad()) {
            return operation.failedOutcome;
        }
        const bool huge = fault == Fault::hugeReply && !operation.hugeOutcome.empty();
        return huge ? operation.hugeOutcome : operation.goodOutcome;
    }

    // Runs the operation and returns its result and reports.
    std::string outcome() {
        onLoop([this] {
            if (operation.prepare) {
                operation.prepare(*communicator);
            }
            forget();
        });
        std::string result = onLoop([this] { return operation.run(*communicator); });
        for (const std::string& call : calls.calls()) {
            if (call.front() != '/') {
                result += ", " + call;
            }
        }
        return result;
    }

    // The same, while the peer dies after the call has arrived.
    std::string outcomeOfDeath() {
        std::thread death([this] {
            EXPECT_TRUE(calls.waitForCall(noteOf(operation)));
            peer().leave();
        });
        std::string result = outcome();
        death.join();
        return result;
    }

    void bringPeerBack() {
        calls.take();
        peer().comeBack();
        if (operation.peer == Peer::systemd) {
            // The communicator connects to a restarted systemd without a request.
            EXPECT_TRUE(calls.waitForCall("ActiveState"));
            onLoop([] {});
        } else if (operation.peer == Peer::supplicant) {
            // The communicator attaches to a supplicant that takes the name again.
            EXPECT_TRUE(calls.waitForCall("status changed: on"));
            onLoop([] {});
        }
    }

    // Counts each answer that was built. A peer that cannot send it ends the program.
    Answer counted(Answer answer) {
        return [answer = std::move(answer), this](sd_bus_message* call) {
            dbus::MessagePtr made = answer(call);
            ++faultyAnswers;
            return made;
        };
    }

    // The least time that the operation takes. Only the faulty call waits.
    std::chrono::milliseconds leastTime() const {
        if (fault == Fault::slowReply) {
            return slow;
        }
        return kind.error == timeOut ? callLimit : seconds(0);
    }

    LogRecord recordOfTheCall() const {
        static const std::map<Kind, std::string> members{
            {Kind::get, "Get"}, {Kind::set, "Set"}, {Kind::getAll, "GetAll"}};
        const auto member = members.find(operation.kind);
        return failedCall(operation.peer, member == members.end() ? operation.member : member->second,
                          operation.sensitive ? kind.error : kind.error + ": " + kind.message);
    }

    // The error of the answer.
    std::string details() const {
        if (callFails()) {
            return "Already failed";
        }
        const bool inVariant = operation.kind == Kind::get && fault != Fault::emptyReply;
        return (inVariant ? "Unable to read from variant: " : "") +
               (fault == Fault::wrongNesting ? operation.wrongNesting : "No such device or address");
    }

    std::vector<LogRecord> expectedLog() const {
        if (fault == Fault::hugeReply) {
            return operation.loggedWhenHuge;
        }
        if (!callFails() && !answerIsBad()) {
            return {};
        }
        const auto& special = callFails() ? operation.alsoLoggedOnDeath : operation.alsoLoggedWhenUndecodable;
        const bool isSpecial = !special.empty() && (fault == Fault::peerDied || answerIsBad());
        std::vector<LogRecord> expected = isSpecial ? special : operation.alsoLogged;
        expected.insert(expected.begin(),
                        callFails() ? recordOfTheCall()
                                    : warning("Error while decoding dbus data. Details: " + details()));
        for (LogRecord& record : expected) {
            if (const auto place = record.text.find("{}"); place != std::string::npos) {
                record.text.replace(place, 2, details());
            }
        }
        return expected;
    }

    std::vector<LogRecord> loggedProblems() const {
        std::vector<LogRecord> problems = log.records();
        std::erase_if(problems, [](const LogRecord& record) { return record.level < spdlog::level::warn; });
        return problems;
    }

    std::atomic<unsigned> faultyAnswers = 0;
};

TEST_P(FaultMatrix, FaultyCallFailsAsDocumentedAndTheNextCallSucceeds) {
    startAttached();
    setAnswer(counted(faultyAnswer()));
    const auto begin = steady_clock::now();
    const std::string faulty = fault == Fault::peerDied ? outcomeOfDeath() : outcome();
    const auto elapsed = steady_clock::now() - begin;
    EXPECT_EQ(faulty, expectedOutcome());
    EXPECT_GE(elapsed, leastTime());
    EXPECT_LT(elapsed, leastTime() + callLimit) << "another call was given up";
    EXPECT_EQ(loggedProblems(), expectedLog());
    EXPECT_TRUE(test::eventually([this] { return faultyAnswers > 0; }));  // the late one too

    setAnswer(operation.good);
    if (fault == Fault::peerDied) {
        bringPeerBack();
    }
    EXPECT_EQ(outcome(), operation.goodOutcome);
    EXPECT_THAT(loggedProblems(), IsEmpty());
    EXPECT_EQ(faultyAnswers, 1U) << "sent in answer to " << noteOf(operation);
}

INSTANTIATE_TEST_SUITE_P(AllCalls, FaultMatrix,
                         testing::Combine(testing::ValuesIn(faultOperations()),
                                          testing::ValuesIn(faultKinds)),
                         [](const auto& cell) {
                             return std::get<0>(cell.param).name + "_" + std::get<1>(cell.param).name;
                         });

}  // namespace
}  // namespace kaz::wifi
