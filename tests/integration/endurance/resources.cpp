#include "integration/endurance/resources.h"

#include <malloc.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

// Exists only if a sanitizer replaces the C library's allocator.
// NOLINTNEXTLINE(*-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming): the sanitizers'
extern "C" [[gnu::weak]] std::size_t __sanitizer_get_current_allocated_bytes();

namespace kaz::test {
namespace {

// One arena for all threads, because the C library counts only the first one.
[[maybe_unused]] const int oneArena = ::mallopt(M_ARENA_MAX, 1);

// The C library counts the freed blocks in a thread's cache as allocated. The cache can only be disabled before the
// program starts, so the program executes itself again.
[[gnu::constructor]] void keepNothingFreed(int /*count*/, char** arguments) {
    constexpr const char* name = "GLIBC_TUNABLES";
    if (__sanitizer_get_current_allocated_bytes == nullptr && ::getenv(name) == nullptr &&
        ::setenv(name, "glibc.malloc.tcache_count=0:glibc.malloc.mxfast=0", 0 /* overwrite */) == 0) {
        ::execv("/proc/self/exe", arguments);
    }
}

}  // namespace

std::size_t openDescriptors() {
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

std::size_t allocatedBytes() {
    if (__sanitizer_get_current_allocated_bytes != nullptr) {
        return __sanitizer_get_current_allocated_bytes();
    }
    const struct mallinfo2 info = ::mallinfo2();
    return info.uordblks + info.hblkhd;  // the large blocks are mapped, each by itself
}

std::size_t residentBytes() {
    if (__sanitizer_get_current_allocated_bytes != nullptr) {
        return 0;
    }
    ::malloc_trim(0);
    std::size_t total = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

}  // namespace kaz::test
