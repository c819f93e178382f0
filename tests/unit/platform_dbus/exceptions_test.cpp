#include <spdlog/logger.h>
#include <spdlog/sinks/sink.h>
#include <spdlog/spdlog.h>

#include <vector>

#include "unit/platform_dbus/loop_fixture.h"

namespace kaz::test {
namespace {

struct Throwing {
    const char* what;
    std::function<void()> run;
    const char* expected;  // the end of the record
};

const std::vector<Throwing>& throwings() {
    static const std::vector<Throwing> all{
        {"a standard exception", [] { throw std::runtime_error("out of luck"); }, ": out of luck"},
        {"an int", [] { throw 42; }, "an unknown type from "},
    };
    return all;
}

class EventLoopExceptions : public LoopTest {
  protected:
    bool logged(const Throwing& throwing, const std::string& where) {
        const bool found = log.waitFor([&](const RecordingLog::Records& records) {
            for (const LogRecord& record : records) {
                if (record.level == spdlog::level::err &&
                    record.text.find(throwing.expected) != std::string::npos &&
                    record.text.find("from " + where) != std::string::npos) {
                    return true;
                }
            }
            return false;
        });
        log.clear();
        return found;
    }

    Counter survived;
};

TEST_F(EventLoopExceptions, FromATaskAreLoggedAndTheNextTaskRuns) {
    const Running running = start();
    for (const Throwing& throwing : throwings()) {
        loop->pushTaskAsync(throwing.run);
        EXPECT_TRUE(logged(throwing, "task")) << throwing.what;
        onLoop([] {});
    }
}

TEST_F(EventLoopExceptions, FromAHandlerAreLoggedAndTheNextSignalIsHandled) {
    BusPeer peer{peerName};
    const Running running = start();
    for (const Throwing& throwing : throwings()) {
        registerForChanged(true, [&](dbus::MessageDecoder&) {
            ++survived;
            throwing.run();
        });
        const auto before = survived.value();
        peer.emit(changed, "");
        EXPECT_TRUE(logged(throwing, "signal handler")) << throwing.what;
        peer.emit(changed, "");
        EXPECT_TRUE(survived.reaches(before + 2)) << throwing.what;
        EXPECT_TRUE(logged(throwing, "signal handler")) << throwing.what;
        onLoop([this] { loop->removeTemporarySignalHandlersSync(); });
    }
}

TEST_F(EventLoopExceptions, FromTheIdleTaskAreLoggedAndItRunsAgainAfterTheNextEvent) {
    const Running running = start();
    for (const Throwing& throwing : throwings()) {
        onLoop([&] {
            loop->setIdleTaskSync([&]() -> std::optional<milliseconds> {
                throwing.run();
                return milliseconds(0);
            });
        });
        EXPECT_TRUE(logged(throwing, "idle task")) << throwing.what;
        EXPECT_TRUE(fallsAsleep(loopThread())) << throwing.what;
        log.clear();
        onLoop([] {});
        EXPECT_TRUE(logged(throwing, "idle task")) << throwing.what;
    }
    loop->setIdleTaskSync({});
}

TEST_F(EventLoopExceptions, FromTheTimerTaskAreLoggedAndTheTimerGoesOn) {
    const Running running = start();
    for (const Throwing& throwing : throwings()) {
        onLoop([&] {
            loop->setTimerCompletedTask([&] {
                ++survived;
                throwing.run();
            });
            loop->configureTimerSync(true, milliseconds(5));
        });
        const auto before = survived.value();
        EXPECT_TRUE(survived.reaches(before + 2)) << throwing.what;
        onLoop([&] { loop->configureTimerSync(false, milliseconds(0)); });
        EXPECT_TRUE(logged(throwing, "timer task")) << throwing.what;
    }
}

TEST_F(EventLoopExceptions, FromTheLastIdlePassAreLogged) {
    for (const Throwing& throwing : throwings()) {
        loop = std::make_unique<dbus::EventLoop>();
        loop->startEventLoopAsync();
        onLoop([&] {
            loop->setIdleTaskSync([&]() -> std::optional<milliseconds> {
                throwing.run();
                return std::nullopt;
            });
            loop->stopEventLoopAsync();
        });
        end();
        EXPECT_TRUE(logged(throwing, "idle task")) << throwing.what;
    }
}

TEST_F(EventLoopExceptions, OfAnEmptyTaskAreLogged) {
    const Running running = start();
    loop->pushTaskAsync({});
    EXPECT_TRUE(log.waitForText(spdlog::level::err, "bad_function_call"));
    onLoop([] {});
}

// What spdlog does not catch: an exception of an unknown type.
class ThrowingSink final : public spdlog::sinks::sink {
  public:
    explicit ThrowingSink(Counter& counter) : thrown_(counter) {}
    void log(const spdlog::details::log_msg& /*message*/) override {
        ++thrown_;
        throw 1;
    }
    void flush() override {}
    void set_pattern(const std::string& /*pattern*/) override {}
    void set_formatter(std::unique_ptr<spdlog::formatter> /*formatter*/) override {}

  private:
    Counter& thrown_;
};

TEST_F(EventLoopExceptions, EndInTheLoopAlsoWhenLoggingThemThrows) {
    Counter thrown;
    const auto former = spdlog::default_logger();
    auto logger = std::make_shared<spdlog::logger>("throwing", std::make_shared<ThrowingSink>(thrown));
    logger->set_error_handler([](const std::string&) {});
    spdlog::set_default_logger(logger);
    const Running running = start();
    for (const Throwing& throwing : throwings()) {
        const auto before = thrown.value();
        loop->pushTaskAsync(throwing.run);
        EXPECT_TRUE(thrown.reaches(before + 1)) << throwing.what;
        onLoop([] {});
    }
    end();
    spdlog::set_default_logger(former);
}

TEST_F(EventLoopExceptions, EndInTheLoopAlsoWhenThereIsNoLogger) {
    const auto former = spdlog::default_logger();
    spdlog::set_default_logger(nullptr);
    const Running running = start();
    for (const Throwing& throwing : throwings()) {
        loop->pushTaskAsync(throwing.run);
    }
    onLoop([this] { ++survived; });
    end();
    spdlog::set_default_logger(former);
    EXPECT_EQ(survived.value(), 1U);
}

}  // namespace
}  // namespace kaz::test
