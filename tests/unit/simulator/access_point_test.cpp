#include "simulator/world/access_point.h"

#include <gtest/gtest.h>

namespace kaz::sim::test {
namespace {

TEST(Bssid, IsSixBytesWithColons) {
    EXPECT_EQ(bssidBytes("02:00:00:00:0a:ff"), std::string("\x02\0\0\0\x0a\xff", 6));
    for (const char* const text :
         {"", "02", "02:00:00:00:0a", "02:00:00:00:0a:fg", "02-00-00-00-0a-ff", "02:00:00:00:0a:ff:"}) {
        EXPECT_FALSE(bssidBytes(text)) << text;
    }
}

TEST(SecurityNames, ComeBackFromTheirText) {
    for (const auto security : {Security::open, Security::wep, Security::wpa, Security::wpa2,
                                Security::wpa2Wpa3, Security::wpa3, Security::eap}) {
        EXPECT_EQ(securityFromText(toText(security)), security) << toText(security);
    }
    EXPECT_FALSE(securityFromText("wpa4"));
}

}  // namespace
}  // namespace kaz::sim::test
