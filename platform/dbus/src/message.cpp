#include <kaz/dbus/message.h>

#include <utility>

namespace kaz::dbus {

MessageBuilder::MessageBuilder(sd_bus_message* message) noexcept : message_(message) {}

void MessageBuilder::fail(std::string error) {
    if (error_.empty()) {
        error_ = error.empty() ? "Unknown error" : std::move(error);
    }
}

void MessageBuilder::markSensitive() noexcept {
    sensitive_ = true;
}

}  // namespace kaz::dbus
