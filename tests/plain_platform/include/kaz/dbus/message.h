#pragma once

#include <systemd/sd-bus.h>

#include <string>
#include <utility>

namespace kaz::dbus {

struct MessageEndpoint {
    std::string destination;
    std::string path;
    std::string interface;
};

// A call under construction: the message, null when it could not be created, and whether all arguments were appended.
class MessageBuilder {
  public:
    explicit MessageBuilder(sd_bus_message* message) : message_(message) {}
    ~MessageBuilder() { sd_bus_message_unref(message_); }
    MessageBuilder(const MessageBuilder&) = delete;
    MessageBuilder& operator=(const MessageBuilder&) = delete;
    MessageBuilder(MessageBuilder&&) = delete;
    MessageBuilder& operator=(MessageBuilder&&) = delete;

    sd_bus_message* message() const { return message_; }
    void fail(std::string error) { error_ = std::move(error); }
    bool ok() const { return error_.empty(); }

  private:
    sd_bus_message* message_;
    std::string error_;
};

struct MessageDecoder {
    sd_bus_message* message;
    bool ok;
};

}  // namespace kaz::dbus
