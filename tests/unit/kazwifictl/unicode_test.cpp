#include "kazwifictl/text/unicode.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace kaz::ctl {
namespace {

TEST(Unicode, EncodesWhatItDecodes) {
    for (const char32_t value : {U'\0', U'a', U'\u007f', U'\u0080', U'\u07ff', U'\u0800', U'\ud7ff',
                                 U'\ue000', U'\uffff', U'\U00010000', U'\U0010ffff'}) {
        const std::string text = toUtf8(value);
        const CodePoint point = codePointsOf(text).front();
        EXPECT_TRUE(point.valid) << static_cast<std::uint32_t>(value);
        EXPECT_EQ(point.value, value);
        EXPECT_EQ(point.bytes.size(), text.size());
    }
}

TEST(Unicode, CountsColumnsTheWayATerminalDoes) {
    const std::vector<std::pair<std::string, int>> cases{
        {"", 0},     {"Home", 4}, {"Café", 4},     {"e\u0301", 1},
        {"東京", 4}, {"😀", 2},    {"ｆｕｌｌ", 8}, {"שלום", 4},
    };
    for (const auto& [text, columns] : cases) {
        EXPECT_EQ(columnsOf(text), columns) << text;
    }
}

TEST(Unicode, DoesNotDependOnTheLocaleOfTheThread) {
    const char* former = std::setlocale(LC_ALL, nullptr);
    const std::string saved = former == nullptr ? "C" : former;
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(columnsOf("東京"), 4);
    std::setlocale(LC_ALL, saved.c_str());
}

TEST(Unicode, CutsBetweenCharactersAndKeepsMarksWithTheirs) {
    EXPECT_EQ(cutTo("Home", 4, "…"), "Home");
    EXPECT_EQ(cutTo("Homes", 4, "…"), "Hom…");
    EXPECT_EQ(cutTo("東京都", 5, "…"), "東京…");
    EXPECT_EQ(cutTo("東京都", 4, "…"), "東…");
    EXPECT_EQ(cutTo("e\u0301e\u0301e\u0301", 2, "…"), "e\u0301…");
    EXPECT_EQ(cutTo("Home", 2, "..."), "");
}

TEST(Unicode, PadsToColumnsNotToBytes) {
    EXPECT_EQ(paddedTo("東京", 6), "東京  ");
    EXPECT_EQ(paddedTo("e\u0301", 3), "e\u0301  ");
    EXPECT_EQ(paddedTo("long", 2), "long");
}

}  // namespace
}  // namespace kaz::ctl
