#include "kazwifictl/process/library_log.h"

#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>

#include <cstdio>
#include <mutex>
#include <string>
#include <string_view>

#include "kazwifictl/text/ssid_text.h"

namespace kaz::ctl {
class LibraryLog::Sink final : public spdlog::sinks::base_sink<std::mutex> {
  public:
    explicit Sink(bool verbose) : verbose_(verbose) { set_pattern_("%H:%M:%S.%e  %-7l  %v"); }

    Hints hints() {
        const std::lock_guard lock(mutex_);
        return hints_;
    }

    void forgetHints() {
        const std::lock_guard lock(mutex_);
        hints_ = {};
    }

  protected:
    void sink_it_(const spdlog::details::log_msg& message) override {
        const std::string_view text(message.payload.data(), message.payload.size());
        hints_.noBus |= text.starts_with("Cannot connect to the system bus");
        if (verbose_) {
            show(message);
        }
    }
    void flush_() override {}

  private:
    void show(const spdlog::details::log_msg& message) {
        spdlog::memory_buf_t buffer;
        formatter_->format(message, buffer);
        std::string_view line(buffer.data(), buffer.size());
        line.remove_suffix(line.empty() ? 0 : 1);  // the line break
        // Records contain SSIDs with all their bytes, so also with terminal escape sequences.
        const std::string shown = harmless(line, true) + '\n';
        static_cast<void>(std::fwrite(shown.data(), 1, shown.size(), stderr));
    }

    bool verbose_;
    Hints hints_;
};

LibraryLog::LibraryLog(bool verbose) : sink_(std::make_shared<Sink>(verbose)) {
    auto logger = std::make_shared<spdlog::logger>("kazwifictl", sink_);
    logger->set_level(spdlog::level::debug);
    spdlog::set_default_logger(std::move(logger));
}

LibraryLog::~LibraryLog() {
    spdlog::set_default_logger(std::make_shared<spdlog::logger>("silent"));
}

LibraryLog::Hints LibraryLog::hints() const {
    return sink_->hints();
}

void LibraryLog::forgetHints() {
    sink_->forgetHints();
}

}  // namespace kaz::ctl
