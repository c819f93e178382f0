#include "platform/metrics/exposition/file_writer.h"
#include "base/temporary_folder.h"
#include "doubles/recording_log/recording_log.h"
#include "support/files/files.h"
#include "support/process/child_process.h"
#include "support/waiting/waiting.h"

#include <gmock/gmock.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <barrier>
#include <chrono>
#include <filesystem>
#include <functional>
#include <future>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace kaz::metrics_reporting {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using test::eventually;
using test::readFile;

std::ptrdiff_t threadCount() {
    return std::distance(fs::directory_iterator("/proc/self/task"), {});
}

class MetricsFileWriter : public ::testing::Test {
  protected:
    const TemporaryFolder& folder() const { return folder_; }
    fs::path file() const { return folder_ / "metrics.prom"; }
    test::RecordingLog& log() { return log_; }

    // A render function that returns the number of its calls.
    FileWriter::Render counting() {
        return [this] { return std::to_string(++renderings_); };
    }
    int renderings() const { return renderings_; }
    bool isWritten(const std::string& text) const {
        return eventually([&] { return readFile(file()) == text; });
    }

  private:
    TemporaryFolder folder_;
    test::RecordingLog log_;
    std::atomic<int> renderings_ = 0;
};

TEST_F(MetricsFileWriter, StartsNoThreadAndWritesNothingBeforeTheFirstChange) {
    const auto before = threadCount();
    FileWriter writer(file(), 0s, counting());
    EXPECT_EQ(threadCount(), before);
    writer.close();
    EXPECT_EQ(renderings(), 0);
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(MetricsFileWriter, WritesTheFirstChangeWithoutWaitingForTheInterval) {
    FileWriter writer(file(), 24h, counting());
    writer.noteChange();
    EXPECT_TRUE(isWritten("1"));
}

TEST_F(MetricsFileWriter, WritesLaterChangesTogetherAndTheLastWhenItIsClosed) {
    FileWriter writer(file(), 24h, counting());
    writer.noteChange();
    ASSERT_TRUE(isWritten("1"));
    for (int change = 0; change < 1000; ++change) {
        writer.noteChange();
    }
    writer.close();
    EXPECT_EQ(readFile(file()), "2");
}

TEST_F(MetricsFileWriter, WritesNothingMoreWhenItIsClosedWithoutAChange) {
    FileWriter writer(file(), 0s, counting());
    writer.noteChange();
    ASSERT_TRUE(isWritten("1"));
    writer.close();
    EXPECT_EQ(renderings(), 1);
}

TEST_F(MetricsFileWriter, WritesNothingOnceItIsClosed) {
    {
        FileWriter writer(file(), 0s, counting());
        writer.noteChange();
        writer.close();
        fs::remove(file());
        const int before = renderings();
        const auto threads = threadCount();
        writer.noteChange();
        EXPECT_EQ(threadCount(), threads);
        writer.close();
        EXPECT_EQ(renderings(), before);
    }
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(MetricsFileWriter, StartsNoThreadOnceItIsClosedWithoutOne) {
    FileWriter writer(file(), 0s, counting());
    writer.close();
    const auto before = threadCount();
    writer.noteChange();
    EXPECT_EQ(threadCount(), before);
    EXPECT_EQ(renderings(), 0);
}

TEST_F(MetricsFileWriter, LetsTheIntervalPassBetweenTwoWrites) {
    constexpr auto interval = 40ms;
    constexpr std::size_t wanted = 5;
    std::mutex mutex;
    std::vector<std::chrono::steady_clock::time_point> times;
    FileWriter writer(file(), interval, [&] {
        const std::lock_guard lock(mutex);
        times.push_back(std::chrono::steady_clock::now());
        return std::string();
    });
    ASSERT_TRUE(eventually([&] {
        writer.noteChange();
        const std::lock_guard lock(mutex);
        return times.size() >= wanted;
    }));
    const std::lock_guard lock(mutex);
    for (std::size_t number = 1; number < wanted; ++number) {
        EXPECT_GE(times[number] - times[number - 1], interval) << number;
    }
}

TEST_F(MetricsFileWriter, WritesAgainWhatChangedDuringAWrite) {
    std::atomic<int> value = 1;
    test::Gate gate;
    std::once_flag first;
    FileWriter writer(file(), 0s, [&] {
        const std::string text = std::to_string(value);
        std::call_once(first, [&] { gate.pass(); });
        return text;
    });
    writer.noteChange();
    gate.waitForTask();
    value = 2;
    writer.noteChange();
    gate.open();
    EXPECT_TRUE(isWritten("2"));
}

TEST_F(MetricsFileWriter, LosesNoChangeOfAnyThread) {
    constexpr int threadsOfChange = 4;
    constexpr int changes = 5000;
    std::atomic<int> sum = 0;
    FileWriter writer(file(), 1ms, [&] { return std::to_string(sum); });
    std::vector<std::thread> threads;
    for (int number = 0; number < threadsOfChange; ++number) {
        threads.emplace_back([&] {
            for (int change = 0; change < changes; ++change) {
                sum.fetch_add(1, std::memory_order_relaxed);
                writer.noteChange();
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(eventually([&] { return readFile(file()) == std::to_string(threadsOfChange * changes); }));
}

TEST_F(MetricsFileWriter, CanBeClosedWhileOthersNoteChanges) {
    for (int round = 0; round < 50; ++round) {
        FileWriter writer(file(), 0s, counting());
        std::atomic<bool> done = false;
        std::thread changer([&] {
            while (!done) {
                writer.noteChange();
            }
        });
        writer.close();
        done = true;
        changer.join();
    }
}

TEST_F(MetricsFileWriter, StartsOneThreadHoweverManyNoteTheFirstChange) {
    constexpr int threadsOfChange = 4;
    for (int round = 0; round < 100; ++round) {
        FileWriter writer(file(), 24h, counting());
        std::barrier begin(threadsOfChange);
        std::vector<std::thread> threads;
        for (int number = 0; number < threadsOfChange; ++number) {
            threads.emplace_back([&] {
                begin.arrive_and_wait();
                writer.noteChange();
            });
        }
        for (auto& thread : threads) {
            thread.join();
        }
    }
    EXPECT_TRUE(log().records().empty());
}

// In a process that cannot start a thread for a while: its user has reached the limit of processes.
class MetricsFileWriterWithoutThread : public MetricsFileWriter {
  protected:
    static constexpr uid_t user = 12345;  // root has no limit
    static constexpr int noLimit = 77;

    static void mayStartThreads(bool may) {
        ::rlimit limit{};
        ::getrlimit(RLIMIT_NPROC, &limit);
        limit.rlim_cur = may ? limit.rlim_max : 0;
        ::setrlimit(RLIMIT_NPROC, &limit);
    }

    // Runs `body` in such a process and returns its result.
    int run(const std::function<int()>& body) {
        const bool isRoot = ::geteuid() == 0;
        if (isRoot && ::chown(folder().path().c_str(), user, user) != 0) {
            return noLimit;
        }
        test::ChildProcess child([&] {
            if (isRoot && ::setresuid(user, user, user) != 0) {
                return noLimit;
            }
            mayStartThreads(false);
            return body();
        });
        return child.wait();
    }
};

TEST_F(MetricsFileWriterWithoutThread, StartsItWithALaterChange) {
    const int status = run([&] {
        FileWriter writer(file(), 24h, counting());
        const auto before = threadCount();
        writer.noteChange();
        writer.noteChange();
        if (threadCount() != before) {
            return 1;
        }
        const auto texts = log().texts(spdlog::level::warn);
        if (texts.size() != 1 || texts[0].find("Resource temporarily unavailable") == std::string::npos) {
            return 2;
        }
        mayStartThreads(true);
        writer.noteChange();
        return isWritten("1") ? 0 : 3;
    });
    if (status == noLimit) {
        GTEST_SKIP() << "needs two users";
    }
    EXPECT_EQ(status, 0) << "1: it had a thread, 2: not one warning, 3: the file was not written";
}

TEST_F(MetricsFileWriterWithoutThread, WritesWhenItIsClosed) {
    const int status = run([&] {
        FileWriter writer(file(), 24h, counting());
        writer.noteChange();
        writer.close();
        return log().records().size() == 1 ? 0 : 1;
    });
    if (status == noLimit) {
        GTEST_SKIP() << "needs two users";
    }
    EXPECT_EQ(status, 0) << "it had a thread";
    EXPECT_EQ(readFile(file()), "1");
}

// Those of the signals that the calling thread blocks.
std::set<int> blockedOf(const std::set<int>& signals) {
    ::sigset_t mask{};
    ::pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    std::set<int> blocked;
    for (const int signal : signals) {
        if (::sigismember(&mask, signal) == 1) {
            blocked.insert(signal);
        }
    }
    return blocked;
}

// The same for the writer's thread.
std::set<int> blockedOfWriter(const fs::path& file, const std::set<int>& signals) {
    std::promise<std::set<int>> blocked;
    std::once_flag first;
    FileWriter writer(file, 24h, [&] {
        std::call_once(first, [&] { blocked.set_value(blockedOf(signals)); });
        return std::string();
    });
    writer.noteChange();
    return blocked.get_future().get();
}

TEST_F(MetricsFileWriter, TakesNoSignalsOfItsHost) {
    const std::set<int> signals{SIGTERM, SIGINT, SIGHUP, SIGCHLD, SIGALRM, SIGUSR1, SIGPIPE, SIGABRT};
    EXPECT_EQ(blockedOfWriter(file(), signals), signals);
    EXPECT_EQ(blockedOf(signals), std::set<int>{}) << "of the thread that noted the change";
}

TEST_F(MetricsFileWriter, TakesTheFaultsThatItMakesItself) {
    EXPECT_EQ(blockedOfWriter(file(), {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS}), std::set<int>{});
}

TEST_F(MetricsFileWriter, WarnsOnceUntilAWriteSucceeds) {
    const fs::path missing = folder() / "missing";
    FileWriter writer(missing / "metrics.prom", 0s, counting());
    const auto writeTimes = [&](int times) {
        const int before = renderings();
        return eventually([&] {
            writer.noteChange();
            return renderings() > before + times;
        });
    };
    ASSERT_TRUE(writeTimes(3));
    EXPECT_THAT(log().texts(), ::testing::ElementsAre(::testing::AllOf(
                                   ::testing::StartsWith("Couldn't write metrics to " + missing.string()),
                                   ::testing::HasSubstr("No such file or directory"))));
    fs::create_directory(missing);
    ASSERT_TRUE(eventually([&] {
        writer.noteChange();
        return fs::exists(missing / "metrics.prom");
    }));
    ASSERT_TRUE(writeTimes(1));
    EXPECT_EQ(log().records().size(), 1U);
    fs::rename(missing, folder() / "moved");
    ASSERT_TRUE(log().waitFor([&](const auto& records) {
        writer.noteChange();
        return records.size() == 2;
    }));
    ASSERT_TRUE(writeTimes(3));
    EXPECT_EQ(log().texts(spdlog::level::warn).size(), 2U);
}

TEST_F(MetricsFileWriter, OutlivesATextThatCannotBeMade) {
    std::atomic<bool> broken = true;
    FileWriter writer(file(), 0s, [&]() -> std::string {
        if (broken) {
            throw std::runtime_error("no text today");
        }
        return "text";
    });
    writer.noteChange();
    EXPECT_TRUE(log().waitForText(spdlog::level::warn, "no text today"));
    broken = false;
    writer.noteChange();
    EXPECT_TRUE(isWritten("text"));
}

TEST_F(MetricsFileWriter, LeavesTheFileToTheParentOfAForkedProcess) {
    FileWriter writer(file(), 24h, counting());
    writer.noteChange();
    ASSERT_TRUE(isWritten("1"));
    test::ChildProcess child([&] {
        writer.noteChange();
        writer.close();
        return renderings();
    });
    EXPECT_EQ(child.wait(), 1) << "rendered nothing more";
    EXPECT_EQ(readFile(file()), "1");
    writer.noteChange();
    writer.close();
    EXPECT_EQ(readFile(file()), "2");
}

}  // namespace
}  // namespace kaz::metrics_reporting
