#include "base/temporary_folder.h"
#include "communicator/dbus_communicator.h"
#include "doubles/recording_log/recording_log.h"
#include "support/files/files.h"

#include <gmock/gmock.h>
#include <stdlib.h>

#include <string>

namespace kaz::wifi {
namespace {

using test::LogRecord;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class EnabledState : public testing::Test {
  protected:
    EnabledState() { use(file); }
    ~EnabledState() override { ::unsetenv("KAZ_CONFIG_FILE"); }

    static void use(const std::string& path) { ::setenv("KAZ_CONFIG_FILE", path.c_str(), 1); }
    void configure(const std::string& text) const { test::writeFile(file, text); }

    test::RecordingLog log;
    TemporaryFolder folder;
    const std::string file = folder / "kaz.conf";
    DbusCommunicator communicator;
};

TEST_F(EnabledState, MissingFileMeansOn) {
    EXPECT_TRUE(communicator.readEnabledConfiguration());
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(EnabledState, FileWithoutWifiLineMeansOn) {
    configure("# wifi=off\nlanguage=en\nWifi=off\n");
    EXPECT_TRUE(communicator.readEnabledConfiguration());
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(EnabledState, OnAndOffAreReadWithoutARecord) {
    configure("wifi=on\n");
    EXPECT_TRUE(communicator.readEnabledConfiguration());
    configure("wifi=off\n");
    EXPECT_FALSE(communicator.readEnabledConfiguration());
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(EnabledState, OtherValueMeansOffAndLogsAWarning) {
    for (const std::string value : {"On", "OFF", "1", "true", "", "on ", " on", "offf", "o", "\"on\""}) {
        configure("wifi=" + value + '\n');
        log.clear();
        EXPECT_FALSE(communicator.readEnabledConfiguration()) << value;
        EXPECT_THAT(log.records(), ElementsAre(LogRecord{spdlog::level::warn,
                                                         "Wifi set to \"" + value +
                                                             "\", which we can't parse. Leaving wifi off."}));
    }
}

TEST_F(EnabledState, ChoiceIsWrittenAsOffOrOn) {
    communicator.writeEnabledConfiguration(false);
    EXPECT_EQ(test::readFile(file), "wifi=off\n");
    EXPECT_FALSE(communicator.readEnabledConfiguration());
    communicator.writeEnabledConfiguration(true);
    EXPECT_EQ(test::readFile(file), "wifi=on\n");
    EXPECT_TRUE(communicator.readEnabledConfiguration());
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(EnabledState, WritingTheChoiceKeepsOtherKeys) {
    configure("language=en\nwifi=maybe\nzone=UTC\n");
    communicator.writeEnabledConfiguration(true);
    EXPECT_EQ(test::readFile(file), "language=en\nwifi=on\nzone=UTC\n");
}

TEST_F(EnabledState, FailedWriteLogsAWarning) {
    use(folder.path());  // a folder is no file
    communicator.writeEnabledConfiguration(false);
    EXPECT_THAT(log.records(),
                Contains(LogRecord{spdlog::level::warn, "Couldn't write wifi=off to config."}));
    communicator.writeEnabledConfiguration(true);
    EXPECT_THAT(log.records(), Contains(LogRecord{spdlog::level::warn, "Couldn't write wifi=on to config."}));
}

TEST_F(EnabledState, NextCommunicatorReadsTheWrittenChoice) {
    communicator.writeEnabledConfiguration(false);
    EXPECT_FALSE(createCommunicator()->readEnabledConfiguration());
}

}  // namespace
}  // namespace kaz::wifi
