#include <child_process.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <waiting.h>

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <random>
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

// Has temporary folders in memory, unless they were given another place: a killed process does not lose what it wrote,
// and waiting for the disk would take nearly all of the time.
class FoldersInMemory {
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
    FoldersInMemory(const FoldersInMemory&) = delete;
    FoldersInMemory& operator=(const FoldersInMemory&) = delete;
    FoldersInMemory(FoldersInMemory&&) = delete;
    FoldersInMemory& operator=(FoldersInMemory&&) = delete;

  private:
    bool isSet_ = false;
};

class ConfigKilledWriters : private FoldersInMemory, public ConfigConcurrency {
  protected:
    static constexpr const char* others = "# a comment\n\nfirst=1\r\nno equals sign\nfirst = \xff\n";

    ConfigKilledWriters() {
        std::string before = others;
        for (std::size_t writer = 0; writer < writerCount; ++writer) {
            before += keyOf(writer) + "=0\n";
        }
        write(before);
        for (std::size_t writer = 0; writer < writerCount; ++writer) {
            start(writer);
        }
    }

    void start(std::size_t writer) {
        writers_[writer] = std::make_unique<ChildProcess>([this, writer] {
            countUp(writer, board_->at(writer));
            return 0;
        });
    }

    // Once the writer has written something, and a moment later.
    void kill(std::size_t writer, std::chrono::microseconds moment) {
        ASSERT_TRUE(eventually([&] {
            checkWhileWritersRun();
            return HasFatalFailure() || board_->at(writer).done > atStart_[writer];
        }));
        std::this_thread::sleep_for(moment);
        writers_[writer]->sendKill();
        ASSERT_EQ(writers_[writer]->wait(), -SIGKILL) << "a writer ended by itself: an update failed";
        settle(writer);
    }

    int deathsBeforeTheNewFile() const { return deathsBeforeTheNewFile_; }
    int deathsAfterTheNewFile() const { return deathsAfterTheNewFile_; }

  private:
    // Reads once, and checks that each writer's value is one that may be there while it runs.
    void checkWhileWritersRun() const {
        std::array<int, writerCount> least{};
        for (std::size_t writer = 0; writer < writerCount; ++writer) {
            least[writer] = board_->at(writer).done;
        }
        Entries entries = util::readKazConfig();
        ASSERT_EQ(entries.size(), writerCount + 2);
        for (std::size_t writer = 0; writer < writerCount; ++writer) {
            const int value = std::stoi(entries[keyOf(writer)]);
            ASSERT_GE(value, least[writer]);
            ASSERT_LE(value, board_->at(writer).begun);
        }
        ASSERT_TRUE(text().starts_with(others));
    }

    // After the writer's death: the value is the last one that was confirmed or the one being written. Takes it as the
    // base to go on from.
    void settle(std::size_t writer) {
        Progress& progress = board_->at(writer);
        const int value = std::stoi(util::readKazConfig()[keyOf(writer)]);
        ASSERT_TRUE(value == progress.done || value == progress.begun)
            << value << ", done " << progress.done << ", begun " << progress.begun;
        if (progress.begun != progress.done) {
            ++(value == progress.done ? deathsBeforeTheNewFile_ : deathsAfterTheNewFile_);
        }
        progress.begun = value;
        progress.done = value;
        atStart_[writer] = value;
    }

    const std::unique_ptr<Board, Unmap> board_ = sharedBoard();
    std::array<std::unique_ptr<ChildProcess>, writerCount> writers_;
    std::array<int, writerCount> atStart_{};
    int deathsBeforeTheNewFile_ = 0;
    int deathsAfterTheNewFile_ = 0;
};

TEST_F(ConfigKilledWriters, LeaveTheOldFileOrTheNewOne) {
    constexpr int rounds = 2000;
    constexpr int longest = 500;  // microseconds, some updates
    std::minstd_rand random(1);
    for (int round = 0; round < rounds && !HasFatalFailure(); ++round) {
        SCOPED_TRACE(round);
        const std::size_t writer = random() % writerCount;
        kill(writer, std::chrono::microseconds(random() % longest));
        start(writer);
    }
    for (std::size_t writer = 0; writer < writerCount; ++writer) {
        kill(writer, {});
    }
    EXPECT_GT(deathsBeforeTheNewFile(), rounds / 100)
        << "the writers were to be killed in the middle of an update";
    EXPECT_GT(deathsAfterTheNewFile(), rounds / 100) << "and at its end";
    EXPECT_TRUE(util::updateKazConfig("wifi", "off"));
    EXPECT_EQ(folder().content(), (std::set<std::string>{"kaz.conf", "kaz.conf.lock"}));
    EXPECT_TRUE(log().records().empty());
}

}  // namespace
}  // namespace kaz::test
