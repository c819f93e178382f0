// Decodes a property dictionary (a{sv}) into a record. A record type R tells its fields by a specialisation
//
//   template <> struct RecordFields<R> {
//       static constexpr auto table = std::tuple(field("Key", &R::member), ...);
//   };
//
// Keys that the table does not hold are skipped, fields whose key is absent keep their initial value, and a
// key that comes twice is read twice. One field that cannot be read fails the whole record.
#pragma once

#include "dbus/value_codec.h"

#include <array>
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

template <typename R>
struct RecordFields;

template <typename R>
concept Record = requires {
    RecordFields<R>::table;
};

namespace detail {

// How the entries of a dictionary are typed, which decides how much has to be looked up for each of them.
enum class EntryType {
    stringToVariant,  // {sv}, as good as always
    other,
};

// Enters the dictionary, whatever it holds.
int enterDictionary(sd_bus_message* message, EntryType& entries);

// Above zero: inside the next entry; zero: there is none; below: an error.
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
