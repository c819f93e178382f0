// Messages in the byte order that this machine does not have: a sender may use either.
#include "dbus/records.h"
#include "unit/dbus/codec_fixture.h"

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <bit>
#include <cstdint>
#include <string_view>

namespace kaz::dbus {
namespace {

using testing::ElementsAre;

constexpr bool foreignIsBig = std::endian::native == std::endian::little;

// Writes values as they lie in a message of the foreign byte order.
class ForeignBytes {
  public:
    ForeignBytes& number(std::uint32_t value, std::size_t size) {
        align(size);
        for (std::size_t i = 0; i < size; ++i) {
            const std::size_t shift = 8 * (foreignIsBig ? size - 1 - i : i);
            bytes_ += static_cast<char>((value >> shift) & 0xffU);
        }
        return *this;
    }
    ForeignBytes& text(std::string_view value) {
        number(static_cast<std::uint32_t>(value.size()), 4);
        bytes_ += value;
        bytes_ += '\0';
        return *this;
    }
    ForeignBytes& signature(std::string_view value) {
        bytes_ += static_cast<char>(value.size());
        bytes_ += value;
        bytes_ += '\0';
        return *this;
    }
    ForeignBytes& raw(std::string_view value) {
        bytes_ += value;
        return *this;
    }
    ForeignBytes& align(std::size_t boundary) {
        bytes_.resize((bytes_.size() + boundary - 1) / boundary * boundary, '\0');
        return *this;
    }
    const std::string& str() const { return bytes_; }

  private:
    std::string bytes_;
};

// A signal with this body.
std::string foreignSignal(std::string_view signature, const std::string& body) {
    ForeignBytes fields;
    fields.number(1, 1).signature("o").text("/").align(8);
    fields.number(2, 1).signature("s").text("com.example.Foreign").align(8);
    fields.number(3, 1).signature("s").text("Greeting").align(8);
    fields.number(8, 1).signature("g").signature(signature);

    ForeignBytes message;
    message.raw(foreignIsBig ? "B" : "l").number(4, 1).number(0, 1).number(1, 1);
    message.number(static_cast<std::uint32_t>(body.size()), 4).number(1, 4);
    message.number(static_cast<std::uint32_t>(fields.str().size()), 4).raw(fields.str()).align(8).raw(body);
    return message.str();
}

// A connection over which the far end has already sent everything.
class ByteOrder : public testing::Test {
  protected:
    ByteOrder() {
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, sockets_.data()), 0);
        sd_bus* made = nullptr;
        EXPECT_GE(sd_bus_new(&made), 0);
        bus_.reset(made);
        EXPECT_GE(sd_bus_set_fd(made, sockets_[0], sockets_[0]), 0);
        EXPECT_GE(sd_bus_start(made), 0);
        send("DATA\r\nOK 0123456789abcdef0123456789abcdef\r\nERROR\r\n");
    }
    ~ByteOrder() override { ::close(sockets_[1]); }

    MessagePtr received(std::string_view signature, const std::string& body) {
        send(foreignSignal(signature, body));
        sd_bus_message* message = nullptr;
        while (message == nullptr && sd_bus_process(bus_.get(), &message) > 0) {
        }
        return MessagePtr(message);
    }

  private:
    void send(const std::string& bytes) {
        EXPECT_EQ(::write(sockets_[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

    std::array<int, 2> sockets_{-1, -1};
    BusPtr bus_;
};

TEST_F(ByteOrder, DoesNotMatterForNumbers) {
    const MessagePtr message = received("in", ForeignBytes().number(0x01020304, 4).number(0xfffe, 2).str());
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(read<int>(message.get()), 0x01020304);
    EXPECT_EQ(read<short>(message.get()), -2);
}

TEST_F(ByteOrder, DoesNotMatterForTheBytesOfAnSsid) {
    const MessagePtr message = received("ay", ForeignBytes().number(3, 4).raw({"\xff\0H", 3}).str());
    ASSERT_NE(message, nullptr);
    const auto bytes = read<std::vector<unsigned char>>(message.get());
    ASSERT_TRUE(bytes) << bytes.error();
    EXPECT_THAT(*bytes, ElementsAre(0xff, 0, 'H'));
}

TEST_F(ByteOrder, DoesNotMatterForArraysThatARecordSkips) {
    ForeignBytes entries;
    entries.text("IEs").signature("ay").number(3, 4).raw("abc").align(8);
    entries.text("Rates").signature("au").number(8, 4).number(1, 4).number(2, 4).align(8);
    entries.text("rssi").signature("i").number(0xffffffc3, 4);
    ForeignBytes dictionary;
    dictionary.number(static_cast<std::uint32_t>(entries.str().size()), 4).align(8).raw(entries.str());
    const MessagePtr message = received("a{sv}", dictionary.str());
    ASSERT_NE(message, nullptr);
    const auto poll = read<wifi::SignalPoll>(message.get());
    ASSERT_TRUE(poll) << poll.error();
    EXPECT_EQ(poll->rssi, -61);
}

}  // namespace
}  // namespace kaz::dbus
