#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "tests/model/GPSModel.h"
#include "tests/model/Mutator.h"
#include "tests/model/differential.h"
#include "tests/model/logs.h"
#include "tests/support/CommaLocale.h"
#include "tests/support/rounds.h"

namespace {

const char* const RMC =
    "$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W,A*6A\r\n";
const char* const GGA = "$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47\r\n";

// Sentences as receivers send them: the project's own log, and the folder of logs where there is
// one.
std::vector<std::string> receivedSentences() {
    std::vector<std::string> lines = linesOfLog(VEXTRACE_SOURCE_DIR "/examples/data/drive.nmea");
    EXPECT_FALSE(lines.empty());
    for (const std::string& log : logsIn(VEXTRACE_LOG_DIR)) {
        for (const std::string& line : linesOfLog(log)) {
            lines.push_back(line);
        }
    }
    return lines;
}

// Those that are split and converted, as most changes to others change little.
std::vector<std::string> receivedFixes() {
    std::vector<std::string> fixes;
    for (const std::string& line : receivedSentences()) {
        if (line.substr(3, 3) == "RMC" || line.substr(3, 3) == "GGA") {
            fixes.push_back(line);
        }
    }
    return fixes;
}

class ModelTest : public testing::Test {
protected:
    std::vector<std::string> oneToFour(const std::vector<std::string>& sentences) {
        std::vector<std::string> some;
        for (size_t count = 1 + mutator.below(4); count > 0; --count) {
            some.push_back(mutator.oneOf(sentences));
        }
        return some;
    }

    void changeSome(std::vector<std::string>& sentences) {
        for (size_t changes = 1 + mutator.below(3); changes > 0; --changes) {
            std::string& sentence = sentences[mutator.below(sentences.size())];
            sentence = mutator.sentence(sentence);
        }
    }

    // Both sentences with numbers in all fields that are converted.
    std::vector<std::string> sentencesOfNumbers() {
        std::string rmc = RMC;
        for (const size_t field : std::vector<size_t>{1, 3, 5, 7, 8, 9}) {
            rmc = withField(rmc, field, mutator.number());
        }
        std::string gga = GGA;
        for (const size_t field : std::vector<size_t>{1, 2, 4, 7, 9}) {
            gga = withField(gga, field, mutator.number());
        }
        return {rmc, gga};
    }

    // The bytes of one to three messages, one behind the other.
    std::string written(const std::vector<std::vector<std::string>>& groups) {
        std::string bytes;
        for (size_t count = 1 + mutator.below(3); count > 0; --count) {
            bytes += GPSModel::of(mutator.below(1000), mutator.oneOf(groups)).write();
        }
        return bytes;
    }

    Mutator mutator{20240229};
};

TEST_F(ModelTest, AgreesOnOddTextsInEveryField) {
    for (const std::string sentence : {RMC, GGA}) {
        const size_t commas =
            static_cast<size_t>(std::count(sentence.begin(), sentence.end(), ','));
        for (size_t field = 0; field <= commas; ++field) {
            for (const std::string& text : oddFields()) {
                const std::vector<std::string> sentences = {withField(sentence, field, text),
                                                            "$PROP,1*00"};
                ASSERT_EQ(differenceInSentences(0x0123456789ABCDEF, sentences), "")
                    << testing::PrintToString(sentences);
            }
        }
    }
}

TEST_F(ModelTest, AgreesOnNumbersOfManyDigits) {
    for (int i = 0; i < rounds(1500); ++i) {
        const std::vector<std::string> sentences = sentencesOfNumbers();
        ASSERT_EQ(differenceInSentences(1, sentences), "") << testing::PrintToString(sentences);
    }
}

TEST_F(ModelTest, AgreesOnNumbersInALocaleWithDecimalComma) {
    const CommaLocale locale;
    if (!locale.inForce()) {
        GTEST_SKIP() << "no locale with a decimal comma can be made here";
    }
    ASSERT_EQ(std::strtod("1.5", nullptr), 1.0);
    for (int i = 0; i < rounds(500); ++i) {
        const std::vector<std::string> sentences = sentencesOfNumbers();
        ASSERT_EQ(differenceInSentences(1, sentences), "") << testing::PrintToString(sentences);
    }
}

TEST_F(ModelTest, AgreesOnSentencesAsReceived) {
    for (const auto& sentences : groupedByCode(receivedSentences())) {
        ASSERT_EQ(differenceInSentences(0xFEDCBA9876543210, sentences), "")
            << testing::PrintToString(sentences);
    }
}

TEST_F(ModelTest, AgreesOnChangedSentences) {
    const std::vector<std::string> fixes = receivedFixes();
    ASSERT_FALSE(fixes.empty());
    for (int i = 0; i < rounds(4000); ++i) {
        std::vector<std::string> sentences = oneToFour(fixes);
        changeSome(sentences);
        ASSERT_EQ(differenceInSentences(mutator.below(1000), sentences), "")
            << testing::PrintToString(sentences);
    }
}

TEST_F(ModelTest, AgreesOnChangedBytesOfOneMessage) {
    const auto groups = groupedByCode(receivedFixes());
    ASSERT_FALSE(groups.empty());
    for (int i = 0; i < rounds(2000); ++i) {
        const std::string bytes = mutator.bytes(mutator.bytes(written(groups)));
        ASSERT_EQ(differenceInReading(bytes), "") << testing::PrintToString(bytes);
    }
}

TEST_F(ModelTest, AgreesOnWalksOverChangedBytes) {
    const auto groups = groupedByCode(receivedFixes());
    ASSERT_FALSE(groups.empty());
    for (int i = 0; i < rounds(1000); ++i) {
        const std::string bytes = mutator.bytes(written(groups));
        ASSERT_EQ(differenceInWalk(bytes), "") << testing::PrintToString(bytes);
    }
}

TEST_F(ModelTest, AgreesOnShortRanges) {
    const std::string whole = GPSModel(258, "$GPRMC,A").write();
    for (size_t length = 0; length <= whole.size(); ++length) {
        ASSERT_EQ(differenceInWalk(whole.substr(0, length)), "") << length;
        ASSERT_EQ(differenceInReading(whole.substr(0, length)), "") << length;
    }
}

TEST_F(ModelTest, AgreesOnMessagesAsLongAsTheSizeFieldAllows) {
    constexpr size_t LONGEST_SENTENCE = 65535 - 12;
    for (const size_t length : {LONGEST_SENTENCE - 1, LONGEST_SENTENCE, LONGEST_SENTENCE + 1}) {
        const std::string sentence = "$GPRMC," + std::string(length - 8, 'x') + "\n";
        ASSERT_EQ(sentence.size(), length);
        EXPECT_EQ(differenceInSentences(1, {sentence}), "") << length;
    }
}

TEST_F(ModelTest, AgreesOnChangedPrograms) {
    const auto groups = groupedByCode(receivedFixes());
    ASSERT_FALSE(groups.empty());
    for (int i = 0; i < rounds(400); ++i) {
        std::string program = programOf(mutator.below(1000), mutator.oneOf(groups));
        ASSERT_EQ(differenceInProgram(program), "") << testing::PrintToString(program);
        for (size_t changes = mutator.below(8); changes > 0; --changes) {
            program = mutator.bytes(program);
        }
        ASSERT_EQ(differenceInProgram(program), "") << testing::PrintToString(program);
    }
}

}  // namespace
