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

void addSsids(std::vector<Row>& rows) {
    const auto none = SecurityMode::none;
    rows.push_back({"empty SSID", settingsFor("", none), ConnectResult::ssidEmpty});
    rows.push_back({"SSID of 1 byte", settingsFor("x", none), ConnectResult::ok});
    rows.push_back({"SSID of 32 bytes", settingsFor(std::string(32, 'x'), none), ConnectResult::ok});
    rows.push_back({"SSID of 33 bytes", settingsFor(std::string(33, 'x'), none), ConnectResult::ssidTooLong});
    rows.push_back({"SSID of one NUL", settingsFor(std::string(1, '\0'), none), ConnectResult::ok});
    rows.push_back({"SSID of 32 NULs", settingsFor(std::string(32, '\0'), none), ConnectResult::ok});
    rows.push_back({"SSID of 33 NULs", settingsFor(std::string(33, '\0'), none), ConnectResult::ssidTooLong});
    rows.push_back(
        {"SSID of 32 bytes of invalid UTF-8", settingsFor(std::string(32, '\xff'), none), ConnectResult::ok});
    std::string accented;
    for (int i = 0; i < 17; ++i) {
        accented += "\xc3\xa9";
    }
    rows.push_back(
        {"SSID of 17 characters in 34 bytes", settingsFor(accented, none), ConnectResult::ssidTooLong});
}

// The first broken rule decides.
void addPrecedence(std::vector<Row>& rows) {
    const std::string longSsid(33, 'x');
    const auto mode = SecurityMode::unsupported;
    rows.push_back(
        {"empty SSID before an unsupported mode", unchecked(mode, "", ""), ConnectResult::ssidEmpty});
    rows.push_back(
        {"long SSID before an unsupported mode", unchecked(mode, longSsid, ""), ConnectResult::ssidTooLong});
    rows.push_back({"empty SSID before a short password", unchecked(SecurityMode::rsnPsk, "", ""),
                    ConnectResult::ssidEmpty});
    rows.push_back({"EAP method before phase 2", withMethods(SecurityMode::enterprise, "TLS", "nor this"),
                    ConnectResult::eapMethodUnsupported});
}

void addPasswords(std::vector<Row>& rows) {
    struct Length {
        SecurityMode mode;
        std::size_t length;
        ConnectResult verdict;
    };
    const auto ok = ConnectResult::ok;
    const auto tooShort = ConnectResult::passwordTooShort;
    const auto tooLong = ConnectResult::passwordTooLong;
    const auto badWep = ConnectResult::wepKeyInvalidLength;
    std::vector<Length> lengths;
    for (const auto mode : {SecurityMode::wpaPsk, SecurityMode::rsnPsk}) {
        for (const Length& length : {Length{mode, 0, tooShort},
                                     {mode, 7, tooShort},
                                     {mode, 8, ok},
                                     {mode, 63, ok},
                                     {mode, 64, tooLong},
                                     {mode, 1000, tooLong}}) {
            lengths.push_back(length);
        }
    }
    for (const std::size_t length : {0U, 1U, 4U, 6U, 10U, 12U, 14U, 26U}) {
        lengths.push_back({SecurityMode::wep, length, badWep});
    }
    for (const Length& length : {Length{SecurityMode::wep, 5, ok},
                                 {SecurityMode::wep, 13, ok},
                                 {SecurityMode::sae, 0, tooShort},
                                 {SecurityMode::sae, 1, ok},
                                 {SecurityMode::sae, 1024, ok},
                                 {SecurityMode::sae, 1025, tooLong}}) {
        lengths.push_back(length);
    }
    for (const Length& row : lengths) {
        rows.push_back({"mode " + ::testing::PrintToString(row.mode) + " with a password of " +
                            std::to_string(row.length) + " bytes",
                        withPassword(row.mode, row.length), row.verdict});
    }
}

void addMethods(std::vector<Row>& rows) {
    const auto ok = ConnectResult::ok;
    const auto badEap = ConnectResult::eapMethodUnsupported;
    const auto badPhase2 = ConnectResult::phase2MethodUnsupported;
    for (const auto mode : {SecurityMode::enterprise, SecurityMode::enterpriseVariant}) {
        const std::string name = "mode " + ::testing::PrintToString(mode) + " with ";
        rows.push_back({name + "no method at all", withMethods(mode, "", ""), ok});
        rows.push_back({name + "PEAP", withMethods(mode, "PEAP", ""), ok});
        rows.push_back({name + "PEAP and MSCHAPV2", withMethods(mode, "PEAP", "MSCHAPV2"), ok});
        rows.push_back({name + "phase 2 PAP alone", withMethods(mode, "", "PAP"), ok});
        rows.push_back({name + "phase 2 GTC", withMethods(mode, "PEAP", "GTC"), ok});
        rows.push_back({name + "phase 2 MSCHAP", withMethods(mode, "PEAP", "MSCHAP"), ok});
        rows.push_back({name + "a method that is not offered", withMethods(mode, "TTLS", ""), badEap});
        rows.push_back({name + "a method in small letters", withMethods(mode, "peap", ""), badEap});
        rows.push_back({name + "an unknown phase 2 method", withMethods(mode, "PEAP", "CHAP"), badPhase2});
        rows.push_back({name + "an EAP method as phase 2", withMethods(mode, "", "PEAP"), badPhase2});
        ConnectionSettings longPassword = withMethods(mode, "PEAP", "");
        longPassword.password = std::string(5000, 'x');
        rows.push_back({name + "any password", longPassword, ok});
    }
}

void addUncheckedModes(std::vector<Row>& rows) {
    for (const int number : {0, 8, 9, -1, INT_MAX, INT_MIN}) {
        const auto mode = static_cast<SecurityMode>(number);
        const std::string name = "mode " + std::to_string(number);
        rows.push_back(
            {name + " with anything", unchecked(mode, "Home", std::string(5000, 'x')), ConnectResult::ok});
        rows.push_back({name + " without an SSID", unchecked(mode, "", ""), ConnectResult::ssidEmpty});
    }
    rows.push_back(
        {"mode 7", settingsFor("Home", SecurityMode::unsupported), ConnectResult::securityModeUnsupported});
}

std::vector<Row> allRows() {
    std::vector<Row> rows;
    addSsids(rows);
    addPrecedence(rows);
    addPasswords(rows);
    addMethods(rows);
    addUncheckedModes(rows);
    return rows;
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

class ConnectRequest : public EngineTest {};

TEST_F(ConnectRequest, RefusedConnectPostsNothingAndChangesNothing) {
    stack->eapMethods = {"PEAP", "MSCHAPV2", "TLS"};
    startWithSupplicant();
    for (const Row& row : allRows()) {
        EXPECT_EQ(engine->connect(row.settings), row.verdict) << row.what;
        const Calls expected = row.verdict == ConnectResult::ok ? Calls{"pushTaskAsync_"} : Calls{};
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
