#pragma once

#include "dbus/call_record.h"
#include "dbus/message_io.h"
#include "dbus/reply.h"
#include "dbus/variant.h"

#include <kaz/dbus/calls.h>
#include <systemd/sd-bus.h>

#include <string>

namespace kaz::dbus {

// One interface of one object of a service. Every operation is a blocking call on the loop thread and returns
// the reply, or none on failure. A call without a bus or a path, or with an argument that cannot be sent,
// fails and sends nothing. No call starts a service. Create a RemoteObject for each call, because it does not
// keep the connection alive.
class RemoteObject {
  public:
    // Each call writes into the record, if given.
    RemoteObject(sd_bus* bus, MessageEndpoint endpoint, CallRecord* record = nullptr);

    template <typename... Arguments>
    Reply call(const char* member, const Arguments&... arguments) const {
        MessageBuilder builder = makeDbusCall(bus_, endpoint_, member);
        (write(builder, arguments), ...);
        return send(builder);
    }

    // A call with secrets in its arguments. The message is wiped when it is freed, but not the memory that
    // sd-bus frees when a message grows. An error text may repeat an argument, so it is not logged if the
    // platform supports that.
    template <typename... Arguments>
    Reply callWithSecrets(const char* member, const Arguments&... arguments) const {
        MessageBuilder builder = makeDbusCall(bus_, endpoint_, member);
        markSecret(builder);
        (write(builder, arguments), ...);
        return send(builder);
    }

    // The reply contains the value in a variant.
    Reply get(const char* property) const;

    // Returns true if the service accepted the value.
    bool set(const char* property, const Variant& value) const;

  private:
    static void markSecret(MessageBuilder& builder);
    Reply send(MessageBuilder& builder) const;
    Reply notSent(const char* error) const;

    sd_bus* bus_;
    MessageEndpoint endpoint_;
    CallRecord* record_;
};

}  // namespace kaz::dbus
