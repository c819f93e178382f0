// SSIDs on a terminal. A stranger chose the bytes, so the shown text must not control the terminal, must not look like
// another SSID, and must have the computed width.
#include "base/hex.h"
#include "fuzz/require.h"
#include "kazwifictl/text/network_table.h"
#include "kazwifictl/text/ssid_text.h"
#include "kazwifictl/text/unicode.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <locale.h>
#include <wchar.h>
#include <wctype.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kaz::fuzz {
namespace {

// The C library accepts characters that Unicode does not have.
bool isInUnicode(wchar_t character) {
    return character <= 0x10FFFF && (character < 0xD800 || character > 0xDFFF);
}

// Calls `take` with each character of a text, decoded by the C library. Returns false if the text is not UTF-8.
template <typename Take>
bool forEachCharacter(const std::string& text, Take take) {
    ::mbstate_t state{};
    for (std::size_t at = 0; at < text.size();) {
        auto character = static_cast<wchar_t>(text[at]);
        std::size_t length = 1;
        if (character < 0 || character > 0x7F) {
            length = ::mbrtowc(&character, text.data() + at, text.size() - at, &state);
        }
        if (length > text.size() || !isInUnicode(character)) {
            return false;
        }
        take(character);
        at += length;
    }
    return true;
}

bool isUtf8(const std::string& text) {
    return forEachCharacter(text, [](wchar_t) {});
}

bool isAsciiText(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char byte) { return byte >= ' ' && byte <= '~'; });
}

// Unicode's direction marks, embeddings, overrides and isolates.
bool steersDirection(wchar_t character) {
    return character == 0x61C || character == 0x200E || character == 0x200F ||
           (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
}

// The C library makes these wide although Unicode does not, or the other way round.
bool isOfDisputedWidth(wchar_t character) {
    return (character >= 0x4DC0 && character <= 0x4DFF) || (character >= 0x3248 && character <= 0x324F) ||
           character == 0x302E || character == 0x302F || character == 0x16FF0 || character == 0x16FF1;
}

// The columns of a character according to the C library, or to kazwifictl if the C library does not know the character.
int widthOf(wchar_t character) {
    const auto value = static_cast<char32_t>(character);
    const bool unknown =
        !::iswprint(static_cast<wint_t>(character)) && !::iswcntrl(static_cast<wint_t>(character));
    if ((unknown && ctl::isShowable(value)) || isOfDisputedWidth(character)) {
        return ctl::columnsOf(value);
    }
    return ::wcwidth(character);
}

// Checks that a text is safe for a terminal. Returns its columns.
int checkedWidth(const std::string& text, bool utf8) {
    int columns = 0;
    const bool valid = forEachCharacter(text, [&columns](wchar_t character) {
        const int width = character == 0 ? -1 : widthOf(character);
        require(width >= 0, "what is shown is printable");
        require(!steersDirection(character), "what is shown does not steer the direction of text");
        columns += width;
    });
    require(valid, "what is shown is UTF-8");
    require(utf8 || isAsciiText(text), "where there is no UTF-8, what is shown is printable ASCII");
    require(columns == ctl::columnsOf(text), "a text is as wide as reckoned");
    return columns;
}

// Undoes presentable(), and quoted() between the quotes.
std::string fromPresentable(const std::string& text) {
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char letter = text[at] == '\\' ? text.at(++at) : ' ';
        if (letter == 'x') {
            bytes += static_cast<char>(std::stoi(text.substr(at + 1, 2), nullptr, 16));
            at += 2;
        } else if (letter == 'u') {
            const std::size_t end = text.find('}', at);
            const auto value = std::stoul(text.substr(at + 2, end - at - 2), nullptr, 16);
            bytes += ctl::toUtf8(static_cast<char32_t>(value));
            at = end;
        } else {
            bytes += text[at];
        }
    }
    return bytes;
}

// Whether the first quote that is not escaped, after the one at the beginning, is the last character.
bool isOneQuotation(const std::string& text) {
    std::size_t at = 1;
    while (at < text.size() && text[at] != '"') {
        at += text[at] == '\\' ? 2U : 1U;
    }
    return text.starts_with('"') && at + 1 == text.size();
}

void checkPresentable(const std::string& ssid, bool utf8) {
    const std::string shown = ctl::presentable(ssid, utf8);
    checkedWidth(shown, utf8);
    require(fromPresentable(shown) == ssid,
            "what is shown reads back as the SSID's bytes, so no two look alike");
    require(!shown.starts_with(' ') && !shown.ends_with(' '), "blanks at the ends are visible");
    require(!utf8 || ctl::isPlain(ssid) == (!ssid.empty() && shown == ssid), "plain is what shows as it is");
    const std::string quoted = ctl::quoted(ssid, utf8);
    checkedWidth(quoted, utf8);
    require(isOneQuotation(quoted), "a quotation ends where its last quote is");
    require(fromPresentable(quoted.substr(1, quoted.size() - 2)) == ssid, "and reads back, too");
    checkedWidth(ctl::harmless(ssid, utf8), utf8);
}

// The word that a shell makes of an argument of plain and single-quoted pieces.
std::string shellWord(std::string_view argument) {
    std::string word;
    bool inQuotes = false;
    for (std::size_t at = 0; at < argument.size(); ++at) {
        if (argument[at] == '\'') {
            inQuotes = !inQuotes;
        } else if (!inQuotes && argument[at] == '\\') {
            word += argument.at(++at);
        } else {
            require(inQuotes || std::string_view(" \t\n$`\"&|;<>()*?[]#~=%!{}").find(argument[at]) ==
                                    std::string_view::npos,
                    "nothing outside of quotes means something to a shell");
            word += argument[at];
        }
    }
    require(!inQuotes, "quotes end");
    return word;
}

