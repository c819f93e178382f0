#include "manager/eap_methods.h"

#include <algorithm>
#include <iterator>

namespace kaz::wifi {

std::set<std::string> usableEapMethods(const std::set<std::string>& offered) {
    static const std::set<std::string> candidates{"PEAP", "TTLS", "MSCHAPV2", "PWD"};
    std::set<std::string> usable;
    std::set_intersection(candidates.begin(), candidates.end(), offered.begin(), offered.end(),
                          std::inserter(usable, usable.end()));
    return usable;
}

const std::set<std::string>& phase2Methods() {
    static const std::set<std::string> methods{"MSCHAPV2", "GTC", "MSCHAP", "PAP"};
    return methods;
}

}  // namespace kaz::wifi
