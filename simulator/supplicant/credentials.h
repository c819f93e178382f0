#pragma once

#include "simulator/supplicant/network_config.h"
#include "simulator/world/access_point.h"

namespace kaz::sim {

// Whether the network's settings match the access point's kind of security.
bool suits(const NetworkConfig& network, const AccessPoint& accessPoint);

enum class Admission {
    granted,
    refusedAtAuthentication,  // SAE and WEP: before the association
    refusedAtHandshake,       // a pre-shared key: the four-way handshake does not complete
    serverNotTrusted,         // EAP: the network refuses the server's certificate
    refusedByServer,          // EAP
};

// The access point's verdict on the network's keys. Requires that their kinds of security match.
Admission admission(const NetworkConfig& network, const AccessPoint& accessPoint);

// The connection's key management, with the name of CurrentAuthMode.
std::string authMode(const NetworkConfig& network, const AccessPoint& accessPoint);

}  // namespace kaz::sim
