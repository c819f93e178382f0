#include "support/out_of_memory/out_of_memory.h"

#include <cstdlib>
#include <new>

namespace {

enum class Memory { available, missingOnce, missing };
thread_local Memory memoryOfThread = Memory::available;

bool takeFailure() {
    const bool fails = memoryOfThread != Memory::available;
    if (memoryOfThread == Memory::missingOnce) {
        memoryOfThread = Memory::available;
    }
    return fails;
}

}  // namespace

// NOLINTBEGIN(cppcoreguidelines-no-malloc): there is nothing else below operator new
// Not inlined, or the compiler sees memory of a new expression go to free().
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return takeFailure() ? nullptr : std::malloc(size == 0 ? 1 : size);
}

[[gnu::noinline]] void* operator new(std::size_t size) {
    void* const memory = operator new(size, std::nothrow);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
// NOLINTEND(cppcoreguidelines-no-malloc)

namespace kaz::test {

OutOfMemory::OutOfMemory() {
    memoryOfThread = Memory::missing;
}

OutOfMemory::~OutOfMemory() {
    memoryOfThread = Memory::available;
}

void OutOfMemory::once() {
    memoryOfThread = Memory::missingOnce;
}

}  // namespace kaz::test
