// The expected result of reading a value, computed without sd-bus: the rules of reading applied to the value itself.
#pragma once

#include "fuzz/dbus_value.h"

#include <kaz/dbus/opath.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace kaz::fuzz {

// The value without the variants around it.
inline const Value& bare(const Value& value) {
    const Value* inner = &value;
    while (inner->type() == SD_BUS_TYPE_VARIANT) {
        inner = &inner->contents.front();
    }
    return *inner;
}

template <typename T>
struct Reference;

template <typename T, char code>
struct NumberReference {
    static constexpr char type = code;
    static T of(const Value& value) { return static_cast<T>(value.number); }
};

template <typename T, char code>
struct TextReference {
    static constexpr char type = code;
    static T of(const Value& value) { return T(value.text); }
};

template <>
struct Reference<int> : NumberReference<int, 'i'> {};
template <>
struct Reference<short> : NumberReference<short, 'n'> {};
template <>
struct Reference<unsigned short> : NumberReference<unsigned short, 'q'> {};
template <>
struct Reference<unsigned int> : NumberReference<unsigned int, 'u'> {};
template <>
struct Reference<unsigned char> : NumberReference<unsigned char, 'y'> {};
template <>
struct Reference<bool> : NumberReference<bool, 'b'> {};
template <>
struct Reference<std::string> : TextReference<std::string, 's'> {};
template <>
struct Reference<dbus::OPath> : TextReference<dbus::OPath, 'o'> {};

template <typename T>
concept Basic = requires {
    Reference<T>::type;
};

// Nullopt if reading must fail.
template <Basic T>
void expect(const Value& value, std::optional<T>& expected) {
    const Value& inner = bare(value);
    if (inner.signature == std::string_view(&Reference<T>::type, 1)) {
        expected = Reference<T>::of(inner);
    }
}

template <typename T>
void expect(const Value& value, std::optional<std::optional<T>>& expected) {
    std::optional<T> inner;
    expect(value, inner);
    if (inner) {
        expected = std::move(inner);
    }
}

// Arrays: variants may be around the array, but not around an element.
template <typename Container>
requires Basic<typename Container::value_type>
void expect(const Value& value, std::optional<Container>& expected) {
    using Element = Reference<typename Container::value_type>;
    const Value& inner = bare(value);
    if (inner.signature != std::string{'a', Element::type}) {
        return;
    }
    expected.emplace();
    for (const Value& element : inner.contents) {
        expected->insert(expected->end(), Element::of(element));
    }
}

}  // namespace kaz::fuzz
