#include "doubles/recording_log/recording_log.h"

#include "base/journal.h"
#include "support/waiting/waiting.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/sink.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <ostream>

namespace kaz::test {
namespace {

bool has(const LogRecord& record, std::string_view part) {
    return record.text.find(part) != std::string::npos;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const LogRecord& record) {
    const auto level = spdlog::level::to_string_view(record.level);
    return out << std::string_view(level.data(), level.size()) << ": \"" << record.text << '"';
}

class RecordingLog::Sink final : public spdlog::sinks::sink {
  public:
    void log(const spdlog::details::log_msg& message) override {
        records.add({message.level, std::string(message.payload.data(), message.payload.size())});
    }
    void flush() override {}
    void set_pattern(const std::string& /*pattern*/) override {}
    void set_formatter(std::unique_ptr<spdlog::formatter> /*formatter*/) override {}

    Journal<LogRecord> records;
};

RecordingLog::RecordingLog() : sink_(std::make_shared<Sink>()), former_(spdlog::default_logger()) {
    auto logger = std::make_shared<spdlog::logger>("recording", sink_);
    logger->set_level(spdlog::level::trace);
    spdlog::set_default_logger(std::move(logger));
}

RecordingLog::~RecordingLog() {
    spdlog::set_default_logger(former_);
}

RecordingLog::Records RecordingLog::records() const {
    return sink_->records.entries();
}

std::vector<std::string> RecordingLog::texts() const {
    std::vector<std::string> result;
    for (LogRecord& record : sink_->records.entries()) {
        result.push_back(std::move(record.text));
    }
    return result;
}

std::vector<std::string> RecordingLog::texts(spdlog::level::level_enum level) const {
    std::vector<std::string> result;
    for (LogRecord& record : sink_->records.entries()) {
        if (record.level == level) {
            result.push_back(std::move(record.text));
        }
    }
    return result;
}

bool RecordingLog::contains(std::string_view part) const {
    const Records all = sink_->records.entries();
    return std::any_of(all.begin(), all.end(), [&](const LogRecord& record) { return has(record, part); });
}

bool RecordingLog::waitFor(const std::function<bool(const Records&)>& predicate) const {
    return sink_->records.waitUntil(predicate, timeLimit);
}

bool RecordingLog::waitForText(spdlog::level::level_enum level, std::string_view part) const {
    return waitFor([&](const Records& records) {
        return std::any_of(records.begin(), records.end(), [&](const LogRecord& record) {
            return record.level == level && has(record, part);
        });
    });
}

void RecordingLog::clear() {
    sink_->records.take();
}

}  // namespace kaz::test
