#include "platform/common/syntax/config_text.h"

#include <algorithm>
#include <optional>

namespace kaz::util {
namespace {

struct Entry {
    std::string_view key;
    std::string_view value;
    std::string_view lineEnd;
};

// Removes the first line, with its line ending, from the text.
std::string_view takeLine(std::string_view& text) {
    const auto lineFeed = text.find('\n');
    const auto line = text.substr(0, lineFeed == std::string_view::npos ? lineFeed : lineFeed + 1);
    text.remove_prefix(line.size());
    return line;
}

std::size_t lineEndLength(std::string_view line) {
    std::size_t length = line.ends_with('\n') ? 1 : 0;
    // Also on a last line without LF, so that the CR keeps its meaning when a line is appended.
    if (line.substr(0, line.size() - length).ends_with('\r')) {
        ++length;
    }
    return length;
}

std::optional<Entry> parseEntry(std::string_view line) {
    const auto content = line.substr(0, line.size() - lineEndLength(line));
    const auto equals = content.find('=');
    if (equals == std::string_view::npos || equals == 0 || content.front() == '#') {
        return std::nullopt;
    }
    return Entry{content.substr(0, equals), content.substr(equals + 1), line.substr(content.size())};
}

std::size_t countLinesOf(std::string_view key, std::string_view text) {
    std::size_t count = 0;
    while (!text.empty()) {
        const auto entry = parseEntry(takeLine(text));
        count += entry && entry->key == key ? 1U : 0U;
    }
    return count;
}

bool hasAnyOf(std::string_view text, std::string_view bytes) {
    return text.find_first_of(bytes) != std::string_view::npos;
}

void appendEntry(std::string& text, const Entry& entry) {
    text.append(entry.key).append("=").append(entry.value).append(entry.lineEnd);
}

}  // namespace

std::map<std::string, std::string> parseConfig(std::string_view text) {
    std::map<std::string, std::string> entries;
    while (!text.empty()) {
        if (const auto entry = parseEntry(takeLine(text))) {
            entries.insert_or_assign(std::string(entry->key), std::string(entry->value));
        }
    }
    return entries;
}

const char* refusal(std::string_view key, std::string_view value) {
    constexpr std::string_view breaks("\n\r\0", 3);
    if (key.empty()) {
        return "the key is empty";
    }
    if (key.front() == '#') {
        return "the key begins a comment";
    }
    if (hasAnyOf(key, "=") || hasAnyOf(key, breaks)) {
        return "the key holds an equals sign, a line break or NUL";
    }
    if (hasAnyOf(value, breaks)) {
        return "the value holds a line break or NUL";
    }
    return nullptr;
}

std::string withEntry(std::string_view text, std::string_view key, std::string_view value) {
    const std::size_t occurrences = countLinesOf(key, text);
    std::string result;
    result.reserve(text.size() + key.size() + value.size() + 3);
    std::size_t seen = 0;
    while (!text.empty()) {
        const auto line = takeLine(text);
        const auto entry = parseEntry(line);
        if (!entry || entry->key != key) {
            result.append(line);
        } else if (++seen == occurrences) {
            appendEntry(result, {key, value, entry->lineEnd});
        }
    }
    if (occurrences == 0) {
        if (!result.empty() && result.back() != '\n') {
            result.push_back('\n');
        }
        appendEntry(result, {key, value, "\n"});
    }
    return result;
}

}  // namespace kaz::util
