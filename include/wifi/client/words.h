/// @file
/// The library's values in words for people, with a place for translations. In the library kazwifi-client.
#pragma once

#include <wifi/connection_details.h>
#include <wifi/network_access.h>
#include <wifi/types.h>

#include <functional>
#include <string>
#include <vector>

namespace kaz::wifi::client {

/// Turns values into short clauses, such as "the password is wrong", to be put after "Cannot connect to Home: ".
///
/// A clause begins with a small letter, has no full stop, and never contains an SSID, a key or an identity. All
/// operations may be called from any thread if the translator may.
class Words {
  public:
    /// Returns the text in the user's language. It is called with one of texts() as it stands; where that has {}, the
    /// translation must have it too.
    using Translator = std::function<std::string(const std::string& english)>;

    /// Without a translator the words are English.
    explicit Words(Translator translator = {});

    /// Why a connection or an attempt ended; what is not certain is said as probable. Empty for Cause::none.
    std::string cause(const Outcome& outcome) const;

    /// What the user can do about it; empty if there is nothing to do.
    std::string advice(const Outcome& outcome) const;

    /// The rule that the settings break. Empty for `ok`. `mode` is that of the settings.
    std::string verdict(ConnectResult verdict, SecurityMode mode) const;

    /// How a network is protected: "WPA2 personal".
    std::string security(SecurityMode mode) const;

    /// The same of a network in range. For one that this device cannot join, what it asks for: "Enhanced Open".
    std::string security(const NetworkAccess& access) const;

    /// What would let this device join the network; empty if it can, or if nothing is known.
    std::string advice(const NetworkAccess& access) const;

    /// The stage of the connection: "getting an address".
    std::string status(ConnectionInfo::Status status) const;

    /// All English texts, each once: what a catalogue of translations must have.
    static std::vector<std::string> texts();

  private:
    std::string in(const char* english) const;
    std::string in(const char* english, const std::string& argument) const;

    Translator translator_;
};

}  // namespace kaz::wifi::client
