#include "kazwifictl/unicode.h"

#include <locale.h>
#include <wchar.h>

#include <algorithm>
#include <array>

namespace kaz::ctl {
namespace {

struct Range {
    char32_t first;
    char32_t last;
};

// The characters of category Cf and those with the property Default_Ignorable_Code_Point.
constexpr std::array invisible{
    Range{0x00AD, 0x00AD},   Range{0x034F, 0x034F},   Range{0x0600, 0x0605},   Range{0x061C, 0x061C},
    Range{0x06DD, 0x06DD},   Range{0x070F, 0x070F},   Range{0x0890, 0x0891},   Range{0x08E2, 0x08E2},
    Range{0x115F, 0x1160},   Range{0x17B4, 0x17B5},   Range{0x180B, 0x180F},   Range{0x200B, 0x200F},
    Range{0x2028, 0x202E},   Range{0x2060, 0x206F},   Range{0x3164, 0x3164},   Range{0xFE00, 0xFE0F},
    Range{0xFEFF, 0xFEFF},   Range{0xFFA0, 0xFFA0},   Range{0xFFF0, 0xFFFB},   Range{0x110BD, 0x110BD},
    Range{0x110CD, 0x110CD}, Range{0x13430, 0x1343F}, Range{0x1BCA0, 0x1BCA3}, Range{0x1D173, 0x1D17A},
    Range{0xE0000, 0xE0FFF},
};

// The blocks whose letters have the direction R or AL.
constexpr std::array rightToLeft{
    Range{0x0590, 0x08FF},   Range{0xFB1D, 0xFDFF},   Range{0xFE70, 0xFEFC},
    Range{0x10800, 0x10FFF}, Range{0x1E800, 0x1EFFF},
};

template <std::size_t Size>
bool contains(const std::array<Range, Size>& ranges, char32_t value) {
    return std::any_of(ranges.begin(), ranges.end(),
                       [value](const Range& range) { return range.first <= value && value <= range.last; });
}

// wcwidth() asks the thread's locale, and what a program prints must not depend on the user's: C.UTF-8 knows
// the widths of all of Unicode. The thread's own locale comes back at the end.
class Utf8Locale {
  public:
    Utf8Locale() : former_(::uselocale(instance())) {}
    ~Utf8Locale() { ::uselocale(former_); }
    Utf8Locale(const Utf8Locale&) = delete;
    Utf8Locale& operator=(const Utf8Locale&) = delete;
    Utf8Locale(Utf8Locale&&) = delete;
    Utf8Locale& operator=(Utf8Locale&&) = delete;

  private:
    static ::locale_t instance() {
        static const ::locale_t locale = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return locale;  // without it (null) the thread's locale stays, which prints less but nothing wrong
    }

    ::locale_t former_;
};

bool isContinuation(unsigned char byte) {
    return (byte & 0xC0U) == 0x80U;
}

// The length that the first byte promises; 0 when it cannot begin a character.
std::size_t promisedLength(unsigned char first) {
    if (first < 0x80) {
        return 1;
    }
    if (first >= 0xC2 && first <= 0xDF) {
        return 2;
    }
    if (first >= 0xE0 && first <= 0xEF) {
        return 3;
    }
    return first >= 0xF0 && first <= 0xF4 ? 4 : 0;
}

bool isScalar(char32_t value, std::size_t length) {
    constexpr std::array<char32_t, 5> smallest{0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
    return value >= smallest.at(length) && value <= 0x10FFFF && !surrogate;
}

}  // namespace

CodePoint codePointAt(std::string_view text, std::size_t at) {
    const auto first = static_cast<unsigned char>(text[at]);
    const CodePoint invalid{first, 1, false};
    const std::size_t length = promisedLength(first);
    if (length == 0 || at + length > text.size()) {
        return invalid;
    }
    if (length == 1) {
        return {first, 1, true};
    }
    char32_t value = first & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[at + i]);
        if (!isContinuation(next)) {
            return invalid;
        }
        value = (value << 6U) | (next & 0x3FU);
    }
    return isScalar(value, length) ? CodePoint{value, length, true} : invalid;
}

std::string toUtf8(char32_t value) {
    const auto low = [value](unsigned shift) {
        return static_cast<char>(0x80U | ((value >> shift) & 0x3FU));
    };
    if (value < 0x80) {
        return {static_cast<char>(value)};
    }
    if (value < 0x800) {
        return {static_cast<char>(0xC0U | (value >> 6U)), low(0)};
    }
    if (value < 0x10000) {
        return {static_cast<char>(0xE0U | (value >> 12U)), low(6), low(0)};
    }
    return {static_cast<char>(0xF0U | (value >> 18U)), low(12), low(6), low(0)};
}

int columnsOf(char32_t value) {
    if (value == 0) {
        return -1;
    }
    const Utf8Locale utf8;
    return ::wcwidth(static_cast<wchar_t>(value));
}

int columnsOf(std::string_view text) {
    int columns = 0;
    for (std::size_t at = 0; at < text.size();) {
        const CodePoint point = codePointAt(text, at);
        columns += std::max(0, columnsOf(point.value));
        at += point.length;
    }
    return columns;
}

std::string cutTo(std::string_view text, int columns, std::string_view ellipsis) {
    if (columnsOf(text) <= columns) {
        return std::string(text);
    }
    const int room = columns - columnsOf(ellipsis);
    if (room < 0) {
        return {};
    }
    int used = 0;
    std::size_t at = 0;
    while (at < text.size()) {
        const CodePoint point = codePointAt(text, at);
        const int width = std::max(0, columnsOf(point.value));
        if (used + width > room) {
            break;
        }
        used += width;
        at += point.length;
    }
    return std::string(text.substr(0, at)) + std::string(ellipsis);
}

std::string paddedTo(std::string_view text, int columns) {
    std::string result(text);
    result.append(static_cast<std::size_t>(std::max(0, columns - columnsOf(text))), ' ');
    return result;
}

bool isInvisible(char32_t value) {
    return contains(invisible, value);
}

bool isRightToLeft(char32_t value) {
    return contains(rightToLeft, value);
}

}  // namespace kaz::ctl
