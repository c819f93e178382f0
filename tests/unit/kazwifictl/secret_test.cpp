#include "kazwifictl/input/secret.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "base/temporary_folder.h"
#include "base/wipe.h"
#include "kazwifictl/text/failure.h"
#include "support/files/files.h"

namespace kaz::ctl {
namespace {

class SecretTest : public testing::Test {
  protected:
    // A file with this text, and its path.
    std::string file(const std::string& text) {
        test::writeFile(folder / "secret", text);
        return folder / "secret";
    }

    const TemporaryFolder folder;
    Interrupts interrupts;
};

TEST_F(SecretTest, IsTheFirstLineOfAFile) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"correct horse\n", "correct horse"},
        {"correct horse", "correct horse"},
        {"first\nsecond\n", "first"},
        {"dos\r\n", "dos"},
        {" blanks stay \n", " blanks stay "},
        {"", ""},
        {"\n", ""},
        {"b\xc3\xa4r\n", "b\xc3\xa4r"},
        {std::string(4096, 'x') + "\n", std::string(4096, 'x')},
    };
    for (const auto& [content, secret] : cases) {
        EXPECT_EQ(readSecret(file(content), interrupts), secret) << content;
    }
}

TEST_F(SecretTest, IsNotReadFromWhereThereIsNone) {
    EXPECT_THROW(readSecret("/nonexistent/key", interrupts), CommandFailed);
    EXPECT_THROW(readSecret("/", interrupts), CommandFailed);
    EXPECT_THROW(readSecret(file(std::string(5000, 'x')), interrupts), CommandFailed);
}

TEST_F(SecretTest, IsNotRepeatedInAnError) {
    try {
        readSecret(file(std::string(5000, 'x')), interrupts);
        FAIL() << "was accepted";
    } catch (const CommandFailed& failed) {
        EXPECT_EQ(errorLine(failed.failure()).find("xxx"), std::string::npos);
    }
}

// The reader of a named pipe without a writer waits.
TEST_F(SecretTest, IsGivenUpOnASignal) {
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    ::kill(::getpid(), SIGINT);
    EXPECT_THROW(readSecret(pipe, interrupts), Interrupted);
}

TEST_F(SecretTest, CanBeWiped) {
    std::string secret = "correct horse";
    const char* bytes = secret.data();
    const std::size_t size = secret.size();
    wipe(secret);
    EXPECT_TRUE(secret.empty());
    EXPECT_EQ(std::string(bytes, size).find("horse"), std::string::npos);
}

}  // namespace
}  // namespace kaz::ctl
