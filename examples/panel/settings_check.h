#pragma once

#include <wifi/types.h>

#include <set>
#include <string>

// What Manager::connect would say about these settings. It says so itself, but connects at once when they pass; to
// tell somebody who is still typing, the rules beside ConnectResult are repeated here. tests/examples/panel compares
// the two.
kaz::wifi::ConnectResult checkSettings(const kaz::wifi::ConnectionSettings& settings,
                                       const std::set<std::string>& eapMethods,
                                       const std::set<std::string>& phase2Methods);
