// Messages from a socket, in either byte order. Bodies of random bytes: reading fails or succeeds, the same way each
// time, and strings are valid. Bodies built by hand: their values are read.
#include "base/non_copyable.h"

#include "base/sd_bus/handles.h"
#include "dbus/records.h"
#include "dbus/value_codec.h"
#include "fuzz/dbus_value.h"
#include "fuzz/reference_reader.h"
#include "fuzz/require.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <sys/socket.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace kaz::fuzz {
namespace {

// Writes values in the wire format of a message.
class WireBytes {
  public:
    explicit WireBytes(bool bigEndian) : bigEndian_(bigEndian) {}

    WireBytes& number(std::size_t value, std::size_t size) {
        align(size);
        for (std::size_t i = 0; i < size; ++i) {
            bytes_ += static_cast<char>((value >> (8 * (bigEndian_ ? size - 1 - i : i))) & 0xffU);
        }
        return *this;
    }
    WireBytes& raw(std::string_view value) {
        bytes_ += value;
        return *this;
    }
    WireBytes& align(std::size_t boundary) {
        bytes_.resize((bytes_.size() + boundary - 1) / boundary * boundary, '\0');
        return *this;
    }
    // A field of a message's header.
    WireBytes& field(std::size_t code, char type, std::string_view value) {
        const std::array<char, 3> signature{1, type, 0};
        align(8).number(code, 1).raw({signature.data(), signature.size()});
        return number(value.size(), type == SD_BUS_TYPE_SIGNATURE ? 1 : 4).raw(value).number(0, 1);
    }
    // Overwrites a number of four bytes.
    void overwrite(std::size_t at, std::size_t value) {
        bytes_.replace(at, 4, WireBytes(bigEndian_).number(value, 4).str());
    }
    std::size_t size() const { return bytes_.size(); }
    const std::string& str() const { return bytes_; }

  private:
    bool bigEndian_;
    std::string bytes_;
};

std::size_t alignmentOf(char type) {
    switch (type) {
        case SD_BUS_TYPE_BYTE:
        case SD_BUS_TYPE_SIGNATURE:
        case SD_BUS_TYPE_VARIANT:
            return 1;
        case SD_BUS_TYPE_INT16:
        case SD_BUS_TYPE_UINT16:
            return 2;
        case SD_BUS_TYPE_INT64:
        case SD_BUS_TYPE_UINT64:
        case SD_BUS_TYPE_DOUBLE:
        case SD_BUS_TYPE_STRUCT_BEGIN:
        case SD_BUS_TYPE_DICT_ENTRY_BEGIN:
            return 8;
        default:
            return 4;
    }
}

void layOut(WireBytes& bytes, const Value& value);

void layOutArray(WireBytes& bytes, const Value& value) {
    const std::size_t lengthAt = bytes.number(0, 4).size() - 4;
    bytes.align(alignmentOf(value.signature[1]));
    const std::size_t begin = bytes.size();
    for (const Value& element : value.contents) {
        layOut(bytes, element);
    }
    bytes.overwrite(lengthAt, bytes.size() - begin);
}

void layOut(WireBytes& bytes, const Value& value) {
    const char type = value.type();
    bytes.align(alignmentOf(type));
    switch (type) {
        case SD_BUS_TYPE_STRING:
        case SD_BUS_TYPE_OBJECT_PATH:
        case SD_BUS_TYPE_SIGNATURE:
            bytes.number(value.text.size(), alignmentOf(type)).raw(value.text).number(0, 1);
            break;
        case SD_BUS_TYPE_ARRAY:
            layOutArray(bytes, value);
            break;
        case SD_BUS_TYPE_VARIANT: {
            const std::string& contents = value.contents.front().signature;
            bytes.number(contents.size(), 1).raw(contents).number(0, 1);
            layOut(bytes, value.contents.front());
            break;
        }
        case SD_BUS_TYPE_STRUCT_BEGIN:
        case SD_BUS_TYPE_DICT_ENTRY_BEGIN:
            for (const Value& member : value.contents) {
                layOut(bytes, member);
            }
            break;
        default:
            bytes.number(value.number, alignmentOf(type));
    }
}

std::string signal(bool bigEndian, std::string_view signature, std::string_view body) {
    constexpr std::size_t pathCode = 1;
    constexpr std::size_t interfaceCode = 2;
    constexpr std::size_t memberCode = 3;
    constexpr std::size_t signatureCode = 8;
    constexpr std::size_t signalType = 4;
    WireBytes fields(bigEndian);
    fields.field(pathCode, 'o', "/")
        .field(interfaceCode, 's', "com.example.Wire")
        .field(memberCode, 's', "Signal");
    fields.field(signatureCode, 'g', signature);
    WireBytes message(bigEndian);
    message.raw(bigEndian ? "B" : "l").number(signalType, 1).number(0, 1).number(1, 1);
    message.number(body.size(), 4).number(1, 4).number(fields.str().size(), 4).raw(fields.str());
    return message.align(8).raw(body).str();
}

// A connection whose other end the fuzzer controls.
class Line : NonCopyable {
  public:
    Line() {
        sd_bus* bus = nullptr;
        require(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends_.data()) == 0 &&
                    sd_bus_new(&bus) >= 0 && sd_bus_set_fd(bus, ends_[0], ends_[0]) >= 0 &&
                    sd_bus_start(bus) >= 0,
                "there can be a connection");
        bus_.reset(bus);
        send("DATA\r\nOK 0123456789abcdef0123456789abcdef\r\nERROR\r\n");
    }
    ~Line() { ::close(ends_[1]); }

