// Processes that write one file at once and are killed.
#include "base/non_copyable.h"
#include "support/process/child_process.h"
#include "support/waiting/waiting.h"
#include "unit/platform_common/config_fixture.h"
#include "unit/platform_common/stepped_process.h"

#include <fmt/format.h>
#include <stdlib.h>
#include <sys/mman.h>

#include <array>
#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <random>
#include <thread>

namespace kaz::test {
namespace {

// What a writer process says about its key, in memory shared with the test.
struct Progress {
    std::atomic<int> begun = 0;
    std::atomic<int> done = 0;
};

constexpr std::size_t writerCount = 4;
using Board = std::array<Progress, writerCount>;

struct Unmap {
    void operator()(Board* board) const noexcept { ::munmap(board, sizeof(Board)); }
};

std::unique_ptr<Board, Unmap> sharedBoard() {
    void* memory = ::mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {  // NOLINT: the macro casts an integer
        throw std::bad_alloc();
    }
    return std::unique_ptr<Board, Unmap>(new (memory) Board);
}

std::string keyOf(std::size_t writer) {
    return fmt::format("writer{}", writer);
}

bool countOn(std::size_t writer, Progress& progress) {
    const int next = ++progress.begun;
    if (!util::updateKazConfig(keyOf(writer), std::to_string(next))) {
        return false;
    }
    progress.done = next;
    return true;
}

// Puts temporary folders in memory, unless TMPDIR is set. A killed process does not lose what it wrote, and waiting
// for the disk would take nearly all of the time.
class FoldersInMemory : NonCopyable {
  protected:
    FoldersInMemory() {
        constexpr const char* memory = "/dev/shm";
        isSet_ = ::getenv("TMPDIR") == nullptr && ::access(memory, R_OK | W_OK | X_OK) == 0;
        if (isSet_) {
            ::setenv("TMPDIR", memory, 0 /* overwrite */);
        }
    }
    ~FoldersInMemory() {
        if (isSet_) {
            ::unsetenv("TMPDIR");
        }
    }

  private:
    bool isSet_ = false;
};

class ConfigKilledWriters : private FoldersInMemory, public ConfigFixture {
  protected:
    static constexpr const char* others = "# a comment\n\nfirst=1\r\nno equals sign\nfirst = \xff\n";

    ConfigKilledWriters() {
        std::string before = others;
        for (std::size_t writer = 0; writer < writerCount; ++writer) {
            before += keyOf(writer) + "=0\n";
        }
        write(before);
    }

    // A process that writes as often as it can, with a rest after each update.
    void start(std::size_t writer, std::chrono::microseconds rest = {}) {
        writers_[writer] = std::make_unique<ChildProcess>([this, writer, rest] {
            while (countOn(writer, board_->at(writer))) {
                if (rest.count() > 0) {
                    std::this_thread::sleep_for(rest);
                }
            }
            return 1;
        });
    }

    // Kills the writer a moment after it has written something.
    void kill(std::size_t writer, std::chrono::microseconds moment) {
        ASSERT_NO_FATAL_FAILURE(waitForProgress(writer));
        std::this_thread::sleep_for(moment);
        writers_[writer]->sendKill();
        ASSERT_EQ(writers_[writer]->wait(), -SIGKILL) << "the writer ended by itself: an update failed";
        settle(writer);
    }

    // One update by a writer that does not run yet. Its process is killed after this number of steps. Returns true if
    // it ended before.
    bool updateAndKillAfter(int steps, std::size_t writer) {
        SteppedProcess process([&] { return countOn(writer, board_->at(writer)); });
        for (int step = 0; step < steps; ++step) {
            if (!process.step()) {
                return true;
            }
        }
        return false;
    }

    // Blocks until the writer has written something since its start or the last call.
    void waitForProgress(std::size_t writer) {
        ASSERT_TRUE(eventually([&] {
            checkWhileWritersRun();
            return HasFatalFailure() || writers_[writer]->ended() || board_->at(writer).done > seen_[writer];
        }));
        ASSERT_GT(board_->at(writer).done, seen_[writer]) << "the writer ended by itself: an update failed";
        seen_[writer] = board_->at(writer).done;
    }

