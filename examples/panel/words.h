// The panel's texts for the library's values.
#pragma once

#include <wifi/certificates.h>
#include <wifi/connection_details.h>
#include <wifi/network_access.h>
#include <wifi/types.h>

#include <QString>

#include "attempt.h"

// "WPA2"; for a network that this device cannot join, what it asks for.
QString securityInWords(const kaz::wifi::NetworkAccess& access);

// Why this device cannot join the network, and what would help; empty if it can.
QString obstacleInWords(const kaz::wifi::NetworkAccess& access);

// Why these settings are invalid; empty for `ok`.
QString problemInWords(kaz::wifi::ConnectResult verdict, kaz::wifi::SecurityMode mode);

// What of the server is not verified; empty when it is.
QString serverRemarkInWords(const kaz::wifi::Certificates& certificates);

// The form of a password for this security, shown while the field is empty.
QString passwordHint(kaz::wifi::SecurityMode mode);

// The problem. `name` is the network's; `why` is the library's record of a failure or loss.
QString failureInWords(Attempt::Outcome outcome, const kaz::wifi::Outcome& why, const QString& name);
