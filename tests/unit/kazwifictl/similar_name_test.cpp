#include "kazwifictl/text/similar_name.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kaz::ctl {
namespace {

TEST(NameShownAs, FindsANameAsAnyTerminalShowsIt) {
    const std::vector<std::string> names{"Home", "\"quoted\" \\ back", "Late\xfe\x02", "Café"};
    EXPECT_EQ(nameShownAs(R"("quoted" \\ back)", names), names.at(1));
    EXPECT_EQ(nameShownAs(R"("\"quoted\" \\ back")", names), names.at(1));
    EXPECT_EQ(nameShownAs(R"(Late\xfe\x02)", names), names.at(2));
    EXPECT_EQ(nameShownAs(R"(Caf\u{e9})", names), names.at(3));
    EXPECT_EQ(nameShownAs("\"Home\"", names), "Home");
    EXPECT_EQ(nameShownAs("home", names), std::nullopt);
}

TEST(SimilarName, FindsTheOneThatWasProbablyMeant) {
    const std::vector<std::string> names{"Home", "Attic", "Attic Guest", "FRITZ!Box 7590", "x"};
    EXPECT_EQ(similarName("home", names), "Home");
    EXPECT_EQ(similarName("Hone", names), "Home");
    EXPECT_EQ(similarName("Atic", names), "Attic");
    EXPECT_EQ(similarName("attic gust", names), "Attic Guest");
    EXPECT_EQ(similarName("fritzbox 7590", names), "FRITZ!Box 7590");
    EXPECT_EQ(similarName("Office", names), std::nullopt);
    EXPECT_EQ(similarName("y", names), std::nullopt);
    EXPECT_EQ(similarName("Hime", {"Home", "Hume"}), std::nullopt) << "both are equally near";
}

}  // namespace
}  // namespace kaz::ctl
