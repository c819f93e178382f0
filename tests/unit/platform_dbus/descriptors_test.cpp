// The file descriptors of a loop are no business of the programs that the host starts.
#include <sys/wait.h>
#include <unistd.h>

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

}  // namespace
}  // namespace kaz::test
