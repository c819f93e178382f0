// What the signals of the supplicant's interface tell about how a link is set up and why it ends.
#include "communicator/eap_report.h"
#include "communicator/supplicant_state.h"
#include "unit/communicator/communicator_fixture.h"

#include <string>
#include <vector>

namespace kaz::wifi {
namespace {

using Eap = Evidence::Eap;
using Told = Communicator::LinkEvidence;
using Step = Communicator::LinkStep;

class LinkEvidence : public CommunicatorTest {
  protected:
    LinkEvidence() {
        communicator->linkEvidenceHandler = [this](const Told& evidence) {
            calls.add("evidence");
            told.push_back(evidence);
        };
        startAttached();
    }

    std::vector<Told> told;
};

TEST_F(LinkEvidence, FollowsTheReportOfTheSameSignal) {
    emitPropertiesChanged(2, "State", "s", "disconnected", "AuthStatusCode", "i", 17);
    settle();
    EXPECT_THAT(takeCalls(), ElementsAre("report: status=Disconnected", "evidence"));
    Told expected;
    expected.step = Step::down;
    expected.authenticationStatus = 17;
    EXPECT_EQ(told, std::vector{expected});
}

TEST_F(LinkEvidence, HoldsReasonsAndStatusCodesAsTheyAre) {
    emitPropertiesChanged(1, "DisconnectReason", "i", -4);
    emitPropertiesChanged(2, "AssocStatusCode", "i", 43, "AuthStatusCode", "i", 0);
    settle();
    Told reason;
    reason.disconnectReason = -4;
    Told status;
    status.associationStatus = 43;
    status.authenticationStatus = 0;
    EXPECT_EQ(told, (std::vector{reason, status}));
}

TEST_F(LinkEvidence, IsNotToldWhenASignalHasNone) {
    emitPropertiesChanged(2, "Scanning", "b", 1, "AuthStatusCode", "s", "17");
    emitPropertiesChanged(1, "State", "s", "dreaming");
    emitFromInterface("EAP", "ss", "eap parameter needed", "PASSWORD");
    settle();
    EXPECT_THAT(told, IsEmpty());
}

// The values of a reply may be from an earlier attempt.
TEST_F(LinkEvidence, IsNotReadFromReplies) {
    supplicant.onGetAll(interfacePath, interfaceInterface,
                        reply("a{sv}", 2, "State", "s", "disconnected", "DisconnectReason", "i", 15));
    onLoop([&] { communicator->refreshSync(); });
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(LinkEvidence, HoldsWhatEapReports) {
    emitFromInterface("EAP", "ss", "completion", "failure");
    settle();
    Told expected;
    expected.eap = Eap::rejected;
    EXPECT_EQ(told, std::vector{expected});
}

TEST_F(LinkEvidence, HoldsTheMismatchThatTheSupplicantReports) {
    emitFromInterface("PskMismatch", "");
    emitFromInterface("SaePasswordMismatch", "i", 1);
    settle();
    Told preSharedKey;
    preSharedKey.mismatch = Communicator::KeyMismatch::preSharedKey;
    Told password;
    password.mismatch = Communicator::KeyMismatch::saePassword;
    EXPECT_EQ(told, (std::vector{preSharedKey, password}));
}

TEST(EapStatus, MeansOneReport) {
    struct Row {
        const char* status;
        const char* parameter;
        Eap report;
    };
    const std::vector<Row> rows{
        {"started", "", Eap::started},
        {"accept proposed method", "PEAP", Eap::methodAgreed},
        {"refuse proposed method", "PEAP", Eap::methodRefused},
        {"remote certificate verification", "success", Eap::none},
        {"remote certificate verification", "self-signed certificate", Eap::serverRefused},
        {"remote certificate verification", "", Eap::serverRefused},
        {"local TLS alert", "unknown CA", Eap::serverRefused},
        {"remote TLS alert", "access denied", Eap::none},
        {"completion", "success", Eap::succeeded},
        {"completion", "failure", Eap::rejected},
        {"completion", "", Eap::rejected},
        {"", "", Eap::none},
    };
    for (const auto& [status, parameter, report] : rows) {
        EXPECT_EQ(fromEapStatus(status, parameter), report) << status << ", " << parameter;
    }
}

TEST(LinkSteps, FollowTheStates) {
    const std::vector<std::pair<const char*, Step>> steps{{"disconnected", Step::down},
                                                          {"inactive", Step::down},
                                                          {"interface_disabled", Step::down},
                                                          {"scanning", Step::down},
                                                          {"authenticating", Step::authenticating},
                                                          {"associating", Step::associating},
                                                          {"associated", Step::associated},
                                                          {"4way_handshake", Step::keyExchange},
                                                          {"group_handshake", Step::keyExchange},
                                                          {"completed", Step::up}};
    for (const auto& [state, step] : steps) {
        EXPECT_EQ(linkStepOfState(state), step) << state;
    }
    EXPECT_EQ(linkStepOfState("dreaming"), std::nullopt);
    EXPECT_EQ(linkStepOfState(""), std::nullopt);
}

}  // namespace
}  // namespace kaz::wifi
