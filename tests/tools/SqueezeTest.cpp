#include "tools/report/squeeze.h"

#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <set>
#include <sstream>
#include <string>

using namespace vextrace;
using namespace vextrace::tools;

namespace {

// As the page's script does it.
std::string expanded(const std::string& text) {
    const std::string_view digits = Squeezing::DIGITS;
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '~') {
            result += text[i];
        } else if (text.at(i + 1) == '~') {
            result += '~';
            ++i;
        } else {
            const size_t back =
                digits.find(text.at(i + 1)) * digits.size() + digits.find(text.at(i + 2));
            const size_t length = digits.find(text.at(i + 3)) + 5;
            for (size_t n = 0; n < length; ++n) {
                result += result.at(result.size() - back);
            }
            i += 3;
        }
    }
    return result;
}

void expectRoundTrip(const std::string& text) {
    EXPECT_EQ(expanded(squeezed(text)), text);
}

}  // namespace

TEST(SqueezeTest, LeavesAloneWhatDoesNotRecur) {
    EXPECT_EQ(squeezed(""), "");
    EXPECT_EQ(squeezed("$GPRMC"), "$GPRMC");
}

TEST(SqueezeTest, RefersToWhatStoodBefore) {
    // 14 characters back, 13 long.
    EXPECT_EQ(squeezed("$GPGGA,123519\n$GPGGA,123519"), "$GPGGA,123519\n~0E8");
}

TEST(SqueezeTest, DoublesItsMark) {
    EXPECT_EQ(squeezed("a~b~~c"), "a~~b~~~~c");
}

TEST(SqueezeTest, ExpandsToTheSameText) {
    expectRoundTrip(std::string(10000, 'x'));
    expectRoundTrip(std::string(1000, '~'));
    expectRoundTrip("~~~~~~~~abc~~~~~~~~abc~~");
    std::mt19937 random(5);
    for (int i = 0; i < 200; ++i) {
        std::string text;
        const unsigned letters = 1 + random() % 256;
        for (size_t length = random() % 20000; text.size() < length;) {
            text += static_cast<char>(random() % letters);
        }
        expectRoundTrip(text);
    }
}

TEST(SqueezeTest, HalvesReceiverText) {
    std::ifstream file(VEXTRACE_SOURCE_DIR "/examples/data/drive.nmea", std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    ASSERT_GT(text.str().size(), 10000U);
    EXPECT_LT(squeezed(text.str()).size(), text.str().size() / 2);
    expectRoundTrip(text.str());
}

TEST(SqueezeTest, HasDigitsThatAreNothingSpecialElsewhere) {
    const std::set<char> digits(Squeezing::DIGITS.begin(), Squeezing::DIGITS.end());
    EXPECT_EQ(digits.size(), Squeezing::DIGITS.size());
    EXPECT_EQ(Squeezing::DIGITS.find_first_of("~<>&\"'\\\n"), std::string_view::npos);
}
