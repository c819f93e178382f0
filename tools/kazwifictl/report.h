#pragma once

#include <optional>
#include <string>

#include "failure.h"
#include "output.h"

namespace kaz::ctl {

// What came of a command, for both kinds of readers.
struct Report {
    std::string text;
    Json members = Json::object();
    std::optional<Failure> failure;
};

}  // namespace kaz::ctl
