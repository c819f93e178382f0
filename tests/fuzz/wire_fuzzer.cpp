// Messages from a socket, in either byte order. Bodies of random bytes: reading fails or succeeds, the same way each
// time and as step by step, and strings are valid. Bodies built by hand: their values are read.
#include "dbus/records.h"
#include "dbus/value_codec.h"
#include "fuzz/dbus_value.h"
#include "fuzz/reference_reader.h"
#include "fuzz/require.h"
#include "fuzz/stepwise_reader.h"
#include "support/wire/wire.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

namespace kaz::fuzz {
namespace {

using test::WireBytes;

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
        case SD_BUS_TYPE_VARIANT:
            bytes.signature(value.contents.front().signature);
            layOut(bytes, value.contents.front());
            break;
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

// What reading values of one type gives, until a read fails.
template <typename T>
std::vector<dbus::CodecResult<T>> readAll(sd_bus_message* message,
                                          dbus::CodecResult<T> (*read)(sd_bus_message*)) {
    std::vector<dbus::CodecResult<T>> results;
    sd_bus_message_rewind(message, 1);
    do {
        results.push_back(read(message));
    } while (results.back());
    return results;
}

template <typename T>
void checkReading(sd_bus_message* message, const Value* value) {
    const auto results = readAll<T>(message, dbus::read<T>);
    const auto equal = [&](const auto& others) {
        return std::equal(results.begin(), results.end(), others.begin(), others.end(), sameResult<T>);
    };
    require(equal(readAll<T>(message, dbus::read<T>)), "reading again gives the same");
    require(equal(readAll<T>(message, readStepwise<T>)),
            "values and error are those of reading step by step");
    for (std::size_t i = 0; i + 1 < results.size(); ++i) {
        checkValue(*results[i]);
    }
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
    static std::optional<kaz::test::WireLine> line;
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
    const auto message = line->receive(kaz::test::wireSignal(bigEndian, type, body));
    require(message != nullptr || !value, "a message that was laid out well is received");
    if (message) {
        reading(message.get(), value ? &*value : nullptr);
    } else {
        line.reset();
    }
    return 0;
}
