// The path of the file, and its properties that a replacement keeps.
#include "base/non_copyable.h"
#include "support/process/child_process.h"
#include "unit/platform_common/config_fixture.h"

#include <sys/stat.h>
#include <unistd.h>

namespace kaz::test {
namespace {

namespace fs = std::filesystem;
using Entries = std::map<std::string, std::string>;

class ConfigFiles : public ConfigFixture {
  protected:
    struct ::stat statusOf(const fs::path& path) {
        struct ::stat status {};
        EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
        return status;
    }
    // An update by the user 12345.
    void updateAsUser() const {
        ChildProcess user([] {
            return ::setgid(23456) == 0 && ::setuid(12345) == 0 && util::updateKazConfig("wifi", "off") ? 0
                                                                                                        : 1;
        });
        EXPECT_EQ(user.wait(), 0);
        EXPECT_EQ(text(), "wifi=off\n");
    }
    mode_t modeOf(const fs::path& path) { return statusOf(path).st_mode & 07777; }
};

// Sets the umask to zero until the end of scope.
class OpenUmask : NonCopyable {
  public:
    OpenUmask() = default;
    ~OpenUmask() { ::umask(former_); }

  private:
    mode_t former_ = ::umask(0);
};

TEST_F(ConfigFiles, AMissingFileIsAnEmptyConfigurationAndNotLogged) {
    EXPECT_EQ(util::readKazConfig(), Entries{});
    useFile(folder() / "no/such/folder/kaz.conf");
    EXPECT_EQ(util::readKazConfig(), Entries{});
    EXPECT_TRUE(log().records().empty());
    EXPECT_TRUE(contentOf(folder()).empty());
}

TEST_F(ConfigFiles, AnUpdateCreatesTheFileAndTheMissingFolders) {
    const fs::path deep = folder() / "a/b/c/kaz.conf";
    useFile(deep);
    EXPECT_TRUE(util::updateKazConfig("wifi", "off"));
    EXPECT_EQ(readFile(deep), "wifi=off\n");
}

TEST_F(ConfigFiles, NothingThatIsCreatedIsWritableForEverybody) {
    const OpenUmask umask;
    const fs::path deep = folder() / "a/b/kaz.conf";
    useFile(deep);
    ASSERT_TRUE(util::updateKazConfig("wifi", "off"));
    EXPECT_EQ(modeOf(folder() / "a"), 0755U);
    EXPECT_EQ(modeOf(folder() / "a/b"), 0755U);
    EXPECT_EQ(modeOf(deep), 0644U);
    EXPECT_EQ(modeOf(deep.string() + ".lock"), 0600U);
}

TEST_F(ConfigFiles, AnUpdateLeavesNothingBesideTheFileButItsLock) {
    ASSERT_TRUE(util::updateKazConfig("wifi", "off"));
    ASSERT_TRUE(util::updateKazConfig("wifi", "on"));
    EXPECT_EQ(contentOf(folder()), (std::set<std::string>{"kaz.conf", "kaz.conf.lock"}));
    EXPECT_EQ(fs::file_size(folder() / "kaz.conf.lock"), 0U);
}

TEST_F(ConfigFiles, WhatADeadWriterLeftIsClearedAway) {
    write("wifi=on\n");
    writeFile(folder() / "kaz.conf.tmp", "wifi=half");
    fs::permissions(folder() / "kaz.conf.tmp", fs::perms::none);
    ASSERT_TRUE(util::updateKazConfig("wifi", "off"));
    EXPECT_EQ(text(), "wifi=off\n");
    EXPECT_EQ(contentOf(folder()), (std::set<std::string>{"kaz.conf", "kaz.conf.lock"}));
}

TEST_F(ConfigFiles, ALinkInThePlaceOfTheTemporaryFileIsNotWrittenThrough) {
    write("wifi=on\n");
    writeFile(folder() / "victim", "mine");
    fs::create_symlink(folder() / "victim", folder() / "kaz.conf.tmp");
    EXPECT_TRUE(util::updateKazConfig("wifi", "off"));
    EXPECT_EQ(readFile(folder() / "victim"), "mine");
    EXPECT_EQ(text(), "wifi=off\n");
}

TEST_F(ConfigFiles, TheModeIsKept) {
    for (const mode_t mode : {0600U, 0640U, 0644U, 0664U, 0666U, 0400U, 0755U}) {
        SCOPED_TRACE(mode);
        write("wifi=on\n");
        ASSERT_EQ(::chmod(file().c_str(), mode), 0);
        EXPECT_TRUE(util::updateKazConfig("wifi", "off"));
        EXPECT_EQ(modeOf(file()), mode);
        EXPECT_EQ(text(), "wifi=off\n");
        fs::remove(file());
    }
}

TEST_F(ConfigFiles, TheOwnerIsKept) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root may give files away";
    }
    for (const mode_t mode : {0640U, 04750U}) {  // a change of the owner clears the set-user-ID bit
        write("wifi=on\n");
        ASSERT_EQ(::chown(file().c_str(), 12345, 23456), 0);
        ASSERT_EQ(::chmod(file().c_str(), mode), 0);
        ASSERT_TRUE(util::updateKazConfig("wifi", "off"));
        EXPECT_EQ(statusOf(file()).st_uid, 12345U);
        EXPECT_EQ(statusOf(file()).st_gid, 23456U);
        EXPECT_EQ(modeOf(file()), mode);
        fs::remove(file());
    }
}

