// Basic values, optionals and variants.
#include "dbus/records.h"
#include "unit/dbus/codec_fixture.h"

#include <gmock/gmock.h>

#include <climits>
#include <string_view>
#include <utility>

namespace kaz::dbus {
namespace {

using testing::Optional;

class Reading : public CodecTest {};

// A wrong signature would only make reading slower, because each value is then peeked at first.
TEST_F(Reading, KnowsTheSignatureOfEachType) {
    const std::pair<std::string_view, std::string_view> signatures[] = {
        {Wire<int>::signature.data(), "i"},
        {Wire<short>::signature.data(), "n"},
        {Wire<unsigned char>::signature.data(), "y"},
        {Wire<bool>::signature.data(), "b"},
        {Wire<std::string>::signature.data(), "s"},
        {Wire<std::string_view>::signature.data(), "s"},
        {Wire<OPath>::signature.data(), "o"},
        {Wire<std::optional<short>>::signature.data(), "n"},
        {Wire<std::vector<std::string>>::signature.data(), "as"},
        {Wire<std::vector<OPath>>::signature.data(), "ao"},
        {Wire<std::vector<unsigned char>>::signature.data(), "ay"},
        {Wire<std::set<std::string>>::signature.data(), "as"},
        {Wire<std::optional<std::vector<int>>>::signature.data(), "ai"},
        {Wire<wifi::SignalPoll>::signature.data(), "a{sv}"},
    };
    for (const auto& [known, expected] : signatures) {
        EXPECT_EQ(known, expected);
    }
}

TEST_F(Reading, ReadsEveryInt32) {
    for (const int value : {0, 1, -1, INT_MAX, INT_MIN}) {
        EXPECT_EQ(readFrom<int>("i", value), value);
    }
}

TEST_F(Reading, ReadsEveryInt16) {
    for (const int value : {0, 1, -1, SHRT_MAX, SHRT_MIN}) {
        EXPECT_EQ(readFrom<short>("n", value), value);
    }
}

TEST_F(Reading, ReadsEveryByte) {
    for (const int value : {0, 1, 0x7f, 0x80, 0xff}) {
        EXPECT_EQ(readFrom<unsigned char>("y", value), value);
    }
}

TEST_F(Reading, ReadsBooleans) {
    EXPECT_EQ(readFrom<bool>("b", 1), true);
    EXPECT_EQ(readFrom<bool>("b", 0), false);
}

TEST_F(Reading, ReadsStrings) {
    for (const char* value : {"", "Home", "Caf\xc3\xa9", "\"quoted\" and \\escaped\n"}) {
        EXPECT_EQ(readFrom<std::string>("s", value), value);
    }
}

TEST_F(Reading, ReadsObjectPaths) {
    EXPECT_EQ(readFrom<OPath>("o", "/fi/w1/wpa_supplicant1/Interfaces/0"),
              OPath("/fi/w1/wpa_supplicant1/Interfaces/0"));
    EXPECT_EQ(readFrom<OPath>("o", "/"), OPath("/"));
}

TEST_F(Reading, ReadsStringsThatLastAsLongAsTheMessage) {
    const MessagePtr message = bus.sealed("s", "State");
    EXPECT_EQ(read<std::string_view>(message.get()), "State");
}

TEST_F(Reading, GivesAnEngagedOptionalForEveryValueRead) {
    EXPECT_THAT(*readFrom<std::optional<int>>("i", -15), Optional(-15));
    EXPECT_THAT(*readFrom<std::optional<bool>>("b", 0), Optional(false));
    EXPECT_THAT(*readFrom<std::optional<std::string>>("s", ""), Optional(std::string()));
    EXPECT_THAT(*readFrom<std::optional<OPath>>("o", "/"), Optional(OPath("/")));
    EXPECT_THAT(*readFrom<std::optional<std::vector<OPath>>>("ao", 0), Optional(std::vector<OPath>()));
    EXPECT_THAT(*readFrom<std::optional<std::vector<OPath>>>("ao", 1, "/a"),
                Optional(std::vector<OPath>{"/a"}));
}

TEST_F(Reading, FailsForAnOptionalIntWhereTheMessageHoldsAString) {
    EXPECT_EQ(errorFrom<std::optional<int>>("s", "5"), wrongType);
}

TEST_F(Reading, ReadsThroughAVariant) {
    EXPECT_EQ(readFrom<int>("v", "i", -3), -3);
    EXPECT_EQ(readFrom<short>("v", "n", -3), -3);
    EXPECT_EQ(readFrom<unsigned char>("v", "y", 3), 3);
    EXPECT_EQ(readFrom<bool>("v", "b", 1), true);
    EXPECT_EQ(readFrom<std::string>("v", "s", "active"), "active");
    EXPECT_EQ(readFrom<OPath>("v", "o", "/a"), OPath("/a"));
    EXPECT_THAT(*readFrom<std::optional<bool>>("v", "b", 1), Optional(true));
}

TEST_F(Reading, ReadsAnIntWrappedInTwoNestedVariantsAsTheInt) {
    EXPECT_EQ(readFrom<int>("v", "v", "i", 42), 42);
    EXPECT_THAT(*readFrom<std::optional<int>>("v", "v", "i", 42), Optional(42));
}

TEST_F(Reading, ReadsThroughAnyNumberOfVariants) {
    EXPECT_EQ(readFrom<std::string>("v", "v", "v", "v", "v", "s", "deep"), "deep");
}

TEST_F(Reading, FailsWithTheBareTextForAValueOfAnotherType) {
    EXPECT_EQ(errorFrom<int>("s", "5"), wrongType);
    EXPECT_EQ(errorFrom<int>("u", 5U), wrongType);
    EXPECT_EQ(errorFrom<int>("b", 1), wrongType);
    EXPECT_EQ(errorFrom<short>("i", 5), wrongType);
    EXPECT_EQ(errorFrom<short>("q", 5), wrongType);
    EXPECT_EQ(errorFrom<unsigned char>("n", 5), wrongType);
    EXPECT_EQ(errorFrom<bool>("i", 1), wrongType);
    EXPECT_EQ(errorFrom<std::string>("o", "/a"), wrongType);
    EXPECT_EQ(errorFrom<std::string>("g", "a{sv}"), wrongType);
    EXPECT_EQ(errorFrom<std::string>("as", 1, "x"), wrongType);
    EXPECT_EQ(errorFrom<OPath>("s", "/a"), wrongType);
    EXPECT_EQ(errorFrom<std::optional<bool>>("i", 1), wrongType);
    EXPECT_EQ(errorFrom<std::optional<std::string>>("i", 1), wrongType);
    EXPECT_EQ(errorFrom<std::optional<OPath>>("s", "/a"), wrongType);
}

TEST_F(Reading, TellsEveryVariantAroundAFailure) {
    EXPECT_EQ(errorFrom<int>("v", "s", "5"), "Unable to read from variant: " + wrongType);
    EXPECT_EQ(errorFrom<int>("v", "v", "s", "5"),
              "Unable to read from variant: Unable to read from variant: " + wrongType);
    EXPECT_EQ(errorFrom<std::optional<int>>("v", "s", "5"), "Unable to read from variant: " + wrongType);
}

TEST_F(Reading, RefusesATextThatIsNotUtf8) {
    const MessagePtr message = bus.sealed("s", "Home");
    corruptText(message.get(), "Home");
    EXPECT_EQ(errorOf(read<std::string>(message.get())), badMessage);
}

TEST_F(Reading, RefusesAMalformedObjectPath) {
    const MessagePtr message = bus.sealed("v", "o", "/a");
    corruptText(message.get(), "/a");
    EXPECT_EQ(errorOf(read<OPath>(message.get())), "Unable to read from variant: " + badMessage);
}

TEST_F(Reading, FailsPastTheEndOfTheMessage) {
    EXPECT_EQ(errorFrom<int>(""), wrongType);
    EXPECT_EQ(errorFrom<short>(""), wrongType);
    EXPECT_EQ(errorFrom<unsigned char>(""), wrongType);
    EXPECT_EQ(errorFrom<bool>(""), wrongType);
    EXPECT_EQ(errorFrom<std::string>(""), wrongType);
    EXPECT_EQ(errorFrom<OPath>(""), wrongType);
    EXPECT_EQ(errorFrom<std::optional<int>>(""), wrongType);
    EXPECT_EQ(errorFrom<std::vector<OPath>>(""), wrongType);
    EXPECT_EQ(errorFrom<std::vector<unsigned char>>(""), wrongType);

    const MessagePtr message = bus.sealed("i", 1);
    EXPECT_EQ(read<int>(message.get()), 1);
    EXPECT_EQ(errorOf(read<int>(message.get())), wrongType);
}

// sd-bus reports no error here, but leaves the value unset.
TEST_F(Reading, FailsPastTheEndOfAnArray) {
    const MessagePtr message = bus.sealed("ai", 1, 7);
    ASSERT_GT(sd_bus_message_enter_container(message.get(), 'a', "i"), 0);
    EXPECT_EQ(read<int>(message.get()), 7);
    EXPECT_EQ(errorOf(read<int>(message.get())), wrongType);

    const MessagePtr texts = bus.sealed("as", 0);
    ASSERT_GT(sd_bus_message_enter_container(texts.get(), 'a', "s"), 0);
    EXPECT_EQ(errorOf(read<std::string>(texts.get())), wrongType);
}

TEST_F(Reading, FailsWithoutAMessage) {
    EXPECT_EQ(errorOf(read<int>(nullptr)), invalidArgument);
    EXPECT_EQ(errorOf(read<std::vector<OPath>>(nullptr)), invalidArgument);
}

TEST_F(Reading, FailsForAMessageThatIsStillBeingWritten) {
    const MessagePtr message = bus.message();
    EXPECT_EQ(errorOf(read<int>(message.get())), notPermitted);
}

TEST_F(Reading, ConsumesExactlyOneValue) {
    const MessagePtr message = bus.sealed("ivvosb", 1, "s", "two", "v", "i", 3, "/four", "five", 1);
    EXPECT_EQ(read<int>(message.get()), 1);
    EXPECT_EQ(read<std::string>(message.get()), "two");
    EXPECT_EQ(read<int>(message.get()), 3);
    EXPECT_EQ(read<OPath>(message.get()), OPath("/four"));
    EXPECT_EQ(read<std::string>(message.get()), "five");
    EXPECT_EQ(read<bool>(message.get()), true);
    EXPECT_EQ(sd_bus_message_at_end(message.get(), 1), 1);
}

}  // namespace
}  // namespace kaz::dbus
