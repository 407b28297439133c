#include <gtest/gtest.h>

#include <iomanip>
#include <ios>
#include <locale>
#include <numeric>
#include <sstream>
#include <string>
#include <vector>

#include "libvextrace/GPSTraceMessage.h"
#include "tests/support/GlobalCommaAndDots.h"
#include "tests/support/messages.h"

using namespace std::string_literals;

namespace {

using gprmc_t = GPSTraceMessage::gprmc_t;
using gpgga_t = GPSTraceMessage::gpgga_t;

constexpr std::ios_base::fmtflags TRACE_FLAGS = std::ios_base::hex | std::ios_base::fixed;

// Keeps the text written so far at each flush.
class FlushRecorder : public std::stringbuf {
public:
    std::vector<std::string> flushed;

protected:
    int sync() override {
        flushed.push_back(str());
        return 0;
    }
};

// Has room for so many characters and refuses all behind them.
class SmallBuffer : public std::streambuf {
public:
    explicit SmallBuffer(size_t characters) : room(characters) {}

    std::string text;

protected:
    int_type overflow(int_type c) override {
        if (text.size() == room) {
            return traits_type::eof();
        }
        text += traits_type::to_char_type(c);
        return c;
    }

private:
    size_t room;
};

GPSTraceMessage messageWith(const std::string& record) {
    GPSTraceMessage message(0x0123456789ABCDEF, record);
    message.setMbnr(0x00FEDCBA);
    return message;
}

const std::string BASE_PART = "0123456789abcdef 00fedcba";
const std::string COLUMN = "  GPS         |";

template <class Printed>
std::string textOf(const Printed& printed) {
    std::ostringstream os;
    os << printed;
    return os.str();
}

// The text of the sentences in the trace line, each with the blank before it.
std::string sentencesOf(const GPSTraceMessage& message) {
    const std::string text = textOf(message);
    EXPECT_EQ(text.substr(0, 40), BASE_PART + COLUMN);
    return text.substr(40);
}

gprmc_t fullRMC() {
    return {"123519", "A",     "4807.038", "N",     "01131.000", "E",
            "022.4",  "084.4", "230394",   "003.1", "W",         "D"};
}

gpgga_t fullGGA() {
    return {"123519", "4807.038", "S", "01131.000", "W", "2",   "08",
            "0.9",    "545.4",    "M", "46.9",      "m", "5.0", "0001"};
}

const std::string FULL_RMC_DUMP =
    "1. UTC time = 123519\n"
    "2. Status = A\n"
    "3. Latitude = 4807.038\n"
    "4. Latitude hemisphere = N\n"
    "5. Longitude = 01131.000\n"
    "6. Longitude hemisphere = E\n"
    "7. Speed = 022.4\n"
    "8. Course = 084.4\n"
    "9. UTC date = 230394\n"
    "10. Magnetic = 003.1\n"
    "11. Magnetic direction = W\n"
    "12. Mode indicator = D\n";

const std::string FULL_GGA_DUMP =
    "1. UTC time = 123519\n"
    "2. Latitude = 4807.038\n"
    "3. Latitude hemisphere = S\n"
    "4. Longitude = 01131.000\n"
    "5. Longitude hemisphere = W\n"
    "6. GPS quality indicator = 2\n"
    "7. Number of satellites = 08\n"
    "8. Horizontal delution = 0.9\n"
    "9. Altitude = 545.4\n"
    "10. Altitude unit = M\n"
    "11. Geodial separation = 46.9\n"
    "12. Geodial unit = m\n"
    "13. Age GPS data = 5.0\n"
    "14. Reference id = 0001\n";

// The beginnings of a text that end in a line feed.
std::vector<std::string> growingLines(const std::string& text) {
    std::vector<std::string> beginnings;
    for (size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', end + 1)) {
        beginnings.push_back(text.substr(0, end + 1));
    }
    return beginnings;
}

template <class Printed>
std::vector<std::string> flushedBy(const Printed& printed) {
    FlushRecorder recorder;
    std::ostream os(&recorder);
    os << printed;
    return recorder.flushed;
}

template <class Printed>
void expectFormatRestored(const Printed& printed, std::ios_base::fmtflags flags) {
    std::ostringstream os;
    os.flags(flags);
    os.fill('*');
    EXPECT_EQ(&(os << printed), &os);
    EXPECT_EQ(os.flags(), flags);
    EXPECT_EQ(os.fill(), '*');
    EXPECT_EQ(os.str(), textOf(printed));
}

template <class Printed>
void expectFormatRestored(const Printed& printed) {
    expectFormatRestored(printed, std::ios_base::fmtflags());
    expectFormatRestored(printed, std::ios_base::dec | std::ios_base::skipws);
    expectFormatRestored(printed, std::ios_base::oct | std::ios_base::scientific |
                                      std::ios_base::left | std::ios_base::uppercase |
                                      std::ios_base::showbase | std::ios_base::showpoint |
                                      std::ios_base::showpos | std::ios_base::boolalpha);
    std::ostringstream os;
    os << printed << std::setw(5) << 255;
    EXPECT_EQ(os.str(), textOf(printed) + "  255");
}

template <class Printed>
bool throwsFailure(std::ostream& os, const Printed& printed) {
    try {
        os << printed;
        return false;
    } catch (const std::ios_base::failure&) {
        return true;
    }
}

// A stream that throws keeps the trace format.
template <class Printed>
void expectTraceFormatLeftBehind(const Printed& printed, size_t room) {
    SmallBuffer buffer(room);
    std::ostream os(&buffer);
    os.exceptions(std::ios_base::badbit);
    os << std::uppercase << std::left << std::setfill('*');
    EXPECT_TRUE(throwsFailure(os, printed));
    EXPECT_EQ(os.flags(), TRACE_FLAGS);
    EXPECT_EQ(os.fill(), '0');
    EXPECT_EQ(buffer.text, textOf(printed).substr(0, room));
}

template <class Printed>
void expectAbsorbed(const Printed& printed, size_t room) {
    SmallBuffer buffer(room);
    std::ostream os(&buffer);
    os.flags(std::ios_base::oct);
    os.fill('*');
    os << printed;
    EXPECT_TRUE(os.bad());
    EXPECT_EQ(os.flags(), std::ios_base::oct);
    EXPECT_EQ(os.fill(), '*');
    EXPECT_EQ(buffer.text, textOf(printed).substr(0, room));
}

// Every room that is too small, so that the stream fails at each character once.
template <class Printed>
std::vector<size_t> tooLittleRoomFor(const Printed& printed) {
    std::vector<size_t> rooms(textOf(printed).size());
    std::iota(rooms.begin(), rooms.end(), size_t{0});
    return rooms;
}

template <class Printed>
void expectTraceFormatLeftBehindWhenThrowing(const Printed& printed) {
    for (const size_t room : tooLittleRoomFor(printed)) {
        SCOPED_TRACE(room);
        expectTraceFormatLeftBehind(printed, room);
    }
}

template <class Printed>
void expectAbsorbedByAFailingStream(const Printed& printed) {
    for (const size_t room : tooLittleRoomFor(printed)) {
        SCOPED_TRACE(room);
        expectAbsorbed(printed, room);
    }
    std::ostringstream failed;
    failed.setstate(std::ios_base::failbit);
    failed << printed;
    EXPECT_EQ(failed.rdstate(), std::ios_base::failbit);
    EXPECT_EQ(failed.str(), "");
}

class OwnPrint : public GPSTraceMessage {
public:
    using GPSTraceMessage::GPSTraceMessage;

