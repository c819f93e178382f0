// Decodes a property dictionary (a{sv}) into a record. A record type R lists its fields in a specialisation
//
//   template <> struct RecordFields<R> {
//       static constexpr auto table = std::tuple(field("Key", &R::member), ...);
//   };
//
// Unknown keys are skipped. A field without a key in the dictionary keeps its initial value. If a key is
// repeated, its last value counts. If one field cannot be read, the whole record fails, unless the field is Lenient.
#pragma once

#include "dbus/value_codec.h"

#include <array>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>

namespace kaz::dbus {

template <typename R, typename T>
struct Field {
    std::string_view key;
    T R::*member;
};

template <typename R, typename T>
constexpr Field<R, T> field(std::string_view key, T R::*member) {
    return {key, member};
}

// A field that the caller can do without. A value of another type is skipped like an unknown key, so it does not fail the
// record.
template <typename T>
struct Lenient {
    std::optional<T> value;

    friend bool operator==(const Lenient&, const Lenient&) = default;
};

template <typename R>
struct RecordFields;

template <typename R>
concept Record = requires {
    RecordFields<R>::table;
};

namespace detail {

// The type of a dictionary's entries, which decides how much must be peeked for each entry.
enum class EntryType {
    stringToVariant,  // {sv}, nearly always
    other,
};

// Enters the dictionary, with any type of entries.
int enterDictionary(sd_bus_message* message, EntryType& entries);

// Positive: inside the next entry; zero: there is no entry; negative: an error.
int enterNextEntry(sd_bus_message* message, EntryType entries);

CodecResult<std::string_view> readKey(sd_bus_message* message, EntryType entries);
CodecResult<void> skipValue(sd_bus_message* message, EntryType entries);

template <typename T>
CodecResult<void> fillField(T& target, sd_bus_message* message, EntryType entries) {
    if (entries == EntryType::other) {
        return fillHelper(target, message);
    }
    CodecResult<T> value = readVariant<T>(message);
    if (!value) {
        return CodecError(std::move(value.error()));
    }
    target = std::move(*value);
    return {};
}

template <typename T>
CodecResult<void> fillField(Lenient<T>& target, sd_bus_message* message, EntryType entries) {
    if (entries == EntryType::other || enterVariantOf(message, Wire<T>::signature.data()) <= 0) {
        return skipValue(message, entries);
    }
    CodecResult<T> value = readInVariant<T>(message, Wire<T>::read);
    if (!value) {
        return CodecError(std::move(value.error()));
    }
    target.value = std::move(*value);
    return {};
}

// Reads the value of the entry `key` into its field, or skips it.
template <Record R>
CodecResult<void> readValue(R& record, std::string_view key, sd_bus_message* message, EntryType entries) {
    CodecResult<void> filled;
    const auto fillIfMeant = [&](const auto& candidate) {
        if (candidate.key != key) {
            return false;
        }
        filled = fillField(record.*candidate.member, message, entries);
        return true;
    };
    const bool known = std::apply([&](const auto&... candidates) { return (fillIfMeant(candidates) || ...); },
                                  RecordFields<R>::table);
    if (!known) {
        return skipValue(message, entries);
    }
    if (!filled) {
        return nestedError("Value decoding error: ", filled.error());
    }
    return {};
}

template <Record R>
CodecResult<void> readEntry(R& record, sd_bus_message* message, EntryType entries) {
    const CodecResult<std::string_view> key = readKey(message, entries);
    if (!key) {
        return nestedError("Key error: ", key.error());
    }
    if (auto value = readValue(record, *key, message, entries); !value) {
        return value;
    }
    if (const int r = exitContainer(message); r < 0) {
        return sdBusError(r);
    }
    return {};
}

}  // namespace detail

template <Record R>
struct Wire<R> {
    static constexpr std::array signature{'a', '{', 's', 'v', '}', '\0'};

    static CodecResult<R> read(sd_bus_message* message) {
        detail::EntryType entries{};
        if (const int r = detail::enterDictionary(message, entries); r < 0) {
            return sdBusError(r);
        }
        R record{};
        int entry = detail::enterNextEntry(message, entries);
        while (entry > 0) {
            if (auto filled = detail::readEntry(record, message, entries); !filled) {
                return CodecError(std::move(filled.error()));
            }
            entry = detail::enterNextEntry(message, entries);
        }
        if (entry < 0) {
            return sdBusError(entry);
        }
        if (const int r = detail::exitContainer(message); r < 0) {
            return sdBusError(r);
        }
        return record;
    }
};

}  // namespace kaz::dbus
