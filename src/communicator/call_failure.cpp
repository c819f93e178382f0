#include "communicator/call_failure.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kaz::wifi {
namespace {

struct KnownError {
    std::string_view name;
    FailureReason reason;
};

// sd-bus makes "System.Error" of an error number, such as that of a connection that breaks during a call.
constexpr std::array<KnownError, 12> knownErrors{{
    {"org.freedesktop.DBus.Error.Disconnected", FailureReason::noBus},
    {"System.Error.ENOTCONN", FailureReason::noBus},
    {"System.Error.ECONNRESET", FailureReason::noBus},
    {"org.freedesktop.DBus.Error.ServiceUnknown", FailureReason::notOnBus},
    {"org.freedesktop.DBus.Error.NameHasNoOwner", FailureReason::notOnBus},
    {"org.freedesktop.DBus.Error.AccessDenied", FailureReason::denied},
    {"org.freedesktop.DBus.Error.AuthFailed", FailureReason::denied},
    {"org.freedesktop.DBus.Error.InteractiveAuthorizationRequired", FailureReason::denied},
    {"System.Error.EACCES", FailureReason::denied},
    {"System.Error.EPERM", FailureReason::denied},
    {"org.freedesktop.systemd1.NoSuchUnit", FailureReason::unitMissing},
    {"org.freedesktop.systemd1.UnitMasked", FailureReason::unitMasked},
}};

}  // namespace

FailureReason failureReasonOf(const std::string& error) {
    if (error.empty()) {
        return FailureReason::unknown;
    }
    if (dbus::isSilence(error)) {
        return FailureReason::noAnswer;
    }
    const auto* const known = std::find_if(knownErrors.begin(), knownErrors.end(),
                                           [&error](const KnownError& one) { return one.name == error; });
    return known == knownErrors.end() ? FailureReason::refused : known->reason;
}

}  // namespace kaz::wifi
