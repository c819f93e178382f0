// SSIDs on a terminal: a stranger chose the bytes, so what is shown must neither steer the terminal nor pass for
// another SSID, and must be as wide as it was reckoned.
#include "network_table.h"
#include "require.h"
#include "ssid_text.h"
#include "unicode.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <locale.h>
#include <wchar.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kaz::fuzz {
namespace {

// The C library takes more for characters than Unicode has.
bool isInUnicode(wchar_t character) {
    return character <= 0x10FFFF && (character < 0xD800 || character > 0xDFFF);
}

// The C library's opinion of a text: its characters, or nothing when it is not UTF-8.
std::optional<std::wstring> decoded(const std::string& text) {
    std::wstring characters;
    std::mbstate_t state{};
    for (std::size_t at = 0; at < text.size();) {
        wchar_t character = 0;
        const std::size_t length = std::mbrtowc(&character, text.data() + at, text.size() - at, &state);
        if (length > text.size() || !isInUnicode(character)) {
            return std::nullopt;
        }
        characters += character;
        at += std::max<std::size_t>(length, 1);
    }
    return characters;
}

bool isAsciiText(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char byte) { return byte >= ' ' && byte <= '~'; });
}

// Embeddings, overrides, isolates and marks of direction.
bool steersDirection(wchar_t character) {
    return character == 0x61C || character == 0x200E || character == 0x200F ||
           (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
}

// The columns that a terminal gives to a text that is fit for one.
int checkedWidth(const std::string& text, bool utf8) {
    const auto characters = decoded(text);
    require(characters.has_value(), "what is shown is UTF-8");
    require(utf8 || isAsciiText(text), "where there is no UTF-8, what is shown is printable ASCII");
    int columns = 0;
    for (const wchar_t character : *characters) {
        const int width = character == 0 ? -1 : ::wcwidth(character);
        require(width >= 0, "what is shown is printable");
        require(!steersDirection(character), "what is shown does not steer the direction of text");
        columns += width;
    }
    require(columns == ctl::columnsOf(text), "a text is as wide as reckoned");
    return columns;
}

// Undoes presentable().
std::string fromPresentable(const std::string& text) {
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '\\') {
            bytes += text[at];
        } else if (text.at(++at) == '\\') {
            bytes += '\\';
        } else if (text[at] == 'x') {
            bytes += static_cast<char>(std::stoi(text.substr(at + 1, 2), nullptr, 16));
            at += 2;
        } else {
            const std::size_t end = text.find('}', at);
            bytes += ctl::toUtf8(
                static_cast<char32_t>(std::stoul(text.substr(at + 2, end - at - 2), nullptr, 16)));
            at = end;
        }
    }
    return bytes;
}

void checkPresentable(const std::string& ssid, bool utf8) {
    const std::string shown = ctl::presentable(ssid, utf8);
    checkedWidth(shown, utf8);
    require(fromPresentable(shown) == ssid,
            "what is shown reads back as the SSID's bytes, so no two look alike");
    require(!shown.starts_with(' ') && !shown.ends_with(' '), "blanks at the ends are visible");
    require(!utf8 || ctl::isPlain(ssid) == (!ssid.empty() && shown == ssid), "plain is what shows as it is");
    require(ctl::quoted(ssid, utf8) == '"' + shown + '"', "quotes are all that quoting adds");
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
        require(ctl::fromHex(argument.substr(6)) == ssid, "an argument in hexadecimal gives the SSID");
        return;
    }
    const bool asName = argument.starts_with("-- ");
    const std::string word = shellWord(asName ? argument.substr(3) : argument);
    require(word == ssid, "an argument gives the SSID");
    require(asName || !word.starts_with('-'), "an SSID is not taken for an option");
}

void checkOtherForms(const std::string& ssid) {
    const std::string json = ctl::validUtf8(ssid);
    require(decoded(json).has_value(), "the text for JSON is UTF-8");
    require(!decoded(ssid) || json == ssid, "the text for JSON is the SSID where that is UTF-8");
    require(ctl::fromHex(ctl::toHex(ssid)) == ssid, "digits read back");
    if (const auto bytes = ctl::fromHex(ssid)) {
        std::string digits = ssid;
        std::transform(digits.begin(), digits.end(), digits.begin(), [](char digit) {
            return digit >= 'A' && digit <= 'F' ? static_cast<char>(digit + 32) : digit;
        });
        require(ctl::toHex(*bytes) == digits, "only digits are read as digits");
    }
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

void checkTable(const std::vector<ctl::NetworkRow>& rows, bool utf8, int columns) {
    ctl::Terminal terminal;
    terminal.utf8 = utf8;
    terminal.columns = columns;
    const std::string table = ctl::networkTable(rows, terminal);
    std::size_t lines = 0;
    for (std::size_t begin = 0; begin < table.size(); ++lines) {
        const std::size_t end = table.find('\n', begin);
        require(end != std::string::npos, "every line of a table ends");
        require(checkedWidth(table.substr(begin, end - begin), utf8) <= columns, "a table fits its terminal");
        begin = end + 1;
    }
    require(lines == rows.size() + 1, "a table has one line a network");
}

}  // namespace
}  // namespace kaz::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const char* const locale = ::setlocale(LC_ALL, "C.UTF-8");
    kaz::fuzz::require(locale != nullptr, "the C library knows C.UTF-8");
    FuzzedDataProvider bytes(data, size);
    const bool utf8 = bytes.ConsumeBool();
    const int columns = bytes.ConsumeIntegralInRange(0, 60);
    const int signal = bytes.ConsumeIntegralInRange(-101, 0);
    const std::string other = bytes.ConsumeRandomLengthString(8);
    const std::string ssid = bytes.ConsumeRandomLengthString(40);
    kaz::fuzz::checkPresentable(ssid, utf8);
    kaz::fuzz::checkShellArgument(ssid, utf8);
    kaz::fuzz::checkOtherForms(ssid);
    kaz::fuzz::checkCutting(ssid, utf8, columns);
    kaz::ctl::NetworkRow current;
    current.ssid = ssid;
    current.status = kaz::wifi::ConnectionInfo::Status::connectingIP;
    kaz::ctl::NetworkRow listed;
    listed.ssid = other;
    listed.dBm = signal;
    listed.security = kaz::wifi::SecurityMode::rsnPsk;
    kaz::fuzz::checkTable({current, listed}, utf8, columns + 2);
    return 0;
}
