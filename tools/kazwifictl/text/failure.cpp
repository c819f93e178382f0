#include "kazwifictl/text/failure.h"

#include <fmt/format.h>

#include "kazwifictl/text/text_of.h"

namespace kaz::ctl {

std::string errorLine(const Failure& failure) {
    return fmt::format("kazwifictl: {}{}{}{}{}", failure.what, failure.why.empty() ? "" : ": ", failure.why,
                       failure.advice.empty() ? "" : "; try: ", failure.advice);
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
