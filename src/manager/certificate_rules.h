#pragma once

#include "manager/eap_methods.h"

#include <wifi/certificates.h>
#include <wifi/types.h>

#include <string>

namespace kaz::wifi {

// The verdict on connection settings with certificates, given the EAP methods that are available.
ConnectResult validateWithCertificates(const ConnectionSettings& settings, const Certificates& certificates,
                                       const AcceptedMethods& available);

// The EAP methods that the supplicant may use, separated by blanks. Empty: any that it has.
//
// With certificates that are used, it may use only methods that verify the server's certificate. The server proposes the
// method, and could otherwise propose one that hands it the password.
std::string eapMethodsToAllow(const ConnectionSettings& settings, const Certificates& certificates,
                              const AcceptedMethods& available);

}  // namespace kaz::wifi
