#include "manager/connect_validation.h"
#include "unit/manager/engine_fixture.h"

#include <climits>
#include <cstddef>

namespace kaz::test {
namespace {

struct Row {
    std::string what;
    ConnectionSettings settings;
    ConnectResult verdict;
};

ConnectionSettings withPassword(SecurityMode mode, std::size_t length) {
    ConnectionSettings settings = settingsFor("Home", mode);
    settings.password = std::string(length, 'x');
    return settings;
}

ConnectionSettings withMethods(SecurityMode mode, const std::string& eap, const std::string& phase2) {
    ConnectionSettings settings = settingsFor("Home", mode);
    settings.eapMethod = eap;
    settings.phase2Method = phase2;
    return settings;
}

ConnectionSettings unchecked(SecurityMode mode, const std::string& ssid, const std::string& password) {
    ConnectionSettings settings = withMethods(mode, "no such method", "nor this");
    settings.ssid = ssid;
    settings.password = password;
    return settings;
}

using Rows = std::vector<Row>;

Rows ssids() {
    const auto none = [](const std::string& ssid) { return settingsFor(ssid, SecurityMode::none); };
    std::string accented;
    for (int i = 0; i < 17; ++i) {
        accented += "\xc3\xa9";
    }
    return {
        {"empty SSID", none(""), ConnectResult::ssidEmpty},
        {"SSID of 1 byte", none("x"), ConnectResult::ok},
        {"SSID of 32 bytes", none(std::string(32, 'x')), ConnectResult::ok},
        {"SSID of 33 bytes", none(std::string(33, 'x')), ConnectResult::ssidTooLong},
        {"SSID of one NUL", none(std::string(1, '\0')), ConnectResult::ok},
        {"SSID of 32 NULs", none(std::string(32, '\0')), ConnectResult::ok},
        {"SSID of 33 NULs", none(std::string(33, '\0')), ConnectResult::ssidTooLong},
        {"SSID of 32 bytes of invalid UTF-8", none(std::string(32, '\xff')), ConnectResult::ok},
        {"SSID of 17 characters in 34 bytes", none(accented), ConnectResult::ssidTooLong},
    };
}

// The first broken rule decides.
Rows precedence() {
    const auto mode = SecurityMode::unsupported;
    return {
        {"empty SSID before an unsupported mode", unchecked(mode, "", ""), ConnectResult::ssidEmpty},
        {"long SSID before an unsupported mode", unchecked(mode, std::string(33, 'x'), ""),
         ConnectResult::ssidTooLong},
        {"empty SSID before a short password", unchecked(SecurityMode::rsnPsk, "", ""),
         ConnectResult::ssidEmpty},
        {"EAP method before phase 2", withMethods(SecurityMode::enterprise, "TLS", "nor this"),
         ConnectResult::eapMethodUnsupported},
    };
}

Rows passwords() {
    struct Lengths {
        SecurityMode mode;
        ConnectResult verdict;
        std::vector<std::size_t> lengths;
    };
    const std::vector<Lengths> all{
        {SecurityMode::wpaPsk, ConnectResult::passwordTooShort, {0, 7}},
        {SecurityMode::wpaPsk, ConnectResult::ok, {8, 63}},
        {SecurityMode::wpaPsk, ConnectResult::passwordTooLong, {64, 1000}},
        {SecurityMode::rsnPsk, ConnectResult::passwordTooShort, {0, 7}},
        {SecurityMode::rsnPsk, ConnectResult::ok, {8, 63}},
        {SecurityMode::rsnPsk, ConnectResult::passwordTooLong, {64, 1000}},
        {SecurityMode::wep, ConnectResult::wepKeyInvalidLength, {0, 1, 4, 6, 10, 12, 14, 26}},
        {SecurityMode::wep, ConnectResult::ok, {5, 13}},
        {SecurityMode::sae, ConnectResult::passwordTooShort, {0}},
        {SecurityMode::sae, ConnectResult::ok, {1, 1024}},
        {SecurityMode::sae, ConnectResult::passwordTooLong, {1025}},
    };
    Rows rows;
    for (const auto& [mode, verdict, lengths] : all) {
        for (const std::size_t length : lengths) {
            rows.push_back({"mode " + ::testing::PrintToString(mode) + " with a password of " +
                                std::to_string(length) + " bytes",
                            withPassword(mode, length), verdict});
        }
    }
    return rows;
}

Rows methods(SecurityMode mode) {
    const auto ok = ConnectResult::ok;
    const std::string name = "mode " + ::testing::PrintToString(mode) + " with ";
    ConnectionSettings longPassword = withMethods(mode, "PEAP", "");
    longPassword.password = std::string(5000, 'x');
    return {
        {name + "no method at all", withMethods(mode, "", ""), ok},
        {name + "PEAP", withMethods(mode, "PEAP", ""), ok},
        {name + "PEAP and MSCHAPV2", withMethods(mode, "PEAP", "MSCHAPV2"), ok},
        {name + "phase 2 PAP alone", withMethods(mode, "", "PAP"), ok},
        {name + "phase 2 GTC", withMethods(mode, "PEAP", "GTC"), ok},
        {name + "phase 2 MSCHAP", withMethods(mode, "PEAP", "MSCHAP"), ok},
        {name + "a method that is not offered", withMethods(mode, "TTLS", ""),
         ConnectResult::eapMethodUnsupported},
        {name + "a method in small letters", withMethods(mode, "peap", ""),
         ConnectResult::eapMethodUnsupported},
        {name + "an unknown phase 2 method", withMethods(mode, "PEAP", "CHAP"),
         ConnectResult::phase2MethodUnsupported},
        {name + "an EAP method as phase 2", withMethods(mode, "", "PEAP"),
         ConnectResult::phase2MethodUnsupported},
        {name + "any password", longPassword, ok},
    };
}

Rows uncheckedModes() {
    Rows rows{
        {"mode 7", settingsFor("Home", SecurityMode::unsupported), ConnectResult::securityModeUnsupported}};
    for (const int number : {0, 8, 9, -1, INT_MAX, INT_MIN}) {
        const auto mode = static_cast<SecurityMode>(number);
        const std::string name = "mode " + std::to_string(number);
        rows.push_back(
            {name + " with anything", unchecked(mode, "Home", std::string(5000, 'x')), ConnectResult::ok});
        rows.push_back({name + " without an SSID", unchecked(mode, "", ""), ConnectResult::ssidEmpty});
    }
    return rows;
}

Rows allRows() {
    Rows all;
    for (const Rows& rows : {ssids(), precedence(), passwords(), methods(SecurityMode::enterprise),
                             methods(SecurityMode::enterpriseVariant), uncheckedModes()}) {
        all.insert(all.end(), rows.begin(), rows.end());
    }
    return all;
}

TEST(ConnectValidation, FirstBrokenRuleDecidesTheVerdict) {
    for (const Row& row : allRows()) {
        EXPECT_EQ(wifi::validateConnectionSettings(row.settings, {"PEAP", "MSCHAPV2"},
                                                   {"GTC", "MSCHAP", "MSCHAPV2", "PAP"}),
                  row.verdict)
            << row.what;
    }
}

TEST(ConnectValidation, VerdictsHaveFixedNumbers) {
    const std::vector<ConnectResult> inOrder{
        ConnectResult::ok,
        ConnectResult::ssidEmpty,
        ConnectResult::ssidTooLong,
        ConnectResult::passwordTooShort,
        ConnectResult::passwordTooLong,
        ConnectResult::wepKeyInvalidLength,
        ConnectResult::eapMethodUnsupported,
        ConnectResult::phase2MethodUnsupported,
        ConnectResult::securityModeUnsupported,
    };
    for (std::size_t number = 0; number < inOrder.size(); ++number) {
        EXPECT_EQ(static_cast<std::size_t>(inOrder[number]), number);
    }
}

TEST(ConnectValidation, TextsThatAreUsedMustBeSendable) {
    const std::string nul(1, '\0');
    const std::string notText = "\xff";
    const wifi::Certificates key{"", "", "", "/key", notText};
    for (const std::string& bad : {nul, notText}) {
        EXPECT_FALSE(wifi::isSendable(settingsFor(bad, SecurityMode::none), {}));
        for (const auto mode :
             {SecurityMode::none, SecurityMode::wep, SecurityMode::wpaPsk, SecurityMode::rsnPsk,
              SecurityMode::sae, SecurityMode::enterprise, SecurityMode::enterpriseVariant}) {
            const bool enterprise = mode >= SecurityMode::enterprise;
            EXPECT_TRUE(wifi::isSendable(settingsFor("Home", mode), {}));
            ConnectionSettings settings = settingsFor("Home", mode);
            settings.password = bad;
            EXPECT_EQ(wifi::isSendable(settings, {}), mode == SecurityMode::none);
            for (const auto member :
                 {&ConnectionSettings::identity, &ConnectionSettings::anonymousIdentity}) {
                settings = settingsFor("Home", mode);
                settings.*member = bad;
                EXPECT_EQ(wifi::isSendable(settings, {}), !enterprise);
            }
            EXPECT_EQ(wifi::isSendable(settingsFor("Home", mode), key), !enterprise);
        }
    }
}

class ConnectRequest : public EngineTest {};

TEST_F(ConnectRequest, WhatCannotBeSentIsToldOnlyByTheValidation) {
    startWithSupplicant();
    const ConnectionSettings settings = settingsFor("Caf\xe9", SecurityMode::none);
    EXPECT_EQ(engine->validate(settings), ConnectResult::notSendable);
    EXPECT_EQ(engine->connect(settings), ConnectResult::ok);
    ConnectionSettings tooShort = settingsFor("Caf\xe9", SecurityMode::rsnPsk);
    tooShort.password = "\xff";
    EXPECT_EQ(engine->validate(tooShort), ConnectResult::passwordTooShort)
        << "the rules of connect come first";
}

TEST_F(ConnectRequest, RefusedConnectPostsNothingAndChangesNothing) {
    stack->eapMethods = {"PEAP", "MSCHAPV2", "TLS"};
    startWithSupplicant();
    for (const Row& row : allRows()) {
        EXPECT_EQ(engine->connect(row.settings), row.verdict) << row.what;
        const Calls expected = row.verdict == ConnectResult::ok ? Calls{posting} : Calls{};
        EXPECT_EQ(takeCalls(), expected) << row.what;
        EXPECT_EQ(state(), "status=disconnected, disconnectReason=unknown") << row.what;
        EXPECT_TRUE(log.records().empty()) << row.what;
        communicator->dropTasks();
    }
    EXPECT_EQ(runUntilIdle(), std::nullopt) << "no attempt was begun";
    EXPECT_EQ(takeCallbacks(), Callbacks{});
}

TEST_F(ConnectRequest, EapMethodIsRefusedUntilTheSupplicantIsAttached) {
    stack->eapMethods = {"PEAP"};
    start();
    EXPECT_EQ(engine->connect(withMethods(SecurityMode::enterprise, "PEAP", "")),
              ConnectResult::eapMethodUnsupported);
    EXPECT_EQ(engine->connect(withMethods(SecurityMode::enterprise, "", "PAP")), ConnectResult::ok);
    attachSupplicant();
    EXPECT_EQ(engine->connect(withMethods(SecurityMode::enterprise, "PEAP", "")), ConnectResult::ok);
}

}  // namespace
}  // namespace kaz::test
