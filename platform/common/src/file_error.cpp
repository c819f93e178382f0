#include "platform/common/file_error.h"

#include <fmt/format.h>

#include <cstring>

namespace kaz::util {
namespace {

const char* description(int error) {
    const char* text = ::strerrordesc_np(error);
    return text != nullptr ? text : "unknown error";
}

}  // namespace

FileError::FileError(std::string_view step, const std::filesystem::path& path, int error)
    : std::runtime_error(fmt::format("{} {}: {}", step, path.native(), description(error))) {}

}  // namespace kaz::util
