#pragma once

namespace kaz::wifi {

// The symbolic name of an IEEE 802.11 status code, or "<unknown>". The text is static and never null. Callable from any
// thread.
const char* ieee80211StatusName(int code);

}  // namespace kaz::wifi
