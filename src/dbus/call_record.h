#pragma once

#include <optional>
#include <string>

namespace kaz::dbus {

// How the calls to one daemon ended.
struct CallRecord {
    bool silent = false;  // the last call had no reply in time
    // The name of the D-Bus error of the last call that failed; empty if the platform does not tell it.
    std::optional<std::string> failure;
};

// Whether an error of this name means that a call had no reply in time.
bool isSilence(const std::string& error);

}  // namespace kaz::dbus
