#include "base/temporary_folder.h"

#include <gtest/gtest.h>
#include <kaz/dbus/dbus_error.h>
#include <libintl.h>

#include <array>
#include <cerrno>
#include <climits>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using kaz::dbus::DbusError;

TEST(DbusError, DescribesCodes) {
    const std::vector<std::pair<int, std::string>> cases{
        {-EINVAL, "Invalid argument"},         {-ENXIO, "No such device or address"},
        {-ETIMEDOUT, "Connection timed out"},  {-EBADMSG, "Bad message"},
        {EINVAL, "Invalid argument"},          {0, "Success"},
        {-99999, "Unknown error 99999"},       {99999, "Unknown error 99999"},
        {INT_MIN, "Unknown error 2147483648"},
    };
    for (const auto& [code, text] : cases) {
        EXPECT_EQ(DbusError(code).error(), text) << "code " << code;
    }
}

// The catalogue of a language in which "Invalid argument" is "translated".
void writeCatalogue(const std::filesystem::path& file) {
    const std::string header = "Content-Type: text/plain; charset=UTF-8\n";
    const std::string original = "Invalid argument";
    const std::string translation = "translated";
    constexpr uint32_t strings = 28 + 2 * 2 * 8;
    const auto length = [](const std::string& text) { return static_cast<uint32_t>(text.size()); };
    const uint32_t originalAt = strings + 1;
    const uint32_t headerAt = originalAt + length(original) + 1;
    const uint32_t translationAt = headerAt + length(header) + 1;
    const std::array<uint32_t, 15> words{0x950412de,
                                         0,
                                         2,
                                         28,
                                         44,
                                         0,
                                         60,  // file header
                                         0,
                                         strings,
                                         length(original),
                                         originalAt,  // originals
                                         length(header),
                                         headerAt,
                                         length(translation),
                                         translationAt};  // translations
    std::filesystem::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary);
    for (const uint32_t word : words) {
        std::array<char, sizeof word> bytes{};
        std::memcpy(bytes.data(), &word, sizeof word);
        out.write(bytes.data(), bytes.size());
    }
    out << '\0' << original << '\0' << header << '\0' << translation << '\0';
}

TEST(DbusError, DoesNotChangeWithTheLocale) {
    const kaz::TemporaryFolder folder;
    writeCatalogue(folder / "xx" / "LC_MESSAGES" / "libc.mo");
    // The C locale's rules under another name, because there is no translation in the C locale itself.
    std::filesystem::copy("/usr/lib/locale/C.utf8", folder / "xx_XX.utf8",
                          std::filesystem::copy_options::recursive);
    ::setenv("LOCPATH", folder.path().c_str(), 1);
    ::setenv("LANGUAGE", "xx", 1);
    ASSERT_NE(std::setlocale(LC_ALL, "xx_XX.UTF-8"), nullptr);
    ::bindtextdomain("libc", folder.path().c_str());

    ASSERT_STREQ(std::strerror(EINVAL), "translated") << "the locale was to have an effect";
    EXPECT_EQ(DbusError(-EINVAL).error(), "Invalid argument");

    std::setlocale(LC_ALL, "C");
    ::unsetenv("LANGUAGE");
    ::unsetenv("LOCPATH");
}

}  // namespace
