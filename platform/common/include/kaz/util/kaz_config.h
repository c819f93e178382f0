#pragma once

#include <map>
#include <string>

namespace kaz::util {

// The device's shared configuration file: one "key=value" a line. Blank lines and lines that begin with "#"
// mean nothing and are kept. Any number of processes and threads may read and update it at the same time.
inline constexpr const char* kazConfigPath = "/home/root/.config/tessaline/kaz.conf";

// The whole configuration. A file that is missing or cannot be read gives an empty map.
[[gnu::visibility("default")]] std::map<std::string, std::string> readKazConfig();

// Sets one key and keeps everything else. True when the file with the new value is safely on disk; on false
// the file is as it was. Refused are an empty key, a key with "=" or a line break, and a value with a line
// break.
[[gnu::visibility("default")]] bool updateKazConfig(const std::string& key, const std::string& value);

}  // namespace kaz::util
