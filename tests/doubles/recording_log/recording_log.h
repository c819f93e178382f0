#pragma once

#include "base/non_copyable.h"

#include <spdlog/common.h>

#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace spdlog {
class logger;
}

namespace kaz::test {

struct LogRecord {
    spdlog::level::level_enum level = spdlog::level::off;
    std::string text;  // the message without time and level

    friend bool operator==(const LogRecord&, const LogRecord&) = default;
};

inline LogRecord debug(std::string text) {
    return {spdlog::level::debug, std::move(text)};
}
inline LogRecord info(std::string text) {
    return {spdlog::level::info, std::move(text)};
}
inline LogRecord warning(std::string text) {
    return {spdlog::level::warn, std::move(text)};
}
inline LogRecord error(std::string text) {
    return {spdlog::level::err, std::move(text)};
}

// Prints `warning: "text"`, for failure messages.
std::ostream& operator<<(std::ostream& out, const LogRecord& record);

// The process's default logger while this object lives; its destructor restores the former one. Keeps every
// record of every level, in order. Any thread may log and read. Create and destroy it while no other thread
// logs.
class RecordingLog : NonCopyable {
  public:
    using Records = std::vector<LogRecord>;

    RecordingLog();
    ~RecordingLog();

    Records records() const;
    std::vector<std::string> texts() const;
    std::vector<std::string> texts(spdlog::level::level_enum level) const;

    // Whether the text of any record contains `part`.
    bool contains(std::string_view part) const;

    // Blocks until the predicate is true for the records so far. Returns false on timeout.
    bool waitFor(const std::function<bool(const Records&)>& predicate) const;

    // Blocks until there is a record of this level whose text contains `part`. Returns false on timeout.
    bool waitForText(spdlog::level::level_enum level, std::string_view part) const;

    void clear();

  private:
    class Sink;
    std::shared_ptr<Sink> sink_;
    std::shared_ptr<spdlog::logger> former_;
};

}  // namespace kaz::test
