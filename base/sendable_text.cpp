#include "base/sendable_text.h"

#include <cstddef>
#include <cstdint>

namespace kaz {
namespace {

bool isCharacter(std::uint32_t codePoint) {
    const bool surrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
    const bool noncharacter =
        (codePoint >= 0xFDD0 && codePoint <= 0xFDEF) || (codePoint & 0xFFFEU) == 0xFFFEU;
    return codePoint != 0 && codePoint <= 0x10FFFF && !surrogate && !noncharacter;
}

// The length of a sequence that begins with this byte, and the first code point that needs so many bytes.
struct Form {
    std::size_t length;
    std::uint32_t first;
    std::uint32_t bits;  // of the first byte
};

Form formOf(unsigned char lead) {
    if (lead < 0x80) {
        return {1, 0, lead};
    }
    if (lead >= 0xC0 && lead < 0xE0) {
        return {2, 0x80, lead & 0x1FU};
    }
    if (lead >= 0xE0 && lead < 0xF0) {
        return {3, 0x800, lead & 0x0FU};
    }
    if (lead >= 0xF0 && lead < 0xF8) {
        return {4, 0x10000, lead & 0x07U};
    }
    return {0, 0, 0};
}

// The length of the character that the text begins with; 0 if it is not valid.
std::size_t characterLength(std::string_view text) {
    const Form form = formOf(static_cast<unsigned char>(text.front()));
    if (form.length == 0 || form.length > text.size()) {
        return 0;
    }
    std::uint32_t codePoint = form.bits;
    for (const char each : text.substr(1, form.length - 1)) {
        const auto byte = static_cast<unsigned char>(each);
        if ((byte & 0xC0U) != 0x80U) {
            return 0;
        }
        codePoint = (codePoint << 6U) | (byte & 0x3FU);
    }
    return codePoint >= form.first && isCharacter(codePoint) ? form.length : 0;
}

}  // namespace

bool isSendableText(std::string_view text) noexcept {
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

}  // namespace kaz
