#pragma once

#include <fuzzer/FuzzedDataProvider.h>
#include <systemd/sd-bus.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kaz::fuzz {

// A D-Bus value of any type: the content of a message, known without reading it.
struct Value {
    std::string signature;        // one complete type
    std::uint64_t number = 0;     // of a number or truth value
    std::string text;             // of a string, object path or signature
    std::vector<Value> contents;  // of a container; a variant has one

    char type() const { return signature.front(); }
};

// A text that D-Bus accepts: UTF-8 without NUL.
Value textValue(std::string text);
Value variantOf(Value contents);

// A complete type: often one that this library reads, sometimes any.
std::string makeType(FuzzedDataProvider& bytes);

// A value of this type, with contents in moderate numbers.
Value makeValue(FuzzedDataProvider& bytes, std::string_view signature);

// The value inside some variants, or none.
Value makeWrapped(FuzzedDataProvider& bytes, Value value);

// Whether containers nest deeper than D-Bus allows. sd-bus builds such messages all the same, and reads some of them.
bool nestsTooDeep(const Value& value);

// Appends the value. Returns false if sd-bus refuses it, because it nests too deep.
bool append(sd_bus_message* message, const Value& value);

}  // namespace kaz::fuzz
