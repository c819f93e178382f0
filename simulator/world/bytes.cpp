#include "simulator/world/bytes.h"

namespace kaz::sim {
namespace {

std::optional<unsigned> nibble(char digit) {
    if (digit >= '0' && digit <= '9') {
        return static_cast<unsigned>(digit - '0');
    }
    if (digit >= 'a' && digit <= 'f') {
        return static_cast<unsigned>(digit - 'a') + 10U;
    }
    if (digit >= 'A' && digit <= 'F') {
        return static_cast<unsigned>(digit - 'A') + 10U;
    }
    return std::nullopt;
}

}  // namespace

std::string toHex(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += digits[byte >> 4U];
        text += digits[byte & 0x0FU];
    }
    return text;
}

std::optional<std::string> fromHex(std::string_view digits) {
    if (digits.size() % 2 != 0) {
        return std::nullopt;
    }
    std::string bytes;
    bytes.reserve(digits.size() / 2);
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const auto high = nibble(digits[i]);
        const auto low = nibble(digits[i + 1]);
        if (!high || !low) {
            return std::nullopt;
        }
        bytes += static_cast<char>(*high << 4U | *low);
    }
    return bytes;
}

}  // namespace kaz::sim
