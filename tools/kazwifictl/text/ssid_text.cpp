#include "kazwifictl/text/ssid_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cstdint>

#include "base/hex.h"
#include "kazwifictl/text/unicode.h"

namespace kaz::ctl {
namespace {

constexpr int marksShown = 2;

// Called for each character of a text, in order. Returns the character, or its escape if it must not be shown.
class Escaper {
  public:
    explicit Escaper(bool utf8) : utf8_(utf8) {}

    std::string operator()(const CodePoint& point) {
        const auto value = static_cast<std::uint32_t>(point.value);
        if (!point.valid || value < 0x80) {
            marks_ = point.valid ? 0 : marksShown;
            const bool printable = point.valid && value >= 0x20 && value < 0x7F;
            return printable ? std::string(point.bytes) : fmt::format("\\x{:02x}", value);
        }
        if (!showable(point.value)) {
            marks_ = marksShown;  // a mark would combine with the escape's closing brace
            return fmt::format("\\u{{{:x}}}", value);
        }
        return std::string(point.bytes);
    }

  private:
    bool showable(char32_t value) {
        if (!utf8_ || !isShowable(value)) {
            return false;
        }
        marks_ = columnsOf(value) > 0 ? 0 : marks_ + 1;
        return marks_ <= marksShown;
    }

    bool utf8_;
    int marks_ = marksShown;  // a mark at the start is escaped: it has no character to combine with
};

bool needsNoQuotes(char letter) {
    return std::isalnum(static_cast<unsigned char>(letter)) != 0 || letter == '_' || letter == '.' ||
           letter == '-';
}

}  // namespace

std::string presentable(std::string_view ssid, bool utf8) {
    std::string result;
    Escaper escape(utf8);
    for (const CodePoint& point : codePointsOf(ssid)) {
        const auto at = static_cast<std::size_t>(point.bytes.data() - ssid.data());
        const bool atAnEnd = ssid.find_first_not_of(' ') > at || ssid.find_last_not_of(' ') < at;
        const std::string shown = escape(point);
        if (shown == "\\") {
            result += "\\\\";
        } else {
            result += shown == " " && atAnEnd ? "\\x20" : shown;
        }
    }
    return result;
}

std::string quoted(std::string_view ssid, bool utf8) {
    std::string result = "\"";
    for (const char byte : presentable(ssid, utf8)) {
        if (byte == '"') {
            result += '\\';
        }
        result += byte;
    }
    return result + '"';
}

std::string harmless(std::string_view text, bool utf8) {
    std::string result;
    Escaper escape(utf8);
    for (const CodePoint& point : codePointsOf(text)) {
        result += escape(point);
    }
    return result;
}

bool isPlain(std::string_view ssid) {
    return !ssid.empty() && presentable(ssid, true) == ssid;
}

std::string shellArgument(std::string_view ssid, bool utf8) {
    if (ssid.empty() || presentable(ssid, utf8) != ssid) {
        return "--hex " + toHex(ssid);
    }
    const bool bare = ssid.front() != '-' && std::all_of(ssid.begin(), ssid.end(), needsNoQuotes);
    if (bare) {
        return std::string(ssid);
    }
    return (ssid.front() == '-' ? "-- " : "") + singleQuoted(ssid);
}

std::string singleQuoted(std::string_view text) {
    std::string result = "'";
    for (const char letter : text) {
        result += letter == '\'' ? std::string("'\\''") : std::string{letter};
    }
    return result + "'";
}

std::string validUtf8(std::string_view ssid) {
    std::string result;
    for (const CodePoint& point : codePointsOf(ssid)) {
        result += toUtf8(point.valid ? point.value : U'\uFFFD');
    }
    return result;
}

std::string isolated(std::string_view text) {
    const std::vector<CodePoint> points = codePointsOf(text);
    const bool rightToLeft = std::any_of(points.begin(), points.end(),
                                         [](const CodePoint& point) { return isRightToLeft(point.value); });
    return rightToLeft ? fmt::format("{0}{1}{0}", toUtf8(0x200E), text) : std::string(text);
}

}  // namespace kaz::ctl
