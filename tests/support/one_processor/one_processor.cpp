// Keeps a test program, and the programs that it starts, on the processor on which it begins. The threads and daemons of
// its tests wait for each other, and to wake one on another processor costs more than most of what they do then. It is not
// for tests of threads that race.
#include <sched.h>

namespace kaz::test {
namespace {

int stayHere() {
    const int here = ::sched_getcpu();
    if (here < 0 || here >= CPU_SETSIZE) {
        return -1;
    }
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<unsigned>(here), &one);
    return ::sched_setaffinity(0, sizeof(one), &one);
}

[[maybe_unused]] const int stays = stayHere();

}  // namespace
}  // namespace kaz::test