TEST_F(ConfigFiles, AnUpdateThatMayNotKeepTheOwnerStillSucceeds) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs two users";
    }
    write("wifi=on\n");
    ASSERT_EQ(::chmod(file().c_str(), 0644), 0);
    ASSERT_EQ(::chown(folder().path().c_str(), 12345, 23456), 0);
    updateAsUser();
    EXPECT_EQ(statusOf(file()).st_uid, 12345U);
    EXPECT_EQ(modeOf(file()), 0644U);
}

TEST_F(ConfigFiles, AnUpdateByRootDoesNotLockTheOwnerOfTheFolderOut) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs two users";
    }
    ASSERT_EQ(::chown(folder().path().c_str(), 12345, 23456), 0);
    ASSERT_TRUE(util::updateKazConfig("wifi", "on"));
    EXPECT_EQ(statusOf(folder() / "kaz.conf.lock").st_uid, 12345U);
    updateAsUser();
}

TEST_F(ConfigFiles, TheGroupThatMayWriteInTheFolderMayLock) {
    ASSERT_EQ(::chmod(folder().path().c_str(), 0770), 0);
    ASSERT_TRUE(util::updateKazConfig("wifi", "on"));
    EXPECT_EQ(modeOf(folder() / "kaz.conf.lock"), 0660U);
}

TEST_F(ConfigFiles, TheSameValueAgainDoesNotReplaceTheFile) {
    ASSERT_TRUE(util::updateKazConfig("wifi", "off"));
    const auto before = statusOf(file()).st_ino;
    EXPECT_TRUE(util::updateKazConfig("wifi", "off"));
    EXPECT_EQ(statusOf(file()).st_ino, before);
    EXPECT_TRUE(util::updateKazConfig("wifi", "on"));
    EXPECT_NE(statusOf(file()).st_ino, before);
}

TEST_F(ConfigFiles, SymbolicLinksAreFollowed) {
    fs::create_directories(folder() / "etc");
    fs::create_directories(folder() / "data");
    const fs::path real = folder() / "data/real.conf";
    fs::create_symlink(real, folder() / "absolute");
    fs::create_symlink("../data/real.conf", folder() / "etc/relative");
    fs::create_symlink("etc/relative", folder() / "chain");
    fs::create_directory_symlink("data", folder() / "folder");
    for (const char* link : {"absolute", "etc/relative", "chain", "folder/real.conf"}) {
        SCOPED_TRACE(link);
        const auto kind = fs::symlink_status(folder() / link).type();
        writeFile(real, "a=1\n");
        useFile(folder() / link);
        EXPECT_TRUE(util::updateKazConfig("wifi", "off"));
        EXPECT_EQ(readFile(real), "a=1\nwifi=off\n");
        EXPECT_EQ(fs::symlink_status(folder() / link).type(), kind);
        EXPECT_EQ(util::readKazConfig(), (Entries{{"a", "1"}, {"wifi", "off"}}));
    }
    EXPECT_TRUE(fs::exists(folder() / "data/real.conf.lock")) << "one lock, whichever way was taken";
    EXPECT_FALSE(fs::exists(folder() / "chain.lock"));
}

