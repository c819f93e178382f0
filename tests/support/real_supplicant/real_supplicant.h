#pragma once

#include <string>

namespace kaz::test {

// Why this machine cannot run wpa_supplicant on a wire; empty if it can. From 2.11 on Debian's wpa_supplicant ends at
// the start where the kernel has no nl80211, with every driver. Asked once per process, because the answer takes as long as a test.
const std::string& whyNoRealSupplicant();

}  // namespace kaz::test
