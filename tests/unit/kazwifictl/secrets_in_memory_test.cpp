// However a command ends that has read a password, no memory is freed with the password in it. A program of its own,
// because it replaces operator new and delete.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "base/file_descriptor.h"
#include "base/temporary_folder.h"
#include "base/wipe.h"
#include "base/write_all.h"
#include "kazwifictl/commands/commands.h"
#include "kazwifictl/input/secret.h"
#include "kazwifictl/session/workspace.h"
#include "kazwifictl/text/failure.h"
#include "support/files/files.h"
#include "support/freed_memory_watch/freed_memory_watch.h"
#include "unit/kazwifictl/fake_world.h"

namespace kaz::ctl {
namespace {

using test::FakeWorld;
using test::FreedMemoryWatch;
using wifi::SecurityMode;

class SecretsOfAConnect : public testing::Test {
  protected:
    SecretsOfAConnect() {
        world.inRange = {test::network("Home", -50, SecurityMode::rsnPsk)};
        options.command = Command::connect;
        options.ssid = "Home";
        options.startWait = std::chrono::milliseconds(400);
        options.connect.passwordFile = folder / "password";
    }

    void savePassword(const std::string& text) const { test::writeFile(folder / "password", text); }

    // The command connect, which must fail.
    ExitCode connect() {
        Workspace place(Workspace::Kind::oneCommand, interrupts, options.startWait);
        try {
            return connectTo(options, place, output).failure.value().code;
        } catch (const CommandFailed& failed) {
            return failed.failure().code;
        }
    }

    const std::string secret = "correct horse battery staple";
    const TemporaryFolder folder;
    FakeWorld world;
    Interrupts interrupts;
    Options options;
    Output output{ColourChoice::never, true};
};

TEST_F(SecretsOfAConnect, WatchSeesAPasswordThatIsFreedUnwiped) {
    const FreedMemoryWatch watch(secret);
    static_cast<void>(std::make_unique<std::string>(secret));
    EXPECT_GE(watch.leaks(), 1U);
}

TEST_F(SecretsOfAConnect, PasswordIsWipedWhenTheSettingsAreRefused) {
    savePassword(secret + "\n");
    options.connect.security = SecurityMode::enterprise;
    options.connect.identity = "me";
    options.connect.eapMethod = "MD5";
    const FreedMemoryWatch watch(secret);
    EXPECT_EQ(connect(), ExitCode::refused);
    EXPECT_EQ(watch.leaks(), 0U);
}

TEST_F(SecretsOfAConnect, PasswordIsWipedWhenTheSupplicantStopsBeforeTheRequest) {
    savePassword(secret + "\n");
    world.whenAttached = [this] {  // the Manager that looks, not the one that connects
        const std::lock_guard lock(world.mutex);
        world.running = false;
    };
    const FreedMemoryWatch watch(secret);
    EXPECT_EQ(connect(), ExitCode::noStack);
    EXPECT_EQ(watch.leaks(), 0U);
}

// Reading must not move a part of it, either.
TEST_F(SecretsOfAConnect, PasswordIsReadWithoutACopyThatStaysUnwiped) {
    for (const std::size_t size : {0U, 500U, 4000U}) {
        savePassword(secret + std::string(size, 'x') + "\r\n");
        const FreedMemoryWatch watch(secret);
        std::string read = readSecret(folder / "password", interrupts);
        EXPECT_EQ(read.size(), secret.size() + size);
        wipe(read);
        EXPECT_EQ(watch.leaks(), 0U) << size;
    }
}

TEST_F(SecretsOfAConnect, PasswordIsWipedWhenItsLineIsTooLong) {
    savePassword(secret + std::string(5000, 'x'));
    const FreedMemoryWatch watch(secret);
    EXPECT_THROW(readSecret(folder / "password", interrupts), CommandFailed);
    EXPECT_EQ(watch.leaks(), 0U);
}

TEST_F(SecretsOfAConnect, HalfAPasswordIsWipedOnASignal) {
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const FileDescriptor both(::open(pipe.c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_TRUE(writeAll(both.get(), secret));
    std::thread user([&] {
        for (int left = 1; left > 0;) {  // until it is read
            std::this_thread::yield();
            ASSERT_EQ(::ioctl(both.get(), FIONREAD, &left), 0);
        }
        ::kill(::getpid(), SIGINT);
    });
    const FreedMemoryWatch watch(secret);
    EXPECT_THROW(readSecret(pipe, interrupts), Interrupted);
    user.join();
    EXPECT_EQ(watch.leaks(), 0U);
}

}  // namespace
}  // namespace kaz::ctl