    // After the writer's death the value must be the last confirmed one or the one being written. The writer continues
    // from it. Returns true if an update was in progress and its value is in the file.
    bool settle(std::size_t writer) {
        Progress& progress = board_->at(writer);
        const int value = std::stoi(util::readKazConfig()[keyOf(writer)]);
        EXPECT_TRUE(value == progress.done || value == progress.begun)
            << value << ", done " << progress.done << ", begun " << progress.begun;
        const bool isNew = progress.begun != progress.done && value == progress.begun;
        progress.begun = value;
        progress.done = value;
        seen_[writer] = value;
        return isNew;
    }

    void expectNothingIsLeftBehind() {
        EXPECT_TRUE(util::updateKazConfig("wifi", "off"));
        EXPECT_EQ(contentOf(folder()), (std::set<std::string>{"kaz.conf", "kaz.conf.lock"}));
        EXPECT_TRUE(log().records().empty());
    }

    // Reads once, and checks each writer's value: confirmed or being written.
    void checkWhileWritersRun() const {
        std::array<int, writerCount> least{};
        for (std::size_t writer = 0; writer < writerCount; ++writer) {
            least[writer] = board_->at(writer).done;
        }
        std::map<std::string, std::string> entries = util::readKazConfig();
        ASSERT_EQ(entries.size(), writerCount + 2);
        for (std::size_t writer = 0; writer < writerCount; ++writer) {
            const int value = std::stoi(entries[keyOf(writer)]);
            ASSERT_GE(value, least[writer]);
            ASSERT_LE(value, board_->at(writer).begun);
        }
        ASSERT_TRUE(text().starts_with(others));
    }

  private:
    const std::unique_ptr<Board, Unmap> board_ = sharedBoard();
    std::array<std::unique_ptr<ChildProcess>, writerCount> writers_;
    std::array<int, writerCount> seen_{};
};

// Each round kills one writer before or after a different system call, while the others continue. They rest for a moment
// that is shorter than the steps of one update. Without it, the stepped one would wait for the lock most of the time.
TEST_F(ConfigKilledWriters, LeaveTheOldFileOrTheNewOneAtEveryStep) {
    constexpr int rounds = 2000;
    constexpr std::chrono::microseconds rest{200};
    constexpr std::size_t victim = writerCount - 1;
    for (std::size_t writer = 0; writer < victim; ++writer) {
        start(writer, rest);
    }
    int steps = 0;
    int ended = 0;
    int oldFiles = 0;
    int newFiles = 0;
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        SCOPED_TRACE(testing::Message() << "round " << round << ", after " << steps << " steps");
        const bool hasEnded = updateAndKillAfter(steps, victim);
        steps = hasEnded ? 0 : steps + 1;
        ended += hasEnded ? 1 : 0;
        (settle(victim) ? newFiles : oldFiles) += hasEnded ? 0 : 1;
        // The killed writer does not block the others.
        for (std::size_t writer = 0; writer < victim; ++writer) {
            waitForProgress(writer);
        }
    }
    for (std::size_t writer = 0; writer < victim; ++writer) {
        kill(writer, {});
    }
    // The writers were stepped through repeatedly, and the new file became visible at some of the steps.
    EXPECT_GT(ended, 5);
    EXPECT_GT(oldFiles, 10 * ended);
    EXPECT_GT(newFiles, ended);
    expectNothingIsLeftBehind();
}

// Also in the middle of a system call, and while the writer waits for the others.
TEST_F(ConfigKilledWriters, LeaveTheOldFileOrTheNewOneAtAnyMoment) {
    constexpr int rounds = 500;
    constexpr int longest = 500;  // microseconds, some updates
    for (std::size_t writer = 0; writer < writerCount; ++writer) {
        start(writer);
    }
    std::minstd_rand random(1);
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        const std::size_t writer = random() % writerCount;
        kill(writer, std::chrono::microseconds(random() % longest));
        start(writer);
    }
    for (std::size_t writer = 0; writer < writerCount; ++writer) {
        kill(writer, {});
    }
    expectNothingIsLeftBehind();
}

}  // namespace
}  // namespace kaz::test
