// The order in which an update reaches the disk, and what remains when a step fails.
#include <fcntl.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <stdio.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "unit/platform_common/config_fixture.h"

namespace kaz::test {
namespace {

// The steps of this thread so far, and the number of the step that must fail, from 1.
struct Disk {
    std::vector<std::string> steps;
    std::size_t failing = 0;
    int error = EIO;
};

thread_local Disk* watched = nullptr;

bool isToFail(std::string_view step, const std::filesystem::path& path) {
    watched->steps.push_back(fmt::format("{} {}", step, path.filename().native()));
    return watched->steps.size() == watched->failing;
}

std::filesystem::path pathOf(int fd) {
    return std::filesystem::read_symlink(fmt::format("/proc/self/fd/{}", fd));
}

}  // namespace
}  // namespace kaz::test

// Replaces the C library's function for all libraries of this program.
extern "C" int fsync(int fd) {
    if (kaz::test::watched != nullptr && kaz::test::isToFail("flush", kaz::test::pathOf(fd))) {
        errno = kaz::test::watched->error;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_fsync, fd));
}

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): the C library calls one "new"
extern "C" int rename(const char* from, const char* to) noexcept {
    if (kaz::test::watched != nullptr && kaz::test::isToFail("rename to", to)) {
        errno = EIO;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}

namespace kaz::test {
namespace {

class ConfigDurability : public ConfigFixture {
  protected:
    // The steps of an update, of which this one fails. None fails if it is 0. The error is that of a failing flush.
    static std::vector<std::string> stepsOfUpdate(std::size_t failing = 0, int error = EIO) {
        Disk disk{{}, failing, error};
        watched = &disk;
        EXPECT_EQ(util::updateKazConfig("wifi", "off"), failing == 0 || error == EINVAL);
        watched = nullptr;
        return disk.steps;
    }

    std::string folderName() const { return folder().path().filename(); }
};

TEST_F(ConfigDurability, TheNewFileIsOnDiskBeforeItReplacesTheOldOneAndItsFolderAfter) {
    EXPECT_THAT(stepsOfUpdate(),
                ::testing::ElementsAre("flush kaz.conf.tmp", "rename to kaz.conf", "flush " + folderName()));
}

TEST_F(ConfigDurability, TheFoldersAboveCreatedOnesReachTheDiskToo) {
    useFile(folder() / "a/b/kaz.conf");
    EXPECT_THAT(stepsOfUpdate(),
                ::testing::ElementsAre("flush " + folderName(), "flush a", "flush kaz.conf.tmp",
                                       "rename to kaz.conf", "flush b"));
}

TEST_F(ConfigDurability, AValueThatIsThereAlreadyIsOnDiskWhenTheUpdateReturns) {
    write("wifi=off\n");
    EXPECT_THAT(stepsOfUpdate(), ::testing::ElementsAre("flush kaz.conf", "flush " + folderName()));
}

// EINVAL: the file system does not support it.
TEST_F(ConfigDurability, AFileSystemThatCannotFlushIsNoFailure) {
    for (const std::size_t unsupported : {1U, 3U}) {
        write("wifi=on\n");
        EXPECT_EQ(stepsOfUpdate(unsupported, EINVAL).size(), 3U);
        EXPECT_EQ(text(), "wifi=off\n");
    }
    EXPECT_EQ(log().records().size(), 0U);
}

TEST_F(ConfigDurability, AStepThatFailsIsAFailedUpdate) {
    for (const std::size_t failing : {1U, 2U, 3U}) {
        SCOPED_TRACE(failing);
        write("wifi=on\n");
        log().clear();
        EXPECT_EQ(stepsOfUpdate(failing).size(), failing) << "nothing follows the failed step";
        EXPECT_THAT(log().texts(spdlog::level::warn), ::testing::ElementsAre(::testing::HasSubstr("error")));
        EXPECT_EQ(text(), failing == 3 ? "wifi=off\n" : "wifi=on\n");
        EXPECT_EQ(contentOf(folder()), (std::set<std::string>{"kaz.conf", "kaz.conf.lock"}));
    }
}

}  // namespace
}  // namespace kaz::test
