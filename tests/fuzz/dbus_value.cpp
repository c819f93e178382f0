#include "fuzz/dbus_value.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <utility>

namespace kaz::fuzz {
namespace {

constexpr std::string_view basicTypes = "ybnqiuxtdsog";
constexpr int deepestType = 4;
constexpr int deepestVariant = 3;
constexpr int deepestOfDBus = 64;  // arrays, structures and variants together

bool isText(char type) {
    return type == SD_BUS_TYPE_STRING || type == SD_BUS_TYPE_OBJECT_PATH || type == SD_BUS_TYPE_SIGNATURE;
}

bool isContainer(char type) {
    return type == SD_BUS_TYPE_ARRAY || type == SD_BUS_TYPE_VARIANT || type == SD_BUS_TYPE_STRUCT_BEGIN ||
           type == SD_BUS_TYPE_DICT_ENTRY_BEGIN;
}

char makeBasicType(FuzzedDataProvider& bytes) {
    return basicTypes.at(bytes.ConsumeIntegralInRange<std::size_t>(0, basicTypes.size() - 1));
}

std::string makeAnyType(FuzzedDataProvider& bytes, int depth) {
    switch (depth == 0 ? 0 : bytes.ConsumeIntegralInRange(0, 5)) {
        case 1:
            return "v";
        case 2:
            return 'a' + makeAnyType(bytes, depth - 1);
        case 3:
            return std::string("a{") + makeBasicType(bytes) + makeAnyType(bytes, depth - 1) + '}';
        case 4:
            return '(' + makeAnyType(bytes, depth - 1) + makeAnyType(bytes, depth - 1) + ')';
        default:
            return {makeBasicType(bytes)};
    }
}

// The length of the complete type at the beginning.
std::size_t completeType(std::string_view types) {
    std::size_t length = 0;
    int open = 0;
    while (length < types.size()) {
        const char type = types[length++];
        open += type == '(' || type == '{' ? 1 : 0;
        open -= type == ')' || type == '}' ? 1 : 0;
        if (open == 0 && type != 'a') {
            break;
        }
    }
    return length;
}

std::string asUtf8(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) {
        const auto number = static_cast<unsigned char>(byte);
        if (number >= 0x80) {
            text += static_cast<char>(0xC0U | (number >> 6U));
            text += static_cast<char>(0x80U | (number & 0x3FU));
        } else {
            text += number == 0 ? '0' : byte;
        }
    }
    return text;
}

std::string asPath(std::string_view bytes) {
    static constexpr std::string_view letters = "_ab/19Z/";
    std::string path = "/";
    for (const char byte : bytes) {
        const char letter = letters[static_cast<unsigned char>(byte) % letters.size()];
        path += letter == '/' && path.back() == '/' ? '_' : letter;
    }
    if (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

std::string makeText(FuzzedDataProvider& bytes, char type) {
    switch (type) {
        case SD_BUS_TYPE_OBJECT_PATH:
            return asPath(bytes.ConsumeRandomLengthString(8));
        case SD_BUS_TYPE_SIGNATURE:
            return makeType(bytes);
        default:
            return asUtf8(bytes.ConsumeRandomLengthString(12));
    }
}

Value makeOf(FuzzedDataProvider& bytes, std::string_view signature, int variantsLeft) {
    Value value;
    value.signature = signature;
    const char type = value.type();
    if (isText(type)) {
        value.text = makeText(bytes, type);
    } else if (type == SD_BUS_TYPE_ARRAY) {
        while (value.contents.size() < 20 && bytes.remaining_bytes() > 0 && bytes.ConsumeBool()) {
            value.contents.push_back(makeOf(bytes, signature.substr(1), variantsLeft));
        }
    } else if (type == SD_BUS_TYPE_VARIANT) {
        const std::string contents = variantsLeft > 0 ? makeType(bytes) : "i";
        value.contents.push_back(makeOf(bytes, contents, variantsLeft - 1));
    } else if (isContainer(type)) {
        for (std::size_t at = 1; at + 1 < signature.size(); at += value.contents.back().signature.size()) {
            const std::string_view rest = signature.substr(at);
            value.contents.push_back(makeOf(bytes, rest.substr(0, completeType(rest)), variantsLeft));
        }
    } else {
        value.number = bytes.ConsumeIntegral<std::uint64_t>();
        value.number &= type == SD_BUS_TYPE_BOOLEAN ? 1U : ~std::uint64_t{0};
    }
    return value;
}

bool nestsDeeperThan(int levels, const Value& value) {
    return std::any_of(value.contents.begin(), value.contents.end(), [levels](const Value& inner) {
        return levels == 0 || nestsDeeperThan(levels - 1, inner);
    });
}

// sd-bus's type of the container, and the type of its content.
std::pair<char, std::string> containerOf(const Value& value) {
    const std::string& signature = value.signature;
    switch (value.type()) {
        case SD_BUS_TYPE_ARRAY:
            return {SD_BUS_TYPE_ARRAY, signature.substr(1)};
        case SD_BUS_TYPE_VARIANT:
            return {SD_BUS_TYPE_VARIANT, value.contents.front().signature};
        case SD_BUS_TYPE_DICT_ENTRY_BEGIN:
            return {SD_BUS_TYPE_DICT_ENTRY, signature.substr(1, signature.size() - 2)};
        default:
            return {SD_BUS_TYPE_STRUCT, signature.substr(1, signature.size() - 2)};
    }
}

bool appendContainer(sd_bus_message* message, const Value& value) {
    const auto [type, contents] = containerOf(value);
    if (sd_bus_message_open_container(message, type, contents.c_str()) < 0) {
        return false;
    }
    for (const Value& inner : value.contents) {
        if (!append(message, inner)) {
            return false;
        }
    }
    return sd_bus_message_close_container(message) >= 0;
}

}  // namespace

Value textValue(std::string text) {
    Value value;
    value.signature = "s";
    value.text = std::move(text);
    return value;
}

Value variantOf(Value contents) {
    Value value;
    value.signature = "v";
    value.contents.push_back(std::move(contents));
    return value;
}

std::string makeType(FuzzedDataProvider& bytes) {
    static constexpr std::array usual{"i", "n", "y", "b", "s", "o", "ay", "as", "ao", "a{sv}", "v"};
    const auto pick = bytes.ConsumeIntegralInRange<std::size_t>(0, usual.size());
    return pick < usual.size() ? usual.at(pick) : makeAnyType(bytes, deepestType);
}

Value makeValue(FuzzedDataProvider& bytes, std::string_view signature) {
    return makeOf(bytes, signature, deepestVariant);
}

Value makeWrapped(FuzzedDataProvider& bytes, Value value) {
    // Sometimes more than sd-bus accepts, mostly only a few.
    const bool deep = bytes.ConsumeIntegralInRange(0, 15) == 15;
    for (int layers = bytes.ConsumeIntegralInRange(0, deep ? 140 : 2); layers > 0; --layers) {
        value = variantOf(std::move(value));
    }
    return value;
}

bool nestsTooDeep(const Value& value) {
    return nestsDeeperThan(deepestOfDBus, value);
}

bool append(sd_bus_message* message, const Value& value) {
    const char type = value.type();
    if (isContainer(type)) {
        return appendContainer(message, value);
    }
    static_assert(std::endian::native == std::endian::little, "sd-bus takes the first bytes of the number");
    const void* bytes = isText(type) ? static_cast<const void*>(value.text.c_str()) : &value.number;
    return sd_bus_message_append_basic(message, type, bytes) >= 0;
}

}  // namespace kaz::fuzz