    // Null if sd-bus does not accept the bytes as a message; it then disconnects.
    dbus::MessagePtr receive(const std::string& bytes) {
        send(bytes);
        sd_bus_message* message = nullptr;
        while (message == nullptr && sd_bus_process(bus_.get(), &message) > 0) {
        }
        return dbus::MessagePtr(message);
    }

  private:
    void send(std::string_view bytes) {
        require(
            ::send(ends_[1], bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size()),
            "the line takes what is sent");
    }

    std::array<int, 2> ends_{-1, -1};
    dbus::BusPtr bus_;
};

void checkText(const std::string& text) {
    require(text.find('\0') == std::string::npos, "a text holds no NUL");
}

template <typename T>
void checkValue(const T& value) {
    if constexpr (std::is_same_v<T, std::string>) {
        checkText(value);
    } else if constexpr (std::is_same_v<T, dbus::OPath>) {
        require(value.str().starts_with('/'), "a path is a path");
    } else if constexpr (std::is_same_v<T, std::vector<std::string>> ||
                         std::is_same_v<T, std::set<std::string>>) {
        for (const std::string& text : value) {
            checkText(text);
        }
    }
}

// Reads values of one type until a read fails. Returns their number.
template <typename T>
std::size_t readAll(sd_bus_message* message) {
    std::size_t count = 0;
    sd_bus_message_rewind(message, 1);
    while (const auto value = dbus::read<T>(message)) {
        checkValue(*value);
        ++count;
    }
    return count;
}

template <typename T>
void checkReading(sd_bus_message* message, const Value* value) {
    const std::size_t count = readAll<T>(message);
    require(readAll<T>(message) == count, "reading again gives the same");
    if constexpr (!dbus::Record<T>) {
        if (value != nullptr) {
            std::optional<T> expected;
            expect(*value, expected);
            sd_bus_message_rewind(message, 1);
            const auto read = dbus::read<T>(message);
            require(read.has_value() == expected.has_value(), "a type is read from values of its type");
            require(!read || *read == *expected, "what was laid out is what is read");
        }
    }
}

// The value is null if the body has random bytes.
using Reading = void (*)(sd_bus_message* message, const Value* value);
constexpr std::array<Reading, 14> readings{
    checkReading<int>,
    checkReading<short>,
    checkReading<unsigned char>,
    checkReading<bool>,
    checkReading<std::string>,
    checkReading<dbus::OPath>,
    checkReading<std::vector<unsigned char>>,
    checkReading<std::vector<std::string>>,
    checkReading<std::vector<dbus::OPath>>,
    checkReading<std::set<std::string>>,
    checkReading<wifi::BSSData>,
    checkReading<wifi::ConfiguredSsid>,
    checkReading<wifi::SignalPoll>,
    checkReading<dbus::SupplicantInterfaceProperties>,
};

std::string bodyOf(const Value& value, bool bigEndian) {
    WireBytes body(bigEndian);
    layOut(body, value);
    return body.str();
}

}  // namespace
}  // namespace kaz::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kaz::fuzz;
    static std::optional<Line> line;
    FuzzedDataProvider bytes(data, size);
    const Reading reading = bytes.PickValueInArray(readings);
    const bool bigEndian = bytes.ConsumeBool();
    const std::string type = makeType(bytes);
    std::optional<Value> value;
    if (bytes.ConsumeBool()) {
        value = makeValue(bytes, type);
    }
    const std::string body = value ? bodyOf(*value, bigEndian) : bytes.ConsumeRemainingBytesAsString();
    if (!line) {
        line.emplace();
    }
    const auto message = line->receive(signal(bigEndian, type, body));
    require(message != nullptr || !value, "a message that was laid out well is received");
    if (message) {
        reading(message.get(), value ? &*value : nullptr);
    } else {
        line.reset();
    }
    return 0;
}
