#pragma once

#include "simulator/supplicant/network_config.h"
#include "simulator/world/access_point.h"

namespace kaz::sim {

// Whether the network's settings fit the kind of security that the access point offers.
bool suits(const NetworkConfig& network, const AccessPoint& accessPoint);

enum class Admission {
    granted,
    refusedAtAuthentication,  // SAE and WEP: before there is an association
    refusedAtHandshake,       // a pre-shared key: the four-way handshake never ends
    refusedByServer,          // EAP
};

// What the access point makes of the network's keys. They suit one another.
Admission admission(const NetworkConfig& network, const AccessPoint& accessPoint);

// The connection's key management as CurrentAuthMode names it.
std::string authMode(const NetworkConfig& network, const AccessPoint& accessPoint);

}  // namespace kaz::sim
