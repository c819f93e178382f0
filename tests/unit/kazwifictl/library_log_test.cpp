#include "kazwifictl/process/library_log.h"

#include <gtest/gtest.h>
#include <spdlog/spdlog.h>

#include <string>

namespace kaz::ctl {
namespace {

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
