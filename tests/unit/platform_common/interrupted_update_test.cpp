// A writer that is killed before and after each of its system calls.
#include <sys/ptrace.h>
#include <sys/wait.h>

#include <csignal>
#include <stdexcept>

#include "config_fixture.h"

namespace kaz::test {
namespace {

// A process that is stopped before and after each system call it makes.
class SteppedProcess {
  public:
    explicit SteppedProcess(const std::function<bool()>& body) : pid_(::fork()) {
        if (pid_ == 0) {
            ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
            ::raise(SIGSTOP);
            ::_exit(body() ? 0 : 1);
        }
        int status = 0;
        if (pid_ < 0 || ::waitpid(pid_, &status, 0) != pid_ || !WIFSTOPPED(status)) {
            throw std::runtime_error("cannot trace a process");
        }
    }
    ~SteppedProcess() {
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
    }
    SteppedProcess(const SteppedProcess&) = delete;
    SteppedProcess& operator=(const SteppedProcess&) = delete;
    SteppedProcess(SteppedProcess&&) = delete;
    SteppedProcess& operator=(SteppedProcess&&) = delete;

    // Lets it run to its next stop. False when it ended, which it must have done well.
    bool step() {
        int status = 0;
        ::ptrace(PTRACE_SYSCALL, pid_, nullptr, nullptr);
        ::waitpid(pid_, &status, 0);
        if (WIFSTOPPED(status)) {
            return true;
        }
        pid_ = -1;
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "status " << status;
        return false;
    }

  private:
    pid_t pid_;
};

class ConfigInterrupted : public ConfigFixture {
  protected:
    // Kills an update after so many steps. False when it ended before that.
    static bool updateAndKillAfter(int steps) {
        SteppedProcess writer([] { return util::updateKazConfig("wifi", "off"); });
        for (int step = 0; step < steps; ++step) {
            if (!writer.step()) {
                return false;
            }
        }
        return true;
    }
};

TEST_F(ConfigInterrupted, LeavesTheOldFileOrTheNewOneAtEveryStep) {
    const std::string before = "# a comment\nvolume=7\nwifi=on\nname=x\n";
    const std::string after = "# a comment\nvolume=7\nwifi=off\nname=x\n";
    int steps = 0;
    int oldFiles = 0;
    int newFiles = 0;
    for (bool killed = true; killed && !HasFailure(); ++steps) {
        SCOPED_TRACE(steps);
        write(before);
        killed = updateAndKillAfter(steps);
        const std::string left = text();
        EXPECT_TRUE(left == before || left == after) << left;
        (left == before ? oldFiles : newFiles)++;
        // Whatever it left behind is in nobody's way.
        EXPECT_TRUE(util::updateKazConfig("volume", "8"));
        EXPECT_EQ(util::readKazConfig().at("volume"), "8");
        EXPECT_EQ(folder().content(), (std::set<std::string>{"kaz.conf", "kaz.conf.lock"}));
    }
    // The writer was really stepped through, and the change shows somewhere on the way.
    EXPECT_GT(steps, 20);
    EXPECT_GT(oldFiles, 10);
    EXPECT_GT(newFiles, 1);
}

TEST_F(ConfigInterrupted, CreatesTheFileWholeOrNotAtAll) {
    for (int steps = 0;; ++steps) {
        SCOPED_TRACE(steps);
        std::filesystem::remove(file());
        const bool killed = updateAndKillAfter(steps);
        const bool created = std::filesystem::exists(file());
        EXPECT_TRUE(!created || text() == "wifi=off\n") << text();
        if (!killed || HasFailure()) {
            EXPECT_TRUE(created);
            break;
        }
    }
}

}  // namespace
}  // namespace kaz::test
