#include "kazwifictl/process/library_log.h"

#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>

#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "kazwifictl/text/ssid_text.h"

namespace kaz::ctl {
namespace {

class Sink final : public spdlog::sinks::base_sink<std::mutex> {
  public:
    Sink() { set_pattern_("%H:%M:%S.%e  %-7l  %v"); }

  protected:
    void sink_it_(const spdlog::details::log_msg& message) override {
        spdlog::memory_buf_t buffer;
        formatter_->format(message, buffer);
        std::string_view line(buffer.data(), buffer.size());
        line.remove_suffix(line.empty() ? 0 : 1);  // the line break
        // Records contain SSIDs with all their bytes, so also with terminal escape sequences.
        const std::string shown = harmless(line, true) + '\n';
        static_cast<void>(std::fwrite(shown.data(), 1, shown.size(), stderr));
    }
    void flush_() override {}
};

}  // namespace

LibraryLog::LibraryLog(bool verbose) {
    auto logger = verbose ? std::make_shared<spdlog::logger>("kazwifictl", std::make_shared<Sink>())
                          : std::make_shared<spdlog::logger>("silent");
    logger->set_level(verbose ? spdlog::level::debug : spdlog::level::off);
    spdlog::set_default_logger(std::move(logger));
}

LibraryLog::~LibraryLog() {
    spdlog::set_default_logger(std::make_shared<spdlog::logger>("silent"));
}

}  // namespace kaz::ctl
