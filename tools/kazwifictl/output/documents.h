// The JSON documents that --json writes; docs/kazwifictl.md describes each member. Members may be added, but
// are never removed. "format" changes when the meaning of a member changes.
#pragma once

#include <wifi/connection_details.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "kazwifictl/output/output.h"
#include "kazwifictl/text/network_table.h"

namespace kaz::ctl {

// The document of a command: the members that all documents have, then `members`, then "error" on failure. Without a
// name, "command" is null.
Json document(std::string_view command, const Json& members, const Failure* failure);

// {"ssid": text, "ssid_hex": digits}
Json ssidMembers(const std::string& ssid);
Json networkJson(const NetworkRow& row);
Json networksJson(const std::vector<NetworkRow>& rows);
// `now` is needed for the age of the last disconnection.
Json connectionJson(const wifi::ConnectionDetails& details, std::chrono::steady_clock::time_point now);
std::int64_t inMilliseconds(std::chrono::steady_clock::duration duration);
double inSeconds(std::chrono::steady_clock::duration duration);

}  // namespace kaz::ctl
