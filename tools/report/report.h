#pragma once

#include <string>
#include <vector>

#include "doctor/finding.h"
#include "inspection/facts.h"

namespace kaz::report {

// What one needs to find a fault on another's device: findings, versions, states, counters and the last log records. The
// text has no passphrase, key or identity. Names of networks and addresses are replaced by tokens.
// `version` is that of the program.
std::string reportOf(const inspection::Facts& facts, const std::vector<doctor::Finding>& findings,
                     const std::string& version, const std::vector<std::string>& log);

// The log of the daemons for reportOf().
std::vector<std::string> lastLog();

}  // namespace kaz::report
