#include "dbus/name_owner.h"

#include "base/guard.h"
#include "base/log.h"

#include <kaz/dbus/dbus_error.h>

#include <cerrno>
#include <string_view>
#include <utility>

namespace kaz::dbus {
namespace {

constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";

std::string_view senderOf(sd_bus_message* message) noexcept {
    const char* sender = sd_bus_message_get_sender(message);
    return sender == nullptr ? "" : sender;
}

}  // namespace

NameOwner::NameOwner(std::string name, Clock::duration pause) : name_(std::move(name)), pause_(pause) {}

void NameOwner::attach(sd_bus* bus) {
    if (known_) {
        return;
    }
    // In this order, so that no change after the reply is missed.
    int result = slot_ ? 0 : subscribe(bus);
    if (result >= 0) {
        result = ask(bus);
    }
    known_ = result >= 0;
    if (!known_) {
        log::warn("Cannot follow the owner of {}: {}", name_, DbusError(result).error());
    }
}

void NameOwner::detach() noexcept {
    slot_.reset();
    owner_.clear();
    known_ = false;
    missed_ = false;
    askAgainAt_ = {};
}

void NameOwner::setChangeTask(ChangeTask task) {
    changeTask_.set(std::move(task));
}

bool NameOwner::sent(sd_bus_message* message) {
    attachAgain(sd_bus_message_get_bus(message));
    missed_ = missed_ || !known_;
    return !owner_.empty() && owner_ == senderOf(message);
}

std::optional<NameOwner::Clock::duration> NameOwner::recover(sd_bus* bus) {
    if (!missed_) {
        return std::nullopt;
    }
    attachAgain(bus);
    return known_ ? std::nullopt : std::optional(askAgainAt_ - Clock::now());
}

bool NameOwner::takeMissed() {
    return known_ && std::exchange(missed_, false);
}

void NameOwner::attachAgain(sd_bus* bus) {
    if (!known_ && Clock::now() >= askAgainAt_) {
        attach(bus);
        askAgainAt_ = Clock::now() + pause_;  // from its end, because a bus that hangs may have taken long
    }
}

// Not through the platform's loop: its handlers cannot match an argument. Without that, every program that
// joins or leaves the bus would wake us.
int NameOwner::subscribe(sd_bus* bus) {
    if (sd_bus_service_name_is_valid(name_.c_str()) <= 0) {
        return -EINVAL;
    }
    const std::string match = std::string("type='signal',sender='") + busName + "',path='" + busPath +
                              "',interface='" + busName + "',member='NameOwnerChanged',arg0='" + name_ + "'";
    sd_bus_slot* slot = nullptr;
    const int result = sd_bus_add_match(bus, &slot, match.c_str(), &NameOwner::onChanged, this);
    slot_.reset(slot);
    return result;
}

int NameOwner::ask(sd_bus* bus) {
    BusError error;
    sd_bus_message* reply = nullptr;
    int result = sd_bus_call_method(bus, busName, busPath, busName, "GetNameOwner", &error.value, &reply, "s",
                                    name_.c_str());
    const MessagePtr owned(reply);
    if (result < 0) {
        return sd_bus_error_has_name(&error.value, SD_BUS_ERROR_NAME_HAS_NO_OWNER) > 0 ? 0 : result;
    }
    const char* owner = "";
    result = sd_bus_message_read_basic(reply, SD_BUS_TYPE_STRING, &owner);
    owner_ = owner;
    return result;
}

int NameOwner::onChanged(sd_bus_message* message, void* owner, sd_bus_error* /*error*/) {
    auto* self = static_cast<NameOwner*>(owner);
    const std::string_view sender = senderOf(message);
    if (sender != busName) {
        log::debug("Dropping a NameOwnerChanged of {} that {} sent", self->name_, sender);
        return 0;
    }
    const char* name = nullptr;
    const char* former = nullptr;
    const char* present = nullptr;
    if (sd_bus_message_read(message, "sss", &name, &former, &present) < 0 || self->owner_ == present) {
        return 0;
    }
    runGuarded("name owner task", [self, present] { self->change(present); });
    return 0;
}

void NameOwner::change(const char* present) {
    // Unknown until the name is stored, for which memory may be missing.
    known_ = false;
    owner_.clear();
    owner_ = present;
    known_ = true;
    changeTask_(!owner_.empty());
}

}  // namespace kaz::dbus
