#include <gtest/gtest.h>
#include <kaz/dbus/message.h>

namespace {

using kaz::dbus::MessageBuilder;
using kaz::dbus::MessageDecoder;

TEST(MessageBuilder, IsGoodUntilAnArgumentFails) {
    MessageBuilder builder(nullptr);
    EXPECT_TRUE(builder.ok());
    EXPECT_EQ(builder.error(), "");
    builder.fail("Invalid argument");
    EXPECT_FALSE(builder.ok());
    EXPECT_EQ(builder.error(), "Invalid argument");
}

TEST(MessageBuilder, KeepsTheFirstError) {
    MessageBuilder builder(nullptr);
    builder.fail("first");
    builder.fail("second");
    EXPECT_EQ(builder.error(), "first");
}

TEST(MessageBuilder, HasFailedAlsoWithoutAText) {
    MessageBuilder builder(nullptr);
    builder.fail("");
    EXPECT_FALSE(builder.ok());
}

TEST(MessageBuilder, IsSensitiveOnlyWhenMarked) {
    MessageBuilder builder(nullptr);
    EXPECT_FALSE(builder.sensitive());
    builder.markSensitive();
    EXPECT_TRUE(builder.sensitive());
    EXPECT_EQ(builder.message(), nullptr);
}

TEST(MessageDecoder, BeginsEmptyAndGood) {
    const MessageDecoder decoder;
    EXPECT_EQ(decoder.message, nullptr);
    EXPECT_TRUE(decoder.ok);
}

}  // namespace
