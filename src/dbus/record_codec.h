// Decodes a property dictionary (a{sv}) into a record. A record type R tells its fields by a specialisation
//
//   template <> struct RecordFields<R> {
//       static constexpr auto table = std::tuple(field("Key", &R::member), ...);
//   };
//
// Keys that the table does not hold are skipped, fields whose key is absent keep their initial value, and a
// key that comes twice is read twice. One field that cannot be read fails the whole record.
#pragma once

#include "value_codec.h"

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

int enterDictionary(sd_bus_message* message);
// Above zero: inside the next entry; zero: there is none; below: an error.
int enterNextEntry(sd_bus_message* message);

// Reads the value of the entry `key` into its field, or skips it.
template <Record R>
CodecResult<void> readValue(R& record, std::string_view key, sd_bus_message* message) {
    CodecResult<void> filled;
    const auto fillIfMeant = [&](const auto& candidate) {
        if (candidate.key != key) {
            return false;
        }
        filled = fillHelper(record.*candidate.member, message);
        return true;
    };
    const bool known = std::apply([&](const auto&... candidates) { return (fillIfMeant(candidates) || ...); },
                                  RecordFields<R>::table);
    if (!known) {
        if (const int r = sd_bus_message_skip(message, nullptr); r < 0) {
            return sdBusError(r);
        }
        return {};
    }
    if (!filled) {
        return nestedError("Value decoding error: ", filled.error());
    }
    return {};
}

template <Record R>
CodecResult<void> readEntry(R& record, sd_bus_message* message) {
    const CodecResult<std::string_view> key = dbus::read<std::string_view>(message);
    if (!key) {
        return nestedError("Key error: ", key.error());
    }
    if (auto value = readValue(record, *key, message); !value) {
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
    static CodecResult<R> read(sd_bus_message* message) {
        if (const int r = detail::enterDictionary(message); r < 0) {
            return sdBusError(r);
        }
        R record{};
        for (;;) {
            const int entry = detail::enterNextEntry(message);
            if (entry == 0) {
                break;
            }
            if (entry < 0) {
                return sdBusError(entry);
            }
            if (auto filled = detail::readEntry(record, message); !filled) {
                return CodecError(std::move(filled.error()));
            }
        }
        if (const int r = detail::exitContainer(message); r < 0) {
            return sdBusError(r);
        }
        return record;
    }
};

}  // namespace kaz::dbus
