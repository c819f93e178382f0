#pragma once

#include <string>
#include <string_view>

#include "kazwifictl/exit_code.h"

namespace kaz::ctl {

// Why a command did not do what it was asked for. The three texts are fit to be shown: an SSID in them has
// gone through presentable().
struct Failure {
    ExitCode code = ExitCode::failed;
    std::string what;    // "cannot connect to \"Home\""
    std::string why;     // "its password is wrong"
    std::string advice;  // what to try: "type it again"; may be empty
};

// One line without a line break: "kazwifictl: WHAT: WHY; try: ADVICE".
std::string errorLine(const Failure& failure);

// "failed", "usage", "timed-out", "no-stack", "not-found", "refused"; "done" for no failure.
std::string_view nameOf(ExitCode code);

}  // namespace kaz::ctl
