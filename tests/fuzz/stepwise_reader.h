// Reads values in the plainest way: every step of sd-bus in its turn, each checked, without any short cut. The codec must
// give the same values and the same errors.
#pragma once

#include "dbus/codec_result.h"
#include "fuzz/record_reference.h"

#include <kaz/dbus/dbus_error.h>
#include <kaz/dbus/opath.h>
#include <systemd/sd-bus.h>

#include <cerrno>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace kaz::fuzz {

inline dbus::CodecError stepFailed(int r) {
    return dbus::CodecError(dbus::DbusError(r).error());
}

template <typename T>
struct Steps;

template <typename T>
dbus::CodecResult<T> readStepwise(sd_bus_message* m) {
    char type = 0;
    if (const int r = sd_bus_message_peek_type(m, &type, nullptr); r < 0) {
        return stepFailed(r);
    }
    if (type != SD_BUS_TYPE_VARIANT) {
        return Steps<T>::read(m);
    }
    const char* contents = nullptr;
    if (const int r = sd_bus_message_peek_type(m, nullptr, &contents); r < 0) {
        return stepFailed(r);
    }
    if (const int r = sd_bus_message_enter_container(m, SD_BUS_TYPE_VARIANT, contents); r < 0) {
        return stepFailed(r);
    }
    auto inner = readStepwise<T>(m);
    if (!inner) {
        return dbus::CodecError("Unable to read from variant: " + inner.error());
    }
    if (const int r = sd_bus_message_exit_container(m); r < 0) {
        return stepFailed(r);
    }
    return inner;
}

template <typename T, typename Read, char code>
struct BasicSteps {
    static dbus::CodecResult<T> read(sd_bus_message* m) {
        Read value{};
        const int r = sd_bus_message_read_basic(m, code, &value);
        if (r <= 0) {
            return stepFailed(r == 0 ? -ENXIO : r);  // 0 at the end of a container: sd-bus has set no value
        }
        if constexpr (std::is_same_v<T, bool>) {
            return value != 0;
        } else {
            return T(value);
        }
    }
};

template <>
struct Steps<int> : BasicSteps<int, int, 'i'> {};
template <>
struct Steps<short> : BasicSteps<short, short, 'n'> {};
template <>
struct Steps<unsigned short> : BasicSteps<unsigned short, unsigned short, 'q'> {};
template <>
struct Steps<unsigned int> : BasicSteps<unsigned int, unsigned int, 'u'> {};
template <>
struct Steps<unsigned char> : BasicSteps<unsigned char, unsigned char, 'y'> {};
template <>
struct Steps<bool> : BasicSteps<bool, int, 'b'> {};
template <>
struct Steps<std::string> : BasicSteps<std::string, const char*, 's'> {};
template <>
struct Steps<dbus::OPath> : BasicSteps<dbus::OPath, const char*, 'o'> {};

template <typename T>
struct Steps<std::optional<T>> {
    static dbus::CodecResult<std::optional<T>> read(sd_bus_message* m) {
        auto value = readStepwise<T>(m);
        if (!value) {
            return dbus::CodecError(value.error());
        }
        return std::optional<T>(std::move(*value));
    }
};

template <typename Container>
struct ArraySteps {
    using Element = typename Container::value_type;

    static dbus::CodecResult<Container> read(sd_bus_message* m) {
        const char element[] = {Reference<Element>::type, '\0'};
        if (const int r = sd_bus_message_enter_container(m, SD_BUS_TYPE_ARRAY, element); r < 0) {
            return stepFailed(r);
        }
        Container values;
        const char* contents = nullptr;
        while (sd_bus_message_peek_type(m, nullptr, &contents) > 0) {
            auto value = readStepwise<Element>(m);
            if (!value) {
                return dbus::CodecError("Unable to read from array: " + value.error());
            }
            values.insert(values.end(), std::move(*value));
        }
        if (const int r = sd_bus_message_exit_container(m); r < 0) {
            return stepFailed(r);
        }
        return values;
    }
};

template <typename T>
struct Steps<std::vector<T>> : ArraySteps<std::vector<T>> {};
template <typename T>
struct Steps<std::set<T>> : ArraySteps<std::set<T>> {};

template <HasKeys Record>
struct Steps<Record> {
    static dbus::CodecResult<Record> read(sd_bus_message* m) {
        const char* contents = nullptr;
        if (const int r = sd_bus_message_peek_type(m, nullptr, &contents); r < 0) {
            return stepFailed(r);
        }
        if (const int r = sd_bus_message_enter_container(m, SD_BUS_TYPE_ARRAY, contents); r < 0) {
            return stepFailed(r);
        }
        Record record{};
        while (sd_bus_message_peek_type(m, nullptr, &contents) > 0) {
            if (auto entry = readEntry(m, contents, record); !entry) {
                return dbus::CodecError(entry.error());
            }
        }
        if (const int r = sd_bus_message_exit_container(m); r < 0) {
            return stepFailed(r);
        }
        return record;
    }

  private:
    static dbus::CodecResult<void> readEntry(sd_bus_message* m, const char* contents, Record& record) {
        if (const int r = sd_bus_message_enter_container(m, SD_BUS_TYPE_DICT_ENTRY, contents); r < 0) {
            return stepFailed(r);
        }
        const auto key = readStepwise<std::string>(m);
        if (!key) {
            return dbus::CodecError("Key error: " + key.error());
        }
        std::optional<dbus::CodecResult<void>> filled;
        const auto fill = [&](const auto& known) {
            if (*key == known.first) {
                filled = fillStepwise(record.*known.second, m);
            }
        };
        std::apply([&](const auto&... known) { (fill(known), ...); }, keysOf(&record));
        if (filled && !*filled) {
            return dbus::CodecError("Value decoding error: " + filled->error());
        }
        if (!filled) {
            if (const int r = sd_bus_message_skip(m, nullptr); r < 0) {
                return stepFailed(r);
            }
        }
        if (const int r = sd_bus_message_exit_container(m); r < 0) {
            return stepFailed(r);
        }
        return {};
    }

    template <typename T>
    static dbus::CodecResult<void> fillStepwise(dbus::Lenient<T>& field, sd_bus_message* m) {
        const std::string_view signature = dbus::Wire<T>::signature.data();
        char type = 0;
        const char* contents = nullptr;
        if (const int r = sd_bus_message_peek_type(m, &type, &contents); r < 0) {
            return stepFailed(r);
        }
        if (type != SD_BUS_TYPE_VARIANT || contents != signature) {
            const int r = sd_bus_message_skip(m, nullptr);
            return r < 0 ? dbus::CodecResult<void>(stepFailed(r)) : dbus::CodecResult<void>();
        }
        auto value = readStepwise<T>(m);
        if (!value) {
            return dbus::CodecError(value.error());
        }
        field.value = std::move(*value);
        return {};
    }

    template <typename Field>
    static dbus::CodecResult<void> fillStepwise(Field& field, sd_bus_message* m) {
        auto value = readStepwise<Field>(m);
        if (!value) {
            return dbus::CodecError(value.error());
        }
        field = std::move(*value);
        return {};
    }
};

// Whether both are the same value or the same error.
template <typename T>
bool sameResult(const dbus::CodecResult<T>& a, const dbus::CodecResult<T>& b) {
    return a.has_value() == b.has_value() && (a ? same(*a, *b) : a.error() == b.error());
}

}  // namespace kaz::fuzz
