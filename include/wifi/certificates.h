/// @file
/// How an enterprise network's server proves who it is, and how this device does so without a password.
#pragma once

#include <string>

namespace kaz::wifi {

/// What a caller passes to Manager::connect beside the settings of an enterprise network. An empty member is not
/// used. For other networks all of it is ignored.
///
/// Without `caFile` the server is not verified: any access point with the same SSID gets the identity and the exchange
/// that proves the password, or the password itself. With `caFile` but without `serverDomain`, everybody who has a
/// server certificate of that CA is trusted. With a CA for the public this is everybody.
///
/// Files: the supplicant opens them at every attempt, with its own rights and in its own mount namespace. The library
/// never opens them, so a file that is missing or unreadable shows as a failed attempt. They must stay in place as long
/// as the network is configured. A path is absolute and has at most 900 bytes.
struct Certificates {
    std::string caFile;  ///< the CA certificates to trust, PEM or DER
    std::string
        serverDomain;  ///< the server's certificate must be for this domain or one below it, for example
                       ///< "example.org" for "radius.example.org"; several are separated by semicolons
    std::string clientFile;   ///< this device's certificate, PEM or DER; empty if `keyFile` contains it
    std::string keyFile;      ///< this device's private key, PEM or DER, or PKCS#12 with the certificate
    std::string keyPassword;  ///< of `keyFile`; empty: it is not encrypted
};

}  // namespace kaz::wifi
