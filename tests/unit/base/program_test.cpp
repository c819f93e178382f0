// Child processes, and the folders and pipes that go with them.
#include "base/program.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "base/pipe.h"
#include "base/temporary_folder.h"

namespace kaz::test {
namespace {

// What a program writes, and how it ends. Its standard output is a pipe.
struct ProgramRun {
    explicit ProgramRun(Program program) {
        Pipe pipe;
        program.output = pipe.writing.get();
        const pid_t child = startProgram(program);
        pipe.writing = FileDescriptor();
        std::array<char, 256> piece{};
        for (ssize_t length = 0; (length = ::read(pipe.reading.get(), piece.data(), piece.size())) > 0;) {
            output.append(piece.data(), static_cast<std::size_t>(length));
        }
        int waited = 0;
        EXPECT_EQ(::waitpid(child, &waited, 0), child);
        status = exitStatus(waited);
    }

    std::string output;
    int status = -1;
};

TEST(StartedProgram, WritesToTheGivenDescriptorAndReportsItsStatus) {
    const ProgramRun run({.command = {"sh", "-c", "echo \"$1\"; exit 3", "sh", "two  words"}});
    EXPECT_EQ(run.output, "two  words\n");
    EXPECT_EQ(run.status, 3);
}

TEST(StartedProgram, StatusOfASignalIs128AndItsNumber) {
    EXPECT_EQ(ProgramRun({.command = {"sh", "-c", "kill -9 $$"}}).status, 128 + SIGKILL);
}

TEST(StartedProgram, StatusIs127WhenThereIsNoSuchProgram) {
    const Pipe error;
    EXPECT_EQ(ProgramRun({.command = {"/nonexistent/program"}, .error = error.writing.get()}).status, 127);
}

TEST(StartedProgram, HasOnlyTheGivenEnvironment) {
    ::setenv("KAZ_BASE_TEST", "ours", 1);
    const std::vector<std::string> command{"/bin/sh", "-c", "echo $KAZ_BASE_TEST"};
    EXPECT_EQ(ProgramRun({.command = command}).output, "ours\n");
    EXPECT_EQ(ProgramRun({.command = command, .environment = {{"KAZ_BASE_TEST=given"}}}).output, "given\n");
    EXPECT_EQ(ProgramRun({.command = command, .environment = std::vector<std::string>()}).output, "\n");
    ::unsetenv("KAZ_BASE_TEST");
}

TEST(StartedProgram, BlocksNoSignal) {
    sigset_t all;
    sigset_t former;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &former);
    const ProgramRun run({.command = {"grep", "SigBlk", "/proc/self/status"}});
    ::pthread_sigmask(SIG_SETMASK, &former, nullptr);
    EXPECT_EQ(run.output, "SigBlk:\t0000000000000000\n");
}

TEST(StartedProgram, InheritsOnlyTheDescriptorThatItMay) {
    const Pipe kept;
    const Pipe passed;
    const std::string keptName = std::to_string(kept.reading.get());
    const std::string passedName = std::to_string(passed.reading.get());
    const ProgramRun run(
        {.command = {"sh", "-c", "for d in $1 $2; do test -e /proc/self/fd/$d && echo $d; done", "sh",
                     keptName, passedName},
         .inherited = passed.reading.get()});
    EXPECT_EQ(run.output, passedName + "\n");
}

TEST(StartedProgram, IsInASessionOfItsOwnOnlyOnRequest) {
    const std::vector<std::string> command{"sh", "-c", "cut -d ' ' -f 6 /proc/self/stat"};
    const std::string ours = std::to_string(::getsid(0)) + "\n";
    EXPECT_EQ(ProgramRun({.command = command}).output, ours);
    EXPECT_NE(ProgramRun({.command = command, .newSession = true}).output, ours);
}

TEST(TemporaryFolder, IsRemovedWithItsContentAtTheEndOfItsScope) {
    std::filesystem::path path;
    {
        const TemporaryFolder folder("kaz-base-test-");
        path = folder.path();
        std::filesystem::create_directories(folder / "a/b");
        EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms::owner_all);
    }
    EXPECT_FALSE(std::filesystem::exists(path));
}

}  // namespace
}  // namespace kaz::test