TEST_F(ConfigFiles, AChainOfAsManyLinksAsTheKernelFollowsIsFollowed) {
    fs::create_symlink("kaz.conf", folder() / "1");
    for (int number = 2; number <= 40; ++number) {
        fs::create_symlink(std::to_string(number - 1), folder() / std::to_string(number));
    }
    write("a=1\n");
    useFile(folder() / "40");
    EXPECT_TRUE(util::updateKazConfig("wifi", "off"));
    EXPECT_EQ(text(), "a=1\nwifi=off\n");
}

TEST_F(ConfigFiles, ALinkInThePlaceOfTheLockIsNotFollowed) {
    write("wifi=on\n");
    fs::create_symlink(folder() / "victim", folder() / "kaz.conf.lock");
    EXPECT_FALSE(util::updateKazConfig("wifi", "off"));
    EXPECT_FALSE(fs::exists(folder() / "victim"));
    writeFile(folder() / "victim", "mine");
    EXPECT_FALSE(util::updateKazConfig("wifi", "off"));
    EXPECT_EQ(text(), "wifi=on\n");
}

TEST_F(ConfigFiles, ALinkToNowhereIsFilledWithAFile) {
    fs::create_symlink("not/yet/real.conf", file());
    EXPECT_EQ(util::readKazConfig(), Entries{});
    EXPECT_TRUE(util::updateKazConfig("wifi", "off"));
    EXPECT_TRUE(fs::is_symlink(file()));
    EXPECT_EQ(readFile(folder() / "not/yet/real.conf"), "wifi=off\n");
}

TEST_F(ConfigFiles, ARelativePathIsTakenFromTheWorkingFolder) {
    ChildProcess child([this] {
        fs::current_path(folder().path());
        useFile("bare.conf");
        return util::updateKazConfig("wifi", "off") ? 0 : 1;
    });
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(readFile(folder() / "bare.conf"), "wifi=off\n");
}

// With another real group than the effective one, the kernel treats a program as one with raised privileges.
TEST_F(ConfigFiles, AProgramWithRaisedPrivilegesIgnoresTheChosenPath) {
    write("chosen=yes\n");
    const auto readBy = [](gid_t group) {
        ChildProcess reader([group] {
            if (::setresgid(group, ::getegid(), ::getegid()) != 0) {
                return 77;
            }
            ::execl(KAZ_READING_PROGRAM, KAZ_READING_PROGRAM, "chosen", nullptr);
            return 97;
        });
        return reader.wait();
    };
    EXPECT_EQ(readBy(::getgid()), 0);
    const int status = readBy(12345);
    if (status == 77) {
        GTEST_SKIP() << "only root may have another group";
    }
    EXPECT_EQ(status, 1);
}

TEST_F(ConfigFiles, WithoutAChosenPathTheDevicesFileIsUsed) {
    for (const char* chosen : {static_cast<const char*>(nullptr), ""}) {
        SCOPED_TRACE(chosen != nullptr ? "an empty one" : "none");
        ChildProcess child([&] {
            if (::chroot(folder().path().c_str()) != 0 || ::chdir("/") != 0) {
                return 77;
            }
            if (chosen != nullptr) {
                useFile(chosen);
            } else {
                ::unsetenv("KAZ_CONFIG_FILE");
            }
            return util::updateKazConfig("wifi", "off") && util::readKazConfig().at("wifi") == "off" ? 0 : 1;
        });
        const int status = child.wait();
        if (status == 77) {
            GTEST_SKIP() << "only root may change the root folder";
        }
        EXPECT_EQ(status, 0);
        EXPECT_EQ(readFile(folder() / "home/root/.config/tessaline/kaz.conf"), "wifi=off\n");
        fs::remove_all(folder() / "home");
    }
}

}  // namespace
}  // namespace kaz::test
