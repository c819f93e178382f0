#pragma once

#include "dbus/call_record.h"

#include <wifi/failure_reason.h>

#include <string>

namespace kaz::wifi {

// What the name of a D-Bus error says.
FailureReason failureReasonOf(const std::string& error);

// Why the last call that failed has failed; `none` if none did.
inline FailureReason lastFailureOf(const dbus::CallRecord& record) {
    return record.failure ? failureReasonOf(*record.failure) : FailureReason::none;
}

}  // namespace kaz::wifi
