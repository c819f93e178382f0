// Messages in the byte order that this machine does not have: a sender may use either.
#include "dbus/records.h"
#include "support/wire/wire.h"
#include "unit/dbus/codec_fixture.h"

#include <gmock/gmock.h>

#include <bit>

namespace kaz::dbus {
namespace {

constexpr bool foreignIsBig = std::endian::native == std::endian::little;

class ByteOrder : public testing::Test {
  protected:
    MessagePtr received(std::string_view signature, const test::WireBytes& body) {
        return line_.receive(test::wireSignal(foreignIsBig, signature, body.str()));
    }

    test::WireBytes foreign{foreignIsBig};

  private:
    test::WireLine line_;
};

TEST_F(ByteOrder, DoesNotMatterForNumbers) {
    const MessagePtr message = received("in", foreign.number(0x01020304, 4).number(0xfffe, 2));
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(read<int>(message.get()), 0x01020304);
    EXPECT_EQ(read<short>(message.get()), -2);
}

TEST_F(ByteOrder, DoesNotMatterForTheBytesOfAnSsid) {
    const MessagePtr message = received("ay", foreign.number(3, 4).raw({"\xff\0H", 3}));
    ASSERT_NE(message, nullptr);
    const auto bytes = read<std::vector<unsigned char>>(message.get());
    ASSERT_TRUE(bytes) << bytes.error();
    EXPECT_THAT(*bytes, testing::ElementsAre(0xff, 0, 'H'));
}

TEST_F(ByteOrder, DoesNotMatterForArraysThatARecordSkips) {
    test::WireBytes entries(foreignIsBig);
    entries.text("IEs").signature("ay").number(3, 4).raw("abc").align(8);
    entries.text("Rates").signature("au").number(8, 4).number(1, 4).number(2, 4).align(8);
    entries.text("rssi").signature("i").number(0xffffffc3, 4);
    const MessagePtr message =
        received("a{sv}", foreign.number(entries.size(), 4).align(8).raw(entries.str()));
    ASSERT_NE(message, nullptr);
    const auto poll = read<wifi::SignalPoll>(message.get());
    ASSERT_TRUE(poll) << poll.error();
    EXPECT_EQ(poll->rssi, -61);
}

}  // namespace
}  // namespace kaz::dbus
