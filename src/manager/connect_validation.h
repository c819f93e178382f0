#pragma once

#include <wifi/types.h>

#include <set>
#include <string>

namespace kaz::wifi {

// The verdict on connection settings, given the available methods.
ConnectResult validateConnectionSettings(const ConnectionSettings& settings,
                                         const std::set<std::string>& eapMethods,
                                         const std::set<std::string>& phase2Methods);

}  // namespace kaz::wifi
