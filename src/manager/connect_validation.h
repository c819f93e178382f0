#pragma once

#include <wifi/types.h>

#include <set>
#include <string>

namespace kaz::wifi {

// The verdict on a connect request, from its settings and the methods on offer alone.
ConnectResult validateConnectionSettings(const ConnectionSettings& settings,
                                         const std::set<std::string>& eapMethods,
                                         const std::set<std::string>& phase2Methods);

}  // namespace kaz::wifi
