#include "dbus/reply.h"

#include "doubles/recording_log/recording_log.h"
#include "unit/dbus/codec_fixture.h"

#include <gmock/gmock.h>

namespace kaz::dbus {
namespace {

using testing::IsEmpty;

class ReplyTest : public CodecTest {
  protected:
    test::RecordingLog log;
};

TEST_F(ReplyTest, IsTrueAndReadableWhenThereIsAMessage) {
    Reply reply(MessageDecoder{bus.sealed("is", 1, "two").release()});
    EXPECT_TRUE(reply);
    EXPECT_EQ(reply.read<int>(), 1);
    EXPECT_EQ(reply.read<std::string>(), "two");
}

TEST_F(ReplyTest, StaysTrueWhenAReadFails) {
    Reply reply(MessageDecoder{bus.sealed("i", 1).release()});
    EXPECT_EQ(errorOf(reply.read<std::string>()), wrongType);
    EXPECT_EQ(errorOf(reply.read<int>()), "Already failed");
    EXPECT_TRUE(reply);
    EXPECT_EQ(log.records().size(), 1U);
}

TEST_F(ReplyTest, WithoutAMessageIsFalseAndFailsQuietly) {
    Reply reply{MessageDecoder{}};
    EXPECT_FALSE(reply);
    EXPECT_EQ(errorOf(reply.read<int>()), "Already failed");
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(ReplyTest, ReleasesItsOneReferenceOnTheMessageEvenAfterAFailedRead) {
    // One too few shows as a leak, one too many as a use after free, under the address sanitizer.
    const MessagePtr mine = bus.sealed("i", 1);
    {
        Reply reply(MessageDecoder{sd_bus_message_ref(mine.get())});
        EXPECT_FALSE(reply.read<std::string>());
        Reply moved(std::move(reply));
        EXPECT_TRUE(moved);
    }
    sd_bus_message_rewind(mine.get(), 1);
    EXPECT_EQ(read<int>(mine.get()), 1);
}

}  // namespace
}  // namespace kaz::dbus
