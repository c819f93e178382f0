#include "base/temporary_folder.h"

#include <stdlib.h>

#include <system_error>

#include "base/checked.h"

namespace kaz {

TemporaryFolder::TemporaryFolder(const std::string& prefix) {
    std::string pattern = std::filesystem::temp_directory_path() / (prefix + "XXXXXX");
    if (::mkdtemp(pattern.data()) == nullptr) {
        throwErrno("cannot make " + pattern);
    }
    path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace kaz
