#include "libvexstream/Recording.h"

#include <gtest/gtest.h>

#include "tests/stream/traces.h"

using namespace vextrace;

namespace {

// Nanoseconds of 12:35:19 and of the second behind it.
constexpr timeStamp_t FIRST = 45'319'000'000'000;
constexpr timeStamp_t SECOND = FIRST + 1'000'000'000;

std::string recorded(Recording& recording) {
    std::string trace;
    const auto add = [&](const EpochBuilder::Part& part) {
        trace.append(part.bytes.begin(), part.bytes.end());
    };
    while (const auto step = recording.next()) {
        add(step->part);
    }
    return trace;
}

std::string text(const TraceBytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

}  // namespace

TEST(RecordingTest, GivesMessagesWhenTheNextEpochBegins) {
    Recording recording(StampSource::SENTENCES, {});
    recording.feed("$GPGLL,,,,,123519,A\n$GPGSV,1\n");
    EXPECT_EQ(recorded(recording), "");
    EXPECT_FALSE(recording.isEmpty());
    recording.feed("$GPGLL,,,,,123520,A\n");
    EXPECT_EQ(recorded(recording),
              text(messageOf(MSGID_GPS, FIRST, "$GPGLL,,,,,123519,A\n$GPGSV,1\n")));
    recording.finish();
    EXPECT_EQ(recorded(recording), "");
    const EpochBuilder::Part& last = recording.take();
    EXPECT_EQ(std::string(last.bytes.begin(), last.bytes.end()),
              text(messageOf(MSGID_GPS, SECOND, "$GPGLL,,,,,123520,A\n")));
    EXPECT_TRUE(recording.isEmpty());
}

TEST(RecordingTest, CountsTheSentencesThatHaveATime) {
    Recording recording(StampSource::SENTENCES, {});
    recording.feed("$GPGSV,1\n$GPGLL,,,,,123519,A\n$GPGSV,2\n$GPZDA,123519\n$PXYZ\n");
    recorded(recording);
    EXPECT_EQ(recording.take().timedSentences, 2U);
    EXPECT_EQ(recording.take().timedSentences, 0U);
    recording.feed("$GPGSV,1\n");
    recorded(recording);
    EXPECT_EQ(recording.take().timedSentences, 0U);
}

TEST(RecordingTest, TellsEachSentenceAndWhereItWas) {
    Recording recording(StampSource::SENTENCES, {});
    recording.feed("noise\n$GPGSV,1\n$PXYZ*00\n");
    const auto first = recording.next();
    ASSERT_TRUE(first);
    EXPECT_EQ(first->sentence.text, "$GPGSV,1\n");
    EXPECT_EQ(first->sentence.offset, 6U);
    const auto second = recording.next();
    ASSERT_TRUE(second);
    EXPECT_EQ(second->sentence.checksum, Checksum::WRONG);
    EXPECT_FALSE(recording.next());
    EXPECT_EQ(recording.counters().sentences(), 2U);
    EXPECT_EQ(recording.counters().bytesSkipped(), 6U);
}

TEST(RecordingTest, StampsTheArrivalOfAnEpochsFirstByte) {
    Recording recording(StampSource::ARRIVAL, {});
    recording.feed("$GPGLL,,,,,123519,A\n$GPG", 100);
    EXPECT_EQ(recorded(recording), "");
    recording.feed("LL,,,,,123520,A\n", 200);
    EXPECT_EQ(recorded(recording), text(messageOf(MSGID_GPS, 100, "$GPGLL,,,,,123519,A\n")));
    EXPECT_EQ(recording.take().stamp, 100U);
    recording.feed("$GPGLL,,,,,123521,A\n", 300);
    recorded(recording);
    EXPECT_EQ(recording.take().stamp, 300U);
}
