#include "platform/dbus/signal_table.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <iterator>
#include <utility>

#include "base/errno_text.h"
#include "base/guard.h"
#include "base/log.h"

namespace kaz::dbus {
namespace {

// dbus-daemon always refuses a longer rule, with the same error as when its queues are full.
constexpr std::size_t longestRule = 1024;

// After a subscription without an answer, others wait for a tenth of the limit of calls, for this time.
constexpr std::chrono::seconds impatience{10};
constexpr uint64_t shareOfAHangingBus = 10;

// Limits calls on the connection while it lives.
class CallLimit : NonCopyable {
  public:
    CallLimit(sd_bus* bus, uint64_t divisor) noexcept : bus_(bus) {
        sd_bus_get_method_call_timeout(bus_, &former_);
        sd_bus_set_method_call_timeout(
            bus_, std::max<uint64_t>(former_ / divisor, 1));  // 0 is the default of sd-bus
    }
    ~CallLimit() { sd_bus_set_method_call_timeout(bus_, former_); }

  private:
    sd_bus* bus_;
    uint64_t former_ = 0;
};

}  // namespace

struct SignalTable::Entry : std::enable_shared_from_this<Entry> {
    SignalMatch match;
    bool temporary = false;
    Handler handler;
    SlotPtr slot;
};

int SignalTable::attach(sd_bus* bus) {
    bus_ = bus;
    for (const auto& entry : entries_) {
        if (const int result = subscribe(*entry); result < 0) {
            return result;
        }
    }
    return 0;
}

void SignalTable::detach() noexcept {
    bus_ = nullptr;
    hangsUntil_ = {};
    for (const auto& entry : entries_) {
        entry->slot.reset();
    }
}

void SignalTable::add(SignalMatch match, bool temporary, Handler handler) {
    auto entry = std::make_shared<Entry>();
    entry->match = std::move(match);
    entry->temporary = temporary;
    entry->handler = std::move(handler);
    entries_.push_back(entry);
    if (bus_ != nullptr && subscribe(*entry) < 0) {
        sd_bus_close(bus_);
    }
}

void SignalTable::removeTemporary() {
    const auto first = std::stable_partition(entries_.begin(), entries_.end(),
                                             [](const auto& entry) { return !entry->temporary; });
    // The destructors of a handler's captures may call this table, so handlers are destroyed outside of it.
    // The running handler is destroyed when it returns.
    const std::vector<std::shared_ptr<Entry>> removed(std::make_move_iterator(first),
                                                      std::make_move_iterator(entries_.end()));
    entries_.erase(first, entries_.end());
}

int SignalTable::subscribe(Entry& entry) {
    const SignalMatch& match = entry.match;
    const bool hungBefore = Clock::now() < hangsUntil_;
    const int result = addMatch(entry, hungBefore ? shareOfAHangingBus : 1);
    const bool hangs = result == -ETIMEDOUT;
    hangsUntil_ = hangs ? Clock::now() + impatience : Clock::time_point();
    if (result >= 0) {
        failed_.erase(match);
        return 0;
    }
    log::warn("Cannot subscribe to {} of {}: {}", match.member, match.sender, errnoText(result));
    // A connection that was kept although the bus hangs is also kept for the next subscriptions.
    return !(hungBefore && hangs) && mayPass(result, match) ? result : 0;
}

int SignalTable::addMatch(Entry& entry, uint64_t share) {
    const SignalMatch& match = entry.match;
    const CallLimit limit(bus_, share);
    sd_bus_slot* slot = nullptr;
    const int result =
        sd_bus_match_signal(bus_, &slot, match.sender.c_str(), match.path.c_str(), match.interface.c_str(),
                            match.member.c_str(), &SignalTable::onSignal, &entry);
    entry.slot.reset(slot);
    return result;
}

// Whether the failure costs the connection: one more try per subscription, because the bus has not refused it but had no
// time or no room.
bool SignalTable::mayPass(int result, const SignalMatch& match) {
    return (result == -ETIMEDOUT || result == -ENOBUFS || result == -ENOMEM) &&
           match.path.size() < longestRule && failed_.insert(match).second;
}

int SignalTable::onSignal(sd_bus_message* message, void* entry, sd_bus_error* /*error*/) {
    // The handler may remove its own entry.
    const auto self = static_cast<Entry*>(entry)->shared_from_this();
    MessageDecoder decoder{message};
    runGuarded("signal handler", [&] { self->handler(decoder); });
    return 0;
}

}  // namespace kaz::dbus
