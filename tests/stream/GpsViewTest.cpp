#include "libvexstream/GpsView.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/stream/traces.h"

using namespace vextrace;
using namespace std::string_view_literals;

namespace gpsViewTest {
namespace {

constexpr uint64_t STAMP = 0x189A'BCDE'F012'3456;
const std::string RMC = "$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W*6A\r\n";
const std::string GGA = "$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47\r\n";

TraceBytes gps(std::string_view payload) {
    TraceBytes bytes = messageOf(MSGID_GPS, STAMP, payload);
    bytes[MessageBase::MO_HDRRESERVED] = 0xAB;
    bytes[MessageBase::MO_HDRRESERVED + 1] = 0xCD;
    return bytes;
}

bool liesIn(std::string_view text, const TraceBytes& bytes) {
    const auto* const begin = reinterpret_cast<const char*>(bytes.data());
    return text.data() >= begin && text.data() + text.size() <= begin + bytes.size();
}

std::vector<std::string> sentencesOf(const GpsView& view) {
    return {view.getSentences().begin(), view.getSentences().end()};
}

std::vector<std::string> sentencesOf(const GPSTraceMessage& message) {
    std::vector<std::string> sentences;
    for (const auto& [code, sentence] : message.getSentences()) {
        sentences.push_back(sentence);
    }
    return sentences;
}

// What the library makes of the bytes; nothing where it refuses them.
std::optional<GPSTraceMessage> decoded(const TraceBytes& bytes) {
    GPSTraceMessage::registerMessage();
    const DecodedMessage result = MessageFactory::decode(bytes.data(), bytes.size());
    if (result.error) {
        return std::nullopt;
    }
    return dynamic_cast<const GPSTraceMessage&>(*result.message);
}

// All that a view says is what the library says; gives whether it was read in place.
bool expectLikeTheLibrary(GpsView& view, std::string_view payload) {
    SCOPED_TRACE(payload);
    const TraceBytes bytes = gps(payload);
    const auto expected = decoded(bytes);
    const auto error = view.read(bytes);
    EXPECT_EQ(error.has_value(), !expected);
    if (!expected) {
        EXPECT_TRUE(view.getSentences().empty());
        return false;
    }
    EXPECT_EQ(view.getTimeStamp(), STAMP);
    EXPECT_EQ(view.getHeaderReserved(), 0xABCD);
    EXPECT_EQ(sentencesOf(view), sentencesOf(*expected));
    for (const auto& [code, sentence] : expected->getSentences()) {
        EXPECT_EQ(view.getSentence(code), sentence);
        EXPECT_EQ(GpsView::codeOf(sentence), code);
    }
    EXPECT_EQ(view.getSentence("$GPXXX"), "");
    for (const auto type : {GPSTraceMessage::NMEA_DATA_GPRMC, GPSTraceMessage::NMEA_DATA_GPGGA,
                            static_cast<GPSTraceMessage::nmeaDataType_t>(2)}) {
        EXPECT_EQ(view.hasNmeaDataType(type), expected->hasNmeaDataType(type));
    }
    const GPSTraceMessage message = view.message();
    EXPECT_EQ(message, *expected);
    EXPECT_EQ(message.getTimeStamp(), STAMP);
    EXPECT_EQ(message.getHeaderReserved(), 0xABCD);
    EXPECT_EQ(message.getRMC().timeUTC, expected->getRMC().timeUTC);
    EXPECT_EQ(message.getGGA().timeUTC, expected->getGGA().timeUTC);
    return !view.getSentences().empty() && liesIn(view.getSentences().front(), bytes);
}

}  // namespace

TEST(GpsViewTest, ReadsWhatTheLibraryWritesInPlace) {
    GpsView view;
    for (const std::string& payload :
         {GGA + RMC, RMC, std::string("$GPRMC\n"), std::string("x\n"),
          "!AIVDM,1\n" + GGA + "$PXYZ\n", std::string("\r\n$GP\n$GP1\n"),
          std::string("$GPRM\n$GPRMC\n\xFF\n")}) {
        EXPECT_TRUE(expectLikeTheLibrary(view, payload));
    }
}

TEST(GpsViewTest, LetsTheLibraryDecodeWhatItWouldNotWrite) {
    GpsView view;
    for (const std::string_view payload :
         {"$GPRMC,1\n$GPGGA,1\n"sv, "$GPRMC,1\n$GPRMC,2\n"sv, "$GPRMC,1"sv, "\n$GPRMC,1\n"sv,
          "$GPRMC,1\n\n"sv, "$GNRMC,1\n"sv, "$G\n"sv, "$G"sv, "$GPRMC,1\n\0"sv, "$GPRMC,1\0\n"sv,
          "$GPGGA\n$GP"sv, "\xFF\n$GPRMC\n"sv, "$GPRMC\n$GPRM\n"sv}) {
        EXPECT_FALSE(expectLikeTheLibrary(view, payload));
        EXPECT_FALSE(view.getSentences().empty());
    }
}

TEST(GpsViewTest, TellsWhyThereIsNoMessage) {
    GPSTraceMessage::registerMessage();
    GpsView view;
    for (const std::string_view payload : {""sv, "\n"sv, "\n\n\n"sv, "\0$GPRMC,1\n"sv}) {
        EXPECT_FALSE(view.read(gps(RMC)));
        const auto error = view.read(gps(payload));
        ASSERT_TRUE(error);
        EXPECT_STREQ(error->what(), "GPSTraceMessage: No NMEA code found.");
        EXPECT_TRUE(view.getSentences().empty());
        EXPECT_EQ(view.getTimeStamp(), 0U);
        EXPECT_EQ(view.getHeaderReserved(), 0);
        EXPECT_TRUE(view.message().getSentences().empty());
    }
}

TEST(GpsViewTest, RefusesWhatIsNoGpsMessageByItsHeader) {
    const TraceBytes sound = gps(RMC);
    GpsView view;
    for (size_t size = 0; size < sound.size(); ++size) {
        const TraceBytes cut(sound.begin(), sound.begin() + static_cast<ptrdiff_t>(size));
        const auto error = view.read(cut);
        ASSERT_TRUE(error) << size;
        EXPECT_EQ(error->getCause(), IM_INVALID_LEN);
        EXPECT_TRUE(view.getSentences().empty());
        EXPECT_TRUE(view.message().getSentences().empty());
    }
    TraceBytes longer = sound;
    longer.push_back('\n');
    const auto tooLong = view.read(longer);
    ASSERT_TRUE(tooLong);
    EXPECT_EQ(tooLong->getCause(), IM_INVALID_LEN);
    for (const std::string_view payload : {std::string_view(RMC), "unordered\nlines\n"sv}) {
        TraceBytes other = gps(payload);
        other[MessageBase::MO_MSGID + 1] = MSGID_GPS + 1;
        const auto error = view.read(other);
        ASSERT_TRUE(error);
        EXPECT_EQ(error->getCause(), IM_INVALID_MSGID);
        EXPECT_TRUE(view.message().getSentences().empty());
    }
}

TEST(GpsViewTest, DecodesNothingWhereItIsToReadInPlaceAlone) {
    GpsView view;
    const TraceBytes sound = gps(GGA + RMC);
    EXPECT_TRUE(view.readInPlace(sound));
    EXPECT_EQ(sentencesOf(view), (std::vector<std::string>{GGA, RMC}));
    EXPECT_EQ(view.getTimeStamp(), STAMP);
    for (const std::string_view payload :
         {"$GPRMC,1\n$GPGGA,1\n"sv, "$GPRMC,1"sv, "$GNRMC,1\n"sv, "$GPRMC,1\n\0"sv, ""sv}) {
        EXPECT_FALSE(view.readInPlace(gps(payload)));
        EXPECT_TRUE(view.getSentences().empty());
        EXPECT_EQ(view.getTimeStamp(), 0U);
        EXPECT_TRUE(view.message().getSentences().empty());
    }
}

TEST(GpsViewTest, NothingOfTheMessageBeforeStays) {
    GpsView view;
    const TraceBytes two = gps(GGA + RMC);
    const TraceBytes unordered = gps("$GPZDA,1\n$GPTXT,2\n");
    const TraceBytes one = gps(RMC);
    EXPECT_FALSE(view.read(two));
    EXPECT_FALSE(view.read(unordered));
    EXPECT_EQ(sentencesOf(view), (std::vector<std::string>{"$GPTXT,2\n", "$GPZDA,1\n"}));
    EXPECT_FALSE(view.read(one));
    EXPECT_EQ(sentencesOf(view), (std::vector<std::string>{RMC}));
    EXPECT_EQ(sentencesOf(view.message()), (std::vector<std::string>{RMC}));
}

// Every payload of up to six of the characters on which it depends.
TEST(GpsViewTest, SaysWhatTheLibrarySaysOfEveryShortPayload) {
    constexpr std::string_view CHARACTERS = "$GPN\n\0"sv;
    GpsView view;
    size_t inPlace = 0;
    for (size_t length = 0; length <= 6; ++length) {
        size_t count = 1;
        for (size_t i = 0; i < length; ++i) {
            count *= CHARACTERS.size();
        }
        for (size_t number = 0; number < count; ++number) {
            std::string payload;
            for (size_t rest = number; payload.size() < length; rest /= CHARACTERS.size()) {
                payload += CHARACTERS[rest % CHARACTERS.size()];
            }
            inPlace += expectLikeTheLibrary(view, payload) ? 1U : 0U;
        }
    }
    EXPECT_GT(inPlace, 500U);
}

TEST(GpsViewTest, IsOfAMessageThatWasNeverWritten) {
    GPSTraceMessage message(STAMP, "$GNRMC,1\n$GPTXT,of two lines");
    message.addRecord("$G");
    message.addRecord("");
    message.setMbnr(7);
    const GpsView view = message;
    EXPECT_EQ(sentencesOf(view),
              (std::vector<std::string>{"\n", "$GP", "$GPRMC,1\n$GPTXT,of two lines\n"}));
    EXPECT_EQ(view.getSentence("$GP"), "$GP");
    EXPECT_EQ(view.getTimeStamp(), STAMP);
    EXPECT_EQ(view.message(), message);
    EXPECT_EQ(view.message().getMbnr(), 7U);
}

TEST(GpsViewTest, StaysValidWhereItIsMoved) {
    const TraceBytes unordered = gps("$GPZDA,1\n$GPTXT,2\n");
    GpsView view;
    EXPECT_FALSE(view.read(unordered));
    const GpsView moved = std::move(view);
    EXPECT_EQ(moved.getSentence("$GPZDA"), "$GPZDA,1\n");
    EXPECT_EQ(sentencesOf(moved.message()), sentencesOf(moved));
}

}  // namespace gpsViewTest
