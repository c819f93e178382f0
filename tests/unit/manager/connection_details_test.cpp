// The cause is published together with the state that it explains.
#include "manager/network_in_use_reports.h"
#include "support/printed_values/printed_details.h"
#include "unit/manager/engine_fixture.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace kaz::test {
namespace {

using wifi::Cause;
using wifi::Certainty;
using wifi::Communicator;
using wifi::ConnectionDetails;
using wifi::Facts;
using wifi::Outcome;
using wifi::Stage;
using Status = ConnectionInfo::Status;
using Step = Communicator::LinkStep;

class Details : public EngineWithSupplicant {
  protected:
    Details() {
        engine->onConnectionDetailsChanged([this] {
            told.push_back("details");
            ++changes;
        });
        engine->onConnectionInfoChanged([this] {
            told.push_back("info");
            causeAtInfo = engine->connectionDetails().lastOutcome.cause;
        });
    }
    ~Details() override { engine->onConnectionDetailsChanged(nullptr); }
    Details(const Details&) = delete;
    Details& operator=(const Details&) = delete;
    Details(Details&&) = delete;
    Details& operator=(Details&&) = delete;

    void reportEvidence(Step step, int reason = 0) {
        Communicator::LinkEvidence evidence;
        evidence.step = step;
        if (reason != 0) {
            evidence.disconnectReason = reason;
        }
        communicator->linkEvidenceHandler(evidence);
    }
    void reportStep(Step step, SupplicantStatus status) {
        reportStatus(status);
        reportEvidence(step);
    }
    void reportReason(int code) {
        Communicator::LinkEvidence evidence;
        evidence.disconnectReason = code;
        communicator->linkEvidenceHandler(evidence);
    }
    void reportSighting(const std::string& ssid, bool wifi::NetworkDemands::*demand) {
        Bss bss{ssid, -61, SecurityMode::rsnPsk};
        bss.demands.*demand = true;
        reportBssList({bss});
    }
    void endScan() {
        communicator->scanningDoneHandler(true);
        reportScanning(false);
    }
    void timeOut() {
        clock->advance(std::chrono::seconds(3));
        runUntilIdle();
    }
    Outcome outcome() const { return engine->connectionDetails().lastOutcome; }
    void expect(const std::string& ssid, Stage stage, Cause cause, Certainty certainty) const {
        EXPECT_EQ(outcome().ssid, ssid);
        EXPECT_EQ(outcome().stage, stage);
        EXPECT_EQ(outcome().cause, cause);
        EXPECT_EQ(outcome().certainty, certainty);
    }
    std::vector<std::string> takeTold() { return std::exchange(told, {}); }

