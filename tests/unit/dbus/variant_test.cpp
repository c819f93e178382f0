#include "dbus/variant.h"

#include "dbus/records.h"
#include "support/message_text/message_text.h"
#include "unit/dbus/codec_fixture.h"

#include <type_traits>

namespace kaz::dbus {
namespace {

using test::messageText;

class VariantTest : public CodecTest {
  protected:
    template <typename T>
    std::string textOf(const T& value) {
        return messageText(written(value).get());
    }

    template <typename T>
    std::string errorOfWriting(const T& value) {
        const MessagePtr message = bus.message();
        std::string error = errorOf(write(message.get(), value));
        EXPECT_LT(sd_bus_message_seal(message.get(), 1, 0), 0) << "no container was left open";
        return error;
    }

    const std::string unsendable = std::string("a\0b", 3);
};

// Any other type would silently be sent as one of the five.
static_assert(!std::is_constructible_v<Variant, long>);
static_assert(!std::is_constructible_v<Variant, unsigned>);
static_assert(!std::is_constructible_v<Variant, short>);
static_assert(!std::is_constructible_v<Variant, char>);
static_assert(!std::is_constructible_v<Variant, double>);
static_assert(!std::is_constructible_v<Variant, std::nullptr_t>);
static_assert(!std::is_constructible_v<Variant, const void*>);
static_assert(!std::is_constructible_v<Variant, OPath>);

TEST_F(VariantTest, SendsAnInt) {
    const int number = -7;
    EXPECT_EQ(Variant(number).signature(), "i");
    EXPECT_EQ(textOf(Variant(number)), "<i-7>");
    EXPECT_EQ(read<int>(written(Variant(number)).get()), -7);
}

TEST_F(VariantTest, SendsABoolAsAVariantOfTypeB) {
    for (const bool flag : {true, false}) {
        EXPECT_EQ(Variant(flag).signature(), "b");
        EXPECT_EQ(textOf(Variant(flag)), flag ? "<true>" : "<false>");
        EXPECT_EQ(read<bool>(written(Variant(flag)).get()), flag);
    }
}

TEST_F(VariantTest, SendsAText) {
    std::string text = "pass\"phrase";
    EXPECT_EQ(Variant(text).signature(), "s");
    EXPECT_EQ(textOf(Variant(text)), R"(<"pass\"phrase">)");
    EXPECT_EQ(text, "pass\"phrase");
    EXPECT_EQ(textOf(Variant(std::as_const(text))), R"(<"pass\"phrase">)");
    EXPECT_EQ(textOf(Variant(std::move(text))), R"(<"pass\"phrase">)");
}

TEST_F(VariantTest, SendsALiteralAsATextNotAsABool) {
    EXPECT_EQ(Variant("passive").signature(), "s");
    EXPECT_EQ(textOf(Variant("passive")), R"(<"passive">)");
    const char* pointer = "NONE";
    EXPECT_EQ(textOf(Variant(pointer)), R"(<"NONE">)");
    EXPECT_EQ(textOf(Variant::Map{{"Type", "passive"}}), R"({"Type": <"passive">})");
}

TEST_F(VariantTest, SendsADictionary) {
    Variant::Map map{{"priority", 2}};
    EXPECT_EQ(Variant(map).signature(), "a{sv}");
    EXPECT_EQ(textOf(Variant(map)), R"(<{"priority": <i2>}>)");
    EXPECT_EQ(textOf(Variant(std::move(map))), R"(<{"priority": <i2>}>)");
}

TEST_F(VariantTest, SendsEmptyValues) {
    EXPECT_EQ(textOf(Variant("")), R"(<"">)");
    EXPECT_EQ(textOf(Variant(Variant::Map{})), "<{}>");
    EXPECT_EQ(textOf(Variant::Map{}), "{}");
}

TEST_F(VariantTest, OwnsItsValueAndCanBeSentTwice) {
    Variant variant = [] {
        std::string local = "a text that is too long for the small buffer";
        return Variant(local);
    }();
    const Variant copy = variant;
    EXPECT_EQ(textOf(variant), textOf(variant));
    EXPECT_EQ(textOf(copy), R"(<"a text that is too long for the small buffer">)");
    variant = 1;
    EXPECT_EQ(textOf(variant), "<i1>");
    EXPECT_EQ(textOf(copy), R"(<"a text that is too long for the small buffer">)");
}

TEST_F(VariantTest, PutsTheEntryAFirstWhenTheKeysAreBAndA) {
    Variant::Map map;
    map.emplace("b", 1);
    map.emplace("a", 2);
    EXPECT_EQ(textOf(map), R"({"a": <i2>, "b": <i1>})");
}

TEST_F(VariantTest, SortsKeysByTheirBytes) {
    const Variant::Map map{{"psk", "x"}, {"Key", 1}, {"key_mgmt", "y"}, {"", 2}, {"key", 3}, {"\xc3\xa9", 4}};
    EXPECT_EQ(textOf(map),
              R"({"": <i2>, "Key": <i1>, "key": <i3>, "key_mgmt": <"y">, "psk": <"x">, "\xc3\xa9": <i4>})");
}

TEST_F(VariantTest, NestsDictionaries) {
    const Variant::Map map{{"outer", Variant::Map{{"inner", Variant::Map{{"flag", true}}}}}};
    EXPECT_EQ(textOf(map), R"({"outer": <{"inner": <{"flag": <true>}>}>})");
}

TEST_F(VariantTest, IsReadBackByTheRecordDecoders) {
    const MessagePtr message =
        written(Variant(Variant::Map{{"State", "completed"}, {"DisconnectReason", -3}, {"Scanning", true}}));
    const auto properties = read<SupplicantInterfaceProperties>(message.get());
    ASSERT_TRUE(properties) << properties.error();
    EXPECT_EQ(properties->state, "completed");
    EXPECT_EQ(properties->disconnectReason, -3);
    EXPECT_EQ(properties->scanning, true);
}

TEST_F(VariantTest, TellsThatItsTextCannotBeSent) {
    EXPECT_EQ(errorOfWriting(Variant(unsendable)), "Unable to write to variant: " + invalidArgument);
    EXPECT_EQ(errorOfWriting(Variant("\xff")), "Unable to write to variant: " + invalidArgument);
}

TEST_F(VariantTest, TellsTheBareErrorOfItsValueAlone) {
    const MessagePtr message = bus.message();
    EXPECT_EQ(errorOf(Variant(unsendable).writeValue(message.get())), invalidArgument);
    EXPECT_TRUE(Variant("sendable").writeValue(message.get()));
}

TEST_F(VariantTest, TellsThatAKeyOrAValueOfADictionaryCannotBeSent) {
    EXPECT_EQ(errorOfWriting(Variant::Map{{unsendable, 1}}), "Unable to write value: " + invalidArgument);
    EXPECT_EQ(errorOfWriting(Variant::Map{{"\xff", 1}}), "Unable to write value: " + invalidArgument);
    EXPECT_EQ(errorOfWriting(Variant::Map{{"ssid", unsendable}}),
              "Unable to write value: Unable to write to variant: " + invalidArgument);
}

TEST_F(VariantTest, TellsEveryLevelAroundAFailure) {
    EXPECT_EQ(errorOfWriting(Variant(Variant::Map{{"a", Variant::Map{{"b", unsendable}}}})),
              "Unable to write to variant: Unable to write value: Unable to write to variant: "
              "Unable to write value: Unable to write to variant: " +
                  invalidArgument);
}

TEST_F(VariantTest, EndsTheWholeWriteAtTheFirstFailure) {
    const Variant::Map map{{"a", "sent"}, {"b", unsendable}, {"c", "\xff"}};
    const MessagePtr message = bus.message();
    EXPECT_FALSE(write(message.get(), map));
    // Inside the entry "b" and its variant, where the failure left it; after an attempt at "c" it would not
    // be.
    EXPECT_TRUE(write(message.get(), std::string("instead")));
    for (int level = 0; level < 3; ++level) {
        ASSERT_GE(sd_bus_message_close_container(message.get()), 0) << level;
    }
    test::StubBus::seal(message.get());
    EXPECT_EQ(messageText(message.get()), R"({"a": <"sent">, "b": <"instead">})");
}

TEST_F(VariantTest, FailsWithTheBareTextWhereTheContainerCannotBeOpened) {
    const MessagePtr sealed = bus.sealed("");
    EXPECT_EQ(errorOf(write(sealed.get(), Variant(1))), notPermitted);
    EXPECT_EQ(errorOf(write(sealed.get(), Variant::Map{{"a", 1}})), notPermitted);
    EXPECT_EQ(errorOf(write(nullptr, Variant(1))), invalidArgument);
    EXPECT_EQ(errorOf(write(nullptr, Variant::Map{})), invalidArgument);
}

}  // namespace
}  // namespace kaz::dbus
