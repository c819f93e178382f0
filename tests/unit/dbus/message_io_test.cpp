#include "dbus/message_io.h"

#include "dbus/records.h"
#include "dbus/variant.h"
#include "doubles/recording_log/recording_log.h"
#include "support/message_text/message_text.h"
#include "unit/dbus/codec_fixture.h"

#include <gmock/gmock.h>

namespace kaz::dbus {
namespace {

using test::LogRecord;
using testing::ElementsAre;
using testing::IsEmpty;

class MessageIo : public CodecTest {
  protected:
    static LogRecord decodingFailed(const std::string& error) {
        return {spdlog::level::warn, "Error while decoding dbus data. Details: " + error};
    }
    static LogRecord encodingFailed(const std::string& error) {
        return {spdlog::level::warn, "Error while encoding dbus data. Details: " + error};
    }

    test::RecordingLog log;
};

TEST_F(MessageIo, ReadsOneValueAfterTheOtherAndLogsNothing) {
    const MessagePtr message = bus.sealed("sia{sv}", "text", 5, 1, "rssi", "i", -61);
    MessageDecoder decoder{message.get()};
    EXPECT_EQ(read<std::string>(decoder), "text");
    EXPECT_EQ(read<int>(decoder), 5);
    EXPECT_EQ(read<wifi::SignalPoll>(decoder)->rssi, -61);
    EXPECT_TRUE(decoder.ok);
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(MessageIo, LogsTheFirstFailedReadAndFailsTheDecoder) {
    const MessagePtr message = bus.sealed("v", "s", "text");
    MessageDecoder decoder{message.get()};
    const std::string error = "Unable to read from variant: " + wrongType;
    EXPECT_EQ(errorOf(read<int>(decoder)), error);
    EXPECT_FALSE(decoder.ok);
    EXPECT_THAT(log.records(), ElementsAre(decodingFailed(error)));
}

TEST_F(MessageIo, FailsEveryLaterReadOfWhateverTypeAndLogsNothingFurther) {
    const MessagePtr message = bus.sealed("si", "text", 5);
    MessageDecoder decoder{message.get()};
    EXPECT_FALSE(read<int>(decoder));
    EXPECT_EQ(errorOf(read<std::string>(decoder)), "Already failed");
    EXPECT_EQ(errorOf(read<wifi::SignalPoll>(decoder)), "Already failed");
    EXPECT_EQ(errorOf(read<int>(decoder)), "Already failed");
    EXPECT_EQ(log.records().size(), 1U);
    // Nothing was read from the message since.
    EXPECT_EQ(read<std::string>(message.get()), "text");
}

TEST_F(MessageIo, FailsAReadWithoutAMessage) {
    MessageDecoder decoder;
    EXPECT_EQ(errorOf(read<int>(decoder)), invalidArgument);
    EXPECT_EQ(errorOf(read<int>(decoder)), "Already failed");
    EXPECT_THAT(log.records(), ElementsAre(decodingFailed(invalidArgument)));
}

TEST_F(MessageIo, AppendsArgumentsAndLogsNothing) {
    MessageBuilder builder(bus.message().release());
    write(builder, std::string("text"));
    write(builder, OPath("/a"));
    write(builder, Variant(true));
    write(builder, Variant::Map{{"Type", "passive"}});
    EXPECT_TRUE(builder.ok());
    test::StubBus::seal(builder.message());
    EXPECT_EQ(test::messageText(builder.message()), R"("text", o"/a", <true>, {"Type": <"passive">})");
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(MessageIo, LogsAnArgumentThatCannotBeAppendedAndFailsTheBuilder) {
    MessageBuilder builder(bus.message().release());
    write(builder, Variant::Map{{"ssid", "\xff"}});
    const std::string error = "Unable to write value: Unable to write to variant: " + invalidArgument;
    EXPECT_FALSE(builder.ok());
    EXPECT_EQ(builder.error(), error);
    EXPECT_THAT(log.records(), ElementsAre(encodingFailed(error)));
}

TEST_F(MessageIo, DoesNothingForABuilderWithoutAMessage) {
    MessageBuilder builder(nullptr);
    write(builder, std::string("text"));
    write(builder, std::string("\xff"));
    write(builder, Variant::Map{{"ssid", "\xff"}});
    EXPECT_TRUE(builder.ok());
    EXPECT_THAT(log.records(), IsEmpty());
}

}  // namespace
}  // namespace kaz::dbus
