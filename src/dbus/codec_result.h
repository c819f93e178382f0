#pragma once

#include <string>
#include <string_view>
#include <tl/expected.hpp>

namespace kaz::dbus {

// A value, or the text that says why there is none.
template <typename T>
using CodecResult = tl::expected<T, std::string>;

using CodecError = tl::unexpected<std::string>;

// The error of a negative sd-bus return code: its bare text.
CodecError sdBusError(int code);

// The same error, told from one level further out.
CodecError nestedError(std::string_view prefix, const std::string& inner);

}  // namespace kaz::dbus
