#include "doubles/fake_metrics/fake_metrics.h"

#include "base/journal.h"

#include <kaz/metrics/metrics_reporter_factory.h>

#include <memory>
#include <ostream>
#include <utility>

namespace kaz::test {
namespace {

struct Record {
    Journal<GaugeReport> reports;
    Journal<std::string> creations;
};

Record& record() {
    static Record instance;
    return instance;
}

class FakeGauge final : public metrics_reporting::Gauge {
  public:
    explicit FakeGauge(std::string name) : name_(std::move(name)) {}

    void set(double value) override { record().reports.add({name_, value}); }

  private:
    std::string name_;
};

std::shared_ptr<metrics_reporting::Gauge> create(const char* operation, const std::string& name) {
    record().creations.add(std::string(operation) + '(' + name + ')');
    return std::make_shared<FakeGauge>(name);
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const GaugeReport& report) {
    return out << report.name << " = " << report.value;
}

std::vector<GaugeReport> takeGaugeReports() {
    return record().reports.take();
}

std::vector<std::string> takeGaugeCreations() {
    return record().creations.take();
}

}  // namespace kaz::test

namespace kaz::metrics_reporting {

Gauge::~Gauge() = default;

MetricsReporterFactory::MetricsReporterFactory() = default;
// Out of line like the real one, which has its reasons.
// NOLINTNEXTLINE(modernize-use-equals-default)
MetricsReporterFactory::~MetricsReporterFactory() {}

std::shared_ptr<Gauge> MetricsReporterFactory::createGauge(const std::string& name) {
    return test::create("createGauge", name);
}

std::shared_ptr<Gauge> MetricsReporterFactory::createSampledGauge(const std::string& name) {
    return test::create("createSampledGauge", name);
}

}  // namespace kaz::metrics_reporting
