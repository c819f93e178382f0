#include "report/tokens.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace kaz::report {
namespace {

TEST(ReportTokens, ReplaceNamesAndAddresses) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"wlan0: Trying to associate with 02:00:00:00:0a:00 (SSID='Cafe' freq=2412 MHz)",
         "wlan0: Trying to associate with <mac-1> (SSID='<text-1>' freq=2412 MHz)"},
        {"CTRL-EVENT-SSID-TEMP-DISABLED id=0 ssid=\"Cafe\" auth_failures=1",
         "CTRL-EVENT-SSID-TEMP-DISABLED id=0 ssid=\"<text-1>\" auth_failures=1"},
        {"SSID='it's \\\"quoted\\\"' freq=2412", "SSID='<text-1>' freq=2412"},
        {"wlan0: Connected WiFi access point: Cafe (1) (02:00:00:00:0A:00)",
         "wlan0: Connected WiFi access point: <ssid-1> (<mac-1>)"},
        {"DHCPv4 address 10.77.4.10/24 via 10.77.4.1.", "DHCPv4 address <ip-1>/24 via <ip-2>."},
        {"fe80::1:2, fe80::1:2 and ::", "<ip-1>, <ip-1> and <ip-2>"},
        {"at 12:34:56 version 252.33-1, 0x1003 and 2:1", "at 12:34:56 version 252.33-1, 0x1003 and 2:1"},
        {"", ""},
        {"'", "'"},
    };
    for (const auto& [line, wanted] : cases) {
        EXPECT_EQ(Tokens().redacted(line), wanted) << line;
    }
}

TEST(ReportTokens, AreEqualForEqualNames) {
    Tokens tokens;
    tokens.know("Home");
    EXPECT_EQ(tokens.ofSsid("Home"), "<ssid-1>");
    EXPECT_EQ(tokens.ofSsid("Work"), "<ssid-2>");
    EXPECT_EQ(tokens.redacted("ssid=\"Home\""), "ssid=\"<ssid-1>\"");
    EXPECT_EQ(tokens.redacted("02:00:00:00:0A:00"), tokens.redacted("02:00:00:00:0a:00"));
}

TEST(ReportTokens, ReplaceAKnownNameInEveryForm) {
    const std::vector<std::string> names{"Home", "My \"Home\" \\o/", "caf\xc3\xa9", "\xff\x01 bytes",
                                         "a % b'c"};
    for (const std::string& name : names) {
        for (const std::string& form : formsOf(name)) {
            Tokens tokens;
            tokens.know(name);
            EXPECT_EQ(tokens.redacted("joined " + form + " now").find(form), std::string::npos) << form;
        }
    }
}

TEST(ReportTokens, OfALongNameDoNotContainAShortOne) {
    Tokens tokens;
    tokens.know("Home");
    tokens.know("Home Guest");
    EXPECT_EQ(tokens.redacted("joined Home Guest"), "joined <ssid-2>");
}

}  // namespace
}  // namespace kaz::report
