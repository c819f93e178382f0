#include "manager/eap_methods.h"

#include <algorithm>
#include <iterator>

namespace kaz::wifi {
namespace {

std::set<std::string> inBoth(const std::set<std::string>& a, const std::set<std::string>& b) {
    std::set<std::string> both;
    std::set_intersection(a.begin(), a.end(), b.begin(), b.end(), std::inserter(both, both.end()));
    return both;
}

}  // namespace

AcceptedMethods usableEapMethods(const std::set<std::string>& offered) {
    static const std::set<std::string> plain{"PEAP", "TTLS", "MSCHAPV2", "PWD"};
    static const std::set<std::string> withCertificates{"PEAP", "TTLS", "TLS"};
    return {inBoth(plain, offered), inBoth(withCertificates, offered)};
}

const std::set<std::string>& phase2Methods() {
    static const std::set<std::string> methods{"MSCHAPV2", "GTC", "MSCHAP", "PAP"};
    return methods;
}

}  // namespace kaz::wifi
