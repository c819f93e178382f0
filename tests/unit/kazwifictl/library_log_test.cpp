#include "kazwifictl/process/library_log.h"

#include <gtest/gtest.h>
#include <spdlog/spdlog.h>

#include <string>

namespace kaz::ctl {
namespace {

TEST(LibraryLog, PicksUpWhatTheLibraryTellsNowhereElse) {
    LibraryLog log(false);
    EXPECT_FALSE(log.hints().noBus);
    spdlog::error("Cannot connect to the system bus: No such file or directory");
    EXPECT_TRUE(log.hints().noBus);
    log.forgetHints();
    EXPECT_FALSE(log.hints().noBus);
}

TEST(LibraryLog, PicksUpWhatTheDaemonsAnswered) {
    LibraryLog log(false);
    spdlog::debug("Dbus path of wpa_supplicant within systemd daemon is /");
    EXPECT_FALSE(log.hints().unitFound);
    spdlog::debug("Dbus path of wpa_supplicant within systemd daemon is /org/freedesktop/systemd1/unit/x");
    EXPECT_TRUE(log.hints().unitFound);
    spdlog::warn(
        "Call of StopUnit at org.freedesktop.systemd1 failed: org.freedesktop.DBus.Error.AccessDenied: no");
    EXPECT_EQ(log.hints().systemdError, "org.freedesktop.DBus.Error.AccessDenied");
    EXPECT_TRUE(log.hints().unitFound);
    spdlog::warn(
        "Call of Get at org.freedesktop.systemd1 failed: System.Error.EIO: at fi.w1.wpa_supplicant1 failed: "
        "x");
    EXPECT_FALSE(log.hints().unitFound) << "its state is not known";
    EXPECT_EQ(log.hints().supplicantError, "");
    spdlog::warn("Call of AddNetwork at fi.w1.wpa_supplicant1 failed: fi.w1.wpa_supplicant1.UnknownError");
    EXPECT_EQ(log.hints().supplicantError, "fi.w1.wpa_supplicant1.UnknownError");
    spdlog::error("wpa_supplicant has no configured interfaces, can't control wifi");
    EXPECT_TRUE(log.hints().noInterface);
    spdlog::error("Lost the connection to the system bus");
    EXPECT_TRUE(log.hints().noBus);
    spdlog::info("Connected to the system bus");
    EXPECT_FALSE(log.hints().noBus);
}

TEST(LibraryLog, IsSilentUnlessVerbose) {
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    {
        const LibraryLog log(false);
        spdlog::error("something went wrong");
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(LibraryLog, ShowsRecordsWithoutTheirEscapeSequences) {
    testing::internal::CaptureStderr();
    {
        const LibraryLog log(true);
        spdlog::debug("Connecting to ssid=\"\x1b[31m\u202eHome\n\"");
    }
    const std::string shown = testing::internal::GetCapturedStderr();
    EXPECT_NE(shown.find(R"(debug    Connecting to ssid="\x1b[31m\u{202e}Home\x0a")"), std::string::npos)
        << shown;
    EXPECT_EQ(shown.find('\x1b'), std::string::npos);
    EXPECT_EQ(std::count(shown.begin(), shown.end(), '\n'), 1);
}

}  // namespace
}  // namespace kaz::ctl
