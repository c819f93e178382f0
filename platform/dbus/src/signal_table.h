#pragma once

#include <kaz/dbus/message.h>

#include <compare>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "base/non_copyable.h"
#include "platform/dbus/clock.h"
#include "platform/dbus/handles.h"

namespace kaz::dbus {

struct SignalMatch {
    std::string sender;
    std::string path;
    std::string interface;
    std::string member;

    // NOLINTNEXTLINE(modernize-use-nullptr): clang-tidy 14 takes the zero in the generated comparison for a pointer
    std::strong_ordering operator<=>(const SignalMatch&) const = default;
};

// The handlers of bus signals. They outlive a connection: on the next one they are subscribed again. Handlers
// may add and remove handlers; sd-bus calls a new handler only for later signals.
class SignalTable : NonCopyable {
  public:
    using Handler = std::function<void(MessageDecoder&)>;

    // Subscribes all handlers. Returns a negative errno if the bus did not answer or had no room: then the
    // subscription should be retried once on a new connection. If the retry fails too, the handler gets no signals
    // until a later connection. After a subscription that timed out, the next ones have a shorter timeout.
    int attach(sd_bus* bus);
    void detach() noexcept;

    // Subscribes the handler if there is a connection. Closes the connection where attach() would return an error.
    void add(SignalMatch match, bool temporary, Handler handler);
    void removeTemporary();

  private:
    struct Entry;

    static int onSignal(sd_bus_message* message, void* entry, sd_bus_error* error);
    int subscribe(Entry& entry);
    int addMatch(Entry& entry, uint64_t share);
    bool mayPass(int result, const SignalMatch& match);

    sd_bus* bus_ = nullptr;
    Clock::time_point hangsUntil_;  // after a timeout: until then, subscriptions have a shorter timeout
    std::vector<std::shared_ptr<Entry>> entries_;
    // The matches whose last subscription failed. Not in Entry: after a loss of the connection, users replace their
    // temporary handlers by new ones with the same match.
    std::set<SignalMatch> failed_;
};

}  // namespace kaz::dbus
