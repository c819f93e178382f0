#include <child_process.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <waiting.h>

#include <array>
#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <vector>

#include "config_fixture.h"

namespace kaz::test {
namespace {

namespace fs = std::filesystem;
using Entries = std::map<std::string, std::string>;

// Another writer's lock.
class HeldLock {
  public:
    explicit HeldLock(const fs::path& path) : fd_(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
        EXPECT_EQ(::flock(fd_, LOCK_EX | LOCK_NB), 0) << path;
    }
    ~HeldLock() {
        ::flock(fd_, LOCK_UN);
        ::close(fd_);
    }
    HeldLock(const HeldLock&) = delete;
    HeldLock& operator=(const HeldLock&) = delete;
    HeldLock(HeldLock&&) = delete;
    HeldLock& operator=(HeldLock&&) = delete;

    // Whether somebody waits for it; the kernel lists waiters behind an arrow.
    bool isWaitedFor() const {
        struct stat status {};
        ::fstat(fd_, &status);
        const std::string locks = readFile("/proc/locks");
        const std::string inode = fmt::format(":{} ", status.st_ino);
        for (auto line = locks.find("->"); line != std::string::npos; line = locks.find("->", line + 1)) {
            if (locks.substr(line, locks.find('\n', line) - line).find(inode) != std::string::npos) {
                return true;
            }
        }
        return false;
    }

  private:
    int fd_;
};

class ConfigConcurrency : public ConfigFixture {};

TEST_F(ConfigConcurrency, AnUpdateWaitsForAnotherWriterAndKeepsWhatThatOneWrote) {
    write("a=1\n");
    auto other = std::make_unique<HeldLock>(folder() / "kaz.conf.lock");
    auto result = std::async(std::launch::async, [] { return util::updateKazConfig("wifi", "off"); });
    ASSERT_TRUE(eventually([&] { return other->isWaitedFor(); }));
    EXPECT_EQ(util::readKazConfig(), (Entries{{"a", "1"}})) << "reading does not wait";
    write("a=2\n");
    other.reset();
    EXPECT_TRUE(result.get());
    EXPECT_EQ(text(), "a=2\nwifi=off\n");
}

TEST_F(ConfigConcurrency, ALockFileThatWasRemovedWhileItWasWaitedForIsNoLock) {
    write("a=1\n");
    const fs::path lock = folder() / "kaz.conf.lock";
    auto first = std::make_unique<HeldLock>(lock);
    auto result = std::async(std::launch::async, [] { return util::updateKazConfig("wifi", "off"); });
    ASSERT_TRUE(eventually([&] { return first->isWaitedFor(); }));
    fs::remove(lock);
    auto second = std::make_unique<HeldLock>(lock);
    first.reset();
    ASSERT_TRUE(eventually([&] { return second->isWaitedFor(); }));
    write("a=2\n");
    second.reset();
    EXPECT_TRUE(result.get());
    EXPECT_EQ(text(), "a=2\nwifi=off\n");
}

TEST_F(ConfigConcurrency, AChildForkedDuringAnUpdateDoesNotKeepTheLock) {
    write("a=1\n");
    auto other = std::make_unique<HeldLock>(folder() / "kaz.conf.lock");
    auto result = std::async(std::launch::async, [] { return util::updateKazConfig("wifi", "off"); });
    ASSERT_TRUE(eventually([&] { return other->isWaitedFor(); }));
    const ChildProcess child([] { return ::pause(); });
    other.reset();
    EXPECT_TRUE(result.get());
    EXPECT_TRUE(util::updateKazConfig("wifi", "on")) << "while the child lives";
    EXPECT_EQ(text(), "a=1\nwifi=on\n");
}

TEST_F(ConfigConcurrency, ThreadsDoNotLoseEachOthersUpdates) {
    constexpr int threadCount = 8;
    constexpr int updates = 25;
    write("# kept\nother=1\n");
    std::atomic<int> failures = 0;
    std::atomic<bool> done = false;
    std::thread reader([&] {
        while (!done) {
            failures += util::readKazConfig()["other"] == "1" ? 0 : 1;
        }
    });
    std::vector<std::thread> writers;
    for (int number = 0; number < threadCount; ++number) {
        writers.emplace_back([number, &failures] {
            for (int value = 1; value <= updates; ++value) {
                failures +=
                    util::updateKazConfig(fmt::format("key{}", number), std::to_string(value)) ? 0 : 1;
            }
        });
    }
    for (auto& writer : writers) {
        writer.join();
    }
    done = true;
    reader.join();
    EXPECT_EQ(failures, 0);
    Entries expected{{"other", "1"}};
    for (int number = 0; number < threadCount; ++number) {
        expected[fmt::format("key{}", number)] = std::to_string(updates);
    }
    EXPECT_EQ(util::readKazConfig(), expected);
    EXPECT_TRUE(text().starts_with("# kept\nother=1\n"));
}

TEST_F(ConfigConcurrency, ThreadsMayCreateTheSameMissingFoldersAtOnce) {
    for (int round = 0; round < 20; ++round) {
        useFile(folder() / fmt::format("round{}/a/b/kaz.conf", round));
        std::vector<std::future<bool>> results;
        for (int number = 0; number < 4; ++number) {
            results.push_back(std::async(std::launch::async, [number] {
                return util::updateKazConfig(fmt::format("key{}", number), "v");
            }));
        }
        for (auto& result : results) {
            EXPECT_TRUE(result.get()) << round;
        }
        EXPECT_EQ(util::readKazConfig().size(), 4U) << round;
    }
}

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

[[noreturn]] void countUp(std::size_t writer, Progress& progress) {
    for (;;) {
        const int next = ++progress.begun;
        if (!util::updateKazConfig(keyOf(writer), std::to_string(next))) {
            ::_exit(1);
        }
        progress.done = next;
    }
}

class ConfigKilledWriters : public ConfigConcurrency {
  protected:
    static constexpr const char* others = "# a comment\n\nfirst=1\r\nno equals sign\nfirst = \xff\n";

