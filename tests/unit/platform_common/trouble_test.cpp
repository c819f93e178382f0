// Files that cannot be read or replaced. The old content, another program's secret, stays and is not logged.
#include "support/process/child_process.h"
#include "unit/platform_common/config_fixture.h"

#include <gmock/gmock.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <functional>

namespace kaz::test {
namespace {

namespace fs = std::filesystem;
using Entries = std::map<std::string, std::string>;

constexpr const char* oldText = "password=tell-nobody\nwifi=on\n";
constexpr std::size_t sizeLimit = std::size_t{1024} * 1024;
constexpr int cannotBeTested = 77;

class ConfigTrouble : public ConfigFixture {
  protected:
    void expectOneWarning(std::string_view reason) {
        const auto records = log().records();
        ASSERT_EQ(records.size(), 1U) << ::testing::PrintToString(records);
        EXPECT_EQ(records[0].level, spdlog::level::warn);
        EXPECT_THAT(records[0].text, ::testing::HasSubstr(reason));
        EXPECT_THAT(records[0].text, ::testing::Not(::testing::HasSubstr("tell-nobody")));
        log().clear();
    }

    void expectUnreadable(std::string_view reason) {
        EXPECT_EQ(util::readKazConfig(), Entries{});
        expectOneWarning(reason);
    }

    void expectNoUpdate(std::string_view reason) {
        EXPECT_FALSE(util::updateKazConfig("wifi", "off"));
        expectOneWarning(reason);
    }

    void expectTrouble(std::string_view reason) {
        expectUnreadable(reason);
        expectNoUpdate(reason);
    }

    // Runs a part of a test in a separate process. Skips the test if this part lacks a permission; for root with
    // `CI` set that is a failure.
    static void inChild(const std::function<bool()>& prepare, const std::function<void()>& body) {
        ChildProcess child([&] {
            if (!prepare()) {
                return cannotBeTested;
            }
            body();
            return ::testing::Test::HasFailure() ? 1 : 0;
        });
        const int status = child.wait();
        if (status == cannotBeTested) {
            ASSERT_FALSE(::geteuid() == 0 && ::getenv("CI") != nullptr)
                << "root is not permitted what the test needs";
            GTEST_SKIP() << "not permitted here";
        }
        EXPECT_EQ(status, 0);
    }

