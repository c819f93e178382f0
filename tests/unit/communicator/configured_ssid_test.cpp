#include "communicator/configured_ssid.h"

#include <gtest/gtest.h>

#include <vector>

namespace kaz::wifi {
namespace {

struct ConfiguredText {
    std::string text;
    std::string ssid;
};

TEST(ConfiguredSsidText, TextBetweenDoubleQuotesIsTheSsid) {
    const std::vector<ConfiguredText> cases{
        {R"("Home")", "Home"},
        {R"("")", ""},
        {R"(""")", R"(")"},
        {R"("a"b")", R"(a"b)"},
        {R"("a\"b")", R"(a\"b)"},
        {R"(" ")", " "},
        {R"("486f6d65")", "486f6d65"},
        {"\"Caf\xc3\xa9\"", "Caf\xc3\xa9"},
        {"\"a\n\"", "a\n"},
    };
    for (const ConfiguredText& test : cases) {
        EXPECT_EQ(decodeConfiguredSsid(test.text), test.ssid) << test.text;
    }
}

TEST(ConfiguredSsidText, HexadecimalDigitsAreDecoded) {
    const std::vector<ConfiguredText> cases{
        {"486f6d65", "Home"},
        {"486F6D65", "Home"},
        {"486F6d65", "Home"},
        {"", ""},
        {"00", std::string(1, '\0')},
        {"610062", std::string("a\0b", 3)},
        {"09af90fa", "\x09\xaf\x90\xfa"},
        {"ffFF", "\xff\xff"},
        {"AAaaFAaf", "\xaa\xaa\xfa\xaf"},
        {"22", "\""},
    };
    for (const ConfiguredText& test : cases) {
        EXPECT_EQ(decodeConfiguredSsid(test.text), test.ssid) << test.text;
    }
}

TEST(ConfiguredSsidText, TextOfAnyOtherFormIsRefused) {
    for (const char* text :
         {"486", "4",  "\"", "\"Home", "Home\"", "Home", "0x48", "48 6f", " 486f",     "4g",   "g4",
          "/0",  "0:", "@0", "0G",     "`0",     "--",   "+1",   "\"48",  "P\"Home\"", "4\xc3"}) {
        EXPECT_EQ(decodeConfiguredSsid(text), std::nullopt) << text;
    }
}

TEST(ConfiguredSsidText, TextAfterANulIsNotLost) {
    EXPECT_EQ(decodeConfiguredSsid(std::string("\"a\0b\"", 5)), std::string("a\0b", 3));
    EXPECT_EQ(decodeConfiguredSsid(std::string("48\0\0", 4)), std::nullopt);
}

}  // namespace
}  // namespace kaz::wifi
