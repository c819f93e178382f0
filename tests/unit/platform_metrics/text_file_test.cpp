#include "platform/metrics/exposition/text_file.h"
#include "base/temporary_folder.h"
#include "support/files/files.h"
#include "support/process/child_process.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>

namespace kaz::metrics_reporting {
namespace {

namespace fs = std::filesystem;
using test::contentOf;
using test::readFile;
using test::writeFile;

class TextFile : public ::testing::Test {
  protected:
    const TemporaryFolder& folder() const { return folder_; }
    fs::path file() const { return folder_ / "metrics.prom"; }

    // The text of the error of a replacement.
    static std::string failureOf(const fs::path& path) {
        try {
            replaceTextFile(path, "new");
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "none";
    }

  private:
    TemporaryFolder folder_;
};

TEST_F(TextFile, IsCreatedAndReplacedWhole) {
    replaceTextFile(file(), "a long text\n");
    EXPECT_EQ(readFile(file()), "a long text\n");
    replaceTextFile(file(), "short\n");
    EXPECT_EQ(readFile(file()), "short\n");
    replaceTextFile(file(), "");
    EXPECT_TRUE(fs::exists(file()));
    EXPECT_EQ(readFile(file()), "");
    EXPECT_EQ(contentOf(folder()), std::set<std::string>{"metrics.prom"});
}

TEST_F(TextFile, CanBeReadByACollectorAndWrittenByNobodyElse) {
    const mode_t former = ::umask(0);
    replaceTextFile(file(), "text");
    ::umask(former);
    EXPECT_EQ(fs::status(file()).permissions(), static_cast<fs::perms>(0644));
}

TEST_F(TextFile, IsNeverSeenHalfWritten) {
    const std::string a(100000, 'a');
    const std::string b(50000, 'b');
    replaceTextFile(file(), a);
    std::atomic<bool> done = false;
    std::atomic<int> wrong = 0;
    std::thread reader([&] {
        while (!done) {
            const std::string text = readFile(file());
            wrong += text == a || text == b ? 0 : 1;
        }
    });
    for (int round = 0; round < 100; ++round) {
        replaceTextFile(file(), round % 2 == 0 ? b : a);
    }
    done = true;
    reader.join();
    EXPECT_EQ(wrong, 0);
}

TEST_F(TextFile, WhatADeadProcessOfTheSameNumberLeftIsNoObstacle) {
    const fs::path stale = folder() / (".metrics.prom." + std::to_string(::getpid()) + ".tmp");
    writeFile(stale, "half");
    replaceTextFile(file(), "text");
    EXPECT_EQ(readFile(file()), "text");
    EXPECT_EQ(contentOf(folder()), std::set<std::string>{"metrics.prom"});
}

TEST_F(TextFile, ThatCannotBeWrittenIsAnErrorThatNamesIt) {
    EXPECT_THAT(failureOf(folder() / "no/folder/m.prom"), ::testing::HasSubstr("No such file or directory"));
    EXPECT_THAT(failureOf(folder() / std::string(300, 'n')), ::testing::HasSubstr("File name too long"));
    writeFile(file(), "old");
    EXPECT_THAT(failureOf(file() / "m.prom"), ::testing::HasSubstr("Not a directory"));
    EXPECT_EQ(readFile(file()), "old");
}

TEST_F(TextFile, DoesNotTakeThePlaceOfAnythingButAFile) {
    fs::create_directory(folder() / "folder");
    fs::create_symlink("elsewhere", folder() / "link");
    ASSERT_EQ(::mkfifo((folder() / "pipe").c_str(), 0600), 0);
    const auto before = contentOf(folder());
    for (const char* name : {"folder", "link", "pipe"}) {
        EXPECT_EQ(failureOf(folder() / name), "replace " + (folder() / name).string() + ": Invalid argument");
    }
    EXPECT_EQ(contentOf(folder()), before);
}

TEST_F(TextFile, StaysAsItWasWhenTheNewOneDoesNotFitOnTheDisk) {
    writeFile(file(), "old");
    test::ChildProcess child([&] {
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit twoBytes{2, 2};
        return ::setrlimit(RLIMIT_FSIZE, &twoBytes) == 0 && failureOf(file()).ends_with("File too large") ? 0
                                                                                                          : 1;
    });
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(readFile(file()), "old");
    EXPECT_EQ(contentOf(folder()), std::set<std::string>{"metrics.prom"});
}

}  // namespace
}  // namespace kaz::metrics_reporting