    std::ostream& print(std::ostream& os) const override { return os << "its own"; }
};

// Writes numbers of any base in groups of three.
class Grouping : public std::numpunct<char> {
protected:
    char do_thousands_sep() const override { return '\''; }
    std::string do_grouping() const override { return "\3"; }
};

std::string toString(const MessageBase& message) {
    return message.toString();
}

}  // namespace

TEST(GPSTraceMessageTextTest, TraceLineShowsBasePartColumnAndSentence) {
    EXPECT_EQ(textOf(messageWith("$GPRMC,A*00\r\n")),
              "0123456789abcdef 00fedcba  GPS         | $GPRMC,A*00");
}

TEST(GPSTraceMessageTextTest, TraceLineShowsTheSentencesInOrderOfTheirCodes) {
    GPSTraceMessage message(255, RMC_SENTENCE + "\r\n");
    message.addRecord(GGA_SENTENCE + "\r\n");
    message.addRecord("$HCHDG,101.1");
    EXPECT_EQ(textOf(message), "00000000000000ff 00000000  GPS         | " + GGA_SENTENCE + " " +
                                   RMC_SENTENCE + " $HCHDG,101.1");
}

TEST(GPSTraceMessageTextTest, TraceLineWithoutSentencesEndsBehindTheColumn) {
    EXPECT_EQ(textOf(GPSTraceMessage()), "0000000000000000 00000000  GPS         |");
    EXPECT_EQ(toString(GPSTraceMessage()), "0000000000000000 00000000  GPS         |");
}

