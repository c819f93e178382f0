// The syntax of the file, and which bytes an update changes.
#include "platform/common/syntax/config_text.h"
#include "unit/platform_common/config_fixture.h"

#include <fmt/format.h>

#include <map>
#include <vector>

namespace kaz::test {
namespace {

using namespace std::string_literals;
using Entries = std::map<std::string, std::string>;

struct Reading {
    std::string text;
    Entries entries;
};

struct Update {
    std::string before;
    std::string key;
    std::string value;
    std::string after;
};

class ConfigSyntax : public ConfigFixture {
  protected:
    void expectUpdates(const std::vector<Update>& updates) {
        for (const auto& [before, key, value, after] : updates) {
            SCOPED_TRACE(fmt::format("{} with {}={}", ::testing::PrintToString(before), key, value));
            write(before);
            EXPECT_TRUE(util::updateKazConfig(key, value));
            EXPECT_EQ(text(), after);
        }
        EXPECT_TRUE(log().records().empty());
    }
};

TEST_F(ConfigSyntax, EveryLineWithAKeyAndAnEqualsSignIsAnEntry) {
    const std::vector<Reading> readings{
        {"", {}},
        {"\n\n\r\n", {}},
        {"wifi=on\n", {{"wifi", "on"}}},
        {"wifi=on", {{"wifi", "on"}}},
        {"wifi=on\r\n", {{"wifi", "on"}}},
        {"wifi=on\r", {{"wifi", "on"}}},
        {"wifi=on\r\r\n", {{"wifi", "on\r"}}},
        {"wifi=\n", {{"wifi", ""}}},
        {"wifi=a=b=\n", {{"wifi", "a=b="}}},
        {"=on\n", {}},
        {"wifi\n", {}},
        {"#wifi=on\n", {}},
        {"wifi=#on\n", {{"wifi", "#on"}}},
        {"a=1\nb=2\n", {{"a", "1"}, {"b", "2"}}},
        {"a=1\nb=2\na=3\n", {{"a", "3"}, {"b", "2"}}},
        {"a=1\r\n\r\n# c=3\r\nb=2", {{"a", "1"}, {"b", "2"}}},
        {"a=1\n#a=2\n", {{"a", "1"}}},
    };
    for (const auto& [text, entries] : readings) {
        write(text);
        EXPECT_EQ(util::readKazConfig(), entries) << ::testing::PrintToString(text);
    }
    EXPECT_TRUE(log().records().empty());
}

TEST_F(ConfigSyntax, BlanksArePartOfKeyAndValue) {
    write(" wifi = on \n\ttab\t=\tx\t\n #no comment=1\n");
    EXPECT_EQ(util::readKazConfig(),
              (Entries{{" wifi ", " on "}, {"\ttab\t", "\tx\t"}, {" #no comment", "1"}}));
}

TEST_F(ConfigSyntax, BytesThatAreNoTextAreReadAsTheyStand) {
    write("k\xff\0=\x80v\0w\n"s);
    EXPECT_EQ(util::readKazConfig(), (Entries{{"k\xff\0"s, "\x80v\0w"s}}));
}

TEST_F(ConfigSyntax, AnUpdateChangesOneLineAndNoOtherByte) {
    const std::vector<Update> updates{
        {"", "wifi", "on", "wifi=on\n"},
        {"wifi=on\n", "wifi", "off", "wifi=off\n"},
        {"wifi=on", "wifi", "off", "wifi=off"},
        {"wifi=on\r\n", "wifi", "off", "wifi=off\r\n"},
        {"wifi=on\r", "wifi", "off", "wifi=off\r"},
        {"wifi=\n", "wifi", "off", "wifi=off\n"},
        {"wifi=on\n", "wifi", "", "wifi=\n"},
        {"a=1\nwifi=on\nz=2\n", "wifi", "off", "a=1\nwifi=off\nz=2\n"},
        {"z=2\na=1\n", "wifi", "off", "z=2\na=1\nwifi=off\n"},
        {"z=2", "wifi", "off", "z=2\nwifi=off\n"},
        {"z=2\r", "wifi", "off", "z=2\r\nwifi=off\n"},
        {"\n\n# note\n \n", "wifi", "off", "\n\n# note\n \nwifi=off\n"},
        {"#wifi=on\n", "wifi", "off", "#wifi=on\nwifi=off\n"},
        {"wifi\n", "wifi", "off", "wifi\nwifi=off\n"},
        {" wifi=on\nwifi =on\n", "wifi", "off", " wifi=on\nwifi =on\nwifi=off\n"},
        {"wifi2=on\nxwifi=on\n", "wifi", "off", "wifi2=on\nxwifi=on\nwifi=off\n"},
        {"no equals\n=no key\r\n\xff\xfe\0\nlast"s, "k", "v",
         "no equals\n=no key\r\n\xff\xfe\0\nlast\nk=v\n"s},
        {"a=\x80\0\xff\nwifi=on\n"s, "wifi", "off", "a=\x80\0\xff\nwifi=off\n"s},
        {"a=1\r\nb=2\nc=3", "b", "x", "a=1\r\nb=x\nc=3"},
    };
    expectUpdates(updates);
}

TEST_F(ConfigSyntax, OfSeveralLinesWithOneKeyAnUpdateLeavesTheLast) {
    const std::vector<Update> updates{
        {"k=1\nk=2\n", "k", "3", "k=3\n"}, {"k=1\na=1\nk=2\nb=2\n", "k", "3", "a=1\nk=3\nb=2\n"},
        {"k=1\r\nk=2", "k", "3", "k=3"},   {"k=1\nk=2\nk=3\n", "k", "3", "k=3\n"},
        {"k=3\nk=2\n", "k", "3", "k=3\n"}, {"k=1\n#k=2\nk=1\n", "j", "3", "k=1\n#k=2\nk=1\nj=3\n"},
    };
    expectUpdates(updates);
}

TEST_F(ConfigSyntax, AnyAcceptedKeyAndValueReadBackAsTheyWereWritten) {
    const std::vector<std::pair<std::string, std::string>> entries{
        {"wifi", "on"},     {"wifi", "off"}, {" leading", " leading"},          {"trailing ", "trailing "},
        {"two words", ""},  {"k#", "#"},     {"\xff\x80", "\xfe=\xff"},         {"k", "=v="},
        {"tab\tkey", "\t"}, {"k", "\""},     {"long", std::string(70000, 'v')},
    };
    for (const auto& [key, value] : entries) {
        SCOPED_TRACE(::testing::PrintToString(key));
        ASSERT_TRUE(util::updateKazConfig(key, value));
        EXPECT_EQ(util::readKazConfig()[key], value);
    }
}

// Every text of up to six of the bytes that have a meaning.
TEST(ConfigText, AnUpdateOfAnyTextSetsItsKeyOnceAndNoOther) {
    constexpr std::string_view alphabet = "ab=#\n\r";
    std::vector<std::string> texts{""};
    for (std::size_t next = 0; next < texts.size(); ++next) {
        const std::string before = texts[next];
        if (before.size() < 6) {
            for (const char byte : alphabet) {
                texts.push_back(before + byte);
            }
        }
        Entries expected = util::parseConfig(before);
        expected["a"] = "x";
        const std::string after = util::withEntry(before, "a", "x");
        ASSERT_EQ(util::parseConfig(after), expected) << ::testing::PrintToString(before);
        ASSERT_EQ(util::withEntry(after, "a", "x"), after) << ::testing::PrintToString(before);
        ASSERT_EQ(after.find("a=x"), after.rfind("a=x")) << ::testing::PrintToString(before);
    }
    EXPECT_EQ(texts.size(), 1U + 6 + 36 + 216 + 1296 + 7776 + 46656);
}

}  // namespace
}  // namespace kaz::test
