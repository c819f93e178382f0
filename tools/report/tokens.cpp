#include "report/tokens.h"

#include <arpa/inet.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

#include "base/hex.h"

namespace kaz::report {
namespace {

constexpr std::string_view addressLetters = "0123456789abcdefABCDEF:.-";

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

std::string raised(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    return text;
}

bool isPrintable(unsigned char letter) {
    return letter >= 0x20 && letter < 0x7f;
}

// Every byte that is not printable, or is in `special`, as `format` writes it.
std::string escaped(const std::string& text, std::string_view special, fmt::string_view format) {
    std::string result;
    for (const char letter : text) {
        const auto byte = static_cast<unsigned char>(letter);
        if (isPrintable(byte) && special.find(letter) == std::string_view::npos) {
            result += letter;
        } else {
            result += fmt::format(fmt::runtime(format), byte);
        }
    }
    return result;
}

// As the supplicant prints an SSID.
std::string printed(const std::string& text) {
    std::string result;
    for (const char letter : text) {
        const auto byte = static_cast<unsigned char>(letter);
        if (letter == '"' || letter == '\\') {
            result += '\\';
        }
        result += isPrintable(byte) ? std::string(1, letter) : fmt::format("\\x{:02x}", byte);
    }
    return result;
}

void replaceAll(std::string& text, const std::string& part, const std::string& other) {
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + other.size())) {
        text.replace(at, part.size(), other);
    }
}

bool isHardwareAddress(std::string_view text) {
    constexpr std::size_t size = 17;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool separates = i % 3 == 2;
        if (separates != (text[i] == ':' || text[i] == '-') || text[i] == '.') {
            return false;
        }
    }
    return text.size() == size;
}

bool isIpAddress(const std::string& text) {
    std::array<unsigned char, sizeof(in6_addr)> address{};
    return ::inet_pton(AF_INET, text.c_str(), address.data()) == 1 ||
           ::inet_pton(AF_INET6, text.c_str(), address.data()) == 1;
}

// Without the letters that end a sentence and not an address.
std::string_view withoutEnd(std::string_view text) {
    while (!text.empty() &&
           (text.ends_with('.') || text.ends_with('-') || (text.ends_with(':') && !text.ends_with("::")))) {
        text.remove_suffix(1);
    }
    return text;
}

}  // namespace

std::vector<std::string> formsOf(const std::string& ssid) {
    std::vector<std::string> forms{ssid,
                                   toHex(ssid),
                                   raised(toHex(ssid)),
                                   printed(ssid),
                                   escaped(ssid, "\"\\", "\\x{:02x}"),
                                   escaped(ssid, "\"\\", "\\x{:02X}"),
                                   escaped(ssid, "\"\\", "\\{:03o}"),
                                   escaped(ssid, " %\"'\\", "%{:02X}"),
                                   escaped(ssid, " %\"'\\", "%{:02x}")};
    std::sort(forms.begin(), forms.end());
    forms.erase(std::unique(forms.begin(), forms.end()), forms.end());
    return forms;
}

void Tokens::know(const std::string& ssid) {
    // Shorter names are parts of ordinary words. In quotes they are replaced nevertheless.
    constexpr std::size_t shortest = 3;
    const std::string mine = ofSsid(ssid);
    for (const std::string& form : formsOf(ssid)) {
        if (form.size() >= shortest) {
            known_[form] = mine;
        }
    }
}

std::string Tokens::ofSsid(const std::string& ssid) {
    return token("ssid", ssid);
}

std::string Tokens::token(const std::string& kind, const std::string& value) {
    auto& mine = tokens_[kind];
    return mine.try_emplace(value, fmt::format("<{}-{}>", kind, mine.size() + 1)).first->second;
}

std::string Tokens::redacted(std::string_view line) {
    return withoutAddresses(withoutQuotes(withoutNames(std::string(line))));
}

std::string Tokens::withoutNames(std::string line) const {
    std::vector<std::pair<std::string, std::string>> forms(known_.begin(), known_.end());
    // A name may be a part of another one.
    std::stable_sort(forms.begin(), forms.end(), [](const auto& one, const auto& other) {
        return one.first.size() > other.first.size();
    });
    for (const auto& [form, token] : forms) {
        replaceAll(line, form, token);
    }
    return line;
}

void Tokens::replaceBetween(std::string& line, std::size_t begin, std::size_t end, const std::string& kind) {
    const std::string inside = line.substr(begin, end - begin);
    const bool isToken = inside.starts_with('<') && inside.find('>') == inside.size() - 1;
    if (!inside.empty() && !isToken) {
        line.replace(begin, inside.size(), token(kind, inside));
    }
}

// From the first quote to the last one, since a name may contain quotes.
std::string Tokens::withoutQuotes(std::string line) {
    const bool doubleFirst = line.find('"') < line.find('\'');
    for (const char quote : std::string_view(doubleFirst ? "\"'" : "'\"")) {
        const std::size_t begin = line.find(quote);
        const std::size_t end = line.rfind(quote);
        if (begin < end) {
            replaceBetween(line, begin + 1, end, "text");
        }
    }
    // networkd prints a name without quotes.
    constexpr std::string_view before = "WiFi access point: ";
    const std::size_t begin = line.find(before);
    const std::size_t end = line.rfind(" (");
    if (begin != std::string::npos && end != std::string::npos && end > begin + before.size()) {
        replaceBetween(line, begin + before.size(), end, "ssid");
    }
    return line;
}

std::string Tokens::withoutAddresses(std::string_view line) {
    std::string result;
    while (!line.empty()) {
        const std::size_t size = std::min(line.find_first_not_of(addressLetters), line.size());
        const std::string_view run = line.substr(0, size);
        const std::string address(withoutEnd(run));
        if (isHardwareAddress(address)) {
            result += token("mac", lowered(address));
        } else if (isIpAddress(address)) {
            result += token("ip", lowered(address));
        } else {
            result += address;
        }
        result += run.substr(address.size());
        line.remove_prefix(size);
        const std::size_t other = std::min(line.find_first_of(addressLetters), line.size());
        result += line.substr(0, other);
        line.remove_prefix(other);
    }
    return result;
}

}  // namespace kaz::report