TEST(GPSTraceMessageTextTest, TraceLineShowsTheLargestNumbersWhole) {
    GPSTraceMessage message(0xFFFFFFFFFFFFFFFE, "x");
    message.setMbnr(0xFEDCBA98);
    EXPECT_EQ(textOf(message), "fffffffffffffffe fedcba98  GPS         | x");
}

TEST(GPSTraceMessageTextTest, TraceLineLeavesOutTheLineEnd) {
    const struct {
        std::string record;
        std::string shown;
    } cases[] = {
        {"$GPRMC,A", " $GPRMC,A"},
        {"$GPRMC,A\n", " $GPRMC,A"},
        {"$GPRMC,A\r\n", " $GPRMC,A"},
        {"$GPRMC,A\r", " $GPRMC,A"},
        {"$GPRMC,A\r\r\n", " $GPRMC,A\r"},
        {"$GPRMC,A\n\n", " $GPRMC,A\n"},
        {"$GPRMC,A\n\r\n", " $GPRMC,A\n"},
        {"$GPRMC,A \r\n", " $GPRMC,A "},
        {"$GPRMC,A\nsecond\rline\r\n", " $GPRMC,A\nsecond\rline"},
        {"", " "},
        {"\n", " "},
        {"\r\n", " "},
        {"\r", " "},
        {"$G", " $G"},
        {"$G\n", " $G"},
        {"x\0y\0\r\n"s, " x\0y\0"s},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(sentencesOf(messageWith(c.record)), c.shown) << testing::PrintToString(c.record);
    }
}

TEST(GPSTraceMessageTextTest, TraceLineIsTheSameBehindASplit) {
    GPSTraceMessage message = messageWith(RMC_SENTENCE);
    const std::string before = textOf(message);
    message.formatForRDB();
    EXPECT_EQ(textOf(message), before);
}

TEST(GPSTraceMessageTextTest, TraceLineIsTheSameInEveryStreamFormat) {
    std::ostringstream os;
    os << std::showbase << std::uppercase << std::left << std::oct << std::setfill('*');
    os << messageWith("$GPRMC,A");
    EXPECT_EQ(os.str(), BASE_PART + COLUMN + " $GPRMC,A");

    std::ostringstream internal;
    internal << std::internal << std::showbase << std::showpos << std::dec;
    internal << messageWith("$GPRMC,A");
    EXPECT_EQ(internal.str(), BASE_PART + COLUMN + " $GPRMC,A");
}

TEST(GPSTraceMessageTextTest, TraceLineReplacesAPendingWidth) {
    std::ostringstream os;
    os << std::setw(30) << messageWith("$GPRMC,A");
    EXPECT_EQ(os.str(), BASE_PART + COLUMN + " $GPRMC,A");
    EXPECT_EQ(os.width(), 0);
}

