// System calls that fail in ways that no file system can be made to fail. Each replaces the C library's function for
// all libraries of this program, and fails once on command. The functions that read and write can also run a task at
// the end of a file and before each write, in place of another process in the middle of an update.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <functional>
#include <future>
#include <optional>
#include <ostream>
#include <utility>
#include <vector>

#include "unit/platform_common/config_fixture.h"

namespace kaz::test {
namespace {

struct Failure {
    std::string_view call;
    int error = 0;
    unsigned passed = 0;  // how many such calls succeed before it
};

thread_local std::optional<Failure> planned;
thread_local std::function<void()> atTheEndOfAFile;
thread_local std::function<void()> beforeAWrite;

bool fails(std::string_view call) {
    if (!planned || planned->call != call || planned->passed-- > 0) {
        return false;
    }
    errno = planned->error;
    planned.reset();
    return true;
}

template <typename... Arguments>
int pass(long number, Arguments... arguments) {
    return static_cast<int>(::syscall(number, arguments...));
}

}  // namespace
}  // namespace kaz::test

using kaz::test::fails;
using kaz::test::pass;

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the C library's begin with underscores
extern "C" int open(const char* path, int flags, ...) {
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    const bool creates = (flags & O_CREAT) != 0;
    return fails(creates ? "create" : "open") ? -1 : pass(SYS_openat, AT_FDCWD, path, flags, mode);
}

extern "C" int flock(int fd, int operation) noexcept {
    return fails("flock") ? -1 : pass(SYS_flock, fd, operation);
}

extern "C" int stat(const char* path, struct stat* status) noexcept {
    return fails("stat") ? -1 : pass(SYS_newfstatat, AT_FDCWD, path, status, 0);
}

extern "C" int lstat(const char* path, struct stat* status) noexcept {
    return fails("lstat") ? -1 : pass(SYS_newfstatat, AT_FDCWD, path, status, AT_SYMLINK_NOFOLLOW);
}

extern "C" int fstat(int fd, struct stat* status) noexcept {
    return fails("fstat") ? -1 : pass(SYS_newfstatat, fd, "", status, AT_EMPTY_PATH);
}

extern "C" ssize_t read(int fd, void* buffer, size_t size) {
    if (fails("read")) {
        return -1;
    }
    const ssize_t length = ::syscall(SYS_read, fd, buffer, size);
    if (const auto meanwhile = length == 0 ? std::exchange(kaz::test::atTheEndOfAFile, nullptr) : nullptr) {
        meanwhile();
    }
    return length;
}

extern "C" ssize_t write(int fd, const void* buffer, size_t size) {
    if (kaz::test::beforeAWrite) {
        kaz::test::beforeAWrite();
    }
    return fails("write") ? -1 : ::syscall(SYS_write, fd, buffer, size);
}

extern "C" int fchmod(int fd, mode_t mode) noexcept {
    return fails("fchmod") ? -1 : pass(SYS_fchmod, fd, mode);
}

extern "C" int fchown(int fd, uid_t owner, gid_t group) noexcept {
    return fails("fchown") ? -1 : pass(SYS_fchown, fd, owner, group);
}

extern "C" int unlink(const char* path) noexcept {
    return fails("unlink") ? -1 : pass(SYS_unlinkat, AT_FDCWD, path, 0);
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)

