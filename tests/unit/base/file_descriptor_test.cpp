#include "base/file_descriptor.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <type_traits>
#include <utility>

#include "base/event_fd.h"
#include "base/pipe.h"

namespace kaz::test {
namespace {

static_assert(std::is_nothrow_move_constructible_v<FileDescriptor> &&
              !std::is_copy_constructible_v<FileDescriptor>);

// The other end of the pipe hangs up when this end is closed.
bool hungUp(const FileDescriptor& end) {
    pollfd waited{end.get(), 0, 0};
    return ::poll(&waited, 1, 0) == 1;
}

TEST(FileDescriptor, IsClosedAtTheEndOfItsScope) {
    Pipe pipe;
    {
        const FileDescriptor end = std::move(pipe.writing);
        EXPECT_FALSE(pipe.writing.isOpen());  // NOLINT(bugprone-use-after-move): that is the promise
        EXPECT_FALSE(hungUp(pipe.reading));
    }
    EXPECT_TRUE(hungUp(pipe.reading));
}

TEST(FileDescriptor, IsClosedWhenAnotherIsAssigned) {
    Pipe pipe;
    pipe.writing = FileDescriptor();
    EXPECT_FALSE(pipe.writing.isOpen());
    EXPECT_TRUE(hungUp(pipe.reading));
}

TEST(FileDescriptor, SurvivesBeingAssignedToItself) {
    Pipe pipe;
    FileDescriptor& same = pipe.writing;
    pipe.writing = std::move(same);
    EXPECT_TRUE(pipe.writing.isOpen());
    EXPECT_FALSE(hungUp(pipe.reading));
}

TEST(EventFd, IsReadableFromSetToClear) {
    const EventFd event;
    pollfd waited{event.get(), POLLIN, 0};
    EXPECT_EQ(::poll(&waited, 1, 0), 0);
    event.set();
    event.set();
    EXPECT_EQ(::poll(&waited, 1, 0), 1);
    event.clear();
    EXPECT_EQ(::poll(&waited, 1, 0), 0);
}

}  // namespace
}  // namespace kaz::test
