#pragma once

#include <wifi/certificates.h>
#include <wifi/types.h>

#include <set>
#include <string>

namespace kaz::wifi {

// The verdict on connection settings, given the available methods.
ConnectResult validateConnectionSettings(const ConnectionSettings& settings,
                                         const std::set<std::string>& eapMethods,
                                         const std::set<std::string>& phase2Methods);

// Whether D-Bus can carry every text of valid settings. No rule of connect() demands it.
bool isSendable(const ConnectionSettings& settings, const Certificates& certificates);

}  // namespace kaz::wifi
