#include "unit/dbus/codec_fixture.h"

#include <gmock/gmock.h>

namespace kaz::dbus {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Bytes = std::vector<unsigned char>;
using Paths = std::vector<OPath>;
using Texts = std::vector<std::string>;
using TextSet = std::set<std::string>;

class ArrayReading : public CodecTest {
  protected:
    // An SSID as it comes off the air: `ay`.
    MessagePtr sealedBytes(const std::string& bytes) {
        MessagePtr message = bus.message();
        sd_bus_message_append_array(message.get(), 'y', bytes.data(), bytes.size());
        test::StubBus::seal(message.get());
        return message;
    }
};

TEST_F(ArrayReading, KeepsTheOrderOfTheElements) {
    EXPECT_THAT(*readFrom<Bytes>("ay", 3, 3, 1, 2), ElementsAre(3, 1, 2));
    EXPECT_THAT(*readFrom<Texts>("as", 3, "b", "a", "b"), ElementsAre("b", "a", "b"));
    EXPECT_THAT(*readFrom<Paths>("ao", 2, "/b", "/a"), ElementsAre(OPath("/b"), OPath("/a")));
}

TEST_F(ArrayReading, GivesAnEmptyContainerForAnEmptyArray) {
    EXPECT_THAT(*readFrom<Bytes>("ay", 0), IsEmpty());
    EXPECT_THAT(*readFrom<Texts>("as", 0), IsEmpty());
    EXPECT_THAT(*readFrom<Paths>("ao", 0), IsEmpty());
    EXPECT_THAT(*readFrom<TextSet>("as", 0), IsEmpty());
    EXPECT_THAT(*readFrom<TextSet>("v", "as", 0), IsEmpty());
}

TEST_F(ArrayReading, ReadsASetOfAAndBFromTheStringsAAndBAndA) {
    EXPECT_THAT(*readFrom<TextSet>("as", 3, "a", "b", "a"), ElementsAre("a", "b"));
}

TEST_F(ArrayReading, ReadsThroughVariants) {
    EXPECT_THAT(*readFrom<Bytes>("v", "ay", 2, 0, 255), ElementsAre(0, 255));
    EXPECT_THAT(*readFrom<Texts>("v", "v", "as", 1, "x"), ElementsAre("x"));
    EXPECT_THAT(*readFrom<Paths>("v", "ao", 1, "/a"), ElementsAre(OPath("/a")));
    EXPECT_THAT(*readFrom<TextSet>("v", "as", 1, "x"), ElementsAre("x"));
}

TEST_F(ArrayReading, KeepsEveryByteOfA32ByteSsidWithZerosAndWithoutUtf8) {
    std::string ssid = "\xff\xfe";
    ssid += '\0';
    ssid += "\"Home\" \xc3(\\";
    ssid.resize(31, '\0');
    ssid += '\x80';
    const MessagePtr message = sealedBytes(ssid);
    const auto read = dbus::read<Bytes>(message.get());
    ASSERT_TRUE(read);
    EXPECT_EQ(read->size(), 32U);
    EXPECT_EQ(std::string(read->begin(), read->end()), ssid);
}

TEST_F(ArrayReading, FailsForAnArrayOfOtherElements) {
    EXPECT_EQ(errorFrom<Bytes>("as", 1, "x"), wrongType);
    EXPECT_EQ(errorFrom<Bytes>("an", 1, 1), wrongType);
    EXPECT_EQ(errorFrom<Texts>("ao", 1, "/a"), wrongType);
    EXPECT_EQ(errorFrom<Texts>("av", 1, "s", "x"), wrongType);
    EXPECT_EQ(errorFrom<Paths>("as", 1, "/a"), wrongType);
    EXPECT_EQ(errorFrom<TextSet>("ai", 1, 1), wrongType);
    EXPECT_EQ(errorFrom<Texts>("a{ss}", 1, "x", "y"), wrongType);
    EXPECT_EQ(errorFrom<std::optional<Paths>>("as", 0), wrongType);
}

TEST_F(ArrayReading, FailsForAValueThatIsNoArray) {
    EXPECT_EQ(errorFrom<Bytes>("y", 1), wrongType);
    EXPECT_EQ(errorFrom<Bytes>("s", "Home"), wrongType);
    EXPECT_EQ(errorFrom<Texts>("s", "x"), wrongType);
    EXPECT_EQ(errorFrom<Paths>("o", "/a"), wrongType);
    EXPECT_EQ(errorFrom<TextSet>("(ss)", "x", "y"), wrongType);
    EXPECT_EQ(errorFrom<Paths>("v", "o", "/a"), "Unable to read from variant: " + wrongType);
}

TEST_F(ArrayReading, TellsAFailureInsideTheThirdObjectPathAndDropsTheOthers) {
    const MessagePtr message = bus.sealed("ao", 3, "/a", "/b", "/c");
    corruptText(message.get(), "/c");
    EXPECT_EQ(errorOf(read<Paths>(message.get())), "Unable to read from array: " + badMessage);

    Paths kept{"/before"};
    sd_bus_message_rewind(message.get(), 1);
    EXPECT_FALSE(fillHelper(kept, message.get()));
    EXPECT_THAT(kept, ElementsAre(OPath("/before")));
}

TEST_F(ArrayReading, TellsAFailureInsideAnElementFromTheOutsideIn) {
    const MessagePtr texts = bus.sealed("v", "as", 2, "first", "second");
    corruptText(texts.get(), "second");
    EXPECT_EQ(errorOf(read<Texts>(texts.get())),
              "Unable to read from variant: Unable to read from array: " + badMessage);

    const MessagePtr set = bus.sealed("v", "v", "as", 1, "only");
    corruptText(set.get(), "only");
    EXPECT_EQ(
        errorOf(read<TextSet>(set.get())),
        "Unable to read from variant: Unable to read from variant: Unable to read from array: " + badMessage);
}

TEST_F(ArrayReading, ConsumesTheWholeArray) {
    const MessagePtr message = bus.sealed("ayasaoi", 2, 1, 2, 0, 1, "/a", 9);
    EXPECT_THAT(*read<Bytes>(message.get()), ElementsAre(1, 2));
    EXPECT_THAT(*read<TextSet>(message.get()), IsEmpty());
    EXPECT_THAT(*read<Paths>(message.get()), ElementsAre(OPath("/a")));
    EXPECT_EQ(read<int>(message.get()), 9);
}

}  // namespace
}  // namespace kaz::dbus
