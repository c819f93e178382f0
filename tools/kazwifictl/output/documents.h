// The JSON documents that --json writes; docs/kazwifictl.md tells what each member means. Members are only
// ever added; "format" changes when one changes its meaning.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "kazwifictl/output/output.h"
#include "kazwifictl/text/network_table.h"

namespace kaz::ctl {

// The members of `members` between the head that all documents have and, on failure, "error".
Json document(std::string_view command, const Json& members, const Failure* failure);

// {"ssid": text, "ssid_hex": digits}
Json ssidMembers(const std::string& ssid);
Json networkJson(const NetworkRow& row);
Json networksJson(const std::vector<NetworkRow>& rows);
// `now` serves to tell how long ago the last disconnection was.
Json connectionJson(const wifi::ConnectionInfo& info, std::chrono::steady_clock::time_point now);
std::int64_t inMilliseconds(std::chrono::steady_clock::duration duration);

}  // namespace kaz::ctl
