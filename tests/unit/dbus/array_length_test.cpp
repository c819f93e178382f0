// Arrays whose length lies: no sender's library would send them.
#include "dbus/records.h"
#include "support/wire/wire.h"
#include "unit/dbus/codec_fixture.h"

#include <bit>
#include <utility>

namespace kaz::dbus {
namespace {

constexpr bool nativeIsBig = std::endian::native == std::endian::big;

const std::string inVariant = "Unable to read from variant: ";
const std::string inArray = "Unable to read from array: ";
const std::string notAtTheEnd = errorText(-EBUSY);

class ArrayLength : public ::testing::Test {
  protected:
    MessagePtr received(std::string_view signature, const test::WireBytes& body) {
        return line_.receive(test::wireSignal(nativeIsBig, signature, body.str()));
    }

    // A dictionary with these entries, which begin at a multiple of eight.
    MessagePtr dictionary(const test::WireBytes& entries) {
        test::WireBytes body(nativeIsBig);
        return received("a{sv}", body.number(entries.size(), 4).align(8).raw(entries.str()));
    }

    // An entry with an array of this length that has only these elements.
    static test::WireBytes entry(std::string_view key, const std::string& type, std::size_t size,
                                 std::size_t length, std::string_view elements) {
        test::WireBytes entries(nativeIsBig);
        entries.text(key).signature('a' + type).number(length, 4).align(size).raw(elements);
        return entries;
    }

    template <typename T>
    static std::string errorOf(const MessagePtr& message) {
        const auto value = read<T>(message.get());
        return value ? "(no error)" : value.error();
    }

    test::WireBytes native{nativeIsBig};

  private:
    test::WireLine line_;
};

TEST_F(ArrayLength, BeyondTheMessageFailsAtTheFirstByteThatIsMissing) {
    EXPECT_EQ(errorOf<std::vector<unsigned char>>(received("ay", native.number(200, 4).raw("abc"))),
              inArray + badMessage);
}

TEST_F(ArrayLength, BeyondTheMessageTellsOfEveryLevel) {
    EXPECT_EQ(errorOf<wifi::BSSData>(dictionary(entry("SSID", "y", 1, 200, "abc"))),
              "Value decoding error: " + inVariant + inArray + badMessage);
}

const std::pair<std::string, std::size_t> numbers[] = {{"n", 2}, {"q", 2}, {"i", 4}, {"u", 4},
                                                       {"x", 8}, {"t", 8}, {"d", 8}};

TEST_F(ArrayLength, ThatIsNoMultipleOfAnElementFailsTheRecordThatSkipsTheArray) {
    for (const auto& [type, size] : numbers) {
        test::WireBytes entries = entry("Rates", type, size, size + 1, std::string(size + 1, 'x')).align(8);
        entries.text("rssi").signature("i").number(1, 4);
        EXPECT_EQ(errorOf<wifi::SignalPoll>(dictionary(entries)), notAtTheEnd) << type;
    }
}

TEST_F(ArrayLength, BeyondTheMessageFailsTheRecordThatSkipsTheArray) {
    for (const auto& [type, size] : numbers) {
        for (const std::size_t length : {size + 1, 2 * size}) {
            const test::WireBytes entries = entry("Rates", type, size, length, std::string(size + 1, 'x'));
            EXPECT_EQ(errorOf<wifi::SignalPoll>(dictionary(entries)), badMessage) << type << ' ' << length;
        }
    }
    EXPECT_EQ(errorOf<wifi::SignalPoll>(dictionary(entry("IEs", "y", 1, 200, "abc"))), badMessage);
}

TEST_F(ArrayLength, OfWholeElementsIsSkipped) {
    for (const auto& [type, size] : numbers) {
        test::WireBytes entries = entry("Rates", type, size, 2 * size, std::string(2 * size, 'x')).align(8);
        entries.text("rssi").signature("i").number(1, 4);
        const auto poll = read<wifi::SignalPoll>(dictionary(entries).get());
        ASSERT_TRUE(poll) << type << ": " << poll.error();
        EXPECT_EQ(poll->rssi, 1) << type;
    }
}

}  // namespace
}  // namespace kaz::dbus
