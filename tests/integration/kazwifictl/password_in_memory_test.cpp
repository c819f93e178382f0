// Once the password is on its way to the supplicant, nothing of it remains in the memory of kazwifictl.
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "integration/kazwifictl/command_fixture.h"
#include "support/waiting/waiting.h"

namespace kaz::test {
namespace {

class PasswordInMemory : public CommandFixture {
  protected:
    PasswordInMemory() {
        neighbourhood.times.handshake =
            std::chrono::hours(24);        // so that the process runs while it is searched
        environment["LD_BIND_NOW"] = "1";  // as installed; lazy binding would leave registers on the stack
    }

    void expectGone(const std::unique_ptr<RunningProgram>& program) const {
        waitFor(*program, "Connecting to");
        EXPECT_TRUE(eventually([&] { return wasCalled("SelectNetwork"); }));
        EXPECT_TRUE(eventually([&] { return program->places(password).empty(); }))
            << ::testing::PrintToString(program->places(password));
    }

    const std::string password = "Marked~for~the~search";
};

TEST_F(PasswordInMemory, IsGoneDuringTheAttemptWhenReadFromAFile) {
    startAndScan();
    writeFile(file("key"), password + "\n");
    expectGone(withPipes({"connect", "Home", "--password-file", file("key")}));
}

TEST_F(PasswordInMemory, IsGoneDuringTheAttemptWhenReadFromTheStandardInput) {
    startAndScan();
    const auto program = withPipes({"connect", "Home"});
    program->send(password + "\n");
    expectGone(program);
}

// kazwifictl itself sends the settings of this one.
TEST_F(PasswordInMemory, IsGoneDuringTheAttemptWhenTheNameIsNotText) {
    neighbourhood.accessPoints.push_back(accessPoint("Late\xfe", sim::Security::wpa2, -40, "correct horse"));
    startAndScan();
    writeFile(file("key"), password + "\n");
    expectGone(withPipes({"connect", "--hex", "4c617465fe", "--password-file", file("key")}));
}

TEST_F(PasswordInMemory, IsGoneDuringTheAttemptWhenReadFromATerminal) {
    startAndScan();
    const auto program = inTerminal({"connect", "Home"});
    waitFor(*program, "Password for");
    program->send(password + "\n");
    expectGone(program);
}

}  // namespace
}  // namespace kaz::test
