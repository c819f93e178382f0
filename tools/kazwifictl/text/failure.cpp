#include "kazwifictl/text/failure.h"

#include <fmt/format.h>

namespace kaz::ctl {

std::string errorLine(const Failure& failure) {
    std::string line = fmt::format("kazwifictl: {}", failure.what);
    if (!failure.why.empty()) {
        line += ": " + failure.why;
    }
    if (!failure.advice.empty()) {
        line += "; try: " + failure.advice;
    }
    return line;
}

std::string_view nameOf(ExitCode code) {
    switch (code) {
        case ExitCode::done:
            return "done";
        case ExitCode::failed:
            return "failed";
        case ExitCode::usage:
            return "usage";
        case ExitCode::timedOut:
            return "timed-out";
        case ExitCode::noStack:
            return "no-stack";
        case ExitCode::notFound:
            return "not-found";
        case ExitCode::refused:
            return "refused";
    }
    return "failed";
}

}  // namespace kaz::ctl
