/// @file
/// The device's shared configuration file, a list of "key=value" lines.
///
/// The key is all before the first "=" of a line, the value all after it, both taken as they stand: blanks are
/// part of them. A line ends with LF or CR LF. Blank lines, lines that begin with "#", and lines without a key
/// or without "=" mean nothing. Of several lines with one key the last counts.
///
/// Any number of processes and threads may read and update the file at the same time. Nothing here throws;
/// what goes wrong is logged at warning level, never with the content of the file.
#pragma once

#include <map>
#include <string>

namespace kaz::util {

/// Where the file is, unless the environment variable KAZ_CONFIG_FILE names another. (Programs that run with
/// raised privileges ignore the variable.)
inline constexpr const char* kazConfigPath = "/home/root/.config/tessaline/kaz.conf";

/// The whole configuration. A file that is missing, cannot be read or is larger than 1 MiB gives an empty map;
/// a missing one is not logged. Never waits for a writer, and sees the file as it was before or after an
/// update, never in between.
[[gnu::visibility("default")]] std::map<std::string, std::string> readKazConfig();

/// Sets one key and keeps every other byte of the file; where the key had several lines, one is left. A
/// missing file is created, with its folders. A symbolic link is followed. The file keeps its mode, and its
/// owner where this process may say so.
///
/// True when the file with the new value is on disk. On false the file is as it was, but for one case: the new
/// one is in place and only the disk did not confirm it. A process killed half-way leaves the old file or the
/// new one, and no lock.
///
/// Refused are: an empty key, a key that begins with "#" or holds "=", a line break (LF or CR) or NUL in key
/// or value, a file that exists but cannot be read, and a change after which the file could not be read.
///
/// Blocks for the disk and for other writers, which take turns by a lock on a file beside the configuration,
/// named like it with ".lock" appended. That file stays.
[[gnu::visibility("default")]] bool updateKazConfig(const std::string& key, const std::string& value);

}  // namespace kaz::util
