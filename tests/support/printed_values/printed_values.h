#pragma once

#include "communicator/communicator.h"

#include <wifi/types.h>

#include <iosfwd>

// How GoogleTest prints these values in a failure: enumerators by name, records by field. Include this header in every
// source of a program that compares such values.
namespace kaz::wifi {

void PrintTo(SecurityMode mode, std::ostream* out);
void PrintTo(UISecurityMode mode, std::ostream* out);
void PrintTo(ConnectResult verdict, std::ostream* out);
void PrintTo(ConnectionInfo::Status status, std::ostream* out);
void PrintTo(ConnectionInfo::DisconnectReason reason, std::ostream* out);
void PrintTo(Communicator::SupplicantConnectionStatus status, std::ostream* out);
void PrintTo(Communicator::PropertyChange change, std::ostream* out);

void PrintTo(const ConnectionInfo& info, std::ostream* out);
void PrintTo(const WifiNetwork& network, std::ostream* out);

}  // namespace kaz::wifi
