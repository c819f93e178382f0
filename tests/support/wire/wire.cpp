#include "support/wire/wire.h"

#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

namespace kaz::test {

WireBytes& WireBytes::number(std::size_t value, std::size_t size) {
    align(size);
    for (std::size_t i = 0; i < size; ++i) {
        bytes_ += static_cast<char>((value >> (8 * (bigEndian_ ? size - 1 - i : i))) & 0xffU);
    }
    return *this;
}

WireBytes& WireBytes::text(std::string_view value) {
    return number(value.size(), 4).raw(value).number(0, 1);
}

WireBytes& WireBytes::signature(std::string_view value) {
    return number(value.size(), 1).raw(value).number(0, 1);
}

WireBytes& WireBytes::raw(std::string_view value) {
    bytes_ += value;
    return *this;
}

WireBytes& WireBytes::align(std::size_t boundary) {
    bytes_.resize((bytes_.size() + boundary - 1) / boundary * boundary, '\0');
    return *this;
}

void WireBytes::overwrite(std::size_t at, std::size_t value) {
    bytes_.replace(at, 4, WireBytes(bigEndian_).number(value, 4).str());
}

std::string wireSignal(bool bigEndian, std::string_view signature, std::string_view body) {
    constexpr std::size_t pathCode = 1;
    constexpr std::size_t interfaceCode = 2;
    constexpr std::size_t memberCode = 3;
    constexpr std::size_t signatureCode = 8;
    constexpr std::size_t signalType = 4;
    WireBytes fields(bigEndian);
    fields.number(pathCode, 1).signature("o").text("/").align(8);
    fields.number(interfaceCode, 1).signature("s").text("com.example.Wire").align(8);
    fields.number(memberCode, 1).signature("s").text("Signal").align(8);
    fields.number(signatureCode, 1).signature("g").signature(signature);
    WireBytes message(bigEndian);
    message.raw(bigEndian ? "B" : "l").number(signalType, 1).number(0, 1).number(1, 1);
    message.number(body.size(), 4).number(1, 4).number(fields.size(), 4).raw(fields.str());
    return message.align(8).raw(body).str();
}

WireLine::WireLine() {
    sd_bus* bus = nullptr;
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends_.data()) != 0 ||
        sd_bus_new(&bus) < 0 || sd_bus_set_fd(bus, ends_[0], ends_[0]) < 0 || sd_bus_start(bus) < 0) {
        throw std::runtime_error("cannot make a connection");
    }
    bus_.reset(bus);
    send("DATA\r\nOK 0123456789abcdef0123456789abcdef\r\nERROR\r\n");
}

WireLine::~WireLine() {
    ::close(ends_[1]);
}

dbus::MessagePtr WireLine::receive(std::string_view bytes) {
    send(bytes);
    sd_bus_message* message = nullptr;
    while (message == nullptr && sd_bus_process(bus_.get(), &message) > 0) {
    }
    return dbus::MessagePtr(message);
}

void WireLine::send(std::string_view bytes) const {
    if (::send(ends_[1], bytes.data(), bytes.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(bytes.size())) {
        throw std::runtime_error("cannot send");
    }
}

}  // namespace kaz::test
