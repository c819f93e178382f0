#include "simulator/world/bytes.h"

#include <gtest/gtest.h>

#include "simulator/world/access_point.h"

namespace kaz::sim::test {
namespace {

TEST(Bytes, ComeBackFromTheirHexadecimalDigits) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte) {
        all += static_cast<char>(byte);
    }
    EXPECT_EQ(fromHex(toHex(all)), all);
    EXPECT_EQ(toHex(std::string_view("\x00\xffH", 3)), "00ff48");
}

TEST(Bytes, AreNotMadeOfWhatIsNotHexadecimal) {
    for (const char* const text : {"4", "486", "4g", "g4", " 4", "48 6", "0x48"}) {
        EXPECT_FALSE(fromHex(text)) << text;
    }
    EXPECT_EQ(fromHex(""), "");
    EXPECT_EQ(fromHex("4A6f"), "Jo");
}

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
