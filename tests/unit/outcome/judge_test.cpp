// What the judge makes of sequences: which reports belong to which try, and when an outcome changes.
#include "outcome/judge.h"

#include "doubles/fake_clock/fake_clock.h"
#include "support/printed_values/printed_details.h"

#include <gtest/gtest.h>

#include <climits>
#include <map>
#include <memory>
#include <string>

namespace kaz::wifi {
namespace {

using Eap = Evidence::Eap;
using LinkEvidence = Communicator::LinkEvidence;
using Reason = ConnectionInfo::DisconnectReason;
using Sender = Evidence::Sender;
using Status = ConnectionInfo::Status;
using Step = Communicator::LinkStep;
using SupplicantStatus = Communicator::SupplicantConnectionStatus;

const std::string home = "Home";
const std::string other = "Other";

class JudgeTest : public ::testing::Test {
  protected:
    // The record moves on, as the tracker would move it.
    void show(Status status, const std::string& ssid) {
        ConnectionInfo next = record_;
        next.status = status;
        next.ssid = ssid;
        look(next);
    }
    void end(Reason reason, Status status = Status::disconnected, const std::string& ssid = {}) {
        clock->advance(std::chrono::seconds(1));
        ConnectionInfo next = record_;
        next.disconnectSsid = record_.ssid;
        next.disconnectReason = reason;
        next.disconnectTime = clock->get();
        next.status = status;
        next.ssid = ssid;
        look(next);
    }
    void look(const ConnectionInfo& next) {
        judge.look(record_, next);
        record_ = next;
    }

    void request(const std::string& ssid, std::optional<SecurityMode> mode = SecurityMode::rsnPsk) {
        show(Status::connectingWifi, ssid);
        judge.attemptBegan(ssid, mode, false);
    }
    void step(Step step) {
        LinkEvidence evidence;
        evidence.step = step;
        judge.note(evidence);
    }
    void reason(int code) {
        LinkEvidence evidence;
        evidence.disconnectReason = code;
        judge.note(evidence);
    }
    void authentication(int status) {
        LinkEvidence evidence;
        evidence.authenticationStatus = status;
        judge.note(evidence);
    }
    void eap(Eap report) {
        LinkEvidence evidence;
        evidence.eap = report;
        judge.note(evidence);
    }
    void joins(const std::string& ssid) {
        step(Step::authenticating);
        authentication(0);
        step(Step::associating);
        step(Step::keyExchange);
        step(Step::up);
        show(Status::connectingIP, ssid);
        show(Status::connected, ssid);
    }
    void failsInTheKeyExchange() {
        step(Step::authenticating);
        step(Step::associating);
        step(Step::keyExchange);
        reason(15);
        step(Step::down);
        end(Reason::causedBySystem);
    }
    void connected(const std::string& ssid) {
        request(ssid);
        joins(ssid);
    }

    void expect(const std::string& ssid, Stage stage, Cause cause, Certainty certainty) {
        EXPECT_EQ(outcome().ssid, ssid);
        EXPECT_EQ(outcome().stage, stage);
        EXPECT_EQ(outcome().cause, cause);
        EXPECT_EQ(outcome().certainty, certainty);
    }
    const Outcome& outcome() const { return judge.lastOutcome(); }

    std::shared_ptr<test::FakeClock> clock = std::make_shared<test::FakeClock>();
    std::map<std::string, Evidence> seen;
    Judge judge{clock, [this](const std::string& ssid) { return seen[ssid]; }};

