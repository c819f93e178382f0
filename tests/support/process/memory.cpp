#include "support/process/memory.h"

#include "base/checked.h"
#include "base/file_descriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <sstream>
#include <string_view>

namespace kaz::test {
namespace {

struct Region {
    off_t begin = 0;
    off_t end = 0;
    std::string name;
};

std::vector<Region> readableRegions(pid_t process) {
    std::ifstream maps("/proc/" + std::to_string(process) + "/maps");
    std::vector<Region> regions;
    for (std::string line; std::getline(maps, line);) {
        Region region;
        char dash = 0;
        std::string rights;
        std::string offset;
        std::string device;
        std::string inode;
        std::istringstream(line) >> std::hex >> region.begin >> dash >> region.end >> rights >> offset >>
            device >> inode >> region.name;
        // The kernel's own pages, which cannot be read in this way.
        const bool ofTheKernel = region.name.rfind("[v", 0) == 0;
        if (!rights.empty() && rights.front() == 'r' && !ofTheKernel) {
            regions.push_back(std::move(region));
        }
    }
    return regions;
}

// The content of a region; shorter if the region was unmapped while it was read.
std::string contentOf(int memory, const Region& region) {
    std::string content(static_cast<std::size_t>(region.end - region.begin), '\0');
    std::size_t count = 0;
    while (count < content.size()) {
        const ssize_t got = ::pread(memory, content.data() + count, content.size() - count,
                                    region.begin + static_cast<off_t>(count));
        if (got <= 0) {
            break;
        }
        count += static_cast<std::size_t>(got);
    }
    content.resize(count);
    return content;
}

// The allocator overwrites parts of freed memory, so only a piece of the secret may remain.
std::vector<std::string_view> piecesOf(std::string_view secret) {
    constexpr std::size_t size = 8;
    if (secret.size() <= size) {
        return {secret};
    }
    std::vector<std::string_view> pieces;
    for (std::size_t at = 0; at + size < secret.size(); at += size) {
        pieces.push_back(secret.substr(at, size));
    }
    pieces.push_back(secret.substr(secret.size() - size));
    return pieces;
}

}  // namespace

std::vector<std::string> placesInMemory(pid_t process, const std::string& secret) {
    const FileDescriptor memory(
        ::open(("/proc/" + std::to_string(process) + "/mem").c_str(), O_RDONLY | O_CLOEXEC));
    if (!memory.isOpen()) {
        throwErrno("cannot read the memory of another process");
    }
    const auto pieces = piecesOf(secret);
    std::vector<std::string> found;
    for (const Region& region : readableRegions(process)) {
        const std::string content = contentOf(memory.get(), region);
        if (std::any_of(pieces.begin(), pieces.end(),
                        [&](std::string_view piece) { return content.find(piece) != std::string::npos; })) {
            found.push_back(region.name.empty() ? "anonymous" : region.name);
        }
    }
    return found;
}

}  // namespace kaz::test
