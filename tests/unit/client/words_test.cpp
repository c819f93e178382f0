#include <wifi/client/words.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>
#include <set>
#include <string>
#include <vector>

namespace kaz::wifi::client {
namespace {

using testing::HasSubstr;
using Status = ConnectionInfo::Status;

constexpr int lastCause = static_cast<int>(Cause::deauthenticated);
constexpr int lastVerdict = static_cast<int>(ConnectResult::notSendable);

Outcome outcome(Cause cause, Certainty certainty = Certainty::certain) {
    Outcome made;
    made.ssid = "Home";
    made.cause = cause;
    made.certainty = certainty;
    return made;
}

// Each text that the translator was asked for.
struct Catalogue {
    std::set<std::string> asked;
    Words words() {
        return Words([this](const std::string& english) {
            asked.insert(english);
            return '<' + english + '>';
        });
    }
};

TEST(Words, EachCauseHasAClause) {
    const Words words;
    std::set<std::string> clauses;
    for (int cause = 1; cause <= lastCause; ++cause) {
        const std::string certain = words.cause(outcome(static_cast<Cause>(cause)));
        ASSERT_FALSE(certain.empty()) << cause;
        EXPECT_NE(certain.back(), '.') << certain;
        EXPECT_EQ(std::isupper(static_cast<unsigned char>(certain.front())), 0) << certain;
        EXPECT_TRUE(clauses.insert(certain).second) << certain << " stands for two causes";
    }
}

TEST(Words, NoEndHasNoClause) {
    EXPECT_EQ(Words().cause(Outcome()), "");
    EXPECT_EQ(Words().advice(Outcome()), "");
}

TEST(Words, WhatIsNotCertainIsSaidAsProbable) {
    const Words words;
    EXPECT_EQ(words.cause(outcome(Cause::wrongKey)), "the password is wrong");
    EXPECT_EQ(words.cause(outcome(Cause::wrongKey, Certainty::probable)), "the password is probably wrong");
    EXPECT_EQ(words.cause(outcome(Cause::wrongKey, Certainty::unknown)), "the password is probably wrong");
    EXPECT_EQ(words.advice(outcome(Cause::wrongKey)), "typing the password again");
}

TEST(Words, ACauseOfALaterVersionIsUnknown) {
    EXPECT_EQ(Words().cause(outcome(static_cast<Cause>(lastCause + 1))),
              Words().cause(outcome(Cause::unknown)));
}

TEST(Words, WhatTheUserDidNeedsNoAdvice) {
    EXPECT_EQ(Words().advice(outcome(Cause::givenUp)), "");
    EXPECT_EQ(Words().advice(outcome(Cause::replaced)), "");
}

TEST(Words, WhatTheNetworkAsksForIsNamed) {
    Outcome ended = outcome(Cause::nothingInCommon);
    EXPECT_EQ(Words().cause(ended),
              "the network asks for something, which these settings or this device lack");
    ended.evidence.demands.sae = true;
    EXPECT_THAT(Words().cause(ended), HasSubstr("asks for WPA3 personal,"));
    ended.evidence.demands.hashToElement = true;
    EXPECT_THAT(Words().cause(ended), HasSubstr("asks for WPA3 with hash-to-element,"));
    ended.certainty = Certainty::probable;
    EXPECT_THAT(Words().cause(ended), HasSubstr("probably asks for"));
}

TEST(Words, TheArgumentIsTranslatedToo) {
    Outcome ended = outcome(Cause::nothingInCommon);
    ended.evidence.demands.owe = true;
    EXPECT_EQ(Catalogue().words().cause(ended),
              "<the network asks for <Enhanced Open>, which these settings or this device lack>");
}

TEST(Words, VerdictNamesTheRule) {
    const Words words;
    EXPECT_EQ(words.verdict(ConnectResult::ok, SecurityMode::rsnPsk), "");
    EXPECT_EQ(words.verdict(ConnectResult::passwordTooShort, SecurityMode::rsnPsk),
              "the password is shorter than 8 bytes");
    EXPECT_EQ(words.verdict(ConnectResult::passwordTooShort, SecurityMode::sae), "the password is empty");
    EXPECT_EQ(words.verdict(ConnectResult::passwordTooLong, SecurityMode::sae),
              "the password is longer than 1024 bytes");
    EXPECT_EQ(words.verdict(static_cast<ConnectResult>(1000), SecurityMode::none),
              "the settings are not valid");
}

TEST(Words, ANetworkThatCanBeJoinedIsNamedByItsMode) {
    NetworkAccess access{{}, SecurityMode::sae};
    access.demands.sae = access.demands.hashToElement = true;
    EXPECT_EQ(Words().security(access), "WPA3 personal");
    EXPECT_EQ(Words().advice(access), "");
}

TEST(Words, ANetworkThatCannotBeJoinedIsNamedByWhatItAsksFor) {
    NetworkAccess access;
    EXPECT_EQ(Words().security(access), "not supported");
    EXPECT_EQ(Words().advice(access), "");
    access.demands.sae = access.demands.hashToElement = true;
    EXPECT_EQ(Words().security(access), "WPA3 with hash-to-element");
    EXPECT_EQ(Words().advice(access), "sae_pwe=2 in the configuration of wpa_supplicant");
    access.demands = {};
    access.demands.owe = true;
    EXPECT_EQ(Words().security(access), "Enhanced Open");
    EXPECT_EQ(Words().advice(access), "WPA2 or WPA3 personal at the access point");
    access.demands.adHoc = true;
    EXPECT_EQ(Words().security(access), "ad-hoc mode");
}

TEST(Words, AdviceOnHashToElementIsThatOfTheList) {
    Outcome ended = outcome(Cause::nothingInCommon);
    ended.evidence.demands.hashToElement = true;
    EXPECT_EQ(Words().advice(ended), "sae_pwe=2 in the configuration of wpa_supplicant");
}

TEST(Words, SecurityAndStatusHaveNames) {
    EXPECT_EQ(Words().security(SecurityMode::sae), "WPA3 personal");
    EXPECT_EQ(Words().security(static_cast<SecurityMode>(1000)), "not supported");
    EXPECT_EQ(Words().status(Status::connectingIP), "getting an address");
}

// A translator who has all texts meets no other.
TEST(Words, TextsAreAllThatIsTranslated) {
    Catalogue catalogue;
    const Words words = catalogue.words();
    for (int cause = 0; cause <= lastCause + 1; ++cause) {
        for (const Certainty certainty : {Certainty::unknown, Certainty::probable, Certainty::certain}) {
            words.cause(outcome(static_cast<Cause>(cause), certainty));
            words.advice(outcome(static_cast<Cause>(cause), certainty));
        }
    }
    for (bool NetworkDemands::*demand :
         {&NetworkDemands::nothing, &NetworkDemands::wep, &NetworkDemands::wpaPsk, &NetworkDemands::rsnPsk,
          &NetworkDemands::rsnPskSha256, &NetworkDemands::sae, &NetworkDemands::enterprise,
          &NetworkDemands::owe, &NetworkDemands::hashToElement, &NetworkDemands::adHoc,
          &NetworkDemands::other}) {
        Outcome ended = outcome(Cause::nothingInCommon);
        ended.evidence.demands.*demand = true;
        words.cause(ended);
        words.advice(NetworkAccess{ended.evidence.demands, SecurityMode::unsupported});
    }
    for (int verdict = 0; verdict <= lastVerdict + 1; ++verdict) {
        words.verdict(static_cast<ConnectResult>(verdict), SecurityMode::rsnPsk);
        words.verdict(static_cast<ConnectResult>(verdict), SecurityMode::sae);
    }
    for (int mode = 0; mode <= static_cast<int>(SecurityMode::unsupported); ++mode) {
        words.security(static_cast<SecurityMode>(mode));
    }
    for (int status = 0; status <= static_cast<int>(Status::connected); ++status) {
        words.status(static_cast<Status>(status));
    }
    const std::vector<std::string> texts = Words::texts();
    EXPECT_THAT(catalogue.asked, testing::UnorderedElementsAreArray(texts));
}

}  // namespace
}  // namespace kaz::wifi::client
