#include "support/bus_proxy/wire_stream.h"

namespace kaz::test {
namespace {

// The beginning of every message. The byte order, the size of the body, and the size of the header's fields are in it.
constexpr std::size_t headerSize = 16;
constexpr std::size_t bodySizeAt = 4;
constexpr std::size_t fieldsSizeAt = 12;

std::size_t numberAt(std::string_view bytes, std::size_t place) {
    const bool bigEndian = bytes.front() == 'B';
    std::size_t number = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        number = number << 8U | static_cast<unsigned char>(bytes[place + (bigEndian ? i : 3 - i)]);
    }
    return number;
}

}  // namespace

std::optional<std::string> WireStream::nextLine() {
    const auto end = bytes_.find("\r\n");
    return end == std::string::npos ? std::nullopt : std::optional(take(end + 2));
}

std::optional<std::string> WireStream::nextMessage() {
    if (bytes_.size() < headerSize) {
        return std::nullopt;
    }
    const std::size_t fieldsSize = (numberAt(bytes_, fieldsSizeAt) + 7) / 8 * 8;
    const std::size_t size = headerSize + fieldsSize + numberAt(bytes_, bodySizeAt);
    return bytes_.size() < size ? std::nullopt : std::optional(take(size));
}

std::string WireStream::take(std::size_t size) {
    std::string taken = bytes_.substr(0, size);
    bytes_.erase(0, size);
    return taken;
}

}  // namespace kaz::test
