#include <gmock/gmock.h>
#include <kaz/metrics/metrics_reporter_factory.h>

#include <atomic>
#include <cmath>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace kaz::metrics_reporting {
namespace {

// All tests of a process share one registry, so each test uses different names.
std::optional<Sample> sampleOf(const std::string& name) {
    for (const Sample& sample : MetricsReporterFactory::snapshot()) {
        if (sample.name == name) {
            return sample;
        }
    }
    return std::nullopt;
}

TEST(Gauges, HaveNoReportsAtFirst) {
    MetricsReporterFactory factory;
    EXPECT_EQ(sampleOf("fresh"), std::nullopt);
    const auto gauge = factory.createGauge("fresh");
    EXPECT_EQ(sampleOf("fresh"), (Sample{"fresh", 0, 0}));
}

TEST(Gauges, KeepTheLastValueAndCountAllReports) {
    MetricsReporterFactory factory;
    const auto gauge = factory.createGauge("counted");
    gauge->set(-52);
    EXPECT_EQ(sampleOf("counted"), (Sample{"counted", -52, 1}));
    gauge->set(7.5);
    gauge->set(7.5);
    EXPECT_EQ(sampleOf("counted"), (Sample{"counted", 7.5, 3}));
    gauge->set(std::numeric_limits<double>::quiet_NaN());
    EXPECT_TRUE(std::isnan(sampleOf("counted")->value));
}

TEST(Gauges, OfOneNameAreOneWhicheverWayTheyWereCreated) {
    MetricsReporterFactory factory;
    const auto gauge = factory.createGauge("shared");
    EXPECT_EQ(factory.createGauge("shared"), gauge);
    EXPECT_EQ(factory.createSampledGauge("shared"), gauge);
    EXPECT_EQ(MetricsReporterFactory().createGauge("shared"), gauge);
    EXPECT_NE(factory.createSampledGauge("Shared"), gauge);
}

TEST(Gauges, OutliveTheirFactoryAndRememberTheirReports) {
    auto factory = std::make_unique<MetricsReporterFactory>();
    auto gauge = factory->createSampledGauge("outliving");
    factory.reset();
    gauge->set(1);
    gauge.reset();
    EXPECT_EQ(sampleOf("outliving"), (Sample{"outliving", 1, 1}));
    MetricsReporterFactory().createGauge("outliving")->set(2);
    EXPECT_EQ(sampleOf("outliving"), (Sample{"outliving", 2, 2}));
}

TEST(Gauges, AreListedInTheOrderOfTheirCreation) {
    MetricsReporterFactory factory;
    const std::vector<std::string> names{"order.z", "order.a", "order.m"};
    for (const auto& name : names) {
        factory.createGauge(name);
    }
    factory.createGauge("order.z");
    std::vector<std::string> listed;
    for (const Sample& sample : MetricsReporterFactory::snapshot()) {
        if (sample.name.starts_with("order.")) {
            listed.push_back(sample.name);
        }
    }
    EXPECT_EQ(listed, names);
}

TEST(Gauges, WithoutAFileStartNoThread) {
    const auto threadCount = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
    };
    const auto before = threadCount();
    MetricsReporterFactory().createGauge("no.thread")->set(1);
    EXPECT_EQ(threadCount(), before);
}

TEST(Gauges, AreCreatedSetAndReadByAnyThread) {
    constexpr int threadCount = 4;
    constexpr int reports = 2000;
    std::atomic<bool> done = false;
    std::atomic<int> wrong = 0;
    std::thread reader([&] {
        while (!done) {
            for (const Sample& sample : MetricsReporterFactory::snapshot()) {
                const bool valueWithoutReport = sample.reports == 0 && sample.value != 0;
                const bool reportWithoutValue = sample.reports != 0 && sample.value == 0;
                wrong += sample.name == "threads" && (valueWithoutReport || reportWithoutValue) ? 1 : 0;
            }
        }
    });
    std::vector<std::thread> threads;
    for (int number = 1; number <= threadCount; ++number) {
        threads.emplace_back([number] {
            MetricsReporterFactory factory;
            for (int report = 0; report < reports; ++report) {
                factory.createGauge("threads")->set(number);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    done = true;
    reader.join();
    EXPECT_EQ(sampleOf("threads")->reports, threadCount * reports);
    EXPECT_THAT(sampleOf("threads")->value, ::testing::AllOf(::testing::Ge(1), ::testing::Le(threadCount)));
    EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace kaz::metrics_reporting