    std::vector<std::string> told;
    int changes = 0;
    Cause causeAtInfo = Cause::none;
};

TEST_F(Details, HoldTheInfoThatIsPublished) {
    EXPECT_EQ(engine->connectionDetails(), ConnectionDetails{});
    connectTo("Home");
    EXPECT_EQ(engine->connectionDetails().info, engine->connectionInfo());
    EXPECT_EQ(outcome(), Outcome{});
    EXPECT_EQ(takeTold(), (std::vector<std::string>{"info", "details"}));
}

TEST_F(Details, HaveTheCauseWhenTheEndIsPublished) {
    connectTo("Home");
    reportStep(Step::authenticating, SupplicantStatus::Connecting);
    reportStep(Step::keyExchange, SupplicantStatus::Connecting);
    runUntilIdle();
    reportReason(15);
    reportStep(Step::down, SupplicantStatus::Disconnected);
    EXPECT_EQ(outcome(), Outcome{});
    takeTold();
    runUntilIdle();
    EXPECT_EQ(takeTold(), (std::vector<std::string>{"info", "details"}));
    EXPECT_EQ(causeAtInfo, Cause::wrongKey);
    expect("Home", Stage::keyExchange, Cause::wrongKey, Certainty::probable);
    EXPECT_EQ(outcome().time, engine->connectionInfo().disconnectTime);
    EXPECT_EQ(outcome().evidence.reasonCode, 15);
}

TEST_F(Details, TellLateEvidenceByTheirOwnCallbackOnly) {
    connectTo("Home");
    reportStep(Step::keyExchange, SupplicantStatus::Connecting);
    reportStep(Step::down, SupplicantStatus::Disconnected);
    runUntilIdle();
    EXPECT_EQ(outcome().cause, Cause::accessPointGone);
    takeTold();
    const ConnectionInfo info = engine->connectionInfo();
    reportReason(15);
    runUntilIdle();
    EXPECT_EQ(takeTold(), std::vector<std::string>{"details"});
    EXPECT_EQ(outcome().cause, Cause::wrongKey);
    EXPECT_EQ(engine->connectionInfo(), info);
    runUntilIdle();
    EXPECT_EQ(takeTold(), std::vector<std::string>{});
}

TEST_F(Details, StayUntilTheNextEnd) {
    connectTo("Home");
    timeOut();
    const Outcome first = outcome();
    EXPECT_EQ(first.ssid, "Home");
    connectTo("Other");
    EXPECT_EQ(outcome(), first);
    reportLinkUp("Other");
    runUntilIdle();
    EXPECT_EQ(outcome(), first);
}

TEST_F(Details, SayThatNoAccessPointIsInRange) {
    reportSighting("Other", &wifi::NetworkDemands::rsnPsk);
    connectTo("Home");
    timeOut();
    expect("Home", Stage::requested, Cause::outOfRange, Certainty::probable);
    connectTo("Home");
    reportScanning(true);
    endScan();
    timeOut();
    expect("Home", Stage::requested, Cause::outOfRange, Certainty::certain);
}

TEST_F(Details, SayWhatANetworkInRangeDemands) {
    reportSighting("Home", &wifi::NetworkDemands::sae);
    connectTo("Home");
    timeOut();
    expect("Home", Stage::requested, Cause::nothingInCommon, Certainty::certain);
    EXPECT_TRUE(outcome().evidence.seen);
    EXPECT_TRUE(outcome().evidence.demands.sae);
    EXPECT_EQ(outcome().evidence.signal, -61);
}

TEST_F(Details, JoinWhatTheAccessPointsOfANetworkDemand) {
    Bss personal{"Home", -70, SecurityMode::rsnPsk};
    personal.demands.rsnPsk = true;
    Bss modern{"Home", -50, SecurityMode::unsupported};
    modern.demands.sae = modern.demands.hashToElement = true;
    reportBssList({modern, personal});
    connectTo("Home");
    timeOut();
    const wifi::NetworkDemands demands = outcome().evidence.demands;
    EXPECT_TRUE(demands.rsnPsk && demands.sae);
    EXPECT_FALSE(demands.hashToElement);
    EXPECT_EQ(outcome().evidence.signal, -50);
}

TEST_F(Details, SayForCertainThatTheSupplicantLacksHashToElement) {
    Bss modern{"Home", -50, SecurityMode::unsupported};
    modern.demands.sae = modern.demands.hashToElement = true;
    reportBssList({modern});
    SupplicantReport ability;
    ability.hashToElement = false;
    report(ability);
    ConnectionSettings settings = settingsFor("Home", SecurityMode::sae);
    ASSERT_EQ(engine->connect(settings), ConnectResult::ok);
    runUntilIdle();
    timeOut();
    expect("Home", Stage::requested, Cause::nothingInCommon, Certainty::certain);

    // Another supplicant may have it, and the old one does not tell.
    detachSupplicant();
    attachSupplicant();
    reportBssList({modern});
    ASSERT_EQ(engine->connect(settings), ConnectResult::ok);
    runUntilIdle();
    communicator->scanningDoneHandler(true);
    timeOut();
    expect("Home", Stage::requested, Cause::nothingInCommon, Certainty::probable);
}

TEST_F(Details, SayThatTheRequestWasRefused) {
    for (const char* operation : {"addNetworkSync", "selectSync"}) {
        stack->failing = {operation};
        connectTo("Home");
        timeOut();
        expect("Home", Stage::requested, Cause::requestRefused, Certainty::certain);
    }
    stack->failing.clear();
    engine->connectConfigured("Unknown");
    runUntilIdle();
    timeOut();
    expect("Unknown", Stage::requested, Cause::requestRefused, Certainty::certain);
}

TEST_F(Details, SayThatTheUserGaveUpOrChoseAnother) {
    connectTo("Home");
    connectTo("Other");
    expect("Home", Stage::requested, Cause::replaced, Certainty::certain);
    engine->disconnect();
    runUntilIdle();
    expect("Other", Stage::requested, Cause::givenUp, Certainty::certain);
    becomeConnected("Home");
    engine->forgetNetwork("Home");
    runUntilIdle();
    expect("Home", Stage::online, Cause::givenUp, Certainty::certain);
}

TEST_F(Details, SayThatTheSupplicantEnded) {
    becomeConnected("Home");
    detachSupplicant();
    runUntilIdle();
    expect("Home", Stage::online, Cause::supplicantGone, Certainty::certain);
    attachSupplicant();
    runUntilIdle();
    expect("Home", Stage::online, Cause::supplicantGone, Certainty::certain);
}

TEST_F(Details, SayThatTheUserSwitchedWifiOff) {
    becomeConnected("Home");
    engine->setEnabled(false);
    detachSupplicant();
    runUntilIdle();
    expect("Home", Stage::online, Cause::givenUp, Certainty::certain);
}

TEST_F(Details, SayWhyAConnectionWasLost) {
    becomeConnected("Home");
    reportReason(7);
    reportStep(Step::down, SupplicantStatus::Disconnected);
    runUntilIdle();
    expect("Home", Stage::online, Cause::deauthenticated, Certainty::certain);
}

TEST_F(Details, SayThatTheRadioIsBlocked) {
    becomeConnected("Home");
    reportReason(-3);
    reportStep(Step::down, SupplicantStatus::InterfaceDisabled);
    runUntilIdle();
    expect("Home", Stage::online, Cause::radioBlocked, Certainty::certain);
}

TEST_F(Details, HoldTheNetworkInUse) {
    SupplicantReport link;
    link.currentBssChange = PropertyChange::Set;
    link.currentBss = {"Home", -50, SecurityMode::rsnPsk};
    link.currentBss.bssid = {2, 0, 0, 0, 0, 7};
    link.currentBss.frequency = 2437;
    link.status = SupplicantStatus::Connected;
    link.authMode = "SAE";
    report(link);
    runUntilIdle();
    const std::array<std::uint8_t, 6> bssid{2, 0, 0, 0, 0, 7};
    EXPECT_EQ(engine->connectionDetails().network, (wifi::NetworkInUse{SecurityMode::sae, bssid, 2437, 0}));

    stack->signalPoll = -50;
    stack->polledRate = 65;
    takeTold();
    communicator->expireTimer();
    runUntilIdle();
    EXPECT_EQ(engine->connectionDetails().network.rate, 65);
    EXPECT_EQ(takeTold(), std::vector<std::string>{"details"});

    report(link);  // the rate was that of the link before
    runUntilIdle();
    EXPECT_EQ(engine->connectionDetails().network.rate, 0);
    detachSupplicant();
    runUntilIdle();
    EXPECT_EQ(engine->connectionDetails().network, wifi::NetworkInUse{});

    // What the former supplicant said of the link does not describe this one.
    attachSupplicant();
    link.authMode.reset();
    report(link);
    runUntilIdle();
    EXPECT_EQ(engine->connectionDetails().network.securityMode, SecurityMode::rsnPsk);
}

TEST_F(Details, HoldNoNetworkWhileTheLinkIsNotUp) {
    reportBss("Other");
    connectTo("Home");
    EXPECT_EQ(engine->connectionDetails().network, wifi::NetworkInUse{});
}

TEST(SecurityModeInUse, FollowsTheSupplicantsWord) {
    struct Row {
        const char* authMode;
        SecurityMode ofBss;
        SecurityMode inUse;
    };
    for (const auto& [authMode, ofBss, inUse] :
         std::vector<Row>{{"SAE", SecurityMode::unsupported, SecurityMode::sae},
                          {"SAE", SecurityMode::rsnPsk, SecurityMode::sae},
                          {"WPA2-PSK", SecurityMode::rsnPsk, SecurityMode::rsnPsk},
                          {"WPA2-PSK+WPA-PSK", SecurityMode::unsupported, SecurityMode::rsnPsk},
                          {"WPA-PSK", SecurityMode::wpaPsk, SecurityMode::wpaPsk},
                          {"EAP-PEAP", SecurityMode::enterprise, SecurityMode::enterprise},
                          {"NONE", SecurityMode::wep, SecurityMode::wep},
                          {"NONE", SecurityMode::none, SecurityMode::none},
                          {"INACTIVE", SecurityMode::rsnPsk, SecurityMode::rsnPsk},
                          {"", SecurityMode::none, SecurityMode::none}}) {
        EXPECT_EQ(wifi::securityModeInUse(authMode, ofBss), inUse) << authMode;
    }
}

using Shown = Details;

TEST_F(Shown, StatusIsThatOfTheInfoWithoutARoam) {
    for (const SupplicantStatus status : {SupplicantStatus::Connecting, SupplicantStatus::Connected}) {
        reportBss("Home");
        reportStatus(status);
        runUntilIdle();
        EXPECT_EQ(engine->connectionDetails().shownStatus, engine->connectionInfo().status);
    }
    reportOnline(true);
    runUntilIdle();
    EXPECT_EQ(engine->connectionDetails().shownStatus, Status::connected);
    reportStatus(SupplicantStatus::Disconnected);
    runUntilIdle();
    EXPECT_EQ(engine->connectionDetails().shownStatus, Status::disconnected);
}

TEST_F(Shown, StatusStaysConnectedDuringARoam) {
    becomeConnected("Home");
    reportBss("Home", -40);
    reportStatus(SupplicantStatus::Connecting);
    EXPECT_EQ(runUntilIdle(), std::chrono::milliseconds(3000));
    EXPECT_EQ(engine->connectionInfo().status, Status::connectingWifi);
    EXPECT_EQ(engine->connectionDetails().shownStatus, Status::connected);
    reportOnline(false);
    reportStatus(SupplicantStatus::Connected);
    runUntilIdle();
    EXPECT_EQ(engine->connectionInfo().status, Status::connectingIP);
    EXPECT_EQ(engine->connectionDetails().shownStatus, Status::connected);
    reportOnline(true);
    EXPECT_EQ(runUntilIdle(), std::nullopt);
    EXPECT_EQ(engine->connectionDetails().shownStatus, Status::connected);
}

TEST_F(Shown, StatusOfARoamIsShownAfterThreeSeconds) {
    becomeConnected("Home");
    reportStatus(SupplicantStatus::Connecting);
    runUntilIdle();
    clock->advance(std::chrono::milliseconds(2999));
    EXPECT_EQ(runUntilIdle(), std::chrono::milliseconds(1));
    EXPECT_EQ(engine->connectionDetails().shownStatus, Status::connected);
    takeTold();
    clock->advance(std::chrono::milliseconds(1));
    EXPECT_EQ(runUntilIdle(), std::nullopt);
    EXPECT_EQ(engine->connectionDetails().shownStatus, Status::connectingWifi);
    EXPECT_EQ(takeTold(), std::vector<std::string>{"details"});
}

TEST_F(Shown, StatusOfAnEndIsShownAtOnce) {
    becomeConnected("Home");
    reportStatus(SupplicantStatus::Connecting);
    runUntilIdle();
    reportStatus(SupplicantStatus::Disconnected);
    runUntilIdle();
    EXPECT_EQ(engine->connectionDetails().shownStatus, Status::disconnected);
    becomeConnected("Home");
    connectTo("Home");
    EXPECT_EQ(engine->connectionDetails().shownStatus, Status::connectingWifi);
}

TEST_F(Details, SayThatTheSupplicantDidNotAnswerTheRequest) {
    for (const char* operation : {"addNetworkSync", "selectSync"}) {
        stack->failing = {operation};
        stack->silent = true;
        connectTo("Home");
        stack->silent = false;  // it answers the next call
        timeOut();
        expect("Home", Stage::requested, Cause::supplicantSilent, Certainty::certain);
    }
}

TEST_F(Details, SayOnlyProbablyThatARequestWasRefusedIfThePlatformDoesNotTellWhyItFailed) {
    stack->failing = {"addNetworkSync"};
    for (const auto& [reason, certainty] : {std::pair{wifi::FailureReason::refused, Certainty::certain},
                                            std::pair{wifi::FailureReason::unknown, Certainty::probable}}) {
        stack->lastFailure = reason;
        connectTo("Home");
        timeOut();
        expect("Home", Stage::requested, Cause::requestRefused, certainty);
    }
}

TEST_F(Details, HaveTheReasonForAMissingStackAndTellItsChange) {
    takeTold();
    stack->trouble = {wifi::StackTrouble::Place::interface, wifi::FailureReason::none};
    runUntilIdle();
    EXPECT_EQ(takeTold(), std::vector<std::string>{"details"});
    EXPECT_EQ(engine->connectionDetails().stack, stack->trouble);
    runUntilIdle();
    EXPECT_EQ(takeTold(), std::vector<std::string>{});
}

TEST_F(Details, SayThatTheSupplicantFellSilentDuringAnAttempt) {
    connectTo("Home");
    EXPECT_EQ(outcome(), Outcome{});
    stack->silent = true;
    runUntilIdle();
    EXPECT_EQ(engine->connectionDetails().trouble, Cause::supplicantSilent);
    timeOut();
    expect("Home", Stage::requested, Cause::supplicantSilent, Certainty::certain);
    EXPECT_EQ(engine->connectionDetails().trouble, Cause::none);
}

// Only the calls that follow the end have no answer.
TEST_F(Details, SayThatTheSupplicantIsSilentTogetherWithTheEnd) {
    connectTo("Home");
    takeTold();
    stack->onCall = [this](const std::string& call) { stack->silent = stack->silent || call == listing; };
    timeOut();
    stack->onCall = nullptr;
    EXPECT_EQ(takeTold(), (std::vector<std::string>{"info", "details"}));
    EXPECT_EQ(causeAtInfo, Cause::supplicantSilent);
    expect("Home", Stage::requested, Cause::supplicantSilent, Certainty::certain);
}

TEST_F(Details, KeepTheCauseThatTheSupplicantReportedBeforeItFellSilent) {
    connectTo("Home");
    endScan();
    stack->onCall = [this](const std::string& call) { stack->silent = stack->silent || call == listing; };
    timeOut();
    stack->onCall = nullptr;
    expect("Home", Stage::requested, Cause::outOfRange, Certainty::certain);
}

TEST_F(Details, TellOfASilentSupplicantUntilItAnswers) {
    becomeConnected("Home");
    const ConnectionInfo info = engine->connectionInfo();
    stack->silent = true;
    communicator->expireTimer();
    takeTold();
    runUntilIdle();
    EXPECT_EQ(engine->connectionDetails().trouble, Cause::supplicantSilent);
    EXPECT_EQ(engine->connectionInfo(), info);
    EXPECT_EQ(takeTold(), std::vector<std::string>{"details"});
    stack->silent = false;
    runUntilIdle();
    EXPECT_EQ(engine->connectionDetails().trouble, Cause::none);
    EXPECT_EQ(outcome(), Outcome{});
}

class AddressTimeout : public Details {
  protected:
    Cause trouble() const { return engine->connectionDetails().trouble; }
};

TEST_F(AddressTimeout, IsNotSetAtFirst) {
    reportLinkUp("Home");
    EXPECT_EQ(runUntilIdle(), std::nullopt);
    clock->advance(std::chrono::hours(24));
    runUntilIdle();
    EXPECT_EQ(trouble(), Cause::none);
}

TEST_F(AddressTimeout, TellsTheTroubleAndEndsNothing) {
    engine->setAddressTimeout(std::chrono::seconds(10));
    reportLinkUp("Home");
    EXPECT_EQ(runUntilIdle(), std::chrono::seconds(10));
    clock->advance(std::chrono::milliseconds(9999));
    EXPECT_EQ(runUntilIdle(), std::chrono::milliseconds(1));
    EXPECT_EQ(trouble(), Cause::none);
    const ConnectionInfo info = engine->connectionInfo();
    takeTold();
    takeCalls();
    clock->advance(std::chrono::milliseconds(1));
    EXPECT_EQ(runUntilIdle(), std::nullopt);
    EXPECT_EQ(trouble(), Cause::noAddress);
    EXPECT_EQ(engine->connectionInfo(), info);
    EXPECT_EQ(outcome(), Outcome{});
    EXPECT_EQ(takeTold(), std::vector<std::string>{"details"});
    EXPECT_EQ(takeCalls(), Calls{});
    reportOnline(true);
    runUntilIdle();
    EXPECT_EQ(trouble(), Cause::none);
    EXPECT_EQ(engine->connectionInfo().status, Status::connected);
}

TEST_F(AddressTimeout, AppliesToTheStageThatHasBegun) {
    reportLinkUp("Home");
    runUntilIdle();
    clock->advance(std::chrono::seconds(20));
    engine->setAddressTimeout(std::chrono::seconds(10));
    runUntilIdle();
    EXPECT_EQ(trouble(), Cause::noAddress);
    engine->setAddressTimeout(std::chrono::seconds(0));
    runUntilIdle();
    EXPECT_EQ(trouble(), Cause::none);
    engine->setAddressTimeout(std::chrono::seconds(-1));
    EXPECT_EQ(runUntilIdle(), std::nullopt);
    EXPECT_EQ(trouble(), Cause::none);
}

TEST_F(AddressTimeout, BeginsAgainWithAnotherNetwork) {
    engine->setAddressTimeout(std::chrono::seconds(10));
    reportLinkUp("Home");
    runUntilIdle();
    clock->advance(std::chrono::seconds(9));
    reportBss("Other");
    EXPECT_EQ(runUntilIdle(), std::chrono::seconds(10));
    clock->advance(std::chrono::seconds(9));
    runUntilIdle();
    EXPECT_EQ(trouble(), Cause::none);
}

TEST(CodeNames, AreThoseOfTheStandard) {
    EXPECT_STREQ(wifi::reasonCodeName(15), "4WAY_HANDSHAKE_TIMEOUT");
    EXPECT_STREQ(wifi::reasonCodeName(-1), "<unknown>");
    EXPECT_STREQ(wifi::statusCodeName(17), "AP_UNABLE_TO_HANDLE_NEW_STA");
    EXPECT_STREQ(wifi::statusCodeName(0), "SUCCESS");
    EXPECT_STREQ(wifi::statusCodeName(-1), "<unknown>");
    EXPECT_STREQ(wifi::statusCodeName(70000), "<unknown>");
}

}  // namespace
}  // namespace kaz::test
