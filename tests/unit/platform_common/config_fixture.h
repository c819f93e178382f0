#pragma once

#include "base/temporary_folder.h"
#include "doubles/recording_log/recording_log.h"
#include "support/files/files.h"

#include <gtest/gtest.h>
#include <kaz/util/kaz_config.h>
#include <stdlib.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace kaz::test {

// A configuration file in a temporary folder, and the log.
class ConfigFixture : public ::testing::Test {
  protected:
    ConfigFixture() { useFile(file_); }
    ~ConfigFixture() override { ::unsetenv("KAZ_CONFIG_FILE"); }

    static void useFile(const std::filesystem::path& path) {
        ::setenv("KAZ_CONFIG_FILE", path.c_str(), 1 /* overwrite */);
    }

    const TemporaryFolder& folder() const { return folder_; }
    const std::filesystem::path& file() const { return file_; }
    RecordingLog& log() { return log_; }

    void write(std::string_view text) const { writeFile(file_, text); }
    std::string text() const { return readFile(file_); }

  private:
    TemporaryFolder folder_;
    std::filesystem::path file_ = folder_ / "kaz.conf";
    RecordingLog log_;
};

}  // namespace kaz::test
