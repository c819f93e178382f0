#include "kazwifictl/text/ssid_text.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "base/hex.h"

namespace kaz::ctl {
namespace {

using namespace std::string_literals;

struct Case {
    std::string ssid;
    std::string utf8;
    std::string ascii;
};

TEST(SsidText, ShowsPrintableCharactersAndEscapesTheRest) {
    const std::vector<Case> cases{
        {"Home", "Home", "Home"},
        {"a b  c", "a b  c", "a b  c"},
        {"", "", ""},
        {"Café", "Café", "Caf\\u{e9}"},
        {"東京", "東京", "\\u{6771}\\u{4eac}"},
        {"e\u0301", "e\u0301", "e\\u{301}"},
        {"back\\slash", "back\\\\slash", "back\\\\slash"},
        {"\x1b[31mred", "\\x1b[31mred", "\\x1b[31mred"},
        {"a\nb\r\tc", "a\\x0ab\\x0d\\x09c", "a\\x0ab\\x0d\\x09c"},
        {"nul\0end"s, "nul\\x00end", "nul\\x00end"},
        {"\x7f", "\\x7f", "\\x7f"},
        {"\u009b31m", "\\u{9b}31m", "\\u{9b}31m"},                        // CSI as a C1 control character
        {"\u202etxt", "\\u{202e}txt", "\\u{202e}txt"},                    // right-to-left override
        {"\u2066a\u2069", "\\u{2066}a\\u{2069}", "\\u{2066}a\\u{2069}"},  // direction isolates
        {"\u200e\u200f\u061c", "\\u{200e}\\u{200f}\\u{61c}", "\\u{200e}\\u{200f}\\u{61c}"},
        {"zero\u200bwidth", "zero\\u{200b}width", "zero\\u{200b}width"},
        {"\ufeffbom", "\\u{feff}bom", "\\u{feff}bom"},
        {"line\u2028sep", "line\\u{2028}sep", "line\\u{2028}sep"},
        {"soft\u00adhyphen", "soft\\u{ad}hyphen", "soft\\u{ad}hyphen"},
        {"tag\U000e0041", "tag\\u{e0041}", "tag\\u{e0041}"},
        {"private\ue000", "private\\u{e000}", "private\\u{e000}"},
        {"nbsp\u00a0x", "nbsp\\u{a0}x", "nbsp\\u{a0}x"},
        {"wide\u3000x", "wide\\u{3000}x", "wide\\u{3000}x"},
        {" lead", "\\x20lead", "\\x20lead"},
        {"trail  ", "trail\\x20\\x20", "trail\\x20\\x20"},
        {"  ", "\\x20\\x20", "\\x20\\x20"},
        {"\u0301first", "\\u{301}first", "\\u{301}first"},  // nothing to combine with
        {"a\u0301\u0302\u0303", "a\u0301\u0302\\u{303}", "a\\u{301}\\u{302}\\u{303}"},
        {"\xff\xfe", "\\xff\\xfe", "\\xff\\xfe"},
        {"cut\xe6\x9d", "cut\\xe6\\x9d", "cut\\xe6\\x9d"},
        {"\xc0\xaf", "\\xc0\\xaf", "\\xc0\\xaf"},                // overlong
        {"\xed\xa0\x80", "\\xed\\xa0\\x80", "\\xed\\xa0\\x80"},  // surrogate
        {"\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80", "\\xf4\\x90\\x80\\x80"},
        {"\xff\u0301", "\\xff\\u{301}", "\\xff\\u{301}"},
        {"שלום", "שלום", "\\u{5e9}\\u{5dc}\\u{5d5}\\u{5dd}"},
        {"😀", "😀", "\\u{1f600}"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(presentable(each.ssid, true), each.utf8) << "for the bytes " << toHex(each.ssid);
        EXPECT_EQ(presentable(each.ssid, false), each.ascii) << "for the bytes " << toHex(each.ssid);
    }
}

TEST(SsidText, NeverLetsAByteThroughThatATerminalObeys) {
    for (int byte = 0; byte < 256; ++byte) {
        const std::string ssid{'a', static_cast<char>(byte), 'b'};
        for (const char shown : presentable(ssid, true)) {
            EXPECT_GE(shown, 0x20) << "for the byte " << byte;
            EXPECT_LT(static_cast<unsigned char>(shown), 0x7f) << "for the byte " << byte;
        }
    }
}

TEST(SsidText, TellsAllSsidsOfTwoBytesApart) {
    std::set<std::string> texts;
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            texts.insert(presentable(std::string{static_cast<char>(first), static_cast<char>(second)}, true));
        }
    }
    EXPECT_EQ(texts.size(), 65536U);
}

TEST(SsidText, EscapesQuotesBetweenQuotes) {
    EXPECT_EQ(quoted("Home", true), R"("Home")");
    EXPECT_EQ(quoted(R"(Home", -10 dBm)", true), R"("Home\", -10 dBm")");
    EXPECT_EQ(quoted(R"(a\"b)", true), R"("a\\\"b")");
}

TEST(SsidText, OnlyAnSsidThatCanBeTypedIsPlain) {
    for (const std::string& plain : {"Home"s, "My Home"s, "東京"s, "it's"s, "-dash"s}) {
        EXPECT_TRUE(isPlain(plain)) << plain;
    }
    for (const std::string& other : {""s, " lead"s, "a\nb"s, "\xff"s, "back\\slash"s, "\u202e"s}) {
        EXPECT_FALSE(isPlain(other)) << toHex(other);
    }
}

TEST(SsidText, WritesAnSsidSoThatAShellGivesItBack) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"Home", "Home"},
        {"My Home", "'My Home'"},
        {"it's", "'it'\\''s'"},
        {"-x", "-- '-x'"},
        {"$(reboot)", "'$(reboot)'"},
        {"a\nb", "--hex 610a62"},
        {"\xff", "--hex ff"},
        {"", "--hex "},
        {"東京", "'東京'"},
    };
    for (const auto& [ssid, argument] : cases) {
        EXPECT_EQ(shellArgument(ssid, true), argument) << "for the bytes " << toHex(ssid);
    }
    EXPECT_EQ(shellArgument("東", false), "--hex e69db1");
}

