#include "libvextrace/GPSTraceMessage.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/TestMessage.h"
#include "tests/support/detected.h"
#include "tests/support/fieldTexts.h"
#include "tests/support/messages.h"

using namespace std::string_literals;

namespace gPSTraceMessageTest {
namespace {

constexpr timeStamp_t TIME_STAMP = 0xF1E2D3C4B5A69788;

const Texts NO_RMC(12);
const Texts NO_GGA(14);
const Texts RMC_TEXTS = {"123519", "A",     "4807.038", "N",     "01131.000", "E",
                         "022.4",  "084.4", "230394",   "003.1", "W*6A\n",    ""};
const Texts GGA_TEXTS = {"123519", "4807.038", "N", "01131.000", "E", "1", "08",
                         "0.9",    "545.4",    "M", "46.9",      "M", "",  ""};

const std::string PROPRIETARY = "$PGRME,15.0,M,45.0,M,25.0,M*1C";

struct Storing {
    std::string record;
    std::string stored;
};

const Storing STORINGS[] = {
    // The line feed
    {"$GPRMC,1", "$GPRMC,1\n"},
    {"$GPRMC,1\n", "$GPRMC,1\n"},
    {"$GPRMC,1\r\n", "$GPRMC,1\r\n"},
    {"$GPRMC,1\r", "$GPRMC,1\r\n"},
    {"$GPRMC,1\n\n", "$GPRMC,1\n\n"},
    {"$GPRMC,1\n ", "$GPRMC,1\n \n"},
    {"$GPRMC,1\0"s, "$GPRMC,1\0\n"s},

    // Talkers that begin with G
    {"$GNRMC,1", "$GPRMC,1\n"},
    {"$GLGSV,1", "$GPGSV,1\n"},
    {"$GAGSV,1", "$GPGSV,1\n"},
    {"$GBGSV,1", "$GPGSV,1\n"},
    {"$GQGSV,1\r\n", "$GPGSV,1\r\n"},
    {"$GGGGA,1", "$GPGGA,1\n"},
    {"$GnRMC,1", "$GPRMC,1\n"},
    {"$G,RMC,1", "$GPRMC,1\n"},
    {"$G\0RMC,1"s, "$GPRMC,1\n"},
    {"$G\r\n", "$GP\n"},

    // Other talkers and texts that only look alike
    {PROPRIETARY, PROPRIETARY + "\n"},
    {"$PGNRMC,1", "$PGNRMC,1\n"},
    {"$HCHDG,101.1,,,7.1,W*3C", "$HCHDG,101.1,,,7.1,W*3C\n"},
    {"$BDGSV,1", "$BDGSV,1\n"},
    {"$gnrmc,1", "$gnrmc,1\n"},
    {"GNRMC,1", "GNRMC,1\n"},
    {" $GNRMC,1", " $GNRMC,1\n"},
    {"!GNVDM,1", "!GNVDM,1\n"},
    {"$$GNRMC,1", "$$GNRMC,1\n"},

    // Hardly a text at all
    {"", "\n"},
    {"\n", "\n"},
    {"\n\n", "\n\n"},
    {"$", "$\n"},
    {"$\n", "$\n"},
    {"G", "G\n"},
    {"$G", "$GP"},
    {"$G\n", "$GP"},
    {"$G\n\n", "$GP\n"},
    {"$GN", "$GP\n"},
    {"$GN\n", "$GP\n"},

    // Any bytes, and several lines
    {"AB\0C"s, "AB\0C\n"s},
    {"\0"s, "\0\n"s},
    {"\xFF\x80\x01", "\xFF\x80\x01\n"},
    {"$GNRMC,1\n$GNGGA,2\n", "$GPRMC,1\n$GNGGA,2\n"},
    {"$GNRMC,1\r\n\r\n$GNGGA,2", "$GPRMC,1\r\n\r\n$GNGGA,2\n"},
    {"\n$GNRMC,1", "\n$GNRMC,1\n"},
};

const uint8_t* dataOf(const std::string& text) {
    return reinterpret_cast<const uint8_t*>(text.data());
}

GPSTraceMessage messageOf(const std::vector<std::string>& records) {
    GPSTraceMessage message;
    for (const std::string& record : records) {
        message.addRecord(record);
    }
    return message;
}

// All that a message shows of itself.
void expectSame(const GPSTraceMessage& message, const GPSTraceMessage& expected) {
    EXPECT_EQ(message.getMsgID(), expected.getMsgID());
    EXPECT_EQ(message.getMbnr(), expected.getMbnr());
    EXPECT_EQ(writtenBytes(message), writtenBytes(expected));
    EXPECT_EQ(fieldTexts(message.getRMC()), fieldTexts(expected.getRMC()));
    EXPECT_EQ(fieldTexts(message.getGGA()), fieldTexts(expected.getGGA()));
}

void expectNoFields(const GPSTraceMessage& message) {
    EXPECT_EQ(fieldTexts(message.getRMC()), NO_RMC);
    EXPECT_EQ(fieldTexts(message.getGGA()), NO_GGA);
}

// A message that differs from a new one in all that it holds.
GPSTraceMessage fullMessage() {
    GPSTraceMessage message(TIME_STAMP, RMC_SENTENCE);
    message.setHeaderReserved(0x9ABC);
    message.setMbnr(0x13579BDF);
    message.addRecord(GGA_SENTENCE);
    message.addRecord(PROPRIETARY);
    return message;
}

// Both orders, and with either operand known as no more than a message.
void expectEquality(const GPSTraceMessage& a, const GPSTraceMessage& b, bool equal) {
    const MessageBase& baseOfA = a;
    const MessageBase& baseOfB = b;
    EXPECT_EQ(a == b, equal);
    EXPECT_EQ(b == a, equal);
    EXPECT_EQ(a == baseOfB, equal);
    EXPECT_EQ(baseOfA == b, equal);
    EXPECT_EQ(baseOfB == baseOfA, equal);
}

void expectEqual(const GPSTraceMessage& a, const GPSTraceMessage& b) {
    expectEquality(a, b, true);
}

void expectUnequal(const GPSTraceMessage& a, const GPSTraceMessage& b) {
    expectEquality(a, b, false);
}

// Reaches what is for derived types alone.
class DerivedMessage : public GPSTraceMessage {
public:
    using GPSTraceMessage::GPSTraceMessage;