void checkShellArgument(const std::string& ssid, bool utf8) {
    std::string_view argument;
    const std::string text = ctl::shellArgument(ssid, utf8);
    checkedWidth(text, utf8);
    argument = text;
    if (argument.starts_with("--hex ")) {
        require(kaz::fromHex(argument.substr(6)) == ssid, "an argument in hexadecimal gives the SSID");
        return;
    }
    const bool asName = argument.starts_with("-- ");
    const std::string word = shellWord(asName ? argument.substr(3) : argument);
    require(word == ssid, "an argument gives the SSID");
    require(asName || !word.starts_with('-'), "an SSID is not taken for an option");
}

void checkOtherForms(const std::string& ssid) {
    const std::string json = ctl::validUtf8(ssid);
    require(isUtf8(json), "the text for JSON is UTF-8");
    require(!isUtf8(ssid) || json == ssid, "the text for JSON is the SSID where that is UTF-8");
    require(kaz::fromHex(kaz::toHex(ssid)) == ssid, "digits read back");
    if (const auto bytes = kaz::fromHex(ssid)) {
        std::string digits = ssid;
        std::transform(digits.begin(), digits.end(), digits.begin(), [](char digit) {
            return digit >= 'A' && digit <= 'F' ? static_cast<char>(digit + 32) : digit;
        });
        require(kaz::toHex(*bytes) == digits, "only digits are read as digits");
    }
}

// Hebrew and Arabic letters, to begin with.
bool holdsRightToLeft(const std::string& text) {
    bool found = false;
    forEachCharacter(text, [&found](wchar_t character) {
        found =
            found || (character >= 0x5D0 && character <= 0x5EA) || (character >= 0x627 && character <= 0x64A);
    });
    return found;
}

void checkIsolation(const std::string& ssid, bool utf8) {
    static const std::string mark = "\u200E";
    const std::string shown = ctl::presentable(ssid, utf8);
    const std::string isolated = ctl::isolated(shown);
    require(isolated == shown || isolated == mark + shown + mark, "a text is isolated by marks around it");
    require(isolated != shown || !holdsRightToLeft(shown), "a text that runs from right to left is isolated");
    require(isolated == shown || !isAsciiText(shown), "one that cannot is not");
}

void checkCutting(const std::string& ssid, bool utf8, int columns) {
    const std::string whole = ctl::presentable(ssid, utf8);
    const std::string ellipsis = utf8 ? "…" : "~";
    const std::string cut = ctl::cutTo(whole, columns, ellipsis);
    require(checkedWidth(cut, utf8) <= columns, "a cut text is not wider than told");
    if (checkedWidth(whole, utf8) <= columns) {
        require(cut == whole, "what fits stays as it is");
    } else if (!cut.empty()) {
        require(cut.ends_with(ellipsis) && whole.starts_with(cut.substr(0, cut.size() - ellipsis.size())),
                "a cut text is the beginning of the whole, and tells that it is one");
    }
    require(checkedWidth(ctl::paddedTo(cut, columns), utf8) == columns, "padding fills up to the width");
}

void checkTable(const std::string& ssid, const std::string& other, bool utf8, int columns) {
    ctl::NetworkRow current;
    current.ssid = ssid;
    current.status = wifi::ConnectionInfo::Status::connectingIP;
    ctl::NetworkRow listed;
    listed.ssid = other;
    listed.dBm = -columns;
    listed.security = wifi::SecurityMode::rsnPsk;
    ctl::Terminal terminal;
    terminal.utf8 = utf8;
    terminal.columns = columns + 2;  // the narrowest that can hold the mark of the current network
    const std::string table = ctl::networkTable({current, listed}, terminal);
    std::size_t lines = 0;
    for (std::size_t begin = 0; begin < table.size(); ++lines) {
        const std::size_t end = table.find('\n', begin);
        require(end != std::string::npos, "every line of a table ends");
        require(checkedWidth(table.substr(begin, end - begin), utf8) <= terminal.columns,
                "a table fits its terminal");
        begin = end + 1;
    }
    require(lines == 3, "a table has a heading and one line a network");
}

enum class Check { presentable, shellArgument, otherForms, isolation, cutting, table, kMaxValue = table };

void check(Check what, const std::string& ssid, const std::string& other, bool utf8, int columns) {
    switch (what) {
        case Check::presentable:
            return checkPresentable(ssid, utf8);
        case Check::shellArgument:
            return checkShellArgument(ssid, utf8);
        case Check::otherForms:
            return checkOtherForms(ssid);
        case Check::isolation:
            return checkIsolation(ssid, utf8);
        case Check::cutting:
            return checkCutting(ssid, utf8, columns);
        case Check::table:
            return checkTable(ssid, other, utf8, columns);
    }
}

}  // namespace
}  // namespace kaz::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kaz::fuzz;
    static const char* const locale = ::setlocale(LC_ALL, "C.UTF-8");
    require(locale != nullptr, "the C library knows C.UTF-8");
    FuzzedDataProvider bytes(data, size);
    const auto what = bytes.ConsumeEnum<Check>();
    const bool utf8 = bytes.ConsumeBool();
    const int columns = bytes.ConsumeIntegralInRange(0, 60);
    const std::string ssid = bytes.ConsumeRandomLengthString(40);
    const std::string other = bytes.ConsumeRandomLengthString(8);
    check(what, ssid, other, utf8, columns);
    return 0;
}
