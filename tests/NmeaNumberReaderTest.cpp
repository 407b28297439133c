#include "libvextrace/internal/NmeaNumberReader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "libvextrace/GPSTraceMessage.h"
#include "tests/support/CommaLocale.h"
#include "tests/support/doubleBits.h"

using namespace std::string_literals;

using vextrace::internal::NmeaNumberReader;

namespace {

const std::vector<std::string> TEXTS = {
    // plain
    "0", "1", "7", "9", "00", "007", "123519", "002153.000", "4807.038", "01131.000", "022.4",
    "084.4", "230394", "545.4", "0.9", "46.9", "08", "1.852", "0.1", "0.3", "2.675", "99.99",
    "4859.9996", "0000.000", "0.0", "1.", ".5", "00.50", "5.", "0.000000000000001",
    // rounded twice where division keeps more precision than double's
    "16.678979", "85.367286", "251.5771201198",
    // none, blanks, signs
    "", " ", "\t", "\n", "\r\n", " 12.5", "\t\n\v\f\r 12.5", "12.5 ", "1 2", "+12.5", "-12.5", "-0",
    "-0.0", "+0", "+-1", "--1", "- 1", "+", "-", " -7.25", "-.5", "+.5",
    // points and commas
    ".", "..", "1..2", "1.2.3", "..5", "-.", "1,5", "1,5.5", "1.5,5", ",5",
    // exponents
    "1e3", "1E3", "1.5e-3", "1e", "1e+", "1e400", "-1e400", "1e-400", "5e-324", "2e-324",
    "4.9406564584124654e-324", "2.2250738585072014e-308", "1.7976931348623157e308",
    "1.7976931348623159e308", ".e1", "e1", "1e3.5", "0e9",
    // hexadecimal, octal, infinity, nan
    "0x1A", "0X1a.8p1", "-0x1p-2", "0x", "0xg", "010", "0b1", "inf", "-inf", "INF", "infinity",
    "Infinity5", "in", "nan", "-nan", "NAN", "nan(12)", "nan(", "na",
    // trailing letters
    "4807.038abc", "12N", "12.5N", "12.N", "N12", "W*6A\n", "1f", "1.5L", "1_000", "1'000",
    // embedded NUL
    "12\0"
    "34"s,
    "12.5\0"
    "6"s,
    "\0"
    "12"s,
    "1\0"s, ".\0"s,
    // bytes above 127
    "\xC2\xB0", "12\xC2\xB0", "\xFF\x31",
    // around the limits of the short ways
    "999999999", "000000001", "123456789", "1234567890", "2147483647", "2147483648", "4294967295",
    "4294967296", "9999999999", "-2147483648", "-2147483649", "0000000000", "0000000007",
    "00000000012345", "123456789.5", "1234567890.5", "12345678X", "123456789X", "1234567890X",
    "999999999999999", "999999999999999.", ".999999999999999", "99999999.9999999",
    "9007199254740991", "9007199254740992", "9007199254740993", "900719925474099.3",
    "1234567890123456", "1234567.890123456", ".1234567890123456", "12345678901234567",
    "123456789.01234567", "0.12345678901234567", "000000000000000", "0000000000000000",
    "000000000000001", "0000000000000001", "00000000000000001", "0000000000000.01",
    "00000000000000.1", "12345678901234..", "123456789012345N", "1234567890123456N",
    "1234567890123456789012345", "0.1234567890123456789012345", "1234567890123.123456789012",
    "9999999999999999999999999", "0000000000000000000000001",
    // around and beyond the range of long
    "9223372036854775807", "9223372036854775808", "-9223372036854775808", "-9223372036854775809",
    "18446744073709551615", "18446744073709551616", "99999999999999999999",
    "-99999999999999999999"};

// What strtod makes of the text; where there is no number 0, as the C standard wants it.
double standardReal(const std::string& text) {
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    return end == text.c_str() ? 0.0 : value;
}

// Converts a view with digits right behind it, which are none of its business.
void expectAsTheStandardLibrary(const NmeaNumberReader& number, const std::string& text) {
    const std::string longer = text + "99";
    const std::string_view view = std::string_view(longer).substr(0, text.size());
    const long integer = std::strtol(text.c_str(), nullptr, 10);
    const uint64_t realBits = bitsOf(standardReal(text));
    EXPECT_EQ(NmeaNumberReader::integer(view), integer) << testing::PrintToString(text);
    EXPECT_EQ(bitsOf(number.real(view)), realBits) << testing::PrintToString(text);
    const NmeaNumberReader::Number both = number.read(view);
    EXPECT_EQ(both.integer, integer) << testing::PrintToString(text);
    EXPECT_EQ(bitsOf(both.real), realBits) << testing::PrintToString(text);
}

void expectTextsAsTheStandardLibrary() {
    const NmeaNumberReader number;
    for (const std::string& text : TEXTS) {
        expectAsTheStandardLibrary(number, text);
    }
}

// Digits with a point before, between or behind them, or none. Only the engine is used, whose
// numbers are the same everywhere.
std::string plainDecimal(std::mt19937& random, size_t digits) {
    std::string text;
    for (size_t i = 0; i < digits; ++i) {
        text += static_cast<char>('0' + random() % 10);
    }
    const size_t point = random() % (digits + 2);
    return point > digits ? text : text.insert(point, 1, '.');
}

void expectDecimalsAsTheStandardLibrary(const std::string& point) {
    const NmeaNumberReader number;
    std::mt19937 random(20010);
    for (int i = 0; i < 6000; ++i) {
        std::string text = plainDecimal(random, 1 + random() % 18);
        if (const size_t found = text.find('.'); found != std::string::npos) {
            text.replace(found, 1, point);
        }
        expectAsTheStandardLibrary(number, text);
    }
}

constexpr char NO_COMMA_LOCALE[] =
    "The localedef command of the GNU C library could not make a locale with a decimal comma.";

}  // namespace

