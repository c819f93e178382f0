// The content of a process's file after its end.
#include "base/temporary_folder.h"
#include "support/files/files.h"
#include "support/process/child_process.h"

#include <gmock/gmock.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <set>
#include <string>

namespace kaz::test {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

class MetricsAtExit : public ::testing::Test {
  protected:
    const TemporaryFolder& folder() const { return folder_; }
    fs::path file() const { return folder_ / "metrics.prom"; }
    fs::path output() const { return folder_ / "output"; }

    // Runs the program and returns its exit status. Its output, the log, goes to a file. With another real group than
    // the effective one, the kernel treats it as a program with raised privileges.
    int run(const char* way, const std::string& metricsFile, gid_t group = ::getgid()) const {
        ChildProcess child([&] {
            if (::setresgid(group, ::getegid(), ::getegid()) != 0) {
                return notPermitted;
            }
            fs::current_path(folder_.path());
            ::setenv("KAZ_METRICS_FILE", metricsFile.c_str(), 1);
            if (::freopen(output().c_str(), "w", stdout) == nullptr) {
                return 98;
            }
            ::execl(KAZ_REPORTING_PROGRAM, KAZ_REPORTING_PROGRAM, way, nullptr);
            return 97;
        });
        return child.wait();
    }

    int run(const char* way) const { return run(way, file()); }

    static constexpr int notPermitted = 77;

    void expectInFile(const std::string& line) const {
        EXPECT_THAT(readFile(file()), HasSubstr('\n' + line + '\n'));
    }

  private:
    TemporaryFolder folder_;
};

constexpr const char* twoGauges =
    "# HELP program_first Last value reported to program.first.\n"
    "# TYPE program_first gauge\n"
    "program_first 1\n"
    "# HELP program_first_reports_total Number of reports to program.first.\n"
    "# TYPE program_first_reports_total counter\n"
    "program_first_reports_total 1\n"
    "# HELP program_second Last value reported to program.second.\n"
    "# TYPE program_second gauge\n"
    "program_second 2\n"
    "# HELP program_second_reports_total Number of reports to program.second.\n"
    "# TYPE program_second_reports_total counter\n"
    "program_second_reports_total 2\n"
    "# HELP program_silent_reports_total Number of reports to program.silent.\n"
    "# TYPE program_silent_reports_total counter\n"
    "program_silent_reports_total 0\n";

TEST_F(MetricsAtExit, EveryReportIsInTheFile) {
    EXPECT_EQ(run("return from main"), 0);
    EXPECT_EQ(readFile(file()), twoGauges);
    EXPECT_EQ(contentOf(folder()), (std::set<std::string>{"metrics.prom", "output"}));
    EXPECT_EQ(readFile(output()), "");
}

TEST_F(MetricsAtExit, ReportsOfStaticObjectsBeingDestroyedAreInTheFile) {
    EXPECT_EQ(run("report while static objects are destroyed"), 0);
    EXPECT_THAT(readFile(file()), ::testing::StartsWith(twoGauges));
    expectInFile("program_last 3");
}

TEST_F(MetricsAtExit, TheFirstReportMayBeMadeByAStaticObjectBeingDestroyed) {
    EXPECT_EQ(run("report only while static objects are destroyed"), 0);
    expectInFile("program_last 3");
}

TEST_F(MetricsAtExit, WithoutAReportThereIsNoFile) {
    EXPECT_EQ(run("create only"), 0);
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(MetricsAtExit, ThreadsThatGoOnReportingDoNoHarm) {
    // A leak check reports false leaks while threads run.
    ::setenv("LSAN_OPTIONS", "detect_leaks=0", 1);
    EXPECT_EQ(run("exit while threads report"), 0);
    ::unsetenv("LSAN_OPTIONS");
    expectInFile("program_first 1");
}

TEST_F(MetricsAtExit, ARelativePathIsTakenFromTheFirstWorkingFolder) {
    EXPECT_EQ(run("leave the working folder", "metrics.prom"), 0);
    expectInFile("program_first 1");
}

TEST_F(MetricsAtExit, AnEmptyPathIsNone) {
    EXPECT_EQ(run("start no thread", ""), 0);
    EXPECT_EQ(run("start no thread"), 1) << "with a path there is a thread, so the check can fail";
}

TEST_F(MetricsAtExit, AProgramWithRaisedPrivilegesWritesNoFile) {
    const int status = run("return from main", file(), 12345);
    if (status == notPermitted) {
        GTEST_SKIP() << "only root may have another group";
    }
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(MetricsAtExit, AFileThatCannotBeWrittenIsOneWarning) {
    EXPECT_EQ(run("return from main", "/nonexistent/metrics.prom"), 0);
    const std::string text = readFile(output());
    constexpr const char* warning = "Couldn't write metrics to /nonexistent/metrics.prom: ";
    EXPECT_THAT(text, HasSubstr(warning));
    EXPECT_EQ(text.find(warning), text.rfind(warning));
}

TEST_F(MetricsAtExit, AHostThatShutItsLoggingDownEndsWell) {
    EXPECT_EQ(run("shut logging down", "/nonexistent/metrics.prom"), 0);
    EXPECT_EQ(run("shut logging down"), 0);
    expectInFile("program_first 1");
}

TEST_F(MetricsAtExit, AForkedChildLeavesTheFileToItsParent) {
    EXPECT_EQ(run("fork and exit"), 0);
    expectInFile("program_first 2");
    expectInFile("program_first_reports_total 2");
}

}  // namespace
}  // namespace kaz::test