    using GPSTraceMessage::coordinateToDouble;
    using GPSTraceMessage::parseGGA;
    using GPSTraceMessage::parseRMC;
};

template <class Type>
using CallGetSize = decltype(std::declval<const Type&>().getSize());
template <class Type>
using CallToString = decltype(std::declval<const Type&>().toString());
template <class Type>
using CallWrite = decltype(std::declval<const Type&>().writeToByteArray(std::declval<uint8_t*&>(),
                                                                        size_t{}, false));
template <class Type>
using CallRead = decltype(Type::readFromByteArray(nullptr, size_t{}));
template <class Type>
using CallParseRMC = decltype(std::declval<Type&>().parseRMC());
template <class Type>
using CallParseGGA = decltype(std::declval<Type&>().parseGGA());
template <class Type>
using CallCoordinate = decltype(std::declval<Type&>().coordinateToDouble(std::string()));
template <class Type>
using NameMap = decltype(std::declval<Type&>().gpsStrings);
template <class Type>
using NameRMC = decltype(std::declval<Type&>().gprmc);
template <class Type>
using NameGGA = decltype(std::declval<Type&>().gpgga);
template <class Type>
using NamePosition = decltype(Type::MO_GPS);
template <class Type>
using NameSecondPosition = decltype(Type::MO2_GPS);

template <class... Expected, class... Actual>
constexpr bool areOfTypes(const Actual&... /*values*/) {
    return std::is_same_v<std::tuple<Expected...>, std::tuple<Actual...>>;
}

}  // namespace

TEST(GPSTraceMessageTest, NamesTheCodes) {
    EXPECT_STREQ(GPSTraceMessage::GPRMC, "$GPRMC");
    EXPECT_STREQ(GPSTraceMessage::GPGGA, "$GPGGA");
    EXPECT_EQ(size_t{GPSTraceMessage::NMEA_CODE_SIZE}, 6U);
    EXPECT_TRUE((std::is_same_v<decltype(GPSTraceMessage::GPRMC), const char[7]>));
    EXPECT_TRUE((std::is_same_v<decltype(GPSTraceMessage::GPGGA), const char[7]>));
    EXPECT_TRUE((std::is_same_v<decltype(GPSTraceMessage::NMEA_CODE_SIZE), const size_t>));
}

TEST(GPSTraceMessageTest, NumbersTheDataTypes) {
    EXPECT_EQ(static_cast<int>(GPSTraceMessage::NMEA_DATA_GPRMC), 0);
    EXPECT_EQ(static_cast<int>(GPSTraceMessage::NMEA_DATA_GPGGA), 1);
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<GPSTraceMessage::nmeaDataType_t>, int>));
}

TEST(GPSTraceMessageTest, HoldsNothingByDefault) {
    const GPSTraceMessage message;
    EXPECT_EQ(message.getMsgID(), MSGID_GPS);
    EXPECT_EQ(message.getTimeStamp(), 0U);
    EXPECT_EQ(message.getHeaderReserved(), 0U);
    EXPECT_EQ(message.getMbnr(), 0U);
    EXPECT_EQ(payloadOf(message), "");
    expectNoFields(message);
}

TEST(GPSTraceMessageTest, HoldsTheTextItIsBuiltFrom) {
    for (const Storing& storing : STORINGS) {
        const GPSTraceMessage message(TIME_STAMP, storing.record);
        EXPECT_EQ(payloadOf(message), storing.stored);
    }
}

TEST(GPSTraceMessageTest, HoldsTheBytesItIsBuiltFrom) {
    for (const Storing& storing : STORINGS) {
        const std::string& record = storing.record;
        const GPSTraceMessage message(TIME_STAMP, dataOf(record), record.size());
        EXPECT_EQ(payloadOf(message), storing.stored);
    }
}

TEST(GPSTraceMessageTest, HoldsTheRecordThatIsAdded) {
    for (const Storing& storing : STORINGS) {
        EXPECT_EQ(payloadOf(messageOf({storing.record})), storing.stored);
    }
}

TEST(GPSTraceMessageTest, HoldsTheBytesThatAreAdded) {
    for (const Storing& storing : STORINGS) {
        GPSTraceMessage message;
        message.addRecord(dataOf(storing.record), storing.record.size());
        EXPECT_EQ(payloadOf(message), storing.stored);
    }
}

