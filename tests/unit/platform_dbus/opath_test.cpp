#include <gtest/gtest.h>
#include <kaz/dbus/opath.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using kaz::dbus::OPath;

TEST(OPath, IsEmptyWithoutTextAndAtTheRoot) {
    const std::vector<std::pair<std::string, bool>> cases{
        {"", true}, {"/", true}, {"/a", false}, {"//", false}, {" ", false}, {"a", false}, {"/fi/w1", false}};
    for (const auto& [text, empty] : cases) {
        EXPECT_EQ(OPath(text).emptyPath(), empty) << "path \"" << text << '"';
        EXPECT_EQ(OPath(text.c_str()).emptyPath(), empty) << "path \"" << text << '"';
    }
    EXPECT_TRUE(OPath().emptyPath());
}

TEST(OPath, KeepsItsText) {
    EXPECT_EQ(OPath("/fi/w1").str(), "/fi/w1");
    EXPECT_STREQ(OPath(std::string("/fi/w1")).c_str(), "/fi/w1");
    EXPECT_EQ(OPath("/").str(), "/");
    EXPECT_EQ(OPath().str(), "");
}

TEST(OPath, TakesANullPointerForNoText) {
    const char* none = nullptr;
    EXPECT_EQ(OPath(none), OPath());
}

TEST(OPath, ComparesTexts) {
    EXPECT_EQ(OPath("/a"), OPath("/a"));
    EXPECT_NE(OPath("/a"), OPath("/b"));
    EXPECT_NE(OPath(), OPath("/"));
}

}  // namespace
