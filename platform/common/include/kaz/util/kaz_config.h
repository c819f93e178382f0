/// @file
/// The device's shared configuration file, a list of "key=value" lines.
///
/// The key is everything before the first "=" of a line, and the value everything after it, including blanks.
/// A line ends with LF or CR LF. Blank lines, lines that begin with "#", and lines without a key or without
/// "=" are ignored. If several lines have the same key, the last one is used.
///
/// Any number of processes and threads may read and update the file at the same time. Nothing here throws.
/// Errors are logged at warning level, never with the content of the file.
#pragma once

#include <map>
#include <string>

namespace kaz::util {

/// The path of the file, unless the environment variable KAZ_CONFIG_FILE names another. Programs that run
/// with raised privileges ignore the variable.
inline constexpr const char* kazConfigPath = "/home/root/.config/tessaline/kaz.conf";

/// Returns the whole configuration. A file that is missing, unreadable or larger than 1 MiB gives an empty
/// map; a missing file is not logged. Never waits for a writer. Reads the file as it was before or after an
/// update.
[[gnu::visibility("default")]] std::map<std::string, std::string> readKazConfig();

/// Sets one key and keeps every other byte of the file. If the key had several lines, one remains. Creates a
/// missing file and its folders. Follows a symbolic link. The file keeps its mode, and its owner if this
/// process has the permission to set it.
///
/// Returns true when the file with the new value is on disk. After false the file is unchanged, unless only the
/// last step failed, the sync of the folder: then the new file is in place. If the process is killed during the
/// call, either the old file or the new one remains, and no lock.
///
/// Refuses an empty key, a key that begins with "#" or contains "=", a line break (LF or CR) or NUL in key or
/// value, a file that exists but is unreadable, and a change that would make the file unreadable.
///
/// Blocks for the disk and for other writers. Writers lock a file beside the configuration, with the same
/// name and ".lock" appended. The lock file is never removed.
[[gnu::visibility("default")]] bool updateKazConfig(const std::string& key, const std::string& value);

}  // namespace kaz::util