TEST(GPSTraceMessageTest, TakesIDAndTimeStampWhenBuilt) {
    const GPSTraceMessage fromText(TIME_STAMP, RMC_SENTENCE);
    EXPECT_EQ(fromText.getMsgID(), MSGID_GPS);
    EXPECT_EQ(fromText.getTimeStamp(), TIME_STAMP);
    const GPSTraceMessage fromBytes(TIME_STAMP, dataOf(RMC_SENTENCE), RMC_SENTENCE.size());
    EXPECT_EQ(fromBytes.getMsgID(), MSGID_GPS);
    EXPECT_EQ(fromBytes.getTimeStamp(), TIME_STAMP);
}

TEST(GPSTraceMessageTest, TakesNoMoreBytesThanGiven) {
    const std::string data = "$GPRMC,1\n$GPGGA,2\n";
    EXPECT_EQ(payloadOf(GPSTraceMessage(0, dataOf(data), 8)), "$GPRMC,1\n");
    EXPECT_EQ(payloadOf(GPSTraceMessage(0, dataOf(data), 0)), "\n");
    GPSTraceMessage message;
    message.addRecord(dataOf(data), 8);
    EXPECT_EQ(payloadOf(message), "$GPRMC,1\n");
}

TEST(GPSTraceMessageTest, RefusesNullDataWithASize) {
    for (const size_t size : {size_t{1}, size_t{70}}) {
        try {
            const GPSTraceMessage message(0, nullptr, size);
            ADD_FAILURE() << "built from null and " << size;
        } catch (const std::logic_error& error) {
            EXPECT_STREQ(error.what(), "GPSTraceMessage: Null data with a size.");
        }
    }
}

TEST(GPSTraceMessageTest, StaysAsItIsWhereNullDataWithASizeIsAdded) {
    GPSTraceMessage message(TIME_STAMP, RMC_SENTENCE);
    try {
        message.addRecord(nullptr, 1);
        ADD_FAILURE() << "added from null";
    } catch (const std::logic_error& error) {
        EXPECT_STREQ(error.what(), "GPSTraceMessage: Null data with a size.");
    }
    expectSame(message, GPSTraceMessage(TIME_STAMP, RMC_SENTENCE));
}

TEST(GPSTraceMessageTest, TakesNullDataWithoutSizeForAnEmptyText) {
    EXPECT_EQ(payloadOf(GPSTraceMessage(0, nullptr, 0)), "\n");
    GPSTraceMessage message;
    message.addRecord(nullptr, 0);
    EXPECT_EQ(payloadOf(message), "\n");
}

TEST(GPSTraceMessageTest, OwnsItsSentences) {
    std::string record = RMC_SENTENCE;
    const GPSTraceMessage fromText(0, record);
    const GPSTraceMessage fromBytes(0, dataOf(record), record.size());
    const GPSTraceMessage added = messageOf({record});
    record.assign(record.size(), 'X');
    EXPECT_EQ(payloadOf(fromText), RMC_SENTENCE + '\n');
    EXPECT_EQ(payloadOf(fromBytes), RMC_SENTENCE + '\n');
    EXPECT_EQ(payloadOf(added), RMC_SENTENCE + '\n');
}

TEST(GPSTraceMessageTest, HasEmptyFieldsWhenBuilt) {
    for (const std::string& record : {RMC_SENTENCE, GGA_SENTENCE}) {
        expectNoFields(GPSTraceMessage(TIME_STAMP, record));
        expectNoFields(GPSTraceMessage(TIME_STAMP, dataOf(record), record.size()));
    }
}

TEST(GPSTraceMessageTest, StoresASentenceAsAddRecordDoes) {
    for (const Storing& storing : STORINGS) {
        GPSTraceMessage message;
        message.storeSentence(storing.record);
        EXPECT_EQ(message.getString(), storing.stored);
        message.storeSentence(storing.record);
        EXPECT_EQ(message.getSentences().size(), 1U);
    }
}

TEST(GPSTraceMessageTest, StoresTheFirstSentenceOfACode) {
    GPSTraceMessage message;
    message.storeSentence("$GNRMC,1");
    message.storeSentence("$GPRMC,2");
    EXPECT_EQ(message.getString(), "$GPRMC,1\n");
}

TEST(GPSTraceMessageTest, SplitsAStoredSentenceWhenTheNextOneIsAdded) {
    GPSTraceMessage message;
    message.storeSentence(RMC_SENTENCE);
    message.storeSentence(GGA_SENTENCE);
    EXPECT_EQ(fieldTexts(message.getRMC()), NO_RMC);
    EXPECT_EQ(fieldTexts(message.getGGA()), NO_GGA);
    message.addRecord(PROPRIETARY);
    EXPECT_EQ(fieldTexts(message.getRMC()), RMC_TEXTS);
    EXPECT_EQ(fieldTexts(message.getGGA()), GGA_TEXTS);
}

TEST(GPSTraceMessageTest, SplitsAllHeldSentencesWhenOneIsAdded) {
    GPSTraceMessage message(TIME_STAMP, RMC_SENTENCE);
    message.addRecord(GGA_SENTENCE);
    EXPECT_EQ(fieldTexts(message.getRMC()), RMC_TEXTS);
    EXPECT_EQ(fieldTexts(message.getGGA()), GGA_TEXTS);
}

TEST(GPSTraceMessageTest, SplitsAllHeldSentencesWhenBytesAreAdded) {
    GPSTraceMessage message(TIME_STAMP, RMC_SENTENCE);
    message.addRecord(dataOf(GGA_SENTENCE), GGA_SENTENCE.size());
    EXPECT_EQ(fieldTexts(message.getRMC()), RMC_TEXTS);
    EXPECT_EQ(fieldTexts(message.getGGA()), GGA_TEXTS);
}

