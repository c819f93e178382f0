#include "kazwifictl/prompt/completion.h"

#include "kazwifictl/input/options.h"
#include "kazwifictl/text/network_table.h"
#include "kazwifictl/text/ssid_text.h"
#include "kazwifictl/text/words.h"

namespace kaz::ctl {
namespace {

std::vector<std::string> ssids(const Snapshot& view, bool savedOnly) {
    std::vector<std::string> names;
    for (const NetworkRow& row : networkRows(view.networks, view.connection.info)) {
        if (isPlain(row.ssid) && (row.saved || !savedOnly)) {
            names.push_back(row.ssid);
        }
    }
    return names;
}

std::vector<std::string> candidates(const std::vector<std::string>& before, std::string_view start,
                                    const Snapshot& view) {
    if (before.empty()) {
        std::vector<std::string> names = commandNames();
        names.insert(names.end(), {"help", "quit"});
        return names;
    }
    if (start.starts_with('-')) {
        return optionNames(before.front());
    }
    if (before.front() == "help") {
        return before.size() == 1 ? commandNames() : std::vector<std::string>();
    }
    if (before.back() == "--for") {
        return {"on", "off", "connected", "disconnected"};
    }
    if (before.back() == "--security") {
        return {securityWords.begin(), securityWords.end()};
    }
    if (before.front() == "connect" || before.front() == "forget") {
        return ssids(view, before.front() == "forget");
    }
    return {};
}

}  // namespace

std::vector<std::string> completions(const std::vector<std::string>& before, std::string_view start,
                                     const Snapshot& view) {
    std::vector<std::string> result = candidates(before, start, view);
    std::erase_if(result, [&](const std::string& each) { return !each.starts_with(start); });
    return result;
}

}  // namespace kaz::ctl
