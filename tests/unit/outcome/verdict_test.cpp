// The rules, one row each: what is known, and the cause that follows.
#include "outcome/verdict.h"

#include "support/printed_values/printed_details.h"

#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace kaz::wifi {

void PrintTo(const Verdict& verdict, std::ostream* out) {
    PrintTo(verdict.cause, out);
    *out << ", ";
    PrintTo(verdict.certainty, out);
}

namespace {

using End = Facts::End;
using Request = Facts::Request;
using Sender = Evidence::Sender;
using Eap = Evidence::Eap;

struct Rule {
    const char* name;
    Facts facts;
    Verdict verdict;
};

void PrintTo(const Rule& rule, std::ostream* out) {
    *out << rule.name;
}

NetworkDemands demandsOf(bool NetworkDemands::*demand) {
    NetworkDemands demands;
    demands.*demand = true;
    return demands;
}

// Builds facts from nothing but what matters.
struct FactsBuilder {
    Facts facts;

    FactsBuilder& stage(Stage stage) {
        facts.stage = stage;
        facts.evidence.keyExchange = stage == Stage::keyExchange;
        facts.linkDown = facts.wasTried();
        return *this;
    }
    FactsBuilder& end(End end) {
        facts.end = end;
        return *this;
    }
    FactsBuilder& request(Request request) {
        facts.request = request;
        return *this;
    }
    FactsBuilder& mode(SecurityMode mode) {
        facts.requested = mode;
        return *this;
    }
    FactsBuilder& seen(bool NetworkDemands::*demand, int signal = -50) {
        facts.evidence.seen = true;
        facts.evidence.signal = signal;
        facts.evidence.demands = demandsOf(demand);
        return *this;
    }
    FactsBuilder& scanned() {
        facts.evidence.scanned = true;
        return *this;
    }
    FactsBuilder& reason(int code, Sender sender = Sender::accessPoint) {
        facts.evidence.reasonCode = code;
        facts.evidence.reasonSender = sender;
        return *this;
    }
    FactsBuilder& authentication(int status, bool acceptedBefore = false) {
        facts.stage = Stage::authenticating;
        facts.evidence.authenticationStatus = status;
        facts.authenticated = acceptedBefore;
        return *this;
    }
    FactsBuilder& association(int status) {
        facts.stage = Stage::associating;
        facts.evidence.associationStatus = status;
        return *this;
    }
    FactsBuilder& eap(Eap eap) {
        facts.stage = Stage::eap;
        facts.evidence.eap = eap;
        return *this;
    }
    template <typename Change>
    FactsBuilder& with(const Change& change) {
        change(facts);
        return *this;
    }
};

FactsBuilder at(Stage stage) {
    return FactsBuilder().stage(stage);
}

FactsBuilder searching(SecurityMode mode = SecurityMode::rsnPsk) {
    return FactsBuilder().mode(mode);
}

constexpr Verdict certain(Cause cause) {
    return {cause, Certainty::certain};
}

constexpr Verdict probable(Cause cause) {
    return {cause, Certainty::probable};
}

constexpr Verdict unexplained{};

class Verdicts : public ::testing::TestWithParam<Rule> {};

TEST_P(Verdicts, FollowFromTheFacts) {
    EXPECT_EQ(verdictOn(GetParam().facts), GetParam().verdict);
}

const auto ruleName = [](const auto& instance) { return std::string(instance.param.name); };

INSTANTIATE_TEST_SUITE_P(
    Ends, Verdicts,
    ::testing::Values(
        Rule{"TheUserGaveUp", at(Stage::keyExchange).end(End::givenUp).reason(15).facts,
             certain(Cause::givenUp)},
        Rule{"AnotherAttemptBegan", at(Stage::online).end(End::replaced).facts, certain(Cause::replaced)},
        Rule{"TheSupplicantEnded", at(Stage::online).end(End::supplicantGone).facts,
             certain(Cause::supplicantGone)},
        Rule{"TheRadioIsOffWhileSearching", searching().with([](Facts& f) { f.radioOff = true; }).facts,
             certain(Cause::radioBlocked)},
        Rule{"TheRadioIsOffWhileConnected",
             at(Stage::online).reason(3, Sender::device).with([](Facts& f) { f.radioOff = true; }).facts,
             certain(Cause::radioBlocked)},
        Rule{"TheRequestWasRefused", searching().request(Request::refused).facts,
             certain(Cause::requestRefused)},
        Rule{"TheRequestFailedAndThePlatformDoesNotTellWhy", searching().request(Request::failed).facts,
             probable(Cause::requestRefused)},
        Rule{"ItFellSilentAfterTheRequest",
             searching().scanned().with([](Facts& f) { f.silent = true; }).facts,
             certain(Cause::supplicantSilent)},
        Rule{"TheRequestWasNotAnswered", searching().request(Request::unanswered).facts,
             certain(Cause::supplicantSilent)}),
    ruleName);

INSTANTIATE_TEST_SUITE_P(
    Searches, Verdicts,
    ::testing::Values(
        Rule{"NothingIsKnown", Facts{}, probable(Cause::outOfRange)},
        Rule{"AScanDidNotSeeIt", searching().scanned().facts, certain(Cause::outOfRange)},
        Rule{"AScanDidNotSeeAHiddenOne", searching().scanned().with([](Facts& f) { f.hidden = true; }).facts,
             probable(Cause::outOfRange)},
        Rule{"ItIsSeenAndNotScannedFor", searching().seen(&NetworkDemands::rsnPsk).facts, unexplained},
        Rule{"AScanSawItAndItWasNotTried", searching().seen(&NetworkDemands::rsnPsk).scanned().facts,
             probable(Cause::nothingInCommon)},
        Rule{"ItDemandsSae", searching().seen(&NetworkDemands::sae).facts, certain(Cause::nothingInCommon)},
        Rule{"ItDemandsOwe", searching(SecurityMode::none).seen(&NetworkDemands::owe).facts,
             certain(Cause::nothingInCommon)},
        Rule{"ItDemandsSha256", searching().seen(&NetworkDemands::rsnPskSha256).facts,
             certain(Cause::nothingInCommon)},
        Rule{"ItIsAdHoc",
             searching(SecurityMode::none)
                 .seen(&NetworkDemands::nothing)
                 .with([](Facts& f) { f.evidence.demands.adHoc = true; })
                 .facts,
             certain(Cause::nothingInCommon)},
        Rule{"TheSupplicantLacksTheHashToElementThatItDemands",
             FactsBuilder()
                 .seen(&NetworkDemands::hashToElement)
                 .with([](Facts& f) { f.hashToElement = false; })
                 .facts,
             certain(Cause::nothingInCommon)},
        Rule{"TheSupplicantHasTheHashToElementThatItDemands",
             FactsBuilder()
                 .seen(&NetworkDemands::hashToElement)
                 .with([](Facts& f) { f.hashToElement = true; })
                 .facts,
             unexplained},
        Rule{"AConfiguredOneWasSeenAndNotTried", FactsBuilder().seen(&NetworkDemands::sae).scanned().facts,
             probable(Cause::nothingInCommon)}),
    ruleName);

INSTANTIATE_TEST_SUITE_P(
    Refusals, Verdicts,
    ::testing::Values(
        Rule{"Full", searching().authentication(17).facts, certain(Cause::full)},
        Rule{"FullAtAssociation", searching().association(17).facts, certain(Cause::full)},
        Rule{"FullByReason", at(Stage::associating).reason(5).facts, certain(Cause::full)},
        Rule{"OnADenyList", searching().authentication(1).facts, probable(Cause::banned)},
        Rule{"WrongSaePassword", searching(SecurityMode::sae).authentication(1, true).facts,
             certain(Cause::wrongKey)},
        Rule{"WrongSaePasswordByItsOwnStatus", searching(SecurityMode::sae).authentication(15).facts,
             certain(Cause::wrongKey)},
        Rule{"WrongSharedWepKey", searching(SecurityMode::wep).authentication(15).facts,
             certain(Cause::wrongKey)},
        Rule{"SaeRefusedAtOnce", searching(SecurityMode::sae).authentication(1).facts,
             certain(Cause::refused)},
        Rule{"ConfiguredSaeRefusedAtTheSecondStep",
             FactsBuilder().seen(&NetworkDemands::sae).authentication(1, true).facts,
             certain(Cause::wrongKey)},
        Rule{"ConfiguredOneThatTakesBothKeysRefused",
             FactsBuilder()
                 .seen(&NetworkDemands::sae)
                 .with([](Facts& f) { f.evidence.demands.rsnPsk = true; })
                 .authentication(1)
                 .facts,
             probable(Cause::banned)},
        Rule{"SaeRefusedWhereHashToElementIsDemanded",
             searching(SecurityMode::sae)
                 .seen(&NetworkDemands::sae)
                 .with([](Facts& f) { f.evidence.demands.hashToElement = true; })
                 .authentication(1)
                 .facts,
             probable(Cause::nothingInCommon)},
        Rule{"SaeRefusedByASupplicantThatLacksTheDemandedHashToElement",
             searching(SecurityMode::sae)
                 .seen(&NetworkDemands::hashToElement)
                 .with([](Facts& f) { f.hashToElement = false; })
                 .authentication(1)
                 .facts,
             certain(Cause::nothingInCommon)},
        Rule{"WrongSaePasswordThroughHashToElement",
             searching(SecurityMode::sae)
                 .seen(&NetworkDemands::hashToElement)
                 .with([](Facts& f) { f.hashToElement = true; })
                 .authentication(1, true)
                 .facts,
             certain(Cause::wrongKey)},
        Rule{"KeyManagementNotValid", searching().association(43).facts, certain(Cause::nothingInCommon)},
        Rule{"ProtectionOfManagementFramesDemanded", searching().association(31).facts,
             certain(Cause::nothingInCommon)},
        Rule{"AnyOtherStatus", searching().association(30).facts, certain(Cause::refused)},
        Rule{"AnUnknownStatus", searching().authentication(-7).facts, certain(Cause::refused)},
        Rule{"AReasonBeforeTheKeys", at(Stage::associating).reason(9).facts, certain(Cause::refused)},
        Rule{"AReasonAboutTheElements", at(Stage::keyExchange).reason(17).facts,
             certain(Cause::nothingInCommon)},
        Rule{"NoAnswerToTheAuthentication", at(Stage::authenticating).facts,
             probable(Cause::accessPointGone)},
        Rule{"TheAccessPointSaysThatItLeaves", at(Stage::associating).reason(3).facts,
             certain(Cause::accessPointGone)},
        Rule{"LinkSetupStillGoesOn", at(Stage::associating).with([](Facts& f) { f.linkDown = false; }).facts,
             unexplained}),
    ruleName);

INSTANTIATE_TEST_SUITE_P(
    Keys, Verdicts,
    ::testing::Values(
        Rule{"TheHandshakeFailedOnce", at(Stage::keyExchange).reason(15).facts, probable(Cause::wrongKey)},
        Rule{"TheHandshakeFailedTwice",
             at(Stage::keyExchange).reason(15).with([](Facts& f) { f.failedExchanges = 1; }).facts,
             certain(Cause::wrongKey)},
        Rule{"OlderAccessPointsSendAnotherReason", at(Stage::keyExchange).reason(2).facts,
             probable(Cause::wrongKey)},
        Rule{"TheDriverTimedOut", at(Stage::keyExchange).reason(15, Sender::device).facts,
             probable(Cause::wrongKey)},
        Rule{"TheSupplicantReportsAPreSharedKey",
             at(Stage::keyExchange).with([](Facts& f) { f.evidence.mismatchReported = true; }).facts,
             probable(Cause::wrongKey)},
        Rule{"TheSupplicantReportsAnSaePassword",
             at(Stage::authenticating).with([](Facts& f) { f.saeMismatch = true; }).facts,
             certain(Cause::wrongKey)},
        Rule{"TheDeviceLeftTheHandshake", at(Stage::keyExchange).reason(3, Sender::device).facts,
             probable(Cause::accessPointGone)},
        Rule{"TheAccessPointLeftTheHandshake", at(Stage::keyExchange).reason(3).facts,
             certain(Cause::accessPointGone)},
        Rule{"TheLinkEndedInTheHandshake", at(Stage::keyExchange).facts, probable(Cause::accessPointGone)}),
    ruleName);

INSTANTIATE_TEST_SUITE_P(
    EapExchanges, Verdicts,
    ::testing::Values(
        Rule{"Rejected", FactsBuilder().eap(Eap::rejected).reason(23).facts, certain(Cause::eapRejected)},
        Rule{"ServerUntrusted", FactsBuilder().eap(Eap::serverRefused).reason(23).facts,
             certain(Cause::serverUntrusted)},
        Rule{"NoMethod", FactsBuilder().eap(Eap::methodRefused).reason(23).facts,
             certain(Cause::noEapMethod)},
        Rule{"OnlyTheReason", FactsBuilder().eap(Eap::methodAgreed).reason(23).facts,
             probable(Cause::eapRejected)},
        Rule{"AcceptedAndThenTheKeysFailed",
             at(Stage::keyExchange).with([](Facts& f) { f.evidence.eap = Eap::succeeded; }).reason(15).facts,
             certain(Cause::refused)},
        Rule{"RejectedAgainLater",
             at(Stage::online).with([](Facts& f) { f.evidence.eap = Eap::rejected; }).reason(23).facts,
             certain(Cause::eapRejected)}),
    ruleName);

INSTANTIATE_TEST_SUITE_P(
    Losses, Verdicts,
    ::testing::Values(
        Rule{"Deauthenticated", at(Stage::online).reason(7).facts, certain(Cause::deauthenticated)},
        Rule{"TheAccessPointLeft", at(Stage::online).reason(3).facts, certain(Cause::accessPointGone)},
        Rule{"TheBeaconsStopped",
             at(Stage::online).seen(&NetworkDemands::rsnPsk, -50).reason(4, Sender::device).facts,
             probable(Cause::accessPointGone)},
        Rule{"TheBeaconsStoppedAtAWeakSignal",
             at(Stage::online).seen(&NetworkDemands::rsnPsk, -75).reason(4, Sender::device).facts,
             probable(Cause::weakSignal)},
        Rule{"TheBeaconsStoppedAtASignalThatSuffices",
             at(Stage::online).seen(&NetworkDemands::rsnPsk, -74).reason(4, Sender::device).facts,
             probable(Cause::accessPointGone)},
        Rule{"TheBeaconsStoppedAtAnUnknownSignal", at(Stage::address).reason(4, Sender::device).facts,
             probable(Cause::accessPointGone)},
        Rule{"TheDeviceLeft", at(Stage::online).reason(3, Sender::device).facts, unexplained},
        Rule{"NothingIsReported", at(Stage::online).facts, unexplained}),
    ruleName);

TEST(Demands, AreMetByTheModesThatTheSupplicantCanUse) {
    struct Pair {
        SecurityMode mode;
        bool NetworkDemands::*demand;
    };
    const std::vector<Pair> met{{SecurityMode::none, &NetworkDemands::nothing},
                                {SecurityMode::wep, &NetworkDemands::wep},
                                {SecurityMode::wpaPsk, &NetworkDemands::wpaPsk},
                                {SecurityMode::wpaPsk, &NetworkDemands::rsnPsk},
                                {SecurityMode::rsnPsk, &NetworkDemands::wpaPsk},
                                {SecurityMode::rsnPsk, &NetworkDemands::rsnPsk},
                                {SecurityMode::sae, &NetworkDemands::sae},
                                {SecurityMode::enterprise, &NetworkDemands::enterprise},
                                {SecurityMode::enterpriseVariant, &NetworkDemands::enterprise}};
    for (const auto& [mode, demand] : met) {
        EXPECT_TRUE(meets(mode, demandsOf(demand))) << ::testing::PrintToString(mode);
        EXPECT_FALSE(meets(mode, demandsOf(&NetworkDemands::other))) << ::testing::PrintToString(mode);
        EXPECT_FALSE(meets(mode, demandsOf(&NetworkDemands::owe))) << ::testing::PrintToString(mode);
        EXPECT_TRUE(meets(mode, NetworkDemands{})) << ::testing::PrintToString(mode);
    }
    EXPECT_FALSE(meets(SecurityMode::unsupported, demandsOf(&NetworkDemands::other)));
    EXPECT_FALSE(meets(SecurityMode::rsnPsk, demandsOf(&NetworkDemands::sae)));
    EXPECT_FALSE(meets(SecurityMode::sae, demandsOf(&NetworkDemands::rsnPsk)));
}

// Codes come from the air: every value gives a verdict.
TEST(AnyCodes, GiveACause) {
    for (const Stage stage : {Stage::requested, Stage::authenticating, Stage::associating, Stage::eap,
                              Stage::keyExchange, Stage::address, Stage::online}) {
        for (int code = -300; code <= 300; ++code) {
            Facts facts = at(stage).reason(code).facts;
            EXPECT_NE(verdictOn(facts).cause, Cause::none) << code;
            facts.evidence.authenticationStatus = code;
            EXPECT_NE(verdictOn(facts).cause, Cause::none) << code;
        }
    }
}

struct Choice {
    const char* name;
    SecurityMode announced;
    std::vector<bool NetworkDemands::*> demands;
    std::optional<bool> hashToElement;
    SecurityMode mode;
};

void PrintTo(const Choice& choice, std::ostream* out) {
    *out << choice.name;
}

class ModeToJoin : public ::testing::TestWithParam<Choice> {};

TEST_P(ModeToJoin, IsOneThatMeetsTheDemands) {
    const Choice& choice = GetParam();
    NetworkDemands demands;
    for (bool NetworkDemands::*demand : choice.demands) {
        demands.*demand = true;
    }
    EXPECT_EQ(modeToJoin(choice.announced, demands, choice.hashToElement), choice.mode);
}

using D = NetworkDemands;
INSTANTIATE_TEST_SUITE_P(
    All, ModeToJoin,
    ::testing::Values(
        Choice{"AsAnnounced", SecurityMode::rsnPsk, {&D::rsnPsk, &D::sae}, {}, SecurityMode::rsnPsk},
        Choice{"WithoutDemandsAsAnnounced", SecurityMode::wep, {}, {}, SecurityMode::wep},
        Choice{"Wpa3Only", SecurityMode::unsupported, {&D::sae}, false, SecurityMode::sae},
        Choice{"HashToElement",
               SecurityMode::unsupported,
               {&D::sae, &D::hashToElement},
               true,
               SecurityMode::sae},
        Choice{"PerhapsHashToElement",
               SecurityMode::unsupported,
               {&D::sae, &D::hashToElement},
               {},
               SecurityMode::sae},
        Choice{"NoHashToElement",
               SecurityMode::unsupported,
               {&D::sae, &D::hashToElement},
               false,
               SecurityMode::unsupported},
        Choice{"Sha256Only", SecurityMode::rsnPsk, {&D::rsnPskSha256}, {}, SecurityMode::unsupported},
        Choice{"EnhancedOpen", SecurityMode::unsupported, {&D::owe}, {}, SecurityMode::unsupported},
        Choice{"SuiteB", SecurityMode::unsupported, {&D::other}, {}, SecurityMode::unsupported},
        Choice{"AnAccessPointOfAnotherKindIsOpen",
               SecurityMode::unsupported,
               {&D::owe, &D::nothing},
               {},
               SecurityMode::none},
        Choice{"AdHoc", SecurityMode::none, {&D::nothing, &D::adHoc}, {}, SecurityMode::unsupported}),
    [](const auto& instance) { return std::string(instance.param.name); });

}  // namespace
}  // namespace kaz::wifi
