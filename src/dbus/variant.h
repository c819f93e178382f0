#pragma once

#include "dbus/codec_result.h"
#include "dbus/value_codec.h"

#include <systemd/sd-bus.h>

#include <functional>
#include <map>
#include <string>

namespace kaz::dbus {

// A value with its D-Bus signature: int (i), bool (b), std::string (s) or a dictionary of variants (a{sv}).
// Owns a copy of the value. The destructor wipes the memory of a text, which may be a passphrase.
class Variant {
  public:
    using Map = std::map<std::string, Variant>;

    // Accepts exactly these types: with a conversion, a text literal would be sent as a bool.
    Variant(int value);                 // NOLINT(google-explicit-constructor)
    Variant(bool value);                // NOLINT(google-explicit-constructor)
    Variant(std::string&& value);       // NOLINT(google-explicit-constructor)
    Variant(const std::string& value);  // NOLINT(google-explicit-constructor)
    Variant(const char* value);         // NOLINT(google-explicit-constructor); a text
    Variant(Map value);                 // NOLINT(google-explicit-constructor)
    template <typename T>
    Variant(T) = delete;

    const std::string& signature() const noexcept { return signature_; }

    // Appends the value without the variant around it. An exception becomes the error text.
    CodecResult<void> writeValue(sd_bus_message* message) const;

  private:
    using Writer = std::function<CodecResult<void>(sd_bus_message*)>;

    Variant(std::string signature, Writer writer);

    std::string signature_;
    Writer writer_;
};

// Appends a variant (v). If its value cannot be written, the container stays open.
template <>
CodecResult<void> write(sd_bus_message* message, const Variant& value);

// Appends a property dictionary (a{sv}), in ascending order of the keys.
template <>
CodecResult<void> write(sd_bus_message* message, const Variant::Map& value);

}  // namespace kaz::dbus
