#pragma once

#include <set>
#include <string>

namespace kaz::wifi {

// The methods that connect() accepts.
struct AcceptedMethods {
    std::set<std::string> plain;
    std::set<std::string> withCertificates;  // all of them verify the server's certificate
};

// Those of the methods that the supplicant offers.
AcceptedMethods usableEapMethods(const std::set<std::string>& offered);

// The inner methods that connect() accepts, whatever the supplicant offers.
const std::set<std::string>& phase2Methods();

}  // namespace kaz::wifi
