#pragma once

#include <wifi/types.h>

#include <set>
#include <string>

// Returns what Manager::connect would return for these settings. Manager::connect connects at once when they are
// valid, so validation during typing repeats the rules of ConnectResult here. tests/examples/panel compares the two.
kaz::wifi::ConnectResult checkSettings(const kaz::wifi::ConnectionSettings& settings,
                                       const std::set<std::string>& eapMethods,
                                       const std::set<std::string>& phase2Methods);
