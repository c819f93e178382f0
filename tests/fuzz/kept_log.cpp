#include "fuzz/kept_log.h"

#include <spdlog/details/null_mutex.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>

#include <memory>

namespace kaz::fuzz {

class KeptLog::Sink final : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
  public:
    explicit Sink(std::vector<std::string>& texts) : texts_(texts) {}

  private:
    void sink_it_(const spdlog::details::log_msg& record) override {
        const auto level = spdlog::level::to_string_view(record.level);
        texts_.push_back(std::string(level.data(), level.size()) + ": " +
                         std::string(record.payload.data(), record.payload.size()));
    }
    void flush_() override {}

    std::vector<std::string>& texts_;
};

KeptLog::KeptLog() {
    auto logger = std::make_shared<spdlog::logger>("", std::make_shared<Sink>(texts_));
    logger->set_level(spdlog::level::trace);
    spdlog::set_default_logger(std::move(logger));
}

KeptLog& KeptLog::instance() {
    static auto* const log = new KeptLog;  // lives as long as the logger: to the very end
    return *log;
}

}  // namespace kaz::fuzz
