#include "base/file_replacement.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <fstream>
#include <iterator>
#include <string>

#include "base/errno_text.h"
#include "base/file_error.h"
#include "base/temporary_folder.h"

namespace kaz::test {
namespace {

class FileReplacing : public ::testing::Test {
  protected:
    std::string text() const {
        std::ifstream in(replacement.target);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    const TemporaryFolder folder{"kaz-base-test-"};
    FileReplacement replacement{folder / "target", folder / "temporary", S_IRUSR | S_IWUSR, nullptr};
};

TEST_F(FileReplacing, GivesTheTargetTheNewTextAndMode) {
    std::ofstream(replacement.target) << "old";
    std::ofstream(replacement.temporary) << "left by a dead writer";
    replaceFile(replacement, "new");
    EXPECT_EQ(text(), "new");
    EXPECT_FALSE(std::filesystem::exists(replacement.temporary));
    EXPECT_EQ(std::filesystem::status(replacement.target).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(FileReplacing, KeepsTheNewFileFromChildrenThatRunOtherPrograms) {
    int flags = 0;
    replacement.prepare = [&](const FileDescriptor& file) { flags = ::fcntl(file.get(), F_GETFD); };
    replaceFile(replacement, "new");
    EXPECT_EQ(flags, FD_CLOEXEC);
}

TEST_F(FileReplacing, LeavesTheOldFileWhenPreparingTheNewOneFails) {
    std::ofstream(replacement.target) << "old";
    replacement.prepare = [](const FileDescriptor&) { throw FileError("flush", "/a", EIO); };
    EXPECT_THROW(replaceFile(replacement, "new"), FileError);
    EXPECT_EQ(text(), "old");
    EXPECT_FALSE(std::filesystem::exists(replacement.temporary));
}

TEST_F(FileReplacing, NamesTheStepTheFileAndTheCauseWhenItFails) {
    replacement.temporary = folder / "missing/temporary";
    try {
        replaceFile(replacement, "new");
        ADD_FAILURE() << "replaced";
    } catch (const FileError& error) {
        EXPECT_EQ(error.what(), "open " + replacement.temporary.string() + ": " + errnoText(ENOENT));
    }
}

TEST(ErrnoText, IsTheSameForANegatedNumber) {
    EXPECT_EQ(errnoText(EACCES), "Permission denied");
    EXPECT_EQ(errnoText(-EACCES), "Permission denied");
    EXPECT_EQ(errnoText(99999), "Unknown error 99999");
}

}  // namespace
}  // namespace kaz::test
