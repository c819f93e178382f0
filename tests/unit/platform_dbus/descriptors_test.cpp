// The file descriptors of a loop are no business of the programs that the host starts, and end with the loop.
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>
#include <string>

#include "base/pipe.h"
#include "base/program.h"
#include "unit/platform_dbus/loop_fixture.h"

namespace kaz::test {
namespace {

class EventLoopDescriptors : public LoopTest {
  protected:
    // The descriptors of a program that is started now.
    static std::string inherited() {
        Pipe pipe;
        const pid_t child = startProgram({.command = {"ls", "/proc/self/fd"}, .output = pipe.writing.get()});
        pipe.writing = FileDescriptor();
        std::string listed;
        char letter = 0;
        while (::read(pipe.reading.get(), &letter, 1) == 1) {
            listed += letter;
        }
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
        return listed;
    }

    const std::string before = inherited();
};

TEST_F(EventLoopDescriptors, AreNotInheritedByAProgramThatAHandlerStarts) {
    BusPeer peer{peerName};
    Counter handled;
    std::string during;
    const Running running = start();
    registerForChanged(false, [&](dbus::MessageDecoder&) {
        loop->configureTimerSync(true, milliseconds(1000));
        during = inherited();
        ++handled;
    });
    peer.emit(changed, "");
    ASSERT_TRUE(handled.reaches(1));
    EXPECT_EQ(onLoop([&] { return during; }), before);
}

TEST_F(EventLoopDescriptors, AreClosedWithTheLoop) {
    const auto opened = [] {
        const std::filesystem::directory_iterator descriptors("/proc/self/fd");
        return std::distance(std::filesystem::begin(descriptors), std::filesystem::end(descriptors));
    };
    destroy(loop);
    const auto others = opened();
    loop = std::make_unique<dbus::EventLoop>();
    {
        const Running running = start();
        onLoop([&] { loop->configureTimerSync(true, milliseconds(1000)); });
        EXPECT_GT(opened(), others);
    }
    EXPECT_EQ(opened(), others);
}

}  // namespace
}  // namespace kaz::test
