#include "vm/command.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace kaz::vm {

std::string run(const std::string& command) {
    FILE* const pipe = popen(("{ " + command + "; } 2>&1").c_str(), "re");
    if (pipe == nullptr) {
        throw std::runtime_error("cannot run: " + command);
    }
    std::string output;
    std::array<char, 4096> buffer{};
    for (std::size_t size = 0; (size = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
        output.append(buffer.data(), size);
    }
    if (pclose(pipe) != 0) {
        throw std::runtime_error("failed: " + command + "\n" + output);
    }
    return output;
}

bool succeeds(const std::string& command) {
    return std::system(("{ " + command + "; } >/dev/null 2>&1").c_str()) == 0;
}

}  // namespace kaz::vm
