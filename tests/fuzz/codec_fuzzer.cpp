// The value codec on messages of all types. Each C++ type is read from exactly the values that it accepts, with the
// right result. A value that was read can be written and read back. A value that was not read has the error of the step
// that failed.
#include "dbus/value_codec.h"
#include "dbus/variant.h"
#include "fuzz/reference_reader.h"
#include "fuzz/require.h"
#include "fuzz/sealed_value.h"
#include "fuzz/stepwise_reader.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace kaz::fuzz {
namespace {

using dbus::OPath;

// An error text begins with one prefix for each variant around the value.
void checkReason(const Value& value, std::string_view reason) {
    static constexpr std::string_view inVariant = "Unable to read from variant: ";
    for (const Value* outer = &value; outer->type() == SD_BUS_TYPE_VARIANT;
         outer = &outer->contents.front()) {
        require(reason.starts_with(inVariant), "an error tells of every variant on the way");
        reason.remove_prefix(inVariant.size());
    }
    require(!reason.empty() && !reason.starts_with(inVariant), "and of no other");
}

template <typename T>
dbus::MessagePtr sealedWith(const T& value) {
    dbus::MessagePtr message = bus().message();
    require(dbus::write(message.get(), value).has_value(), "what was read can be written");
    test::StubBus::seal(message.get());
    return message;
}

// Decoding, encoding and decoding again.
template <typename T>
void checkStable(const T& value) {
    require(dbus::read<T>(sealedWith(value).get()) == value, "what was written is read back");
    if constexpr (!std::is_same_v<T, OPath>) {
        require(dbus::read<T>(sealedWith(dbus::Variant(value)).get()) == value, "also from a variant");
        const dbus::Variant map(dbus::Variant::Map{{"key", dbus::Variant(value)}});
        dbus::MessagePtr message = sealedWith(map);
        require(sd_bus_message_verify_type(message.get(), 'v', "a{sv}") > 0, "a dictionary travels as one");
    }
}

template <typename T>
void checkReading(sd_bus_message* message, const Value& value, const T& former) {
    std::optional<T> expected;
    expect(value, expected);

    sd_bus_message_rewind(message, 1);
    const auto stepwise = readStepwise<T>(message);
    sd_bus_message_rewind(message, 1);
    const dbus::CodecResult<T> read = dbus::read<T>(message);
    require(sameResult(read, stepwise), "value and error are those of reading step by step");
    if (!read && nestsTooDeep(value)) {
        return;
    }
    require(read.has_value() == expected.has_value(),
            "a type is read from values of its type, and no others");
    T target = former;
    if (!read) {
        checkReason(value, read.error());
        sd_bus_message_rewind(message, 1);
        require(!dbus::fillHelper(target, message), "filling fails as reading does");
        require(target == former, "and leaves the target as it was");
        return;
    }
    require(*read == *expected, "what was sent is what is read");
    require(dbus::read<std::string>(message) == std::string(nextText), "one value was taken, and no more");
    sd_bus_message_rewind(message, 1);
    require(dbus::fillHelper(target, message) && target == *read, "filling gives what reading gives");
    if constexpr (std::is_same_v<T, int> || std::is_same_v<T, bool> || std::is_same_v<T, std::string> ||
                  std::is_same_v<T, OPath>) {
        checkStable(*read);
    }
}

// Every type that the library reads, with its target's former value. Each message is read as only one of them, because
// most of the others would only fail.
using Reading = void (*)(sd_bus_message* message, const Value& value);
constexpr std::array<Reading, 15> readings{
    [](auto* message, const auto& value) { checkReading<int>(message, value, 4711); },
    [](auto* message, const auto& value) { checkReading<short>(message, value, 47); },
    [](auto* message, const auto& value) { checkReading<unsigned char>(message, value, 4); },
    [](auto* message, const auto& value) { checkReading<bool>(message, value, true); },
    [](auto* message, const auto& value) { checkReading<std::string>(message, value, "former"); },
    [](auto* message, const auto& value) { checkReading<OPath>(message, value, "/former"); },
    [](auto* message, const auto& value) { checkReading<std::optional<int>>(message, value, 4711); },
    [](auto* message, const auto& value) { checkReading<std::optional<bool>>(message, value, std::nullopt); },
    [](auto* message, const auto& value) {
        checkReading<std::optional<std::string>>(message, value, "former");
    },
    [](auto* message, const auto& value) {
        checkReading<std::optional<OPath>>(message, value, std::nullopt);
    },
    [](auto* message, const auto& value) {
        checkReading<std::optional<std::vector<OPath>>>(message, value, std::nullopt);
    },
    [](auto* message, const auto& value) {
        checkReading<std::vector<unsigned char>>(message, value, {1, 2});
    },
    [](auto* message, const auto& value) {
        checkReading<std::vector<std::string>>(message, value, {"former"});
    },
    [](auto* message, const auto& value) { checkReading<std::vector<OPath>>(message, value, {}); },
    [](auto* message, const auto& value) { checkReading<std::set<std::string>>(message, value, {"former"}); },
};

// Any bytes are sent unchanged or refused.
void checkWriting(const std::string& text) {
    const dbus::MessagePtr plain = bus().message();
    const auto written = dbus::write(plain.get(), text);
    require(!written || text.find('\0') == std::string::npos, "a text with a NUL is refused");
    const dbus::MessagePtr nested = bus().message();
    const auto writtenNested = dbus::write(nested.get(), dbus::Variant(text));
    require(written.has_value() == writtenNested.has_value(),
            "a variant carries what is carried without one");
    if (written) {
        checkStable(text);
    } else {
        require(writtenNested.error() == "Unable to write to variant: " + written.error(),
                "an error tells of the variant on the way");
    }
}

}  // namespace
}  // namespace kaz::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kaz::fuzz;
    FuzzedDataProvider bytes(data, size);
    if (bytes.ConsumeIntegralInRange(0, 7) == 7) {
        checkWriting(bytes.ConsumeRemainingBytesAsString());
        return 0;
    }
    const Reading reading = bytes.PickValueInArray(readings);
    const std::string type = makeType(bytes);
    checkMessage(makeWrapped(bytes, makeValue(bytes, type)), reading);
    return 0;
}