  private:
    ConnectionInfo record_;
};

TEST_F(JudgeTest, NothingHasEndedAtFirst) {
    EXPECT_EQ(outcome(), Outcome{});
    connected(home);
    EXPECT_EQ(outcome(), Outcome{});
}

TEST_F(JudgeTest, AFailedKeyExchangeIsProbablyAWrongKeyAndASecondOneInARowCertainly) {
    request(home);
    failsInTheKeyExchange();
    expect(home, Stage::keyExchange, Cause::wrongKey, Certainty::probable);
    EXPECT_EQ(outcome().evidence.reasonCode, 15);
    EXPECT_EQ(outcome().evidence.reasonSender, Sender::accessPoint);
    EXPECT_TRUE(outcome().evidence.keyExchange);
    EXPECT_EQ(outcome().time, clock->get());

    show(Status::connectingWifi, home);
    failsInTheKeyExchange();
    expect(home, Stage::keyExchange, Cause::wrongKey, Certainty::certain);
}

TEST_F(JudgeTest, ANewKeyIsNotBlamedForTheFormerOne) {
    request(home);
    failsInTheKeyExchange();
    request(home);
    failsInTheKeyExchange();
    expect(home, Stage::keyExchange, Cause::wrongKey, Certainty::probable);
}

TEST_F(JudgeTest, AKeyThatWorkedIsNotBlamedForAnEarlierFailure) {
    request(home);
    failsInTheKeyExchange();
    show(Status::connectingWifi, home);
    joins(home);
    reason(-4);
    step(Step::down);
    end(Reason::causedBySystem);
    show(Status::connectingWifi, home);
    failsInTheKeyExchange();
    expect(home, Stage::keyExchange, Cause::wrongKey, Certainty::probable);
}

TEST_F(JudgeTest, FailuresOfTwoNetworksAreNotInARow) {
    request(home, std::nullopt);
    failsInTheKeyExchange();
    request(other, std::nullopt);
    failsInTheKeyExchange();
    expect(other, Stage::keyExchange, Cause::wrongKey, Certainty::probable);
}

// The state may be down again before the supplicant tells of the step.
TEST_F(JudgeTest, AStatusCodeTellsTheStageThoughNoStepWasReported) {
    request(home);
    LinkEvidence evidence;
    evidence.step = Step::down;
    evidence.authenticationStatus = 17;
    judge.note(evidence);
    end(Reason::causedBySystem);
    expect(home, Stage::authenticating, Cause::full, Certainty::certain);
    EXPECT_EQ(outcome().evidence.authenticationStatus, 17);
}

// Through hash-to-element, the first step is accepted with status 126.
TEST_F(JudgeTest, AnSaePasswordIsExaminedAfterTheFirstStep) {
    for (const int accepted : {0, 126}) {
        request(home, SecurityMode::sae);
        step(Step::authenticating);
        authentication(accepted);
        authentication(1);
        step(Step::down);
        end(Reason::causedBySystem);
        expect(home, Stage::authenticating, Cause::wrongKey, Certainty::certain);
        EXPECT_EQ(outcome().evidence.authenticationStatus, 1);
    }
}

TEST_F(JudgeTest, TheEapReportThatExplainsMostStays) {
    struct Exchange {
        std::vector<Eap> reports;
        Eap kept;
    };
    const std::vector<Exchange> exchanges{
        {{Eap::started, Eap::methodAgreed, Eap::rejected}, Eap::rejected},
        {{Eap::started, Eap::methodRefused, Eap::methodAgreed, Eap::rejected}, Eap::rejected},
        {{Eap::started, Eap::methodRefused, Eap::rejected}, Eap::methodRefused},
        {{Eap::started, Eap::methodAgreed, Eap::serverRefused, Eap::rejected}, Eap::serverRefused},
        {{Eap::started, Eap::rejected}, Eap::rejected},
        {{Eap::started, Eap::methodAgreed, Eap::succeeded}, Eap::succeeded},
        {{Eap::succeeded, Eap::started}, Eap::started},
    };
    for (const auto& [reports, kept] : exchanges) {
        request(home, SecurityMode::enterprise);
        step(Step::associating);
        for (const Eap report : reports) {
            eap(report);
        }
        reason(23);
        step(Step::down);
        end(Reason::causedBySystem);
        EXPECT_EQ(outcome().evidence.eap, kept);
        EXPECT_EQ(outcome().stage, Stage::eap);
    }
}

TEST_F(JudgeTest, TheUserGivesUpOrReplaces) {
    request(home);
    end(Reason::causedByUser);
    expect(home, Stage::requested, Cause::givenUp, Certainty::certain);
    connected(home);
    end(Reason::causedByUser, Status::connectingWifi, other);
    judge.attemptBegan(other, SecurityMode::none, false);
    expect(home, Stage::online, Cause::replaced, Certainty::certain);
}

TEST_F(JudgeTest, TheSupplicantMayChooseAnotherNetwork) {
    connected(home);
    judge.networkSelected(other);
    end(Reason::causedBySystem, Status::connectingWifi, other);
    expect(home, Stage::online, Cause::replaced, Certainty::certain);
}

TEST_F(JudgeTest, AFailureIsNoReplacementThoughAnotherNetworkFollows) {
    request(home);
    step(Step::authenticating);
    step(Step::keyExchange);
    reason(15);
    step(Step::down);
    judge.networkSelected(other);
    step(Step::authenticating);
    end(Reason::causedBySystem, Status::connectingWifi, other);
    expect(home, Stage::keyExchange, Cause::wrongKey, Certainty::probable);
}

TEST_F(JudgeTest, WhatTheFormerLinkReportsIsNotEvidenceAgainstTheNext) {
    connected(home);
    end(Reason::causedByUser, Status::connectingWifi, other);
    judge.attemptBegan(other, SecurityMode::rsnPsk, false);
    judge.networkSelected(other);
    reason(-3);
    step(Step::down);
    step(Step::authenticating);
    step(Step::down);
    end(Reason::causedBySystem);
    expect(other, Stage::authenticating, Cause::accessPointGone, Certainty::probable);
    EXPECT_EQ(outcome().evidence.reasonCode, 0);
}

TEST_F(JudgeTest, ATryBeginsWithoutTheEvidenceOfTheOneBefore) {
    request(home);
    step(Step::authenticating);
    authentication(17);
    step(Step::down);
    end(Reason::causedBySystem);
    expect(home, Stage::authenticating, Cause::full, Certainty::certain);
    judge.networkSelected(home);
    show(Status::connectingWifi, home);
    step(Step::authenticating);
    step(Step::down);
    end(Reason::causedBySystem);
    expect(home, Stage::authenticating, Cause::accessPointGone, Certainty::probable);
}

TEST_F(JudgeTest, LateEvidenceRefinesTheOutcomeUntilTheNextTry) {
    request(home);
    step(Step::authenticating);
    step(Step::keyExchange);
    step(Step::down);
    end(Reason::causedBySystem);
    expect(home, Stage::keyExchange, Cause::accessPointGone, Certainty::probable);
    const auto time = outcome().time;
    reason(15);
    expect(home, Stage::keyExchange, Cause::wrongKey, Certainty::probable);
    EXPECT_EQ(outcome().time, time);
    for (const int ofAnotherLink : {-3, 3, 8, -4}) {
        reason(ofAnotherLink);
        EXPECT_EQ(outcome().evidence.reasonCode, 15);
    }
    step(Step::authenticating);
    reason(5);
    expect(home, Stage::keyExchange, Cause::wrongKey, Certainty::probable);
}

TEST_F(JudgeTest, AReasonTogetherWithTheNextStepBelongsToTheTryBefore) {
    request(home);
    step(Step::authenticating);
    step(Step::keyExchange);
    step(Step::down);
    LinkEvidence evidence;
    evidence.step = Step::authenticating;
    evidence.disconnectReason = 15;
    judge.note(evidence);
    end(Reason::causedBySystem, Status::connectingWifi, home);
    expect(home, Stage::keyExchange, Cause::wrongKey, Certainty::probable);
}

TEST_F(JudgeTest, TheNextListTellsWhatAnAccessPointThatWasSeenDemands) {
    seen[home].seen = true;
    seen[home].demands.rsnPsk = true;
    request(home);
    judge.scanEnded(true);
    end(Reason::causedBySystem);
    expect(home, Stage::requested, Cause::nothingInCommon, Certainty::probable);
    seen[home].demands = {};
    seen[home].demands.sae = true;
    judge.listRead();
    expect(home, Stage::requested, Cause::nothingInCommon, Certainty::certain);
    EXPECT_TRUE(outcome().evidence.demands.sae);
    seen.clear();
    judge.listRead();
    expect(home, Stage::requested, Cause::nothingInCommon, Certainty::certain);
}

TEST_F(JudgeTest, OutOfRangeIsCertainOnlyAfterAScan) {
    request(home);
    end(Reason::causedBySystem);
    expect(home, Stage::requested, Cause::outOfRange, Certainty::probable);
    request(home);
    judge.scanEnded(false);
    end(Reason::causedBySystem);
    expect(home, Stage::requested, Cause::outOfRange, Certainty::probable);
    judge.scanEnded(true);  // too late for this attempt
    step(Step::down);
    expect(home, Stage::requested, Cause::outOfRange, Certainty::probable);
    request(home);
    judge.scanEnded(true);
    end(Reason::causedBySystem);
    expect(home, Stage::requested, Cause::outOfRange, Certainty::certain);
    seen[home].seen = true;  // it comes into range later
    step(Step::down);
    judge.listRead();
    expect(home, Stage::requested, Cause::outOfRange, Certainty::certain);
}

TEST_F(JudgeTest, ABlockedRadioIsTheCauseUntilAScanSucceeds) {
    connected(home);
    judge.noteStatus(SupplicantStatus::InterfaceDisabled);
    reason(-3);
    step(Step::down);
    end(Reason::causedBySystem);
    expect(home, Stage::online, Cause::radioBlocked, Certainty::certain);
    request(home);
    judge.scanEnded(false);
    end(Reason::causedBySystem);
    expect(home, Stage::requested, Cause::radioBlocked, Certainty::certain);
    request(home);
    judge.scanEnded(true);
    end(Reason::causedBySystem);
    expect(home, Stage::requested, Cause::outOfRange, Certainty::certain);
}

TEST_F(JudgeTest, TheEndOfTheSupplicantEndsWhatWasThere) {
    connected(home);
    clock->advance(std::chrono::seconds(1));
    judge.supplicantDetached(false);
    look(ConnectionInfo());
    expect(home, Stage::online, Cause::supplicantGone, Certainty::certain);
    EXPECT_EQ(outcome().time, clock->get());
    connected(home);
    judge.supplicantDetached(true);
    look(ConnectionInfo());
    expect(home, Stage::online, Cause::givenUp, Certainty::certain);
    const Outcome before = outcome();
    judge.supplicantDetached(false);
    look(ConnectionInfo());
    EXPECT_EQ(outcome(), before);
}

TEST_F(JudgeTest, ForgettingALostNetworkIsNoEnd) {
    request(home);
    end(Reason::causedBySystem);
    const Outcome before = outcome();
    ConnectionInfo forgotten;
    forgotten.disconnectSsid = home;
    forgotten.disconnectReason = Reason::causedByUser;
    clock->advance(std::chrono::seconds(1));
    forgotten.disconnectTime = clock->get();
    look(forgotten);
    EXPECT_EQ(outcome(), before);
}

TEST_F(JudgeTest, ALossIsJudgedByTheSignalOfTheConnection) {
    connected(home);
    ConnectionInfo weak;
    weak.status = Status::connected;
    weak.ssid = home;
    weak.signal = -84;
    look(weak);
    reason(-4);
    step(Step::down);
    end(Reason::causedBySystem);
    expect(home, Stage::online, Cause::weakSignal, Certainty::probable);
    EXPECT_EQ(outcome().evidence.signal, -84);
}

TEST_F(JudgeTest, AnAttemptThatStartedBeforeThisProgramIsJudgedByWhatWasSeen) {
    show(Status::connected, home);
    reason(7);
    step(Step::down);
    end(Reason::causedBySystem);
    expect(home, Stage::online, Cause::deauthenticated, Certainty::certain);
}

TEST_F(JudgeTest, ImpossibleReasonsAreNone) {
    request(home);
    step(Step::authenticating);
    reason(INT_MIN);
    reason(0);
    step(Step::down);
    end(Reason::causedBySystem);
    EXPECT_EQ(outcome().evidence.reasonCode, 0);
    EXPECT_EQ(outcome().evidence.reasonSender, Sender::nobody);
}

TEST_F(JudgeTest, ARequestThatFailedIsTheCause) {
    request(home);
    judge.requestFailed(Facts::Request::refused);
    end(Reason::causedBySystem, Status::connected, other);
    expect(home, Stage::requested, Cause::requestRefused, Certainty::certain);
}

}  // namespace
}  // namespace kaz::wifi
