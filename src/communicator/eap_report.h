#pragma once

#include <wifi/connection_details.h>

#include <string_view>

namespace kaz::wifi {

// What the supplicant's signal "EAP" means; `none` for a status that explains nothing.
Evidence::Eap fromEapStatus(std::string_view status, std::string_view parameter);

}  // namespace kaz::wifi