TEST(SsidText, MakesForeignMessagesHarmlessWithoutTouchingBackslashes) {
    EXPECT_EQ(harmless("C:\\ \x1b]0;x\x07 end ", true), "C:\\ \\x1b]0;x\\x07 end ");
}

TEST(SsidText, GivesJsonValidText) {
    EXPECT_EQ(validUtf8("Caf\xe9"), "Caf\ufffd");
    EXPECT_EQ(validUtf8("Café\0x"s), "Café\0x"s);
    EXPECT_EQ(validUtf8("\xe6\x9d"), "\ufffd\ufffd");
}

TEST(SsidText, ReadsHexadecimalBack) {
    for (const std::string& ssid : {"Home"s, ""s, "\0\xff\x1b"s}) {
        EXPECT_EQ(fromHex(toHex(ssid)), ssid);
    }
    EXPECT_EQ(fromHex("C3A9"), "é");
    for (const std::string& wrong : {"486"s, "zz"s, "4 "s, "0x48"s}) {
        EXPECT_EQ(fromHex(wrong), std::nullopt) << wrong;
    }
}

TEST(SsidText, FramesRightToLeftLettersWithDirectionMarks) {
    EXPECT_EQ(isolated("שלום"), "\u200eשלום\u200e");
    EXPECT_EQ(isolated("مقهى 5"), "\u200eمقهى 5\u200e");
    EXPECT_EQ(isolated("Home 東京"), "Home 東京");
}

}  // namespace
}  // namespace kaz::ctl
