#include "support/freed_memory_watch/freed_memory_watch.h"

#include <malloc.h>
#include <string.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

std::atomic<const char*> watchedSecret = nullptr;
std::atomic<std::size_t> watchedSize = 0;
std::atomic<std::size_t> leakCount = 0;

// Blocks are cleared when they are handed out, so that what lies in one was put there by its owner and not by
// the one before.
void* allocate(std::size_t size) {
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): this is where memory comes from
    void* const block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return std::memset(block, 0, ::malloc_usable_size(block));
}

void release(void* block) noexcept {
    const char* const secret = watchedSecret;
    if (block != nullptr && secret != nullptr &&
        ::memmem(block, ::malloc_usable_size(block), secret, watchedSize) != nullptr) {
        ++leakCount;
    }
    std::free(block);  // NOLINT(cppcoreguidelines-no-malloc)
}

}  // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}
void* operator new[](std::size_t size) {
    return allocate(size);
}
void operator delete(void* block) noexcept {
    release(block);
}
void operator delete[](void* block) noexcept {
    release(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept {
    release(block);
}
void operator delete[](void* block, std::size_t /*size*/) noexcept {
    release(block);
}

namespace kaz::test {

FreedMemoryWatch::FreedMemoryWatch(std::string_view secret) {
    leakCount = 0;
    watchedSize = secret.size();
    watchedSecret = secret.data();
}

FreedMemoryWatch::~FreedMemoryWatch() {
    watchedSecret = nullptr;
}

std::size_t FreedMemoryWatch::leaks() const {
    return leakCount;
}

}  // namespace kaz::test
