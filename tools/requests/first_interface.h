#pragma once

#include <functional>
#include <string>

#include "inspection/bus_queries.h"

namespace kaz::requests {

inline constexpr const char* supplicantService = "fi.w1.wpa_supplicant1";
inline constexpr const char* interfaceType = "fi.w1.wpa_supplicant1.Interface";

// Asks for the interface that the supplicant uses first. Calls one of the handlers: with its path, or with why there is
// none.
void askFirstInterface(inspection::BusQueries& queries, const std::function<void(const std::string&)>& found,
                       const std::function<void(const std::string&)>& failed);

}  // namespace kaz::requests
