#include "base/file_error.h"
#include "base/log.h"
#include "platform/common/config_lock.h"
#include "platform/common/stored_file.h"
#include "platform/common/syntax/config_text.h"

#include <kaz/util/kaz_config.h>

#include <cerrno>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string_view>

namespace kaz::util {
namespace {

constexpr std::size_t sizeLimit = std::size_t{1024} * 1024;

std::filesystem::path configPath() {
    const char* chosen = ::secure_getenv("KAZ_CONFIG_FILE");
    return chosen != nullptr && *chosen != '\0' ? chosen : kazConfigPath;
}

void warn(std::string_view failure, std::string_view reason) noexcept {
    log::warn("Couldn't {} the configuration: {}", failure, reason);
}

void update(const std::string& key, const std::string& value) {
    const auto target = followLinks(configPath());
    if (!target.has_filename()) {
        throw FileError("write", target, EISDIR);
    }
    makeFolders(folderOf(target));
    const ConfigLock lock(target);
    const auto old = readFile(target, sizeLimit);
    const std::string text = withEntry(old ? old->text : "", key, value);
    if (text.size() > sizeLimit) {
        throw FileError("write", target, EFBIG);
    }
    if (old && old->text == text) {
        flushFile(*old, target);
    } else {
        replaceStoredFile(target, text, old ? std::optional(old->access) : std::nullopt);
    }
}

}  // namespace

std::map<std::string, std::string> readKazConfig() {
    try {
        const auto file = readFile(configPath(), sizeLimit);
        return file ? parseConfig(file->text) : std::map<std::string, std::string>();
    } catch (const std::exception& error) {
        warn("read", error.what());
        return {};
    }
}

bool updateKazConfig(const std::string& key, const std::string& value) {
    if (const char* reason = refusal(key, value)) {
        warn("change", reason);
        return false;
    }
    try {
        update(key, value);
        return true;
    } catch (const std::exception& error) {
        warn("change", error.what());
        return false;
    }
}

}  // namespace kaz::util
