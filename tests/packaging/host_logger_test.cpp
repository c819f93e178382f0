// The library shares the process's one default logger with its host.
#include "base/temporary_folder.h"
#include "doubles/recording_log/recording_log.h"

#include <gtest/gtest.h>
#include <spdlog/spdlog.h>
#include <stdlib.h>
#include <wifi/manager.h>

namespace kaz::wifi {
namespace {

class HostLogger : public testing::Test {
  protected:
    HostLogger() {
        ::setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent", 1);
        ::setenv("KAZ_CONFIG_FILE", (folder_ / "kaz.conf").c_str(), 1);
    }

    TemporaryFolder folder_;
    test::RecordingLog log_;
};

TEST_F(HostLogger, TheHostsLoggerReceivesTheRecordsOfTheLibrary) {
    Manager manager;
    manager.setEnabled(true);
    EXPECT_TRUE(log_.waitForText(spdlog::level::info, "Turning wifi on"));
}

TEST_F(HostLogger, TheHostsLoggerReceivesTheRecordsOfThePlatformLibraries) {
    const Manager manager;
    EXPECT_TRUE(log_.waitForText(spdlog::level::err, "Cannot connect to the system bus"));
}

TEST_F(HostLogger, TheHostsLoggerDecidesWhichLevelsAreLogged) {
    spdlog::default_logger()->set_level(spdlog::level::off);
    {
        Manager manager;
        manager.setEnabled(true);
    }
    EXPECT_EQ(log_.texts(), std::vector<std::string>{});
}

}  // namespace
}  // namespace kaz::wifi
