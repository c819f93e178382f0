#include "platform/metrics/gauge_registry.h"
#include "platform/metrics/exposition/file_writer.h"
#include "platform/metrics/exposition/text_format.h"

#include <spdlog/spdlog.h>
#include <stdlib.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <system_error>

namespace kaz::metrics_reporting {
namespace {

// Null if nothing is written. An absolute path, because the host may change its working folder.
std::unique_ptr<FileWriter> configuredWriter(FileWriter::Render render) {
    const char* file = ::secure_getenv("KAZ_METRICS_FILE");
    if (file == nullptr || *file == '\0') {
        return nullptr;
    }
    std::error_code noWorkingFolder;
    const auto absolute = std::filesystem::absolute(file, noWorkingFolder);
    return std::make_unique<FileWriter>(noWorkingFolder ? file : absolute, std::chrono::seconds(1),
                                        std::move(render));
}

// Closes the registry when the process exits. This object is created when the library is loaded, so its
// destructor runs after the destructors of static objects in programs that use the library.
class Exit : NonCopyable {
  public:
    // The writer's thread logs until it is joined, so the logger must be older, that is, be destroyed later.
    Exit() { spdlog::default_logger_raw(); }
    ~Exit() { GaugeRegistry::instance().close(); }
};

const Exit exitOfProcess;

}  // namespace

class GaugeRegistry::CountingGauge final : public Gauge {
  public:
    CountingGauge(std::string name, FileWriter* writer) : name_(std::move(name)), writer_(writer) {}

    void set(double value) override {
        value_.store(value, std::memory_order_relaxed);
        reports_.fetch_add(1, std::memory_order_release);
        if (writer_ != nullptr) {
            writer_->noteChange();
        }
    }

    const std::string& name() const noexcept { return name_; }

    Sample sample() const {
        // The count first: if there is a count, there is a value.
        const auto reports = reports_.load(std::memory_order_acquire);
        return {name_, value_.load(std::memory_order_relaxed), reports};
    }

  private:
    const std::string name_;
    FileWriter* const writer_;
    std::atomic<double> value_ = 0;
    std::atomic<std::uint64_t> reports_ = 0;
};

GaugeRegistry& GaugeRegistry::instance() {
    static auto* const registry = new GaugeRegistry;
    return *registry;
}

GaugeRegistry::GaugeRegistry() : writer_(configuredWriter([this] { return toPrometheusText(snapshot()); })) {}

GaugeRegistry::~GaugeRegistry() = default;

std::shared_ptr<Gauge> GaugeRegistry::gauge(const std::string& name) {
    const std::lock_guard lock(mutex_);
    const auto known = std::find_if(gauges_.begin(), gauges_.end(),
                                    [&](const auto& gauge) { return gauge->name() == name; });
    if (known != gauges_.end()) {
        return *known;
    }
    return gauges_.emplace_back(std::make_shared<CountingGauge>(name, writer_.get()));
}

std::vector<Sample> GaugeRegistry::snapshot() const {
    const std::lock_guard lock(mutex_);
    std::vector<Sample> samples;
    samples.reserve(gauges_.size());
    for (const auto& gauge : gauges_) {
        samples.push_back(gauge->sample());
    }
    return samples;
}

void GaugeRegistry::close() noexcept {
    if (writer_) {
        writer_->close();
    }
}

}  // namespace kaz::metrics_reporting
