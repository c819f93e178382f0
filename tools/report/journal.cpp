#include "report/journal.h"

#include <systemd/sd-journal.h>

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <memory>
#include <string_view>

#include "base/errno_text.h"

namespace kaz::report {
namespace {

struct Close {
    void operator()(sd_journal* journal) const noexcept { sd_journal_close(journal); }
};

std::string field(sd_journal* journal, const std::string& name) {
    const void* data = nullptr;
    std::size_t size = 0;
    if (sd_journal_get_data(journal, name.c_str(), &data, &size) < 0) {
        return {};
    }
    return std::string(static_cast<const char*>(data), size).substr(name.size() + 1);
}

std::string timeOf(sd_journal* journal) {
    std::uint64_t microseconds = 0;
    sd_journal_get_realtime_usec(journal, &microseconds);
    const auto seconds = static_cast<std::time_t>(microseconds / 1000000);
    std::tm time{};
    std::string text(sizeof "2026-11-23 05:00:00", '\0');
    ::gmtime_r(&seconds, &time);
    text.resize(std::strftime(text.data(), text.size(), "%F %T", &time));
    return text;
}

}  // namespace

inspection::Fact<std::vector<std::string>> lastRecords(const std::vector<std::string>& units,
                                                       std::size_t most) {
    sd_journal* opened = nullptr;
    const int result = sd_journal_open(&opened, SD_JOURNAL_LOCAL_ONLY);
    const std::unique_ptr<sd_journal, Close> journal(opened);
    if (result < 0) {
        return inspection::Unknown{inspection::Obstacle::failed, errnoText(result)};
    }
    for (const std::string& unit : units) {
        const std::string match = "_SYSTEMD_UNIT=" + unit;
        sd_journal_add_match(journal.get(), match.data(), match.size());
    }
    std::vector<std::string> lines;
    sd_journal_seek_tail(journal.get());
    while (lines.size() < most && sd_journal_previous(journal.get()) > 0) {
        lines.push_back(timeOf(journal.get()) + ' ' + field(journal.get(), "SYSLOG_IDENTIFIER") + ": " +
                        field(journal.get(), "MESSAGE"));
    }
    std::reverse(lines.begin(), lines.end());
    return lines;
}

}  // namespace kaz::report
