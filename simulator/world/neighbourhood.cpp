#include "simulator/world/neighbourhood.h"

#include "base/hex.h"

#include <algorithm>

namespace kaz::sim {

AccessPoint* Neighbourhood::find(std::string_view bssid) {
    const auto found = std::find_if(accessPoints.begin(), accessPoints.end(),
                                    [&](const AccessPoint& ap) { return ap.bssid == bssid; });
    return found == accessPoints.end() ? nullptr : &*found;
}

const AccessPoint* Neighbourhood::find(std::string_view bssid) const {
    const auto found = std::find_if(accessPoints.begin(), accessPoints.end(),
                                    [&](const AccessPoint& ap) { return ap.bssid == bssid; });
    return found == accessPoints.end() ? nullptr : &*found;
}

std::string Neighbourhood::freeBssid() const {
    for (unsigned number = 1;; ++number) {
        const std::string last =
            toHex(std::string{static_cast<char>(number >> 8U), static_cast<char>(number)});
        std::string bssid = "02:00:00:00:" + last.substr(0, 2) + ":" + last.substr(2);
        if (find(bssid) == nullptr) {
            return bssid;
        }
    }
}

}  // namespace kaz::sim
