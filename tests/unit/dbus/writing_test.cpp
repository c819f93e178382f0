// Basic values going out, read back by plain sd-bus calls and by the codec.
#include "support/message_text/message_text.h"
#include "unit/dbus/codec_fixture.h"

#include <climits>

namespace kaz::dbus {
namespace {

using test::messageText;

class Writing : public CodecTest {
  protected:
    template <typename T>
    void expectOnTheWire(const T& value, const std::string& text) {
        const MessagePtr message = written(value);
        EXPECT_EQ(messageText(message.get()), text);
        EXPECT_EQ(read<T>(message.get()), value);
    }

    template <typename T>
    std::string errorOfWriting(const T& value) {
        const MessagePtr message = bus.message();
        return errorOf(write(message.get(), value));
    }
};

TEST_F(Writing, WritesInts) {
    expectOnTheWire(0, "i0");
    expectOnTheWire(-1, "i-1");
    expectOnTheWire(INT_MAX, "i2147483647");
    expectOnTheWire(INT_MIN, "i-2147483648");
}

TEST_F(Writing, WritesBooleans) {
    expectOnTheWire(true, "true");
    expectOnTheWire(false, "false");
}

TEST_F(Writing, WritesTextsExactly) {
    expectOnTheWire(std::string(), R"("")");
    expectOnTheWire(std::string("Home"), R"("Home")");
    expectOnTheWire(std::string(R"("a\b")"), R"("\"a\\b\"")");
    expectOnTheWire(std::string("Caf\xc3\xa9 "), R"("Caf\xc3\xa9 ")");
}

TEST_F(Writing, WritesObjectPaths) {
    expectOnTheWire(OPath("/"), R"(o"/")");
    expectOnTheWire(OPath("/fi/w1/Networks/0"), R"(o"/fi/w1/Networks/0")");
}

TEST_F(Writing, AppendsOneValueAfterTheOther) {
    const MessagePtr message = bus.message();
    EXPECT_TRUE(write(message.get(), std::string("wpa_supplicant.service")));
    EXPECT_TRUE(write(message.get(), std::string("replace")));
    test::StubBus::seal(message.get());
    EXPECT_EQ(messageText(message.get()), R"("wpa_supplicant.service", "replace")");
}

TEST_F(Writing, RefusesATextWithANulInsteadOfCuttingItShort) {
    for (const std::string& text : {std::string("\0", 1), std::string("a\0b", 3), std::string("Home\0", 5)}) {
        EXPECT_EQ(errorOfWriting(text), invalidArgument);
    }
    EXPECT_EQ(errorOfWriting(OPath(std::string("/a\0b", 4))), invalidArgument);
}

TEST_F(Writing, RefusesATextThatIsNotUtf8) {
    for (const char* text : {"\xff", "Caf\xe9", "\xc3", "\xed\xa0\x80", "\xc0\xaf"}) {
        EXPECT_EQ(errorOfWriting(std::string(text)), invalidArgument) << testing::PrintToString(text);
    }
}

TEST_F(Writing, RefusesWhatIsNoObjectPath) {
    for (const char* path : {"", "a", "/a/", "//", "/a-b", "/\xc3\xa9"}) {
        EXPECT_EQ(errorOfWriting(OPath(path)), invalidArgument) << path;
    }
}

TEST_F(Writing, FailsForASealedMessage) {
    const MessagePtr message = bus.sealed("");
    EXPECT_EQ(errorOf(write(message.get(), 1)), notPermitted);
    EXPECT_EQ(errorOf(write(message.get(), true)), notPermitted);
    EXPECT_EQ(errorOf(write(message.get(), std::string("x"))), notPermitted);
    EXPECT_EQ(errorOf(write(message.get(), OPath("/"))), notPermitted);
}

TEST_F(Writing, FailsWithoutAMessage) {
    EXPECT_EQ(errorOf(write(nullptr, 1)), invalidArgument);
    EXPECT_EQ(errorOf(write(nullptr, std::string("x"))), invalidArgument);
}

}  // namespace
}  // namespace kaz::dbus
