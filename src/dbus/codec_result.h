#pragma once

#include <string>
#include <string_view>
#include <tl/expected.hpp>

namespace kaz::dbus {

// A value, or an error text.
template <typename T>
using CodecResult = tl::expected<T, std::string>;

using CodecError = tl::unexpected<std::string>;

// The error of a negative sd-bus return code, with its text.
CodecError sdBusError(int code);

// The same error with the prefix of an outer level.
CodecError nestedError(std::string_view prefix, const std::string& inner);

}  // namespace kaz::dbus
