#include "kazwifictl/text/failure.h"

#include <fmt/format.h>

#include "kazwifictl/text/text_of.h"
#include "kazwifictl/text/unicode.h"
#include "kazwifictl/text/wrapping.h"

namespace kaz::ctl {

std::string errorLine(const Failure& failure) {
    return fmt::format("kazwifictl: {}{}{}{}{}", failure.what, failure.why.empty() ? "" : ": ", failure.why,
                       failure.advice.empty() ? "" : "; try: ", failure.advice);
}

std::string errorText(const Failure& failure, int columns) {
    const std::string line = errorLine(failure);
    if (columns == 0 || columnsOf(line) <= columns) {
        return line;
    }
    if (failure.advice.empty()) {
        return wrapped(line, columns);
    }
    const std::string advice = "try: " + failure.advice;
    const bool command = failure.advice.find(", ") == std::string::npos &&
                         (failure.advice.starts_with("kazwifictl ") ||
                          failure.advice.starts_with("systemctl ") || failure.advice.starts_with("busctl "));
    return wrapped(errorLine({failure.code, failure.what, failure.why, {}}) + ';', columns) + '\n' +
           (command ? advice : wrapped(advice, columns));
}

std::string_view nameOf(ExitCode code) {
    return textOf(code, {{ExitCode::done, "done"},
                         {ExitCode::failed, "failed"},
                         {ExitCode::usage, "usage"},
                         {ExitCode::timedOut, "timed-out"},
                         {ExitCode::noStack, "no-stack"},
                         {ExitCode::notFound, "not-found"},
                         {ExitCode::refused, "refused"}});
}

}  // namespace kaz::ctl
