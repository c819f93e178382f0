#pragma once

#include <systemd/sd-bus.h>

#include <memory>
#include <string>

namespace kaz::dbus {

/// The address of a remote object.
struct MessageEndpoint {
    std::string destination;  ///< bus name
    std::string path;         ///< of the object
    std::string interface;    ///< of the member to be called
};

/// A method call under construction: the message, null if it could not be created, and whether all arguments
/// were appended so far. For the loop thread only.
class [[gnu::visibility("default")]] MessageBuilder {
  public:
    /// Takes over the caller's reference on `message`.
    explicit MessageBuilder(sd_bus_message * message) noexcept;

    /// The message, null if it could not be created. The builder keeps its reference.
    sd_bus_message* message() const noexcept {
        return message_.get();
    }

    /// Records that an argument could not be appended. The first text is kept.
    void fail(std::string error);
    /// Whether all arguments could be appended so far.
    bool ok() const noexcept {
        return error_.empty();
    }
    /// The first text that was given to fail().
    const std::string& error() const noexcept {
        return error_;
    }

    /// The arguments contain a secret: the text of an error reply, which may repeat an argument, is not
    /// logged. This does not wipe the message's memory; call sd_bus_message_sensitive() for that.
    void markSensitive() noexcept;
    /// Whether markSensitive() was called.
    bool sensitive() const noexcept {
        return sensitive_;
    }

  private:
    struct Unref {
        void operator()(sd_bus_message* message) const noexcept { sd_bus_message_unref(message); }
    };

    std::unique_ptr<sd_bus_message, Unref> message_;
    std::string error_;
    bool sensitive_ = false;
};

/// A received message that is being read. The record does not own the message. The caller of sendMessage()
/// releases the reply with sd_bus_message_unref(). The loop releases the signal that it passes to a handler.
struct MessageDecoder {
    sd_bus_message* message = nullptr;  ///< null when the call failed
    bool ok = true;                     ///< false after a failed read
};

}  // namespace kaz::dbus
