#include "support/call_log/call_log.h"

#include "support/waiting/waiting.h"

#include <algorithm>

namespace kaz::test {

bool CallLog::waitFor(const std::function<bool(const Calls&)>& predicate) const {
    return waitUntil(predicate, timeLimit);
}

bool CallLog::waitForCall(std::string_view part) const {
    return waitFor([&](const Calls& calls) {
        return std::any_of(calls.begin(), calls.end(),
                           [&](const std::string& call) { return call.find(part) != std::string::npos; });
    });
}

}  // namespace kaz::test
