#include "diagnostics/ssid_redaction.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace kaz::wifi {
namespace {

using namespace std::string_literals;

struct Redaction {
    std::string ssid;
    std::string text;
};

TEST(SsidRedaction, AnEmptySsidGivesSevenCharacters) {
    EXPECT_EQ(redactableSsid(""), "ssid=\"\"");
    EXPECT_EQ(redactableSsid("").size(), 7U);
}

TEST(SsidRedaction, AQuoteInsideIsEscaped) {
    EXPECT_EQ(redactableSsid("a\"b"), "ssid=\"a\\\"b\"");
}

TEST(SsidRedaction, ATrailingBackslashIsDoubledSoThatTheClosingQuoteIsNeverEscaped) {
    EXPECT_EQ(redactableSsid("a\\"), "ssid=\"a\\\\\"");
    EXPECT_EQ(redactableSsid("\\\\"), "ssid=\"\\\\\\\\\"");
}

TEST(SsidRedaction, CopiesAllBytesButQuotesAndBackslashes) {
    const std::vector<Redaction> redactions{
        {"Home", "ssid=\"Home\""},
        {"two words", "ssid=\"two words\""},
        {"\"", "ssid=\"\\\"\""},
        {"\\\"", "ssid=\"\\\\\\\"\""},
        {"'{}%s", "ssid=\"'{}%s\""},
        {"Caf\xc3\xa9", "ssid=\"Caf\xc3\xa9\""},
        {"a\0b"s, "ssid=\"a\0b\""s},
        {"\0"s, "ssid=\"\0\""s},
        {"\xff\xfe\x80", "ssid=\"\xff\xfe\x80\""},
        {"\n\r\t\x1b[31m\x7f", "ssid=\"\n\r\t\x1b[31m\x7f\""},
        {std::string(32, '\0'), "ssid=\"" + std::string(32, '\0') + "\""},
        {"\" signal=\"", "ssid=\"\\\" signal=\\\"\""},
    };
    for (const auto& [ssid, text] : redactions) {
        EXPECT_EQ(redactableSsid(ssid), text) << ::testing::PrintToString(ssid);
    }
}

TEST(SsidRedaction, OfEachSingleByteEscapesTwo) {
    for (int value = 0; value < 256; ++value) {
        const std::string ssid(1, static_cast<char>(value));
        const bool escaped = ssid == "\"" || ssid == "\\";
        EXPECT_EQ(redactableSsid(ssid), "ssid=\"" + (escaped ? "\\" + ssid : ssid) + "\"") << value;
    }
}

// Finds the SSID at the beginning of the text and the text after it, as a reader of the log does.
struct Found {
    std::string ssid;
    std::string_view rest;
};

std::optional<Found> find(std::string_view text) {
    constexpr std::string_view opening = "ssid=\"";
    if (!text.starts_with(opening)) {
        return std::nullopt;
    }
    Found found;
    for (std::size_t at = opening.size(); at < text.size(); ++at) {
        if (text[at] == '"') {
            found.rest = text.substr(at + 1);
            return found;
        }
        if (text[at] == '\\' && ++at == text.size()) {
            return std::nullopt;
        }
        found.ssid += text[at];
    }
    return std::nullopt;
}

std::size_t escapes(std::string_view ssid) {
    return static_cast<std::size_t>(
        std::count_if(ssid.begin(), ssid.end(), [](char byte) { return byte == '"' || byte == '\\'; }));
}

// The end of the form and the SSID are found, whatever text follows.
void expectReversible(const std::string& ssid) {
    const std::string text = redactableSsid(ssid);
    EXPECT_EQ(text.size(), 7 + ssid.size() + escapes(ssid)) << ::testing::PrintToString(ssid);
    for (const char* rest : {"", "\"", "\\", "\\\"", "a", ", signal=-52", "ssid=\"x\""}) {
        const std::string line = text + rest;
        const auto found = find(line);
        ASSERT_TRUE(found) << ::testing::PrintToString(line);
        EXPECT_EQ(found->ssid, ssid) << ::testing::PrintToString(line);
        EXPECT_EQ(found->rest, rest) << ::testing::PrintToString(line);
    }
}

// Every SSID of up to this length from the bytes with a meaning in the form, and one without.
std::vector<std::string> allSsids(std::size_t longest) {
    std::vector<std::string> ssids{""};
    for (std::size_t next = 0; next < ssids.size(); ++next) {
        if (ssids[next].size() < longest) {
            for (const char byte : {'a', '"', '\\'}) {
                ssids.push_back(ssids[next] + byte);
            }
        }
    }
    return ssids;
}

TEST(SsidRedaction, CanBeReversedForEverySsidOfUpToFourCriticalBytes) {
    const auto ssids = allSsids(4);
    ASSERT_EQ(ssids.size(), 1U + 3 + 9 + 27 + 81);
    std::set<std::string> texts;
    for (const auto& ssid : ssids) {
        expectReversible(ssid);
        texts.insert(redactableSsid(ssid));
    }
    EXPECT_EQ(texts.size(), ssids.size()) << "two SSIDs have one form";
}

TEST(SsidRedaction, CanBeReversedForAnyBytes) {
    std::mt19937 random(20240229);  // NOLINT(cert-msc51-cpp): the same SSIDs in every run
    std::uniform_int_distribution<std::size_t> length(0, 32);
    // Three bytes in four are the critical ones.
    std::uniform_int_distribution<int> kind(0, 7);
    std::uniform_int_distribution<int> anything(0, 255);
    for (int round = 0; round < 5000 && !::testing::Test::HasFailure(); ++round) {
        std::string ssid(length(random), '\0');
        for (char& byte : ssid) {
            const int chosen = kind(random);
            byte = chosen < 3 ? '"' : chosen < 6 ? '\\' : static_cast<char>(anything(random));
        }
        expectReversible(ssid);
    }
}

}  // namespace
}  // namespace kaz::wifi