    // In a child: mounts a small file system on the folder.
    bool mountOnFolder() const {
        return ::unshare(CLONE_NEWNS) == 0 &&
               ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
               ::mount("tmpfs", folder().path().c_str(), "tmpfs", 0, "size=64k") == 0;
    }
};

TEST_F(ConfigTrouble, AFolderInThePlaceOfTheFileIsLeftAlone) {
    fs::create_directory(file());
    expectTrouble("Is a directory");
    EXPECT_TRUE(fs::is_empty(file()));
    useFile(file() / "");
    expectTrouble("Is a directory");
    EXPECT_TRUE(fs::is_empty(file()));
}

TEST_F(ConfigTrouble, AFileInThePlaceOfAFolderIsLeftAlone) {
    write(oldText);
    useFile(file() / "kaz.conf");
    expectTrouble("Not a directory");
    EXPECT_EQ(text(), oldText);
}

TEST_F(ConfigTrouble, APipeOrDeviceIsNeitherWaitedForNorReplaced) {
    ASSERT_EQ(::mkfifo(file().c_str(), 0600), 0);
    expectTrouble("Invalid argument");
    EXPECT_TRUE(fs::is_fifo(file()));
    fs::create_symlink("/dev/full", folder() / "device");
    useFile(folder() / "device");
    expectUnreadable("Invalid argument");
}

TEST_F(ConfigTrouble, LinksInACircleLeadNowhere) {
    fs::create_symlink("other", file());
    fs::create_symlink("kaz.conf", folder() / "other");
    expectTrouble("Too many levels of symbolic links");
    fs::create_directory_symlink("self", folder() / "self");
    useFile(folder() / "self/kaz.conf");
    expectTrouble("Too many levels of symbolic links");
    EXPECT_EQ(contentOf(folder()), (std::set<std::string>{"kaz.conf", "other", "self"}));
}

TEST_F(ConfigTrouble, ANameThatIsTooLongIsRefused) {
    useFile(folder() / std::string(300, 'n'));
    expectTrouble("File name too long");
    useFile(folder().path().string() + "/" + std::string(5000, 'n') + "/kaz.conf");
    expectTrouble("File name too long");
}

TEST_F(ConfigTrouble, AFileOfTheGreatestSizeIsReadAndUpdated) {
    const std::string line = "wifi=on\n#";
    write(line + std::string(sizeLimit - line.size(), 'x'));
    EXPECT_EQ(util::readKazConfig(), (Entries{{"wifi", "on"}}));
    EXPECT_TRUE(util::updateKazConfig("wifi", "no"));
    EXPECT_EQ(util::readKazConfig(), (Entries{{"wifi", "no"}}));
    EXPECT_EQ(text().size(), sizeLimit);
}

TEST_F(ConfigTrouble, AnUpdateDoesNotMakeTheFileTooLargeToBeRead) {
    const std::string line = "wifi=on\n#";
    const std::string full = line + std::string(sizeLimit - line.size(), 'x');
    write(full);
    expectNoUpdate("File too large");
    EXPECT_TRUE(text() == full);
    fs::remove(file());
    EXPECT_FALSE(util::updateKazConfig("wifi", std::string(sizeLimit, 'v')));
    expectOneWarning("File too large");
    EXPECT_FALSE(fs::exists(file()));
}

TEST_F(ConfigTrouble, AFileThatIsTooLargeIsNeitherReadNorReplaced) {
    for (const std::uintmax_t size :
         {std::uintmax_t{sizeLimit} + 1, std::uintmax_t{100'000'000}, std::uintmax_t{1} << 36U}) {
        SCOPED_TRACE(size);
        write(oldText);
        fs::resize_file(file(), size);
        expectTrouble("File too large");
        EXPECT_EQ(fs::file_size(file()), size);
    }
}

TEST_F(ConfigTrouble, AFileThatMayNotBeReadIsNotReplaced) {
    write(oldText);
    ASSERT_EQ(::chmod(file().c_str(), 0), 0);
    const bool root = ::geteuid() == 0;
    ASSERT_TRUE(!root || ::chown(folder().path().c_str(), 12345, 12345) == 0);
    inChild([&] { return !root || (::setgid(12345) == 0 && ::setuid(12345) == 0); },
            [&] { expectTrouble("Permission denied"); });
    ASSERT_EQ(::chmod(file().c_str(), 0600), 0);
    EXPECT_EQ(text(), oldText);
}

TEST_F(ConfigTrouble, AFolderThatMayNotBeWrittenKeepsItsFile) {
    write(oldText);
    ASSERT_EQ(::chmod(file().c_str(), 0644), 0);
    ASSERT_EQ(::chmod(folder().path().c_str(), 0555), 0);
    const bool root = ::geteuid() == 0;
    inChild([&] { return !root || (::setgid(12345) == 0 && ::setuid(12345) == 0); },
            [&] {
                EXPECT_EQ(util::readKazConfig().at("wifi"), "on");
                expectNoUpdate("Permission denied");
            });
    ASSERT_EQ(::chmod(folder().path().c_str(), 0755), 0);
    EXPECT_EQ(text(), oldText);
}

TEST_F(ConfigTrouble, AFileThatCannotBeWrittenWholeDoesNotReplaceTheOldOne) {
    write(oldText);
    inChild(
        [] {
            ::signal(SIGXFSZ, SIG_IGN);
            const rlimit tenBytes{10, 10};
            return ::setrlimit(RLIMIT_FSIZE, &tenBytes) == 0;
        },
        [&] { expectNoUpdate("write " + file().string() + ".tmp: File too large"); });
    EXPECT_EQ(text(), oldText);
    EXPECT_EQ(contentOf(folder()), (std::set<std::string>{"kaz.conf", "kaz.conf.lock"}));
}

TEST_F(ConfigTrouble, AFullDiskKeepsTheOldFile) {
    inChild([this] { return mountOnFolder(); },
            [&] {
                write(oldText);
                EXPECT_TRUE(util::updateKazConfig("wifi", "on"));
                EXPECT_THROW(writeFile(folder() / "filler", std::string(65536, 'x')), std::runtime_error);
                expectNoUpdate("No space left on device");
                EXPECT_EQ(text(), oldText);
                fs::remove(folder() / "filler");
                EXPECT_EQ(contentOf(folder()), (std::set<std::string>{"kaz.conf", "kaz.conf.lock"}));
                EXPECT_TRUE(util::updateKazConfig("wifi", "off"));
            });
}

TEST_F(ConfigTrouble, AReadOnlyFileSystemKeepsTheOldFile) {
    inChild([this] { return mountOnFolder(); },
            [&] {
                write(oldText);
                ASSERT_EQ(::mount(nullptr, folder().path().c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr),
                          0);
                EXPECT_EQ(util::readKazConfig().at("wifi"), "on");
                expectNoUpdate("Read-only file system");
                EXPECT_EQ(text(), oldText);
            });
}

}  // namespace
}  // namespace kaz::test