TEST(GPSTraceMessageTest, TellsByItsNumberOfSentencesWhetherOneWasStored) {
    GPSTraceMessage message(TIME_STAMP, RMC_SENTENCE);
    EXPECT_EQ(message.getSentences().size(), 1U);
    message.addRecord("$GLRMC,1");
    EXPECT_EQ(message.getSentences().size(), 1U);
    message.addRecord(PROPRIETARY);
    EXPECT_EQ(message.getSentences().size(), 2U);
}

TEST(GPSTraceMessageTest, SplitsTheFirstSentenceWhenAnUnrelatedOneIsAdded) {
    GPSTraceMessage message(TIME_STAMP, GGA_SENTENCE);
    message.addRecord(PROPRIETARY);
    EXPECT_EQ(fieldTexts(message.getRMC()), NO_RMC);
    EXPECT_EQ(fieldTexts(message.getGGA()), GGA_TEXTS);
}

TEST(GPSTraceMessageTest, SplitsTheFirstSentenceWhenItsCodeIsAddedAgain) {
    GPSTraceMessage message(TIME_STAMP, RMC_SENTENCE);
    message.addRecord("$GPRMC,999999,V");
    EXPECT_EQ(fieldTexts(message.getRMC()), RMC_TEXTS);
}

TEST(GPSTraceMessageTest, NeverSplitsSentencesOfOtherTalkers) {
    expectNoFields(messageOf({"$BDRMC,1,2", "$BDGGA,1,2", "$PPRMC,1,2", "$gpgga,1,2"}));
}

TEST(GPSTraceMessageTest, KeepsTheFirstSentenceOfACode) {
    const GPSTraceMessage message = messageOf(
        {RMC_SENTENCE, "$GPRMC,999999,V", GGA_SENTENCE, "$GPGGA,888888", "$GPRMC,777777,V"});
    EXPECT_EQ(payloadOf(message), GGA_SENTENCE + '\n' + RMC_SENTENCE + '\n');
    EXPECT_EQ(fieldTexts(message.getRMC()), RMC_TEXTS);
    EXPECT_EQ(fieldTexts(message.getGGA()), GGA_TEXTS);
}

TEST(GPSTraceMessageTest, KeepsTheFirstOfSeveralTalkers) {
    EXPECT_EQ(payloadOf(messageOf({"$GLGSV,1", "$GPGSV,2", "$GNGSV,3"})), "$GPGSV,1\n");
    EXPECT_EQ(payloadOf(messageOf({"$GPGSV,2", "$GLGSV,1", "$BDGSV,4"})), "$BDGSV,4\n$GPGSV,2\n");
}

TEST(GPSTraceMessageTest, TakesTheFirstSixCharactersForTheCode) {
    EXPECT_EQ(payloadOf(messageOf({"$PGRMEa", "$PGRMEb", "$PGRM"})), "$PGRM\n$PGRMEa\n");
    EXPECT_EQ(payloadOf(messageOf({"12345", "12345\n67", "123456"})), "12345\n123456\n");
    EXPECT_EQ(payloadOf(messageOf({"AB\0CDE1"s, "AB\0CDE2"s, "AB\0CDF3"s})),
              "AB\0CDE1\nAB\0CDF3\n"s);
}

TEST(GPSTraceMessageTest, TakesAShortTextWithItsLineFeedForTheCode) {
    EXPECT_EQ(payloadOf(messageOf({"AB", "AB\n", "A", "AB\r\n"})), "A\nAB\nAB\r\n");
    EXPECT_EQ(payloadOf(messageOf({"", "\n", "\n\n"})), "\n\n\n");
}

TEST(GPSTraceMessageTest, TakesABareTalkerWithOrWithoutLineFeedForOneCode) {
    EXPECT_EQ(payloadOf(messageOf({"$G", "$G\n"})), "$GP");
    EXPECT_EQ(payloadOf(messageOf({"$G\n", "$GN", "$G"})), "$GP$GP\n");
}

TEST(GPSTraceMessageTest, TellsCodesApartByCase) {
    EXPECT_EQ(payloadOf(messageOf({"$PGRME", "$pgrme"})), "$PGRME\n$pgrme\n");
}

TEST(GPSTraceMessageTest, OrdersCodesByUnsignedBytes) {
    EXPECT_EQ(payloadOf(messageOf({"\xFF", "\x80", "z", "A", "\x01"})), "\x01\nA\nz\n\x80\n\xFF\n");
}

TEST(GPSTraceMessageTest, GivesTheSentenceWithTheSmallestCode) {
    EXPECT_EQ(messageOf({RMC_SENTENCE}).getString(), RMC_SENTENCE + '\n');
    EXPECT_EQ(messageOf({RMC_SENTENCE, GGA_SENTENCE}).getString(), GGA_SENTENCE + '\n');
    EXPECT_EQ(messageOf({PROPRIETARY}).getString(), PROPRIETARY + '\n');
    EXPECT_EQ(messageOf({PROPRIETARY, RMC_SENTENCE}).getString(), RMC_SENTENCE + '\n');
    EXPECT_EQ(messageOf({"AB\0C"s}).getString(), "AB\0C\n"s);
}

TEST(GPSTraceMessageTest, GivesAnEmptyTextWithoutSentences) {
    EXPECT_EQ(GPSTraceMessage().getString(), "");
}

