// D-Bus messages as bytes, in either byte order, and a connection that receives them.
#pragma once

#include "base/non_copyable.h"
#include "base/sd_bus/handles.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace kaz::test {

// Writes values in the wire format of a message.
class WireBytes {
  public:
    explicit WireBytes(bool bigEndian) : bigEndian_(bigEndian) {}

    WireBytes& number(std::size_t value, std::size_t size);
    WireBytes& text(std::string_view value);
    WireBytes& signature(std::string_view value);
    WireBytes& raw(std::string_view value);
    WireBytes& align(std::size_t boundary);
    // Overwrites a number of four bytes.
    void overwrite(std::size_t at, std::size_t value);

    std::size_t size() const { return bytes_.size(); }
    const std::string& str() const { return bytes_; }

  private:
    bool bigEndian_;
    std::string bytes_;
};

// A whole signal with this body.
std::string wireSignal(bool bigEndian, std::string_view signature, std::string_view body);

// A connection whose other end sends bytes. Failures throw std::runtime_error.
class WireLine : NonCopyable {
  public:
    WireLine();
    ~WireLine();

    // Null if sd-bus does not accept the bytes as a message; it then disconnects.
    dbus::MessagePtr receive(std::string_view bytes);

  private:
    void send(std::string_view bytes) const;

    std::array<int, 2> ends_{-1, -1};
    dbus::BusPtr bus_;
};

}  // namespace kaz::test