TEST(GPSTraceMessageTextTest, TraceLineDoesNotFlush) {
    EXPECT_TRUE(flushedBy(messageWith(RMC_SENTENCE)).empty());
}

TEST(GPSTraceMessageTextTest, TraceLineRestoresTheStreamFormat) {
    expectFormatRestored(messageWith("$GPRMC,A"));
}

TEST(GPSTraceMessageTextTest, TraceLineLeavesItsFormatBehindWhenTheStreamThrows) {
    GPSTraceMessage message = messageWith("$GPRMC,A");
    message.addRecord("$GPGGA,B");
    expectTraceFormatLeftBehindWhenThrowing(message);
}

TEST(GPSTraceMessageTextTest, TraceLineIsAbsorbedByAFailingStream) {
    expectAbsorbedByAFailingStream(messageWith("$GPRMC,A"));
}

TEST(GPSTraceMessageTextTest, PrintWritesTheTraceLineAndReturnsTheStream) {
    const GPSTraceMessage message = messageWith(RMC_SENTENCE);
    std::ostringstream os;
    os << "before:";
    EXPECT_EQ(&message.print(os), &os);
    EXPECT_EQ(os.str(), "before:" + textOf(message));
    os << 255;
    EXPECT_EQ(os.str(), "before:" + textOf(message) + "255");
}

TEST(GPSTraceMessageTextTest, PrintReplacesAPendingWidth) {
    std::ostringstream os;
    messageWith("$GPRMC,A").print(os << std::setw(60));
    EXPECT_EQ(os.str(), BASE_PART + COLUMN + " $GPRMC,A");
    EXPECT_EQ(os.width(), 0);
}

TEST(GPSTraceMessageTextTest, NumbersAreWrittenInTheLocaleOfTheStream) {
    const GPSTraceMessage message = messageWith("$GPRMC,A");
    const std::locale locale(std::locale::classic(), new Grouping);
    std::ostringstream printed;
    printed.imbue(locale);
    message.print(printed);
    EXPECT_EQ(printed.str(), "123'456'789'abc'def 0fed'cba" + COLUMN + " $GPRMC,A");
    std::ostringstream written;
    written.imbue(locale);
    written << message;
    EXPECT_EQ(written.str(), printed.str());
    EXPECT_EQ(toString(message), BASE_PART + COLUMN + " $GPRMC,A");
}

TEST(GPSTraceMessageTextTest, ToStringWritesNumbersInTheGlobalLocaleOfTheCall) {
    const GPSTraceMessage message(0x0A9BC98150068600, "$GPRMC,A");
    {
        const GlobalCommaAndDots locale;
        EXPECT_EQ(toString(message), "a9b.c98.150.068.600 00000000" + COLUMN + " $GPRMC,A");
    }
    EXPECT_EQ(toString(message), "0a9bc98150068600 00000000" + COLUMN + " $GPRMC,A");
}

TEST(GPSTraceMessageTextTest, ToStringGivesTheTextOfPrint) {
    for (const std::string& record : {RMC_SENTENCE + "\r\n", "x\r\r\n"s, "\n"s, "a\0b"s}) {
        const GPSTraceMessage message = messageWith(record);
        std::ostringstream os;
        message.print(os);
        EXPECT_EQ(toString(message), os.str());
        EXPECT_EQ(toString(message), textOf(message));
    }
    EXPECT_EQ(toString(messageWith("$GPRMC,A\r\n")), BASE_PART + COLUMN + " $GPRMC,A");
}

TEST(GPSTraceMessageTextTest, NeitherOperatorNorToStringCallsTheVirtualPrint) {
    const OwnPrint message(1, "$GPRMC,A");
    const std::string line = "0000000000000001 00000000" + COLUMN + " $GPRMC,A";
    EXPECT_EQ(textOf<GPSTraceMessage>(message), line);
    EXPECT_EQ(toString(message), line);
}

