#include "simulator/supplicant/network_config.h"

#include "base/hex.h"
#include "simulator/supplicant/network_fields.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <sstream>

namespace kaz::sim {
namespace {

std::optional<int> numberOf(std::string_view text) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    return whole ? std::optional(value) : std::nullopt;
}

std::vector<std::string> wordsOf(std::string_view text) {
    std::istringstream in{std::string(text)};
    std::vector<std::string> words;
    for (std::string word; in >> word;) {
        words.push_back(word);
    }
    return words;
}

template <typename Words>
bool allAmong(std::string_view text, const Words& allowed) {
    const auto words = wordsOf(text);
    return !words.empty() && std::all_of(words.begin(), words.end(), [&](const std::string& word) {
        return std::find(allowed.begin(), allowed.end(), word) != allowed.end();
    });
}

bool isPassphrase(std::string_view text) {
    constexpr std::size_t shortest = 8;
    constexpr std::size_t longest = 63;
    constexpr std::size_t key = 32;
    const auto bytes = bytesOfText(text);
    if (!bytes) {
        return false;
    }
    return text.starts_with('"') ? bytes->size() >= shortest && bytes->size() <= longest
                                 : bytes->size() == key;
}

bool isBytes(std::string_view text, std::size_t longest) {
    const auto bytes = bytesOfText(text);
    return bytes && bytes->size() <= longest;
}

bool acceptable(const NetworkField& field, std::string_view text,
                const std::vector<std::string>& eapMethods) {
    constexpr std::size_t longestSsid = 32;
    constexpr std::size_t longestWepKey = 16;
    switch (field.kind) {
        case NetworkField::Kind::ssid:
            return isBytes(text, longestSsid);
        case NetworkField::Kind::text:
            return field.unquoted || bytesOfText(text).has_value();
        case NetworkField::Kind::passphrase:
            return isPassphrase(text);
        case NetworkField::Kind::wepKey:
            return isBytes(text, longestWepKey);
        case NetworkField::Kind::number: {
            const auto value = numberOf(text);
            return value && *value >= field.lowest && *value <= field.highest;
        }
        case NetworkField::Kind::keywords:
            return allAmong(text, field.words);
        case NetworkField::Kind::eapMethods:
            return allAmong(text, eapMethods);
    }
    return false;
}

bool holdsBytes(NetworkField::Kind kind) {
    return kind == NetworkField::Kind::ssid || kind == NetworkField::Kind::text;
}

}  // namespace

bool NetworkConfig::setText(std::string_view name, std::string_view text,
                            const std::vector<std::string>& eapMethods) {
    const NetworkField* const field = findNetworkField(name);
    if (field == nullptr || !acceptable(*field, text, eapMethods)) {
        return false;
    }
    const bool canonical = holdsBytes(field->kind) && !field->unquoted;
    values_.insert_or_assign(std::string(name),
                             canonical ? textOfBytes(*bytesOfText(text)) : std::string(text));
    return true;
}

bool NetworkConfig::set(std::string_view name, const Setting& value,
                        const std::vector<std::string>& eapMethods) {
    const NetworkField* const field = findNetworkField(name);
    if (field == nullptr) {
        return false;
    }
    if (const auto* const text = std::get_if<std::string>(&value)) {
        return setText(name, field->unquoted ? *text : '"' + *text + '"', eapMethods);
    }
    if (const auto* const number = std::get_if<std::int64_t>(&value)) {
        return setText(name, std::to_string(*number), eapMethods);
    }
    if (const auto* const bytes = std::get_if<ByteSetting>(&value)) {
        return !bytes->bytes.empty() && setText(name, toHex(bytes->bytes), eapMethods);
    }
    return false;
}

bool NetworkConfig::setAll(const Settings& settings, const std::vector<std::string>& eapMethods) {
    NetworkConfig changed = *this;
    for (const auto& [name, value] : settings) {
        if (!changed.set(name, value, eapMethods)) {
            return false;
        }
    }
    *this = std::move(changed);
    return true;
}

std::string_view NetworkConfig::text(std::string_view name) const {
    const auto found = values_.find(name);
    if (found != values_.end()) {
        return found->second;
    }
    const NetworkField* const field = findNetworkField(name);
    return field == nullptr ? std::string_view() : field->initial;
}

int NetworkConfig::number(std::string_view name) const {
    return numberOf(text(name)).value_or(0);
}

std::string NetworkConfig::bytes(std::string_view name) const {
    return bytesOfText(text(name)).value_or(std::string());
}

bool NetworkConfig::hasKeyword(std::string_view name, std::string_view word) const {
    const auto words = wordsOf(text(name));
    return std::find(words.begin(), words.end(), word) != words.end();
}

std::vector<std::pair<std::string, std::string>> NetworkConfig::shown() const {
    std::vector<std::pair<std::string, std::string>> fields;
    for (const NetworkField& field : networkFields()) {
        if (!field.secret && !text(field.name).empty()) {
            fields.emplace_back(field.name, text(field.name));
        }
    }
    return fields;
}

std::vector<std::pair<std::string, std::string>> NetworkConfig::stored() const {
    std::vector<std::pair<std::string, std::string>> fields;
    for (const NetworkField& field : networkFields()) {
        const auto value = values_.find(field.name);
        if (value != values_.end() && value->second != field.initial) {
            fields.emplace_back(*value);
        }
    }
    return fields;
}

bool NetworkConfig::complete() const {
    if (hasKeyword("key_mgmt", "SAE")) {
        return has("sae_password") || has("psk");
    }
    return !hasKeyword("key_mgmt", "WPA-PSK") || has("psk");
}

}  // namespace kaz::sim
