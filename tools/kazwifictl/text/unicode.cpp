#include "kazwifictl/text/unicode.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>

namespace kaz::ctl {
namespace {

const utf8proc_property_t& propertiesOf(char32_t value) {
    return *::utf8proc_get_property(static_cast<utf8proc_int32_t>(value));
}

}  // namespace

std::vector<CodePoint> codePointsOf(std::string_view text) {
    std::vector<CodePoint> points;
    while (!text.empty()) {
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): utf8proc reads bytes as unsigned ones
        const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
        utf8proc_int32_t value = 0;
        const auto length = ::utf8proc_iterate(bytes, static_cast<utf8proc_ssize_t>(text.size()), &value);
        points.push_back(length > 0 ? CodePoint{static_cast<char32_t>(value),
                                                text.substr(0, static_cast<std::size_t>(length)), true}
                                    : CodePoint{*bytes, text.substr(0, 1), false});
        text.remove_prefix(points.back().bytes.size());
    }
    return points;
}

std::string toUtf8(char32_t value) {
    std::array<utf8proc_uint8_t, 4> bytes{};
    const auto length = ::utf8proc_encode_char(static_cast<utf8proc_int32_t>(value), bytes.data());
    return {bytes.begin(), bytes.begin() + length};
}

bool isShowable(char32_t value) {
    constexpr char32_t brailleBlank = 0x2800;  // looks like a blank, but Unicode counts it as a symbol
    const utf8proc_property_t& properties = propertiesOf(value);
    constexpr std::array hidden{UTF8PROC_CATEGORY_CC, UTF8PROC_CATEGORY_CF, UTF8PROC_CATEGORY_CN,
                                UTF8PROC_CATEGORY_CO, UTF8PROC_CATEGORY_CS, UTF8PROC_CATEGORY_ZL,
                                UTF8PROC_CATEGORY_ZP, UTF8PROC_CATEGORY_ZS};
    return std::find(hidden.begin(), hidden.end(), properties.category) == hidden.end() &&
           !properties.ignorable && value != brailleBlank;
}

int columnsOf(char32_t value) {
    const utf8proc_property_t& properties = propertiesOf(value);
    if (properties.category == UTF8PROC_CATEGORY_MC) {
        return 1;  // a spacing mark takes a column, but utf8proc_charwidth() returns 0 for it
    }
    // The second and third letter of a Hangul syllable are drawn in the columns of the first.
    const bool onTheFirst =
        properties.boundclass == UTF8PROC_BOUNDCLASS_V || properties.boundclass == UTF8PROC_BOUNDCLASS_T;
    return onTheFirst ? 0 : ::utf8proc_charwidth(static_cast<utf8proc_int32_t>(value));
}

int columnsOf(std::string_view text) {
    int columns = 0;
    for (const CodePoint& point : codePointsOf(text)) {
        columns += columnsOf(point.value);
    }
    return columns;
}

std::string cutTo(std::string_view text, int columns, std::string_view ellipsis) {
    if (columnsOf(text) <= columns) {
        return std::string(text);
    }
    int room = columns - columnsOf(ellipsis);
    if (room < 0) {
        return {};
    }
    std::string result;
    for (const CodePoint& point : codePointsOf(text)) {
        room -= columnsOf(point.value);
        if (room < 0) {
            break;
        }
        result += point.bytes;
    }
    return result += ellipsis;
}

std::string paddedTo(std::string_view text, int columns) {
    std::string result(text);
    result.append(static_cast<std::size_t>(std::max(0, columns - columnsOf(text))), ' ');
    return result;
}

bool isRightToLeft(char32_t value) {
    const auto direction = propertiesOf(value).bidi_class;
    return direction == UTF8PROC_BIDI_CLASS_R || direction == UTF8PROC_BIDI_CLASS_AL ||
           direction == UTF8PROC_BIDI_CLASS_AN;
}

}  // namespace kaz::ctl