TEST(GPSTraceMessageTest, GivesASentenceByItsCodeAsStored) {
    const GPSTraceMessage message =
        messageOf({"$GNRMC,1\r\n", "$GLGSV,2", "$GNGSV,3", PROPRIETARY, "AB\0CDE,4"s, "AB"});
    EXPECT_EQ(message.getSentence("$GPRMC"), "$GPRMC,1\r\n");
    EXPECT_EQ(message.getSentence("$GPGSV"), "$GPGSV,2\n");
    EXPECT_EQ(message.getSentence("$PGRME"), PROPRIETARY + '\n');
    EXPECT_EQ(message.getSentence("AB\0CDE"s), "AB\0CDE,4\n"s);
    EXPECT_EQ(message.getSentence("AB\n"), "AB\n");
}

TEST(GPSTraceMessageTest, GivesNoSentenceOfACodeItDoesNotHold) {
    const GPSTraceMessage message = messageOf({"$GNRMC,1", "AB"});
    for (const std::string& code :
         {""s, "$GNRMC"s, "$GPGGA"s, "$GPRM"s, "$GPRMC,"s, "$GPRMC,1\n"s, "$gprmc"s, "AB"s}) {
        EXPECT_TRUE(message.getSentence(code).empty()) << code;
    }
    EXPECT_TRUE(GPSTraceMessage().getSentence("$GPRMC").empty());
}

TEST(GPSTraceMessageTest, GivesTheSentenceOfABareTalker) {
    EXPECT_EQ(messageOf({"$G"}).getSentence("$GP"), "$GP");
    EXPECT_EQ(messageOf({""}).getSentence("\n"), "\n");
}

TEST(GPSTraceMessageTest, GivesTheSentenceThatItHoldsAndNoCopy) {
    GPSTraceMessage message = messageOf({RMC_SENTENCE});
    const std::string_view sentence = message.getSentence("$GPRMC");
    message.addRecord("$GPRMC,999999,V");
    message.addRecord(GGA_SENTENCE);
    message.addRecord(PROPRIETARY);
    EXPECT_EQ(sentence, RMC_SENTENCE + '\n');
    EXPECT_EQ(message.getSentence("$GPRMC").data(), sentence.data());
    EXPECT_EQ(message.getSentences().at("$GPRMC").data(), sentence.data());
}

TEST(GPSTraceMessageTest, GivesAllSentencesByTheirCodesInOrder) {
    GPSTraceMessage message = messageOf({"$GNRMC,1", "\xFFx", "$GLGSV,2\r\n", ""});
    const auto& sentences = message.getSentences();
    using Pairs = std::vector<std::pair<std::string, std::string>>;
    EXPECT_EQ(Pairs(sentences.begin(), sentences.end()), (Pairs{{"\n", "\n"},
                                                                {"$GPGSV", "$GPGSV,2\r\n"},
                                                                {"$GPRMC", "$GPRMC,1\n"},
                                                                {"\xFFx\n", "\xFFx\n"}}));
    EXPECT_TRUE(GPSTraceMessage().getSentences().empty());
}

TEST(GPSTraceMessageTest, KeepsItsSentencesInPlaceWhenItGrows) {
    GPSTraceMessage message = messageOf({"$GNRMC,1"});
    const auto& sentences = message.getSentences();
    auto place = sentences.begin();
    for (char c = 'A'; c <= 'Z'; ++c) {
        message.addRecord(std::string("$P") + c);
    }
    EXPECT_EQ(sentences.size(), 27U);
    EXPECT_EQ(place->first, "$GPRMC");
    EXPECT_EQ(place, sentences.begin());
    EXPECT_EQ((++place)->first, "$PA\n");
}

TEST(GPSTraceMessageTest, TellsWhichSentencesItHolds) {
    constexpr auto RMC = GPSTraceMessage::NMEA_DATA_GPRMC;
    constexpr auto GGA = GPSTraceMessage::NMEA_DATA_GPGGA;
    const auto held = [](const GPSTraceMessage& message) {
        return std::pair(message.hasNmeaDataType(RMC), message.hasNmeaDataType(GGA));
    };
    EXPECT_EQ(held(GPSTraceMessage()), std::pair(false, false));
    EXPECT_EQ(held(GPSTraceMessage(0, "$GPRMC")), std::pair(true, false));
    EXPECT_EQ(held(GPSTraceMessage(0, "$GNGGA,1")), std::pair(false, true));
    EXPECT_EQ(held(messageOf({"$GNRMC,1", "$GNGGA,1"})), std::pair(true, true));
    EXPECT_EQ(held(messageOf({"$BDRMC,1", "$PPGGA,1", "$GPRM"})), std::pair(false, false));
}

TEST(GPSTraceMessageTest, HoldsNoSentenceOfAnUnknownType) {
    const GPSTraceMessage message = fullMessage();
    for (const int value : {-1, 2, 3, 256, 257, 0x7FFFFFFF}) {
        EXPECT_FALSE(message.hasNmeaDataType(static_cast<GPSTraceMessage::nmeaDataType_t>(value)))
            << value;
    }
}

TEST(GPSTraceMessageTest, GivesCopiesOfItsFields) {
    GPSTraceMessage message = messageOf({RMC_SENTENCE});
    GPSTraceMessage::gprmc_t rmc = message.getRMC();
    GPSTraceMessage::gpgga_t gga = message.getGGA();
    message.addRecord(GGA_SENTENCE);
    EXPECT_EQ(fieldTexts(gga), NO_GGA);
    rmc.status = "changed";
    gga.timeUTC = "changed";
    EXPECT_EQ(fieldTexts(message.getRMC()), RMC_TEXTS);
    EXPECT_EQ(fieldTexts(message.getGGA()), GGA_TEXTS);
}

