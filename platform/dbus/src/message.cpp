#include <kaz/dbus/message.h>

#include <utility>

namespace kaz::dbus {

MessageBuilder::MessageBuilder(MessagePtr message) noexcept : message_(std::move(message)) {}

void MessageBuilder::fail(std::string error) {
    if (error_.empty()) {
        error_ = error.empty() ? "Unknown error" : std::move(error);
    }
}

void MessageBuilder::markSensitive() noexcept {
    sensitive_ = true;
    if (message_) {
        sd_bus_message_sensitive(message_.get());
    }
}

}  // namespace kaz::dbus
