#include "base/log.h"
#include "doubles/recording_log/recording_log.h"

#include <gtest/gtest.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace kaz::test {

// Counts how often it is turned into text.
struct Counted {
    int* times;
};

}  // namespace kaz::test

template <>
struct fmt::formatter<kaz::test::Counted> : fmt::formatter<fmt::string_view> {
    auto format(const kaz::test::Counted& counted, fmt::format_context& context) const {
        ++*counted.times;
        return fmt::formatter<fmt::string_view>::format("counted", context);
    }
};

namespace kaz::test {
namespace {

namespace level = spdlog::level;

// Gives the process its logger back.
class Log : public ::testing::Test {
  protected:
    ~Log() override { spdlog::set_default_logger(former_); }

  private:
    std::shared_ptr<spdlog::logger> former_ = spdlog::default_logger();
};

TEST_F(Log, GoesToTheLoggerOfTheMomentAtItsLevel) {
    const RecordingLog recorded;
    log::debug("{} of {}", 1, std::string("four"));
    log::info("braces {{}}");
    log::warn("{}", "a text with {} in it");
    log::error("no argument");
    EXPECT_EQ(recorded.records(), (RecordingLog::Records{{level::debug, "1 of four"},
                                                         {level::info, "braces {}"},
                                                         {level::warn, "a text with {} in it"},
                                                         {level::err, "no argument"}}));
    const RecordingLog later;
    log::info("later");
    EXPECT_EQ(recorded.records().size(), 4U);
    EXPECT_EQ(later.records(), (RecordingLog::Records{{level::info, "later"}}));
}

TEST_F(Log, MakesNoTextForALevelThatIsOff) {
    const RecordingLog recorded;
    int times = 0;
    spdlog::default_logger()->set_level(level::warn);
    log::debug("{}", Counted{&times});
    log::info("{}", Counted{&times});
    EXPECT_EQ(times, 0);
    EXPECT_EQ(recorded.records().size(), 0U);
    log::warn("{}", Counted{&times});
    EXPECT_EQ(times, 1);
    EXPECT_EQ(recorded.texts(level::warn), std::vector<std::string>{"counted"});
}

TEST_F(Log, KeepsWhatIsBelowTheLevelForABacktrace) {
    const RecordingLog recorded;
    spdlog::default_logger()->set_level(level::warn);
    spdlog::default_logger()->enable_backtrace(8);
    log::debug("what came before");
    EXPECT_FALSE(recorded.contains("what came before"));
    spdlog::default_logger()->dump_backtrace();
    EXPECT_TRUE(recorded.contains("what came before"));
}

TEST_F(Log, IsDroppedWhenTheHostHasShutItsLoggingDown) {
    spdlog::set_default_logger(nullptr);
    log::debug("{}", 1);
    log::info("{}", 2);
    log::warn("{}", 3);
    log::error("{}", 4);
    const RecordingLog recorded;
    log::error("{}", 5);
    EXPECT_EQ(recorded.records(), (RecordingLog::Records{{level::err, "5"}}));
}

class ThrowingSink : public spdlog::sinks::base_sink<std::mutex> {
  public:
    int asked = 0;

  protected:
    void sink_it_(const spdlog::details::log_msg& /*message*/) override {
        ++asked;
        throw 1;
    }
    void flush_() override {}
};

TEST_F(Log, SurvivesASinkThatThrows) {
    const auto sink = std::make_shared<ThrowingSink>();
    spdlog::set_default_logger(std::make_shared<spdlog::logger>("throwing", sink));
    log::error("first");
    log::error("second");
    EXPECT_EQ(sink->asked, 2);
}

TEST_F(Log, CanBeReplacedWhileItIsWritten) {
    std::atomic<bool> ended = false;
    std::atomic<int> written = 0;
    std::thread writer([&] {
        while (!ended) {
            log::info("{}", written.load());
            ++written;
        }
    });
    for (int replaced = 0; replaced < 1000 || written < 1000; ++replaced) {
        spdlog::set_default_logger(replaced % 2 == 0
                                       ? nullptr
                                       : std::make_shared<spdlog::logger>(
                                             "short-lived", std::make_shared<spdlog::sinks::null_sink_mt>()));
    }
    ended = true;
    writer.join();
    EXPECT_GE(written, 1000);
}

}  // namespace
}  // namespace kaz::test
