#include "unit/platform_common/failing_memory.h"

#include <cstdlib>
#include <new>

namespace kaz::test {
namespace {

thread_local int allocationsUntilFailure = -1;

}  // namespace

FailingMemory::FailingMemory(int number) {
    allocationsUntilFailure = number;
}

FailingMemory::~FailingMemory() {
    allocationsUntilFailure = -1;
}

bool FailingMemory::hasFailed() const {
    return allocationsUntilFailure == 0;
}

}  // namespace kaz::test

// Replaces the C++ library's operator for all libraries of this program.
// NOLINTBEGIN(cppcoreguidelines-no-malloc)
void* operator new(std::size_t size) {
    int& untilFailure = kaz::test::allocationsUntilFailure;
    const bool fails = untilFailure > 0 && --untilFailure == 0;
    if (void* memory = fails ? nullptr : std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
// NOLINTEND(cppcoreguidelines-no-malloc)
