#include "base/log.h"

#include <spdlog/spdlog.h>

#include <iterator>

namespace kaz::log {
namespace {

spdlog::level::level_enum spdlogLevel(Level level) {
    switch (level) {
        case Level::debug:
            return spdlog::level::debug;
        case Level::info:
            return spdlog::level::info;
        case Level::warn:
            return spdlog::level::warn;
        case Level::error:
            break;
    }
    return spdlog::level::err;
}

}  // namespace

void write(Level level, fmt::string_view format, fmt::format_args arguments) noexcept {
    try {
        // Keep the logger alive while it is used: another thread may replace it meanwhile.
        const auto logger = spdlog::default_logger();
        if (logger && (logger->should_log(spdlogLevel(level)) || logger->should_backtrace())) {
            fmt::memory_buffer text;
            fmt::vformat_to(std::back_inserter(text), format, arguments);
            logger->log(spdlogLevel(level), spdlog::string_view_t(text.data(), text.size()));
        }
    } catch (...) {
        // There is no way to report this.
    }
}

void flush() noexcept {
    try {
        if (const auto logger = spdlog::default_logger()) {
            logger->flush();
        }
    } catch (...) {
        // There is no way to report this.
    }
}

}  // namespace kaz::log
