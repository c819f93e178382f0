// What the panel says about the library's values.
#pragma once

#include <wifi/types.h>

#include <QString>

#include "attempt.h"

// "WPA2"
QString securityInWords(kaz::wifi::SecurityMode mode);

// Why these settings will not do; empty for `ok`.
QString problemInWords(kaz::wifi::ConnectResult verdict, kaz::wifi::SecurityMode mode);

// What a password for this security looks like, before anything is typed.
QString passwordHint(kaz::wifi::SecurityMode mode);

// What went wrong. `name` is the network's; `saved`: the settings were not typed just now.
QString failureInWords(Attempt::Outcome outcome, const QString& name, kaz::wifi::SecurityMode mode,
                       bool saved);
