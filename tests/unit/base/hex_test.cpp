#include "base/hex.h"

#include <gtest/gtest.h>

namespace kaz::test {
namespace {

TEST(Hex, EveryByteComesBackFromItsDigits) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte) {
        all += static_cast<char>(byte);
    }
    EXPECT_EQ(fromHex(toHex(all)), all);
    EXPECT_EQ(toHex(std::string_view("\x00\xffH", 3)), "00ff48");
}

TEST(Hex, DigitsOfEitherCaseAreRead) {
    EXPECT_EQ(fromHex(""), "");
    EXPECT_EQ(fromHex("4A6f"), "Jo");
}

TEST(Hex, WhatIsNotHexadecimalIsRefused) {
    for (const char* const text : {"4", "486", "4g", "g4", " 4", "48 6", "0x48"}) {
        EXPECT_FALSE(fromHex(text)) << text;
    }
}

}  // namespace
}  // namespace kaz::test
