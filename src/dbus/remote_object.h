#pragma once

#include "dbus/message_io.h"
#include "dbus/reply.h"
#include "dbus/variant.h"

#include <kaz/dbus/calls.h>
#include <systemd/sd-bus.h>

#include <string>

namespace kaz::dbus {

// One interface of one object of a service. Every operation is a blocking call on the loop thread; its
// outcome is the reply, or none. A call with an argument that cannot be sent fails without being made, and so does
// every call without a bus or a path. No call starts a service. Made for the moment of the call: it does not keep the
// connection.
class RemoteObject {
  public:
    RemoteObject(sd_bus* bus, MessageEndpoint endpoint);

    template <typename... Arguments>
    Reply call(const char* member, const Arguments&... arguments) const {
        MessageBuilder builder = makeDbusCall(bus_, endpoint_, member);
        (write(builder, arguments), ...);
        return send(builder);
    }

    // A call whose arguments hold secrets: the message is wiped when it is freed, and the text of an error, which may
    // repeat an argument, is kept out of the platform's log as far as that can. What sd-bus leaves behind when a
    // message grows while it is written is not wiped.
    template <typename... Arguments>
    Reply callWithSecrets(const char* member, const Arguments&... arguments) const {
        MessageBuilder builder = makeDbusCall(bus_, endpoint_, member);
        markSecret(builder);
        (write(builder, arguments), ...);
        return send(builder);
    }

    // The reply holds the value in a variant.
    Reply get(const char* property) const;

    // True when the new value was accepted.
    bool set(const char* property, const Variant& value) const;

  private:
    static void markSecret(MessageBuilder& builder);
    Reply send(MessageBuilder& builder) const;

    sd_bus* bus_;
    MessageEndpoint endpoint_;
};

}  // namespace kaz::dbus
