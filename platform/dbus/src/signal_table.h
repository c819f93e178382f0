#pragma once

#include <kaz/dbus/message.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/non_copyable.h"
#include "platform/dbus/handles.h"

namespace kaz::dbus {

struct SignalMatch {
    std::string sender;
    std::string path;
    std::string interface;
    std::string member;
};

// The handlers of bus signals. They outlive a connection: on the next one they are subscribed again. Handlers
// may add and remove handlers; sd-bus calls a new handler only for later signals.
class SignalTable : NonCopyable {
  public:
    using Handler = std::function<void(MessageDecoder&)>;

    SignalTable() = default;
    ~SignalTable();

    // Subscribes all handlers. Returns a negative errno if a subscription should be tried once more on a new connection:
    // the bus did not answer, or had no room. A handler that fails there too stays without signals.
    int attach(sd_bus* bus);
    void detach() noexcept;

    // In that case it closes the connection.
    void add(SignalMatch match, bool temporary, Handler handler);
    void removeTemporary();

  private:
    struct Entry;

    static int onSignal(sd_bus_message* message, void* entry, sd_bus_error* error);
    static int subscribe(sd_bus* bus, Entry& entry);

    sd_bus* bus_ = nullptr;
    std::vector<std::shared_ptr<Entry>> entries_;
};

}  // namespace kaz::dbus
