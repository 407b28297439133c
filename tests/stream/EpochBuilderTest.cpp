#include "libvexstream/EpochBuilder.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "libvexstream/utc.h"
#include "libvexutil/datablock.h"

using namespace vextrace;
using std::string;
using std::vector;

namespace epochBuilderTest {
namespace {

constexpr std::chrono::sys_days NO_DATE;

// A message, with the blank-separated sentences that it holds, and its stamp for people.
struct Message {
    string stamp;
    string sentences;

    bool operator==(const Message& other) const {
        return stamp == other.stamp && sentences == other.sentences;
    }
    friend std::ostream& operator<<(std::ostream& os, const Message& message) {
        return os << message.stamp << ' ' << message.sentences.substr(0, 200) << " ("
                  << message.sentences.size() << " characters)";
    }
};

using Messages = vector<Message>;

void append(Messages& messages, const EpochBuilder::Part& part) {
    const size_t before = messages.size();
    for (size_t at = 0; at < part.bytes.size();) {
        const uint8_t* const message = part.bytes.data() + at;
        const size_t length = byteArrayToUint16(message) + size_t{2};
        EXPECT_EQ(byteArrayToUint16(message + 2), MSGID_GPS);
        EXPECT_EQ(byteArrayToUint16(message + 4), 0);
        EXPECT_EQ(byteArrayToUint64(message + 6), part.stamp);
        string payload(message + 14, message + length);
        for (char& c : payload) {
            c = c == '\n' ? ' ' : c;
        }
        payload.pop_back();
        messages.push_back({utcText(part.stamp), payload});
        at += length;
    }
    EXPECT_EQ(messages.size() - before, part.messages);
}

Messages built(const vector<string>& sentences, std::chrono::sys_days date = NO_DATE) {
    EpochBuilder builder(StampSource::SENTENCES, date);
    Messages messages;
    for (const string& sentence : sentences) {
        append(messages, builder.add(sentence, 0));
    }
    append(messages, builder.take());
    EXPECT_TRUE(builder.isEmpty());
    return messages;
}

// The stamp of each message.
vector<string> stamps(const vector<string>& sentences, std::chrono::sys_days date = NO_DATE) {
    vector<string> result;
    for (const Message& message : built(sentences, date)) {
        result.push_back(message.stamp);
    }
    return result;
}

string rmc(const string& time, const string& date = "") {
    return "$GPRMC," + time + ",A,,,,,,," + date + ",";
}

string gga(const string& time) {
    return "$GPGGA," + time + ",";
}

string zda(const string& time, const string& date) {
    return "$GPZDA," + time + "," + date + ",";
}

// A sentence of so many bytes, with its line feed.
string filled(const string& code, size_t size) {
    string sentence = code;
    while (sentence.size() + 1 < size) {
        sentence += 'x';
    }
    sentence += '\n';
    return sentence;
}

}  // namespace

TEST(EpochBuilderTest, PutsAllSentencesOfOneTimeIntoOneMessage) {
    EXPECT_EQ(built({"$GPGGA,000001,\n", "$GPGSA,1\n", "$GPRMC,000001,\n", "$PXYZ\n", "!AIVDM\n"}),
              (Messages{{"1970-01-01T00:00:01Z",
                         "!AIVDM $GPGGA,000001, $GPGSA,1 $GPRMC,000001, $PXYZ"}}));
}

TEST(EpochBuilderTest, PutsTheKthOfACodeIntoTheKthMessage) {
    EXPECT_EQ(built({rmc("000001"), "$GPGSV,1", "$GLGSV,2", "$GAGSV,3", "$BDGSV,4", "$GPGSA,1",
                     "$GNGSA,2", gga("000001")}),
              (Messages{{"1970-01-01T00:00:01Z",
                         "$BDGSV,4 $GPGGA,000001, $GPGSA,1 $GPGSV,1 " + rmc("000001")},
                        {"1970-01-01T00:00:01Z", "$GPGSA,2 $GPGSV,2"},
                        {"1970-01-01T00:00:01Z", "$GPGSV,3"}}));
}

TEST(EpochBuilderTest, TakesTheCodeAsItIsStored) {
    EXPECT_EQ(built({"$GP", "$GN\n", "$GPA\n", "$GX\n", "$G\r\n", "$GPABC", "$GNABCD"}),
              (Messages{{"1970-01-01T00:00:00Z", "$GP $GPA $GPABC"},
                        {"1970-01-01T00:00:00Z", "$GP $GPABCD"},
                        {"1970-01-01T00:00:00Z", "$GP"},
                        {"1970-01-01T00:00:00Z", "$GP"}}));
    EXPECT_EQ(built({"$A", "$AB", "$ABCD", "$ABCDE", "$ABCDEF", "$ABCDEG"}),
              (Messages{{"1970-01-01T00:00:00Z", "$A $AB $ABCD $ABCDE"},
                        {"1970-01-01T00:00:00Z", "$ABCDEF"},
                        {"1970-01-01T00:00:00Z", "$ABCDEG"}}));
}

TEST(EpochBuilderTest, LeavesOtherTalkersApart) {
    EXPECT_EQ(built({"!GNABC", "!GPABC", "$BNABC", "$BPABC"}),
              (Messages{{"1970-01-01T00:00:00Z", "!GNABC !GPABC $BNABC $BPABC"}}));
}

TEST(EpochBuilderTest, BeginsAnEpochWhereTheTimeDiffers) {
    EXPECT_EQ(
        built({gga("000001"), "$GPGSA,1", rmc("000001"), gga("000002"), "$GPGSA,2", rmc("000002")}),
        (Messages{{"1970-01-01T00:00:01Z", gga("000001") + " $GPGSA,1 " + rmc("000001")},
                  {"1970-01-01T00:00:02Z", gga("000002") + " $GPGSA,2 " + rmc("000002")}}));
}

TEST(EpochBuilderTest, ComparesTimesAsNumbers) {
    EXPECT_EQ(built({gga("000001"), rmc("000001.000")}).size(), 1U);
    EXPECT_EQ(built({gga("000001.0"), rmc("000001.1")}).size(), 2U);
    EXPECT_EQ(built({gga("000001.0000000001"), rmc("000001")}).size(), 2U);
    EXPECT_EQ(built({gga("235960"), rmc("000000")}).size(), 2U);
}

TEST(EpochBuilderTest, BeginsAnEpochWhereTheTimeComesBack) {
    EXPECT_EQ(
        stamps({gga("000002"), gga("000001"), gga("000002")}),
        (vector<string>{"1970-01-01T00:00:02Z", "1970-01-01T00:00:01Z", "1970-01-01T00:00:02Z"}));
}

TEST(EpochBuilderTest, GoesOnOverSentencesWithoutAValidTime) {
    EXPECT_EQ(built({rmc("000001"), rmc(""), "$GPGGA,240000,", "$GPGSV,1", "$GPXTE,000002"}).size(),
              2U);
}

TEST(EpochBuilderTest, TakesWhatComesBeforeTheFirstTimeIntoItsEpoch) {
    EXPECT_EQ(built({"$GPGSV,1", rmc(""), gga("000001")}),
              (Messages{{"1970-01-01T00:00:01Z", gga("000001") + " $GPGSV,1 " + rmc("")}}));
}

TEST(EpochBuilderTest, StampsDateAndTime) {
    EXPECT_EQ(stamps({rmc("123519.5", "230394")}), (vector<string>{"1994-03-23T12:35:19.5Z"}));
    EXPECT_EQ(stamps({rmc("123519.1234567891", "010180")}),
              (vector<string>{"1980-01-01T12:35:19.123456789Z"}));
    EXPECT_EQ(stamps({rmc("235960.25", "311216")}), (vector<string>{"2017-01-01T00:00:00.25Z"}));
}

TEST(EpochBuilderTest, StampsAllMessagesOfAnEpochAlike) {
    EXPECT_EQ(
        stamps({"$GPGSV,1", "$GPGSV,2", gga("000001"), rmc("000001", "230394"), "$GPGSV,3"}),
        (vector<string>{"1994-03-23T00:00:01Z", "1994-03-23T00:00:01Z", "1994-03-23T00:00:01Z"}));
}

TEST(EpochBuilderTest, TakesTheDateOfTheFirstTimedSentenceThatHasAValidOne) {
    EXPECT_EQ(stamps({rmc("000001", "310294"), zda("000001", "23,03,1994"),
                      rmc("000001.0", "240394")})[0],
              "1994-03-23T00:00:01Z");
    EXPECT_EQ(stamps({rmc("", "240394"), rmc("000001", "230394")})[0], "1994-03-23T00:00:01Z");
    EXPECT_EQ(stamps({zda("000001", "24,03,1994"), rmc("000001", "230394")})[0],
              "1994-03-24T00:00:01Z");
}

TEST(EpochBuilderTest, KeepsTheLastDate) {
    EXPECT_EQ(stamps({rmc("000001", "230394"), gga("000002"), rmc("000003"), gga("115959")}),
              (vector<string>{"1994-03-23T00:00:01Z", "1994-03-23T00:00:02Z",
                              "1994-03-23T00:00:03Z", "1994-03-23T11:59:59Z"}));
}

TEST(EpochBuilderTest, GoesToTheNextDayWhenTheTimeGoesFarBack) {
    EXPECT_EQ(
        stamps(
            {rmc("235959", "280200"), gga("000000"), gga("000001"), gga("235959"), gga("000000")}),
        (vector<string>{"2000-02-28T23:59:59Z", "2000-02-29T00:00:00Z", "2000-02-29T00:00:01Z",
                        "2000-02-29T23:59:59Z", "2000-03-01T00:00:00Z"}));
    EXPECT_EQ(stamps({rmc("235960.5", "311216"), gga("000000")}),
              (vector<string>{"2017-01-01T00:00:00.5Z", "2017-01-01T00:00:00Z"}));
}

TEST(EpochBuilderTest, StaysOnTheDayWhenTheTimeGoesBackByHalfADayOrLess) {
    EXPECT_EQ(stamps({rmc("120000", "230394"), gga("000000")})[1], "1994-03-23T00:00:00Z");
    EXPECT_EQ(stamps({rmc("120000.000000001", "230394"), gga("000000")})[1],
              "1994-03-24T00:00:00Z");
    EXPECT_EQ(stamps({rmc("000000", "230394"), gga("235959")})[1], "1994-03-23T23:59:59Z");
}

TEST(EpochBuilderTest, PrefersTheDateOfTheEpochItself) {
    EXPECT_EQ(
        stamps({rmc("235959", "230394"), rmc("000000", "230394"), gga("000001")}),
        (vector<string>{"1994-03-23T23:59:59Z", "1994-03-23T00:00:00Z", "1994-03-23T00:00:01Z"}));
}

TEST(EpochBuilderTest, BeginsOnTheGivenDate) {
    const auto date = *calendarDay(2020, 2, 29);
    EXPECT_EQ(stamps({gga("235959"), gga("000000"), rmc("000001", "230394"), gga("000002")}, date),
              (vector<string>{"2020-02-29T23:59:59Z", "2020-03-01T00:00:00Z",
                              "1994-03-23T00:00:01Z", "1994-03-23T00:00:02Z"}));
    EXPECT_EQ(stamps({gga("235959"), gga("000000")}),
              (vector<string>{"1970-01-01T23:59:59Z", "1970-01-02T00:00:00Z"}));
}

TEST(EpochBuilderTest, StampsEpochsWithoutTimeWithTheGivenDateAlone) {
    EXPECT_EQ(stamps({"$GPGSV,1"}), (vector<string>{"1970-01-01T00:00:00Z"}));
    EXPECT_EQ(stamps({"$GPGSV,1", rmc("", "230394")}, *calendarDay(2020, 2, 29)),
              (vector<string>{"2020-02-29T00:00:00Z"}));
}

TEST(EpochBuilderTest, FillsMessagesUpToTheirSize) {
    const string big = filled("$PBIG1", MESSAGE_ROOM - 4);
    EXPECT_EQ(built({big, "$AB\n"}).size(), 1U);
    EXPECT_EQ(built({big, "$AB"}).size(), 1U);
    EXPECT_EQ(built({big, "$ABC\n"}).size(), 2U);
    EXPECT_EQ(built({filled("$PBIG1", MESSAGE_ROOM)}).size(), 1U);
}

TEST(EpochBuilderTest, GoesOnInTheNextMessageWithRoom) {
    const string big = filled("$PBIG1", MESSAGE_ROOM - 10);
    const Messages messages = built({big, "$PAAAA,1\n", "$PBBBB,1,long\n", "$PAAAA,2\n", "$PB\n",
                                     "$PBBBB,2\n", "$PCCCC,12345\n"});
    ASSERT_EQ(messages.size(), 3U);
    EXPECT_EQ(messages[0].sentences.substr(0, 16), "$PAAAA,1 $PBIG1x");
    EXPECT_EQ(messages[1].sentences, "$PAAAA,2 $PB $PBBBB,1,long $PCCCC,12345");
    EXPECT_EQ(messages[2].sentences, "$PBBBB,2");
}

TEST(EpochBuilderTest, GoesOnInNewMessagesAfterSilence) {
    EpochBuilder builder(StampSource::SENTENCES, NO_DATE);
    Messages messages;
    append(messages, builder.add(rmc("000001", "230394"), 0));
    append(messages, builder.add("$GPGSV,1", 0));
    EXPECT_EQ(messages.size(), 0U);
    append(messages, builder.take());
    EXPECT_EQ(messages.size(), 1U);
    append(messages, builder.take());
    EXPECT_EQ(messages.size(), 1U);
    append(messages, builder.add("$GPGSV,2", 0));
    append(messages, builder.add(gga("000001.0"), 0));
    append(messages, builder.add(gga("000002"), 0));
    append(messages, builder.take());
    EXPECT_EQ(messages, (Messages{{"1994-03-23T00:00:01Z", "$GPGSV,1 " + rmc("000001", "230394")},
                                  {"1994-03-23T00:00:01Z", gga("000001.0") + " $GPGSV,2"},
                                  {"1994-03-23T00:00:02Z", gga("000002")}}));
}

TEST(EpochBuilderTest, CountsEpochsNotParts) {
    EpochBuilder builder(StampSource::SENTENCES, NO_DATE);
    builder.add(rmc("000001"), 0);
    EXPECT_TRUE(builder.take().beginsEpoch);
    builder.add("$GPGSV,2", 0);
    EXPECT_FALSE(builder.add(gga("000002"), 0).beginsEpoch);
    const EpochBuilder::Part& last = builder.add(gga("000003"), 0);
    EXPECT_TRUE(last.beginsEpoch);
    EXPECT_EQ(last.sentences, 1U);
}

// What was written cannot be stamped again; what follows is right all the same.
TEST(EpochBuilderTest, TakesADateThatComesAfterSilence) {
    EpochBuilder builder(StampSource::SENTENCES, NO_DATE);
    Messages messages;
    append(messages, builder.add(gga("000001"), 0));
    append(messages, builder.take());
    append(messages, builder.add(rmc("000001", "230394"), 0));
    append(messages, builder.take());
    EXPECT_EQ(messages, (Messages{{"1970-01-01T00:00:01Z", gga("000001")},
                                  {"1994-03-23T00:00:01Z", rmc("000001", "230394")}}));
}

TEST(EpochBuilderTest, EndsAnEpochWithoutTimeBySilence) {
    EpochBuilder builder(StampSource::SENTENCES, NO_DATE);
    Messages messages;
    append(messages, builder.add("$GPGSV,1", 0));
    EXPECT_TRUE(builder.take().beginsEpoch);
    append(messages, builder.add("$GPGSV,2", 0));
    append(messages, builder.add(rmc("000001", "230394"), 0));
    const EpochBuilder::Part& part = builder.take();
    append(messages, part);
    EXPECT_TRUE(part.beginsEpoch);
    EXPECT_EQ(messages,
              (Messages{{"1994-03-23T00:00:01Z", "$GPGSV,2 " + rmc("000001", "230394")}}));
}

TEST(EpochBuilderTest, StampsTheArrivalOfTheFirstByte) {
    EpochBuilder builder(StampSource::ARRIVAL, *calendarDay(2020, 2, 29));
    Messages messages;
    append(messages, builder.add("$GPGSV,1", 1'000'000'005));
    append(messages, builder.add(rmc("000001", "230394"), 2'000'000'005));
    append(messages, builder.add(rmc("000002", "230394"), 3'000'000'005));
    append(messages, builder.take());
    append(messages, builder.add("$GPGSV,2", 4'000'000'005));
    append(messages, builder.take());
    EXPECT_EQ(messages,
              (Messages{{"1970-01-01T00:00:01.000000005Z", "$GPGSV,1 " + rmc("000001", "230394")},
                        {"1970-01-01T00:00:03.000000005Z", rmc("000002", "230394")},
                        {"1970-01-01T00:00:03.000000005Z", "$GPGSV,2"}}));
}

TEST(EpochBuilderTest, StampsTheArrivalAnewAfterSilenceWithoutTime) {
    EpochBuilder builder(StampSource::ARRIVAL, NO_DATE);
    builder.add("!AIVDM,1", 5);
    EXPECT_EQ(builder.take().stamp, 5U);
    builder.add("!AIVDM,2", 7);
    EXPECT_EQ(builder.take().stamp, 7U);
}

TEST(EpochBuilderTest, GivesALongEpochOutInParts) {
    constexpr size_t SIZE = 1024;
    EpochBuilder builder(StampSource::SENTENCES, NO_DATE);
    builder.add(filled("$GPRMC,000001,A,,,,,,,230394,", SIZE), 0);
    for (size_t i = 1; i < EpochBuilder::PART_ROOM / SIZE; ++i) {
        ASSERT_EQ(builder.add(filled("$PABCD", SIZE), 0).messages, 0U) << i;
    }
    const EpochBuilder::Part& part = builder.add("$PABCD", 0);
    EXPECT_EQ(part.messages, 1023U);
    EXPECT_EQ(part.sentences, 1024U);
    EXPECT_EQ(utcText(part.stamp), "1994-03-23T00:00:01Z");
    EXPECT_EQ(part.bytes.size(), EpochBuilder::PART_ROOM + size_t{1023} * 14);
    const EpochBuilder::Part& rest = builder.take();
    EXPECT_FALSE(rest.beginsEpoch);
    EXPECT_EQ(rest.messages, 1U);
    EXPECT_EQ(utcText(rest.stamp), "1994-03-23T00:00:01Z");
}

TEST(EpochBuilderTest, LosesNoneOfManyCodesThatComeTwice) {
    vector<string> sentences;
    for (int round = 1; round <= 2; ++round) {
        for (int i = 10000; i < 15000; ++i) {
            sentences.push_back("$" + std::to_string(i) + "," + std::to_string(round));
        }
    }
    const Messages messages = built(sentences);
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_EQ(messages[0].sentences.size(), 5000 * string("$10000,1 ").size() - 1);
    EXPECT_EQ(messages[1].sentences.size(), messages[0].sentences.size());
}

TEST(EpochBuilderTest, ForgetsNoPlaceAmongManyCodes) {
    EpochBuilder builder(StampSource::SENTENCES, NO_DATE);
    for (int round = 1; round <= 3; ++round) {
        for (int i = 10000; i < 20000; ++i) {
            builder.add(std::to_string(i).insert(0, 1, '$'), 0);
        }
        builder.add("$10000", 0);
        const EpochBuilder::Part& part = builder.take();
        EXPECT_EQ(part.messages, 2U);
        EXPECT_EQ(part.sentences, 10001U);
    }
}

TEST(EpochBuilderTest, RefusesASentenceThatNoMessageHolds) {
    const string longest = "$GPTXT," + string(MESSAGE_ROOM - 8, 'x');
    EpochBuilder builder(StampSource::SENTENCES, NO_DATE);
    builder.add(longest, 0);
    for (const string& tooLong : {longest + "x", longest + "x\n"}) {
        try {
            builder.add(tooLong, 0);
            FAIL();
        } catch (const InvalidMessageException& error) {
            EXPECT_EQ(error.getCause(), IM_INVALID_LEN);
            EXPECT_EQ(error.getInvalidValue(), 65524);
        }
    }
    const EpochBuilder::Part& part = builder.take();
    EXPECT_EQ(part.sentences, 1U);
    ASSERT_EQ(part.bytes.size(), 65537U);
    EXPECT_EQ(byteArrayToUint16(part.bytes.data()), 65535);
}

}  // namespace epochBuilderTest
