#include <vector>

#include "unit/platform_common/config_fixture.h"

namespace kaz::test {
namespace {

using namespace std::string_literals;

class ConfigRefusals : public ConfigFixture {};

struct Entry {
    std::string key;
    std::string value;
};

TEST_F(ConfigRefusals, WhatWouldNotReadBackIsRefused) {
    const std::vector<Entry> entries{
        {"", "v"},      {"=", "v"},     {"a=b", "v"}, {"=a", "v"},    {"a=", "v"},
        {"a\nb", "v"},  {"a\n", "v"},   {"\na", "v"}, {"a\rb", "v"},  {"a\r", "v"},
        {"a\r\n", "v"}, {"#", "v"},     {"#a", "v"},  {"a\0"s, "v"},  {"\0"s, "v"},
        {"k", "a\nb"},  {"k", "\n"},    {"k", "a\n"}, {"k", "\r"},    {"k", "a\rb"},
        {"k", "a\r"},   {"k", "a\r\n"}, {"k", "\0"s}, {"k", "a\0b"s}, {"k", "v\nwifi=on"},
    };
    write("wifi=off\n");
    for (const auto& [key, value] : entries) {
        SCOPED_TRACE(::testing::PrintToString(key) + " = " + ::testing::PrintToString(value));
        log().clear();
        EXPECT_FALSE(util::updateKazConfig(key, value));
        EXPECT_EQ(text(), "wifi=off\n");
        EXPECT_EQ(log().texts(spdlog::level::warn).size(), 1U);
    }
    EXPECT_EQ(contentOf(folder()), std::set<std::string>{"kaz.conf"});
}

TEST_F(ConfigRefusals, ARefusedPairIsNotLogged) {
    EXPECT_FALSE(util::updateKazConfig("forged\nkey", "v"));
    EXPECT_FALSE(util::updateKazConfig("k", "forged\nvalue"));
    EXPECT_FALSE(log().contains("forged"));
    EXPECT_FALSE(log().contains("\n"));
}

}  // namespace
}  // namespace kaz::test
