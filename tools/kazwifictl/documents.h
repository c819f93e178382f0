// The JSON documents that --json writes; docs/kazwifictl.md tells what each member means. Members are only
// ever added; "format" changes when one changes its meaning.
#pragma once

#include <cstdint>
#include <vector>

#include "kazwifictl/attempt.h"
#include "kazwifictl/event.h"
#include "kazwifictl/network_table.h"
#include "kazwifictl/options.h"
#include "kazwifictl/output.h"

namespace kaz::ctl {

// The members of `members` between the head that all documents have and, on failure, "error".
Json document(Command command, const Json& members, const Failure* failure);

// {"ssid": text, "ssid_hex": digits}
Json ssidMembers(const std::string& ssid);
Json networkJson(const NetworkRow& row);
Json networksJson(const std::vector<NetworkRow>& rows);
// `now` serves to tell how long ago the last disconnection was.
Json connectionJson(const wifi::ConnectionInfo& info, Clock::time_point now);
Json stagesJson(const std::vector<Stage>& stages);
std::int64_t inMilliseconds(Clock::duration duration);

}  // namespace kaz::ctl
