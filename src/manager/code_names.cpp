#include "diagnostics/reason_codes.h"
#include "diagnostics/status_codes.h"

#include <wifi/connection_details.h>

namespace kaz::wifi {

const char* reasonCodeName(int code) {
    return ieee80211_get_reason_code_string(code);
}

const char* statusCodeName(int code) {
    return ieee80211StatusName(code);
}

}  // namespace kaz::wifi