namespace kaz::test {
namespace {

constexpr const char* oldText = "password=tell-nobody\nwifi=on\n";
constexpr const char* newText = "password=tell-nobody\nwifi=off\n";

struct Case {
    std::string name;
    Failure failure;
    std::string warning;  // without the folder; empty where the update succeeds nevertheless
};

void PrintTo(const Case& value, std::ostream* out) {
    *out << value.name;
}

class ConfigUpdate : public ConfigFixture, public ::testing::WithParamInterface<Case> {
  protected:
    // Updates with the planned failure, and checks that it happened.
    bool update() {
        planned = GetParam().failure;
        const bool updated = util::updateKazConfig("wifi", "off");
        EXPECT_FALSE(planned.has_value()) << "the call was not made";
        planned.reset();
        return updated;
    }
};

TEST_P(ConfigUpdate, IsLoggedOrSucceedsWhenACallFails) {
    write(oldText);
    const std::string& warning = GetParam().warning;
    EXPECT_EQ(update(), warning.empty());
    if (warning.empty()) {
        EXPECT_EQ(log().records().size(), 0U);
        EXPECT_EQ(text(), newText);
    } else {
        const std::size_t name = warning.find("kaz.conf");
        EXPECT_THAT(log().texts(spdlog::level::warn),
                    ::testing::ElementsAre("Couldn't change the configuration: " + warning.substr(0, name) +
                                           (folder() / warning.substr(name)).string()));
        EXPECT_EQ(text(), oldText);
    }
    log().clear();
    EXPECT_TRUE(util::updateKazConfig("wifi", "off"));
    EXPECT_EQ(text(), newText);
    EXPECT_EQ(contentOf(folder()), (std::set<std::string>{"kaz.conf", "kaz.conf.lock"}));
}

INSTANTIATE_TEST_SUITE_P(
    With, ConfigUpdate,
    ::testing::Values(
        Case{"LockThatCannotBeCreated", {"create", EACCES}, "create kaz.conf.lock: Permission denied"},
        Case{"LockThatAnotherProcessCreatesMeanwhile", {"create", EEXIST}, ""},
        Case{"FolderOfTheLockUnknown", {"stat", EIO, 1}, ""},
        Case{"OwnerOfTheLockNotGiven", {"fchown", EPERM}, ""}, Case{"WaitInterrupted", {"flock", EINTR}, ""},
        Case{"FileSystemWithoutLocks", {"flock", ENOLCK}, "lock kaz.conf.lock: No locks available"},
        Case{"LockRemovedWhileWaitedFor", {"lstat", ENOENT}, ""},
        Case{"OldFileNotLookedAt", {"fstat", EIO, 1}, "look at kaz.conf: Input/output error"},
        Case{"ReadInterrupted", {"read", EINTR}, ""},
        Case{"OldFileNotRead", {"read", EIO}, "read kaz.conf: Input/output error"},
        Case{"LeftoverNotRemoved", {"unlink", EPERM}, "remove kaz.conf.tmp: Operation not permitted"},
        Case{"NewFileNotCreated", {"create", EROFS, 1}, "open kaz.conf.tmp: Read-only file system"},
        Case{"WriteInterrupted", {"write", EINTR}, ""},
        Case{"NewFileNotWritten", {"write", EDQUOT}, "write kaz.conf.tmp: Disk quota exceeded"},
        Case{"ModeNotKept", {"fchmod", EPERM}, "set the mode of kaz.conf.tmp: Operation not permitted"}),
    [](const auto& instance) { return instance.param.name; });

class ConfigUpdateMeanwhile : public ConfigFixture {
  protected:
    // Replaces the configuration by a pipe without a writer.
    void replaceByPipe() const {
        std::filesystem::remove(file());
        EXPECT_EQ(::mkfifo(file().c_str(), S_IRUSR | S_IWUSR), 0);
    }

    // Whether an update ends if `meanwhile` runs after the old file was read.
    static bool updateReturns(const std::string& value, const std::filesystem::path& pipe,
                              const std::function<void()>& meanwhile) {
        auto result = std::async(std::launch::async, [&] {
            atTheEndOfAFile = meanwhile;
            const bool updated = util::updateKazConfig("wifi", value);
            return updated && !std::exchange(atTheEndOfAFile, nullptr);
        });
        if (result.wait_for(std::chrono::seconds(30)) != std::future_status::ready) {
            ::close(::open(pipe.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));  // lets it go on
            return false;
        }
        return result.get();
    }
};

// Its content may be a secret of another program, and it does not yet have the owner of the file.
TEST_F(ConfigUpdateMeanwhile, TheNewFileIsClosedToOthersWhileItIsWritten) {
    write(oldText);
    ASSERT_EQ(::chmod(file().c_str(), 0644), 0);
    std::vector<mode_t> modes;
    beforeAWrite = [&] {
        struct stat status {};
        if (::stat((file().string() + ".tmp").c_str(), &status) == 0) {
            modes.push_back(status.st_mode & 07777U);
        }
    };
    EXPECT_TRUE(util::updateKazConfig("wifi", "off"));
    beforeAWrite = nullptr;
    EXPECT_THAT(modes, ::testing::ElementsAre(0600U));
    struct stat status {};
    ASSERT_EQ(::stat(file().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0644U);
}

TEST_F(ConfigUpdateMeanwhile, ATemporaryFileThatAnotherProcessMakesIsNotWritten) {
    write(oldText);
    writeFile(folder() / "kaz.conf.tmp", "mine");
    planned = {"unlink", ENOENT};  // as if it came right after it was looked for
    std::string seen;
    beforeAWrite = [&] { seen += "written"; };
    EXPECT_FALSE(util::updateKazConfig("wifi", "off"));
    beforeAWrite = nullptr;
    EXPECT_FALSE(planned.has_value());
    EXPECT_EQ(seen, "");
    EXPECT_EQ(text(), oldText);
    EXPECT_THAT(log().texts(spdlog::level::warn),
                ::testing::ElementsAre(::testing::HasSubstr("File exists")));
}

TEST_F(ConfigUpdateMeanwhile, APipeInThePlaceOfTheFileIsNotWaitedFor) {
    for (const char* value : {"off", "on"}) {
        SCOPED_TRACE(value);
        std::filesystem::remove(file());
        write("wifi=off\n");
        EXPECT_TRUE(updateReturns(value, file(), [this] { replaceByPipe(); }));
    }
    EXPECT_EQ(text(), "wifi=on\n") << "a new value replaces the pipe";
}

}  // namespace
}  // namespace kaz::test
