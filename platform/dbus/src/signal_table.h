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

    // Subscribes all handlers. Returns a negative errno if a subscription should be tried once more on a new
    // connection: the bus did not answer, or had no room. What fails there too stays without signals, until a
    // later connection. A bus that hangs is waited for once per connection; the other subscriptions then wait less.
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
    Clock::time_point hangsUntil_;  // until then the bus may still not answer, as it did not the last time
    std::vector<std::shared_ptr<Entry>> entries_;
    // What could not be subscribed the last time. Not in Entry: after a loss of the connection, users replace their
    // temporary handlers by new ones of the same match.
    std::set<SignalMatch> failed_;
};

}  // namespace kaz::dbus
