#include "signal_table.h"

#include <kaz/dbus/dbus_error.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "guard.h"
#include "log.h"
#include "name_owner.h"

namespace kaz::dbus {

struct SignalTable::Entry : std::enable_shared_from_this<Entry> {
    SignalMatch match;
    bool temporary = false;
    Handler handler;
    std::shared_ptr<NameOwner> owner;
    SlotPtr slot;
};

SignalTable::~SignalTable() {
    detach();
}

void SignalTable::attach(sd_bus* bus) {
    bus_ = bus;
    std::vector<NameOwner*> attached;
    for (const auto& entry : entries_) {
        if (std::find(attached.begin(), attached.end(), entry->owner.get()) == attached.end()) {
            attached.push_back(entry->owner.get());
            entry->owner->attach(bus_);
        }
        subscribe(*entry);
    }
}

void SignalTable::detach() noexcept {
    bus_ = nullptr;
    for (const auto& entry : entries_) {
        entry->slot.reset();
        entry->owner->detach();
    }
}

void SignalTable::add(SignalMatch match, bool temporary, Handler handler) {
    auto entry = std::make_shared<Entry>();
    entry->owner = ownerOf(match.sender);
    entry->match = std::move(match);
    entry->temporary = temporary;
    entry->handler = std::move(handler);
    entries_.push_back(entry);
    if (bus_ != nullptr) {
        subscribe(*entry);
    }
}

void SignalTable::removeTemporary() {
    const auto first = std::stable_partition(entries_.begin(), entries_.end(),
                                             [](const auto& entry) { return !entry->temporary; });
    // What a handler holds may come back here when it dies, so it dies outside the table; and the handler that
    // runs now, when it returns.
    const std::vector<std::shared_ptr<Entry>> removed(std::make_move_iterator(first),
                                                      std::make_move_iterator(entries_.end()));
    entries_.erase(first, entries_.end());
}

std::shared_ptr<NameOwner> SignalTable::ownerOf(const std::string& name) {
    const auto known = std::find_if(entries_.begin(), entries_.end(),
                                    [&](const auto& entry) { return entry->match.sender == name; });
    if (known != entries_.end()) {
        return (*known)->owner;
    }
    auto owner = std::make_shared<NameOwner>(name);
    if (bus_ != nullptr) {
        owner->attach(bus_);
    }
    return owner;
}

void SignalTable::subscribe(Entry& entry) {
    const SignalMatch& match = entry.match;
    sd_bus_slot* slot = nullptr;
    const int result =
        sd_bus_match_signal(bus_, &slot, match.sender.c_str(), match.path.c_str(), match.interface.c_str(),
                            match.member.c_str(), &SignalTable::onSignal, &entry);
    entry.slot.reset(slot);
    if (result < 0) {
        log(spdlog::level::warn, "Cannot subscribe to {} of {}: {}", match.member, match.sender,
            DbusError(result).error());
    }
}

int SignalTable::onSignal(sd_bus_message* message, void* entry, sd_bus_error* /*error*/) {
    // Its own handler may remove the entry.
    const auto self = static_cast<Entry*>(entry)->shared_from_this();
    if (!self->owner->sent(message)) {
        log(spdlog::level::debug, "Dropping {}: sent by {}, which does not own {}", self->match.member,
            textOf(sd_bus_message_get_sender(message)), self->match.sender);
        return 0;
    }
    MessageDecoder decoder{message};
    runGuarded("signal handler", [&] { self->handler(decoder); });
    return 0;
}

}  // namespace kaz::dbus
