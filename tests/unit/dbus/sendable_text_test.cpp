// What is called sendable is what sd-bus sends.
#include "base/sendable_text.h"
#include "unit/dbus/codec_fixture.h"

#include <random>
#include <string>
#include <vector>

namespace kaz::dbus {
namespace {

class SendableText : public CodecTest {
  protected:
    // sd-bus takes a C string, so the codec itself refuses NUL.
    bool isSent(const std::string& text) {
        const MessagePtr message = bus.message();
        return write(message.get(), text).has_value();
    }
};

TEST_F(SendableText, IsTextThatTheCodecWrites) {
    const std::vector<std::string> texts{
        "", "Home", std::string(1, '\0'), std::string("Ho\0me", 5), "\x7f", "\x80", "\xbf",
        // The first and the last character of each length, and the last form that is too long.
        "\xc2\x80", "\xc1\xbf", "\xdf\xbf", "\xe0\xa0\x80", "\xe0\x9f\xbf", "\xef\xbf\xbd",
        "\xf0\x90\x80\x80", "\xf0\x8f\xbf\xbf", "\xf4\x8f\xbf\xbd", "\xf4\x90\x80\x80",
        "\xf8\x88\x80\x80\x80", "\xff",
        // Surrogates, noncharacters, and their neighbours.
        "\xed\x9f\xbf", "\xed\xa0\x80", "\xed\xbf\xbf", "\xee\x80\x80", "\xef\xb7\x8f", "\xef\xb7\x90",
        "\xef\xb7\xaf", "\xef\xb7\xb0", "\xef\xbf\xbe", "\xef\xbf\xbf", "\xf0\x9f\xbf\xbe",
        "\xf4\x8f\xbf\xbf",
        // Cut short, or continued by something else.
        "\xc3", "\xe2\x82", "\xf0\x9f\x9a", "\xc3(", "\xe2(\x82", "Caf\xc3\xa9", "Caf\xe9"};
    for (const std::string& text : texts) {
        EXPECT_EQ(isSendableText(text), isSent(text)) << testing::PrintToString(text);
    }
}

TEST_F(SendableText, IsTheSameForRandomBytes) {
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        std::string text(random() % 5, ' ');
        for (char& byte : text) {  // bytes that begin or continue a longer character are frequent
            byte = static_cast<char>(random() % 4 == 0 ? random() % 128 : 128 + random() % 128);
        }
        ASSERT_EQ(isSendableText(text), isSent(text)) << testing::PrintToString(text);
    }
}

}  // namespace
}  // namespace kaz::dbus
