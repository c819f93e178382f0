#pragma once

namespace kaz::wifi {

// The symbolic name of an IEEE 802.11 reason code, "<unknown>" for a code without one. The text is static,
// never null. Callable from any thread.
const char* ieee80211_get_reason_code_string(int code);

}  // namespace kaz::wifi
