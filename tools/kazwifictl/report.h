#pragma once

#include <optional>
#include <string>

#include "kazwifictl/failure.h"
#include "kazwifictl/output.h"

namespace kaz::ctl {

// What came of a command, for both kinds of readers.
struct Report {
    std::string text;
    Json members = Json::object();
    std::optional<Failure> failure;
};

}  // namespace kaz::ctl