TEST(NmeaNumberReaderTest, ReadsTextsAsTheStandardLibraryDoes) {
    expectTextsAsTheStandardLibrary();
}

TEST(NmeaNumberReaderTest, ReadsPlainDecimalsAsTheStandardLibraryDoes) {
    expectDecimalsAsTheStandardLibrary(".");
}

TEST(NmeaNumberReaderTest, ReadsKnownIntegers) {
    EXPECT_EQ(NmeaNumberReader::integer("123519.00"), 123519);
    EXPECT_EQ(NmeaNumberReader::integer("010"), 10);
    EXPECT_EQ(NmeaNumberReader::integer(" -42x"), -42);
    EXPECT_EQ(NmeaNumberReader::integer("2147483647"), 2147483647);
    EXPECT_EQ(NmeaNumberReader::integer("x1"), 0);
    EXPECT_EQ(NmeaNumberReader::integer(""), 0);
    EXPECT_EQ(NmeaNumberReader::integer({}), 0);
}

TEST(NmeaNumberReaderTest, SaturatesIntegersAtTheRangeOfLong) {
    EXPECT_EQ(NmeaNumberReader::integer("99999999999999999999"), std::numeric_limits<long>::max());
    EXPECT_EQ(NmeaNumberReader::integer("-99999999999999999999"), std::numeric_limits<long>::min());
}

TEST(NmeaNumberReaderTest, ReadsKnownReals) {
    const NmeaNumberReader number;
    EXPECT_EQ(bitsOf(number.real("022.4")), 0x4036666666666666U);
    EXPECT_EQ(bitsOf(number.real("1.852")), 0x3FFDA1CAC083126FU);
    EXPECT_EQ(bitsOf(number.real("16.678979")), 0x4030ADD19157ABB9U);
    EXPECT_EQ(bitsOf(number.real("85.367286")), 0x405557819D2391D5U);
    EXPECT_EQ(bitsOf(number.real("251.5771201198")), 0x406F7277C49D0CF3U);
    EXPECT_EQ(bitsOf(number.real("-0")), 0x8000000000000000U);
    EXPECT_EQ(bitsOf(number.real("1e400")), 0x7FF0000000000000U);
    EXPECT_EQ(bitsOf(number.real("9007199254740993")), 0x4340000000000000U);
    EXPECT_EQ(bitsOf(number.real("1.7976931348623157e308")), 0x7FEFFFFFFFFFFFFFU);
    EXPECT_EQ(bitsOf(number.real("5e-324")), 1U);
    EXPECT_EQ(bitsOf(number.real("0x1A")), bitsOf(26.0));
    EXPECT_EQ(bitsOf(number.real("abc")), 0U);
    EXPECT_EQ(bitsOf(number.real("-N")), 0U);
    EXPECT_EQ(bitsOf(number.real("")), 0U);
    EXPECT_EQ(bitsOf(number.real({})), 0U);
    EXPECT_TRUE(std::isnan(number.real("nan")));
}

TEST(NmeaNumberReaderTest, ReadsTheDecimalPointOfTheCLocale) {
    const CommaLocale locale;
    if (!locale.inForce()) {
        GTEST_SKIP() << NO_COMMA_LOCALE;
    }
    const NmeaNumberReader number;
    EXPECT_EQ(number.real("1,5"), 1.5);
    EXPECT_EQ(number.real("1.5"), 1.0);
    EXPECT_EQ(number.real(".5"), 0.0);
    EXPECT_EQ(number.real("15"), 15.0);
    EXPECT_EQ(NmeaNumberReader::integer("1,5"), 1);
    EXPECT_EQ(NmeaNumberReader::integer("1.5"), 1);
}

TEST(NmeaNumberReaderTest, ReadsAsTheStandardLibraryDoesWithADecimalComma) {
    const CommaLocale locale;
    if (!locale.inForce()) {
        GTEST_SKIP() << NO_COMMA_LOCALE;
    }
    expectTextsAsTheStandardLibrary();
    expectDecimalsAsTheStandardLibrary(".");
    expectDecimalsAsTheStandardLibrary(",");
}

TEST(NmeaNumberReaderTest, MessagesReadTheDecimalPointOfTheCLocale) {
    const CommaLocale locale;
    if (!locale.inForce()) {
        GTEST_SKIP() << NO_COMMA_LOCALE;
    }
    GPSTraceMessage message(1, "$GPGGA,123519.75,4807.038,N,01131.900,E,1,08,0.9,545.4,M,46.9*47");
    GPSTraceMessage::numeric_gpgga_t numbers;
    ASSERT_TRUE(message.getGPGGA(numbers));
    EXPECT_EQ(numbers.timeUTC, 123519U);
    EXPECT_EQ(numbers.latitude, 48 + 7 / 60.0);
    EXPECT_EQ(numbers.longitude, 11 + 31 / 60.0);
    EXPECT_EQ(numbers.antennaAltitude, 545.0);
    EXPECT_EQ(message.formatForRDB(), "48°7.000 N, 11°31.000 E, 545.4M");
}
