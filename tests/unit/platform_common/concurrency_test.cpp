#include "base/file_descriptor.h"
#include "base/non_copyable.h"
#include "support/process/child_process.h"
#include "support/waiting/waiting.h"
#include "unit/platform_common/config_fixture.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <future>
#include <memory>
#include <thread>
#include <vector>

namespace kaz::test {
namespace {

namespace fs = std::filesystem;
using Entries = std::map<std::string, std::string>;

// Another writer's lock.
class HeldLock : NonCopyable {
  public:
    explicit HeldLock(const fs::path& path) : fd_(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
        EXPECT_EQ(::flock(fd_.get(), LOCK_EX | LOCK_NB), 0) << path;
    }
    ~HeldLock() { ::flock(fd_.get(), LOCK_UN); }

    // Whether a writer waits for the lock; the kernel lists waiters behind an arrow.
    bool isWaitedFor() const {
        struct stat status {};
        ::fstat(fd_.get(), &status);
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
    FileDescriptor fd_;
};

class ConfigConcurrency : public ConfigFixture {
  protected:
    // An update that waits for this lock, of another writer.
    std::future<bool> updateThatWaitsFor(const std::unique_ptr<HeldLock>& lock) {
        write("a=1\n");
        auto result = std::async(std::launch::async, [] { return util::updateKazConfig("wifi", "off"); });
        EXPECT_TRUE(eventually([&] { return lock->isWaitedFor(); }));
        return result;
    }

    const fs::path lockFile = folder() / "kaz.conf.lock";
};

TEST_F(ConfigConcurrency, AnUpdateWaitsForAnotherWriterAndKeepsWhatThatOneWrote) {
    auto other = std::make_unique<HeldLock>(lockFile);
    auto result = updateThatWaitsFor(other);
    EXPECT_EQ(util::readKazConfig(), (Entries{{"a", "1"}})) << "reading does not wait";
    write("a=2\n");
    other.reset();
    EXPECT_TRUE(result.get());
    EXPECT_EQ(text(), "a=2\nwifi=off\n");
}

TEST_F(ConfigConcurrency, ALockFileThatWasRemovedWhileItWasWaitedForIsNoLock) {
    auto first = std::make_unique<HeldLock>(lockFile);
    auto result = updateThatWaitsFor(first);
    fs::remove(lockFile);
    auto second = std::make_unique<HeldLock>(lockFile);
    first.reset();
    ASSERT_TRUE(eventually([&] { return second->isWaitedFor(); }));
    write("a=2\n");
    second.reset();
    EXPECT_TRUE(result.get());
    EXPECT_EQ(text(), "a=2\nwifi=off\n");
}

TEST_F(ConfigConcurrency, AChildForkedDuringAnUpdateDoesNotKeepTheLock) {
    auto other = std::make_unique<HeldLock>(lockFile);
    auto result = updateThatWaitsFor(other);
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

}  // namespace
}  // namespace kaz::test