TEST(GPSTraceMessageTest, NamesTheRMCFieldsInOrder) {
    const GPSTraceMessage::gprmc_t rmc = messageOf({"$GPRMC,1,2,3,4,5,6,7,8,9,10,11,12*"}).getRMC();
    const Texts byName = {rmc.timeUTC,
                          rmc.status,
                          rmc.latitude,
                          rmc.latitudeHemisphere,
                          rmc.longitude,
                          rmc.longitudeHemisphere,
                          rmc.speed,
                          rmc.course,
                          rmc.dateUTC,
                          rmc.magneticVariation,
                          rmc.magneticVariationDirection,
                          rmc.modeIndicator};
    EXPECT_EQ(byName, Texts({"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "12"}));
    EXPECT_EQ(fieldTexts(rmc), byName);
}

TEST(GPSTraceMessageTest, NamesTheGGAFieldsInOrder) {
    const GPSTraceMessage::gpgga_t gga =
        messageOf({"$GPGGA,1,2,3,4,5,6,7,8,9,10,11,12,13,14*"}).getGGA();
    const Texts byName = {gga.timeUTC,
                          gga.latitude,
                          gga.latitudeHemisphere,
                          gga.longitude,
                          gga.longitudeHemisphere,
                          gga.gpsQualityIndicator,
                          gga.numberSatellites,
                          gga.horizontalDelution,
                          gga.antennaAltitude,
                          gga.antennaAltitudeUnit,
                          gga.geoidalSeparation,
                          gga.geoidalSeparationUnit,
                          gga.ageGPSdata,
                          gga.referenceId};
    EXPECT_EQ(byName,
              Texts({"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "12", "13", "14"}));
    EXPECT_EQ(fieldTexts(gga), byName);
}

TEST(GPSTraceMessageTest, ComesFromTheGPSBus) {
    GPSTraceMessage message;
    EXPECT_EQ(message.getSourceChannel(), "GPS");
    EXPECT_EQ(message.getSourceChannelID(), 0x0D00U);
    message.setMbnr(1);
    EXPECT_EQ(message.getSourceChannelID(), 4294970624U);
    message.setMbnr(0x89ABCDEF);
    EXPECT_EQ(message.getSourceChannelID(), 0x89ABCDEF00000D00U);
    message.cascadeChannel(0xFEDC);
    EXPECT_EQ(message.getSourceChannelID(), 0x0000FEDC00000D00U);
}

TEST(GPSTraceMessageTest, RegistersItselfAsOftenAsAsked) {
    EXPECT_TRUE(GPSTraceMessage::registerMessage());
    EXPECT_TRUE(GPSTraceMessage::registerMessage());
    EXPECT_NE(rebuild(serialised(0, 0, "$GPRMC,1\n")), nullptr);
}

TEST(GPSTraceMessageTest, OpensItsBinaryFormToTheFrameworkAlone) {
    EXPECT_FALSE((isDetected<CallGetSize, GPSTraceMessage>));
    EXPECT_FALSE((isDetected<CallToString, GPSTraceMessage>));
    EXPECT_FALSE((isDetected<CallWrite, GPSTraceMessage>));
    EXPECT_FALSE((isDetected<CallRead, GPSTraceMessage>));
    EXPECT_TRUE((isDetected<CallGetSize, MessageBase>));
    EXPECT_TRUE((isDetected<CallToString, MessageBase>));
    EXPECT_TRUE((isDetected<CallWrite, MessageBase>));
}

TEST(GPSTraceMessageTest, OpensParsingToDerivedTypesAlone) {
    EXPECT_FALSE((isDetected<CallParseRMC, GPSTraceMessage>));
    EXPECT_FALSE((isDetected<CallParseGGA, GPSTraceMessage>));
    EXPECT_FALSE((isDetected<CallCoordinate, GPSTraceMessage>));
    EXPECT_TRUE((isDetected<CallParseRMC, DerivedMessage>));
    EXPECT_TRUE((isDetected<CallParseGGA, DerivedMessage>));
    EXPECT_TRUE((isDetected<CallCoordinate, DerivedMessage>));
}

TEST(GPSTraceMessageTest, HidesItsData) {
    EXPECT_FALSE((isDetected<NameMap, GPSTraceMessage>));
    EXPECT_FALSE((isDetected<NameRMC, GPSTraceMessage>));
    EXPECT_FALSE((isDetected<NameGGA, GPSTraceMessage>));
    EXPECT_FALSE((isDetected<NamePosition, GPSTraceMessage>));
    EXPECT_FALSE((isDetected<NameSecondPosition, GPSTraceMessage>));
}

TEST(GPSTraceMessageTest, DeclaresItsResults) {
    using Message = const GPSTraceMessage&;
    EXPECT_TRUE((std::is_same_v<decltype(std::declval<Message>().clone()), GPSTraceMessage*>));
    EXPECT_TRUE((std::is_same_v<decltype(std::declval<Message>().getString()), const std::string>));
    EXPECT_TRUE(
        (std::is_same_v<decltype(std::declval<Message>().getRMC()), GPSTraceMessage::gprmc_t>));
    EXPECT_TRUE(
        (std::is_same_v<decltype(std::declval<Message>().getGGA()), GPSTraceMessage::gpgga_t>));
    EXPECT_TRUE(
        (std::is_same_v<decltype(std::declval<Message>().getSentence("")), std::string_view>));
    EXPECT_TRUE((std::is_same_v<decltype(std::declval<Message>().getSentences()),
                                const std::map<std::string, const std::string, std::less<>>&>));
}

TEST(GPSTraceMessageTest, DeclaresItsNumbers) {
    GPSTraceMessage::numeric_gprmc_t gprmc;
    GPSTraceMessage::numeric_gpgga_t gpgga;
    // Binding by order and type: a member that is added, dropped or of another type is seen.
    const auto& [time, status, latitude, longitude, speed, course, date] = gprmc;
    EXPECT_TRUE((areOfTypes<uint64_t, bool, double, double, double, double, uint64_t>(
        time, status, latitude, longitude, speed, course, date)));
    const auto& [ggaTime, ggaStatus, ggaLatitude, ggaLongitude, satellites, altitude] = gpgga;
    EXPECT_TRUE((areOfTypes<uint64_t, bool, double, double, uint16_t, double>(
        ggaTime, ggaStatus, ggaLatitude, ggaLongitude, satellites, altitude)));
}

TEST(GPSTraceMessageTest, CopiesAllOfItselfDeeply) {
    GPSTraceMessage message = fullMessage();
    GPSTraceMessage copy(message);
    expectSame(copy, fullMessage());
    message.addRecord("$PAAAA");
    expectSame(copy, fullMessage());
    message = fullMessage();
    copy.addRecord("$PBBBB");
    expectSame(message, fullMessage());
}

TEST(GPSTraceMessageTest, AssignsAllOfItselfDeeply) {
    GPSTraceMessage message = fullMessage();
    GPSTraceMessage assigned(1, "$GPGSV,1");
    assigned = message;
    expectSame(message, fullMessage());
    message.addRecord("$PAAAA");
    expectSame(assigned, fullMessage());
    assigned.addRecord("$PBBBB");
    EXPECT_EQ(message.getSentence("$PBBBB"), "");
}

TEST(GPSTraceMessageTest, LeavesWhatItIsCopiedFrom) {
    const GPSTraceMessage message = fullMessage();
    const std::string_view sentence = message.getSentence("$GPRMC");
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): it is the copy that is tested
    const GPSTraceMessage copy(message);
    GPSTraceMessage assigned;
    assigned = message;
    const std::unique_ptr<GPSTraceMessage> clone(message.clone());
    expectSame(message, fullMessage());
    EXPECT_EQ(message.getSentence("$GPRMC").data(), sentence.data());
    EXPECT_NE(copy.getSentence("$GPRMC").data(), sentence.data());
    EXPECT_NE(assigned.getSentence("$GPRMC").data(), sentence.data());
    EXPECT_NE(clone->getSentence("$GPRMC").data(), sentence.data());
}

TEST(GPSTraceMessageTest, StaysAsItIsWhenAssignedToItself) {
    GPSTraceMessage message = fullMessage();
    const GPSTraceMessage& itself = message;
    message = itself;
    expectSame(message, fullMessage());
}

TEST(GPSTraceMessageTest, ChangesPlacesWithAnother) {
    GPSTraceMessage message = fullMessage();
    GPSTraceMessage other(1, "$GPGSV,1");
    std::swap(message, other);
    expectSame(other, fullMessage());
    expectSame(message, GPSTraceMessage(1, "$GPGSV,1"));
}

TEST(GPSTraceMessageTest, MovesAllOfItself) {
    GPSTraceMessage message = fullMessage();
    GPSTraceMessage moved(std::move(message));
    expectSame(moved, fullMessage());
    GPSTraceMessage assigned(1, "$GPGSV,1");
    assigned = std::move(moved);
    expectSame(assigned, fullMessage());
}

TEST(GPSTraceMessageTest, MovesWithoutThrowing) {
    EXPECT_TRUE(std::is_nothrow_move_constructible_v<GPSTraceMessage>);
    EXPECT_TRUE(std::is_nothrow_move_assignable_v<GPSTraceMessage>);
}

TEST(GPSTraceMessageTest, CanBeFilledAgainAfterItsContentWasMoved) {
    GPSTraceMessage message = fullMessage();
    const GPSTraceMessage moved(std::move(message));
    message = GPSTraceMessage(TIME_STAMP, RMC_SENTENCE);
    message.addRecord(GGA_SENTENCE);
    EXPECT_EQ(payloadOf(message), GGA_SENTENCE + '\n' + RMC_SENTENCE + '\n');
}

TEST(GPSTraceMessageTest, ClonesAllOfItself) {
    const std::unique_ptr<GPSTraceMessage> clone(fullMessage().clone());
    expectSame(*clone, fullMessage());
    EXPECT_EQ(payloadOf(*clone), GGA_SENTENCE + '\n' + RMC_SENTENCE + '\n' + PROPRIETARY + '\n');
    EXPECT_EQ(fieldTexts(clone->getRMC()), RMC_TEXTS);
    EXPECT_EQ(fieldTexts(clone->getGGA()), GGA_TEXTS);
}

TEST(GPSTraceMessageTest, SharesNothingWithItsClone) {
    GPSTraceMessage message = fullMessage();
    const std::unique_ptr<GPSTraceMessage> clone(message.clone());
    message.addRecord("$PAAAA");
    message.setMbnr(7);
    expectSame(*clone, fullMessage());
    const std::unique_ptr<GPSTraceMessage> second(clone->clone());
    clone->addRecord("$PBBBB");
    clone->setHeaderReserved(7);
    expectSame(*second, fullMessage());
}

TEST(GPSTraceMessageTest, ClonesItsFieldsAsTheyAre) {
    DerivedMessage message(TIME_STAMP, RMC_SENTENCE);
    const std::unique_ptr<GPSTraceMessage> unsplit(message.clone());
    expectNoFields(*unsplit);
    EXPECT_TRUE(message.parseRMC());
    EXPECT_FALSE(message.parseGGA());
    const std::unique_ptr<GPSTraceMessage> split(message.clone());
    EXPECT_EQ(fieldTexts(split->getRMC()), RMC_TEXTS);
    expectNoFields(*unsplit);
}

TEST(GPSTraceMessageTest, ClonesThroughTheBase) {
    const std::unique_ptr<MessageBase> message = std::make_unique<GPSTraceMessage>(fullMessage());
    const std::unique_ptr<MessageBase> clone(message->clone());
    EXPECT_NE(clone, message);
    EXPECT_EQ(writtenBytes(*clone), writtenBytes(fullMessage()));
    EXPECT_TRUE(*clone == *message);
}

TEST(GPSTraceMessageTest, EqualsItselfAndItsClone) {
    const GPSTraceMessage message = fullMessage();
    const std::unique_ptr<GPSTraceMessage> clone(message.clone());
    expectEqual(message, message);
    expectEqual(message, *clone);
}

TEST(GPSTraceMessageTest, EqualsAMessageOfTheSameSentencesWhateverItsHeader) {
    GPSTraceMessage other(TIME_STAMP, RMC_SENTENCE);
    other.setHeaderReserved(0x9ABC);
    other.setMbnr(0x13579BDF);
    expectEqual(GPSTraceMessage(1, RMC_SENTENCE), other);
}

TEST(GPSTraceMessageTest, EqualsAMessageOfTheSameSentencesWhateverItsFields) {
    const GPSTraceMessage unsplit(TIME_STAMP, RMC_SENTENCE);
    GPSTraceMessage split(TIME_STAMP, RMC_SENTENCE);
    split.addRecord(RMC_SENTENCE);
    ASSERT_EQ(fieldTexts(split.getRMC()), RMC_TEXTS);
    expectEqual(unsplit, split);
}

TEST(GPSTraceMessageTest, EqualsAMessageOfTheSameSentencesInAnyOrder) {
    expectEqual(messageOf({RMC_SENTENCE, GGA_SENTENCE}), messageOf({GGA_SENTENCE, RMC_SENTENCE}));
}

TEST(GPSTraceMessageTest, EqualsAMessageOfTheSameSentencesAsStored) {
    expectEqual(messageOf({"$GNRMC,1"}), messageOf({"$GPRMC,1\n"}));
}

TEST(GPSTraceMessageTest, EqualsAnEmptyMessageWhenEmpty) {
    expectEqual(GPSTraceMessage(), GPSTraceMessage());
    expectUnequal(GPSTraceMessage(), GPSTraceMessage(0, ""));
}

TEST(GPSTraceMessageTest, DiffersInAnyByteOfASentence) {
    const GPSTraceMessage message = messageOf({"$GPRMC,abc"});
    for (const std::string& other :
         {"$GPRMC,abc\r"s, "$GPRMC,abc\n\n"s, "$GPRMC,Abc"s, "$GPRMC,ab"s, "$GPRMC,abc "s,
          "$GPRMC,abc\0"s, "$GPGGA,abc"s, "$PPRMC,abc"s}) {
        expectUnequal(message, messageOf({other}));
    }
    expectUnequal(messageOf({"AB\0C"s}), messageOf({"AB\0D"s}));
}

TEST(GPSTraceMessageTest, DiffersInTheLastSentence) {
    expectUnequal(messageOf({"$GPGGA,1", "$GPRMC,1"}), messageOf({"$GPGGA,1", "$GPRMC,2"}));
    expectUnequal(messageOf({"$GPGGA,1", "$GPRMC,1"}), messageOf({"$GPGGA,1", "$GPVTG,1"}));
}

TEST(GPSTraceMessageTest, DiffersInTheNumberOfSentences) {
    expectUnequal(messageOf({RMC_SENTENCE, GGA_SENTENCE}), messageOf({RMC_SENTENCE}));
    expectUnequal(messageOf({RMC_SENTENCE, GGA_SENTENCE}), messageOf({GGA_SENTENCE}));
    expectUnequal(messageOf({RMC_SENTENCE}), GPSTraceMessage());
}

TEST(GPSTraceMessageTest, DiffersInTheBordersOfItsSentences) {
    const GPSTraceMessage two = messageOf({"$GPGGA,1", "$GPRMC,1"});
    const GPSTraceMessage one = messageOf({"$GPGGA,1\n$GPRMC,1"});
    ASSERT_EQ(payloadOf(one), payloadOf(two));
    expectUnequal(one, two);
}

TEST(GPSTraceMessageTest, DiffersFromMessagesOfOtherTypes) {
    const GPSTraceMessage message(TIME_STAMP, RMC_SENTENCE);
    TestMessage other(MSGID_GPS, TIME_STAMP);
    other.bytes = bytesOf(RMC_SENTENCE + '\n');
    ASSERT_EQ(writtenBytes(other), writtenBytes(message));
    const MessageBase& baseOfOther = other;
    EXPECT_FALSE(message == baseOfOther);
    EXPECT_FALSE(baseOfOther == message);
}

}  // namespace gPSTraceMessageTest
