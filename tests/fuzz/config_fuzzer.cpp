// The text of the configuration file. Any file can be read, and an update changes only its own entry.
#include "fuzz/require.h"
#include "platform/common/syntax/config_text.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kaz::fuzz {
namespace {

using Entries = std::map<std::string, std::string>;

// A line without its end.
std::string_view contentOf(std::string_view line) {
    if (line.ends_with('\n')) {
        line.remove_suffix(1);
    }
    if (line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    return line;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::size_t begin = 0;
    while (begin < text.size()) {
        const std::size_t lineFeed = text.find('\n', begin);
        const std::size_t end = lineFeed == std::string::npos ? text.size() : lineFeed + 1;
        lines.push_back(text.substr(begin, end - begin));
        begin = end;
    }
    return lines;
}

// An entry is a line that begins with its key and an equals sign, unless it begins with #.
bool isEntryOf(const std::string& key, const std::string& line) {
    return !key.empty() && key.front() != '#' && key.find('=') == std::string::npos &&
           contentOf(line).starts_with(key + '=');
}

std::vector<std::string> otherLines(const std::string& text, const std::string& key) {
    std::vector<std::string> lines = linesOf(text);
    std::erase_if(lines, [&](const std::string& line) { return isEntryOf(key, line); });
    return lines;
}

// The number of lines after the key's last line; of all lines if there is none.
std::ptrdiff_t linesAfter(const std::string& key, const std::string& text) {
    const std::vector<std::string> lines = linesOf(text);
    const auto last = std::find_if(lines.rbegin(), lines.rend(),
                                   [&](const std::string& line) { return isEntryOf(key, line); });
    return std::distance(lines.rbegin(), last);
}

Entries without(Entries entries, const std::string& key) {
    entries.erase(key);
    return entries;
}

void checkReading(const std::string& text) {
    Entries expected;
    for (const std::string& line : linesOf(text)) {
        const std::string_view content = contentOf(line);
        const std::size_t equals = content.find('=');
        const std::string key(content.substr(0, equals));
        if (equals != std::string_view::npos && isEntryOf(key, line)) {
            expected[key] = content.substr(equals + 1);
        }
    }
    require(util::parseConfig(text) == expected,
            "every entry is read, from the last line that holds its key");
}

void checkUpdate(const std::string& text, const std::string& key, const std::string& value) {
    const std::string updated = util::withEntry(text, key, value);
    if (util::refusal(key, value) != nullptr) {
        return;  // nobody writes this; it must not crash
    }
    const Entries before = util::parseConfig(text);
    const Entries after = util::parseConfig(updated);
    require(after.contains(key) && after.at(key) == value, "what was written is read back");
    require(without(after, key) == without(before, key), "no other entry changes");

    std::vector<std::string> kept = otherLines(text, key);
    const std::vector<std::string> lines = linesOf(updated);
    require(lines.size() == kept.size() + 1, "there is exactly one line for the key");
    require(linesAfter(key, updated) == (before.contains(key) ? linesAfter(key, text) : 0),
            "it stands where the last one for the key stood, or else at the end");
    // A last line without a line ending gets one when a line is appended.
    const bool gotAnEnd = !before.contains(key) && !kept.empty() && !kept.back().ends_with('\n');
    if (gotAnEnd) {
        kept.back() += '\n';
    }
    require(otherLines(updated, key) == kept, "all other lines stay, in their order, byte by byte");
    require(util::withEntry(updated, key, value) == updated, "the same update again changes nothing");
}

}  // namespace
}  // namespace kaz::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider bytes(data, size);
    const std::string key = bytes.ConsumeRandomLengthString(12);
    const std::string value = bytes.ConsumeRandomLengthString(12);
    const std::string text = bytes.ConsumeRemainingBytesAsString();
    kaz::fuzz::checkReading(text);
    kaz::fuzz::checkUpdate(text, key, value);
    return 0;
}