    // Reads once, and checks that each writer's value is one that may be there while it runs.
    void checkWhileWritersRun(const Board& board) const {
        std::array<int, writerCount> least{};
        for (std::size_t writer = 0; writer < writerCount; ++writer) {
            least[writer] = board[writer].done;
        }
        Entries entries = util::readKazConfig();
        ASSERT_EQ(entries.size(), writerCount + 2);
        for (std::size_t writer = 0; writer < writerCount; ++writer) {
            const int value = std::stoi(entries[keyOf(writer)]);
            ASSERT_GE(value, least[writer]);
            ASSERT_LE(value, board[writer].begun);
        }
    }

    void runAndKill(Board& board) {
        std::array<int, writerCount> before{};
        std::vector<std::unique_ptr<ChildProcess>> writers;
        for (std::size_t writer = 0; writer < writerCount; ++writer) {
            before[writer] = board[writer].done;
            writers.push_back(std::make_unique<ChildProcess>([&, writer] {
                countUp(writer, board[writer]);
                return 0;
            }));
        }
        for (std::size_t writer = 0; writer < writerCount; ++writer) {
            ASSERT_TRUE(eventually([&] {
                checkWhileWritersRun(board);
                return HasFatalFailure() || board[writer].done >= before[writer] + 2;
            }));
        }
        for (const auto& writer : writers) {
            writer->sendKill();
        }
        for (const auto& writer : writers) {
            EXPECT_EQ(writer->wait(), -SIGKILL) << "a writer ended by itself: an update failed";
        }
    }

    // After the writers' death: the value is the last one that was confirmed or the one being written. Takes
    // it as the base to go on from.
    void settle(Board& board, int& interrupted) const {
        Entries entries = util::readKazConfig();
        for (std::size_t writer = 0; writer < writerCount; ++writer) {
            const int value = std::stoi(entries[keyOf(writer)]);
            interrupted += board[writer].begun != board[writer].done ? 1 : 0;
            EXPECT_TRUE(value == board[writer].done || value == board[writer].begun)
                << value << ", done " << board[writer].done << ", begun " << board[writer].begun;
            board[writer].begun = value;
            board[writer].done = value;
        }
    }
};

TEST_F(ConfigKilledWriters, LeaveTheOldFileOrTheNewOne) {
    constexpr int rounds = 15;
    std::string before = others;
    for (std::size_t writer = 0; writer < writerCount; ++writer) {
        before += keyOf(writer) + "=0\n";
    }
    write(before);
    const auto board = sharedBoard();
    int interrupted = 0;
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        runAndKill(*board);
        settle(*board, interrupted);
        EXPECT_TRUE(text().starts_with(others));
    }
    EXPECT_GT(interrupted, rounds) << "the writers were to be killed in the middle of an update";
    EXPECT_TRUE(util::updateKazConfig("wifi", "off"));
    EXPECT_EQ(folder().content(), (std::set<std::string>{"kaz.conf", "kaz.conf.lock"}));
    EXPECT_TRUE(log().records().empty());
}

}  // namespace
}  // namespace kaz::test