TEST(GPSTraceMessageTextTest, DumpsEveryFieldOfAnRMC) {
    EXPECT_EQ(textOf(fullRMC()), FULL_RMC_DUMP);
}

TEST(GPSTraceMessageTextTest, DumpsEveryFieldOfAGGA) {
    EXPECT_EQ(textOf(fullGGA()), FULL_GGA_DUMP);
}

TEST(GPSTraceMessageTextTest, DumpsBareLabelsOfEmptyFields) {
    EXPECT_EQ(textOf(gprmc_t()),
              "1. UTC time = \n2. Status = \n3. Latitude = \n4. Latitude hemisphere = \n"
              "5. Longitude = \n6. Longitude hemisphere = \n7. Speed = \n8. Course = \n"
              "9. UTC date = \n10. Magnetic = \n11. Magnetic direction = \n"
              "12. Mode indicator = \n");
    EXPECT_EQ(textOf(gpgga_t()),
              "1. UTC time = \n2. Latitude = \n3. Latitude hemisphere = \n4. Longitude = \n"
              "5. Longitude hemisphere = \n6. GPS quality indicator = \n"
              "7. Number of satellites = \n8. Horizontal delution = \n9. Altitude = \n"
              "10. Altitude unit = \n11. Geodial separation = \n12. Geodial unit = \n"
              "13. Age GPS data = \n14. Reference id = \n");
}

TEST(GPSTraceMessageTextTest, DumpsFieldsExactlyAsStored) {
    gprmc_t rmc = fullRMC();
    rmc.timeUTC = "\t12 \"x\"\0 "s;
    rmc.modeIndicator = "A\r\n";
    const std::string text = textOf(rmc);
    EXPECT_EQ(text.substr(0, text.find("2. Status")), "1. UTC time = \t12 \"x\"\0 \n"s);
    EXPECT_EQ(text.substr(text.find("12. ")), "12. Mode indicator = A\r\n\n");
}

TEST(GPSTraceMessageTextTest, DumpsTheFieldsOfAMessage) {
    GPSTraceMessage message(1, RMC_SENTENCE);
    message.addRecord("$GPGGA");
    EXPECT_EQ(textOf(message.getRMC()).substr(0, 35), "1. UTC time = 123519\n2. Status = A\n");
    EXPECT_EQ(textOf(message.getGGA()).substr(0, 22), "1. UTC time = $GPGGA\n\n");
}

TEST(GPSTraceMessageTextTest, DumpsFlushEveryLine) {
    EXPECT_EQ(flushedBy(fullRMC()), growingLines(FULL_RMC_DUMP));
    EXPECT_EQ(flushedBy(fullGGA()), growingLines(FULL_GGA_DUMP));
    EXPECT_EQ(flushedBy(gprmc_t()).size(), 12U);
    EXPECT_EQ(flushedBy(gpgga_t()).size(), 14U);
}

TEST(GPSTraceMessageTextTest, APendingWidthFillsTheFirstLabelOfADumpAlone) {
    std::ostringstream rmc;
    rmc << std::left << std::setfill('*') << std::setw(20) << fullRMC();
    EXPECT_EQ(rmc.str(), "000000" + FULL_RMC_DUMP);
    std::ostringstream gga;
    gga << std::internal << std::setw(20) << fullGGA();
    EXPECT_EQ(gga.str(), "000000" + FULL_GGA_DUMP);
}

TEST(GPSTraceMessageTextTest, DumpsRestoreTheStreamFormat) {
    expectFormatRestored(fullRMC());
    expectFormatRestored(fullGGA());
}

TEST(GPSTraceMessageTextTest, DumpsLeaveTheirFormatBehindWhenTheStreamThrows) {
    expectTraceFormatLeftBehindWhenThrowing(fullRMC());
    expectTraceFormatLeftBehindWhenThrowing(fullGGA());
}

TEST(GPSTraceMessageTextTest, DumpsAreAbsorbedByAFailingStream) {
    expectAbsorbedByAFailingStream(fullRMC());
    expectAbsorbedByAFailingStream(fullGGA());
}
