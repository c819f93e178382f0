#include "kazwifictl/process/library_log.h"

#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>

#include <cstdio>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "kazwifictl/text/ssid_text.h"

namespace kaz::ctl {
namespace {

// The name of the D-Bus error in "Call of MEMBER at SERVICE failed: NAME: TEXT". Nothing in another record.
std::optional<std::string> errorFrom(std::string_view service, std::string_view record) {
    const std::string from = " at " + std::string(service) + " failed: ";
    const std::size_t at = record.find(from);
    if (!record.starts_with("Call of ") || at == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view rest = record.substr(at + from.size());
    return std::string(rest.substr(0, rest.find(':')));
}

void learn(LibraryLog::Hints& hints, std::string_view record) {
    if (record.starts_with("Cannot connect to the system bus") ||
        record.starts_with("Lost the connection to the system bus")) {
        hints.noBus = true;
    } else if (record.starts_with("Connected to the system bus")) {
        hints = {};
    } else if (record.starts_with("wpa_supplicant has no configured interfaces") ||
               record.starts_with("wpa_supplicant has removed the interface in use")) {
        hints.noInterface = true;
    } else if (record.starts_with("Dbus path of wpa_supplicant within systemd daemon is /org/")) {
        hints.unitFound = true;
    } else if (const auto fromSystemd = errorFrom("org.freedesktop.systemd1", record)) {
        hints.systemdError = *fromSystemd;
        hints.unitFound = hints.unitFound && !record.starts_with("Call of Get ");
    } else if (const auto fromSupplicant = errorFrom("fi.w1.wpa_supplicant1", record)) {
        hints.supplicantError = *fromSupplicant;
    }
}

}  // namespace

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
        learn(hints_, {message.payload.data(), message.payload.size()});
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
