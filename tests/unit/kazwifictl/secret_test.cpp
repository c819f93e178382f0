#include "kazwifictl/input/secret.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "base/wipe.h"
#include "kazwifictl/text/failure.h"
#include "unit/kazwifictl/secret_file.h"

namespace kaz::ctl {
namespace {

using test::SecretFile;

class SecretTest : public testing::Test {
  protected:
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
        EXPECT_EQ(readSecret(SecretFile(content).path(), interrupts), secret) << content;
    }
}

TEST_F(SecretTest, IsNotReadFromWhereThereIsNone) {
    EXPECT_THROW(readSecret("/nonexistent/key", interrupts), CommandFailed);
    EXPECT_THROW(readSecret("/", interrupts), CommandFailed);
    EXPECT_THROW(readSecret(SecretFile(std::string(5000, 'x')).path(), interrupts), CommandFailed);
}

TEST_F(SecretTest, IsNotRepeatedInAnError) {
    try {
        readSecret(SecretFile(std::string(5000, 'x')).path(), interrupts);
        FAIL() << "was accepted";
    } catch (const CommandFailed& failed) {
        EXPECT_EQ(errorLine(failed.failure()).find("xxx"), std::string::npos);
    }
}

// The reader of a named pipe without a writer waits.
TEST_F(SecretTest, IsGivenUpOnASignal) {
    std::string name;
    {
        const SecretFile unique("");
        name = unique.path();
    }
    ASSERT_EQ(::mkfifo(name.c_str(), 0600), 0);
    ::kill(::getpid(), SIGINT);
    EXPECT_THROW(readSecret(name, interrupts), Interrupted);
    ::unlink(name.c_str());
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
