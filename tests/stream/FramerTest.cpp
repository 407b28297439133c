#include "libvexstream/Framer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "tests/stream/model/framerModel.h"

using namespace vextrace;

namespace {

using std::string;
using Sentences = std::vector<ModelSentence>;

// In one piece, after it was compared with small pieces.
Sentences framed(const string& input) {
    Sentences whole = framedSentences(input, input.size() + 1);
    for (const size_t size : {1U, 2U, 3U, 7U}) {
        EXPECT_EQ(describe(framedSentences(input, size)), describe(whole)) << "pieces of " << size;
    }
    return whole;
}

string filled(size_t size) {
    string sentence(size, 'x');
    sentence.front() = '$';
    return sentence;
}

string withChecksum(const string& sentence) {
    unsigned sum = 0;
    for (const char c : sentence.substr(1)) {
        sum ^= static_cast<unsigned char>(c);
    }
    constexpr char DIGITS[] = "0123456789ABCDEF";
    return sentence + '*' + DIGITS[sum / 16] + DIGITS[sum % 16];
}

Framer::Counters countersOf(const string& input) {
    Framer framer;
    framer.feed(input);
    framer.finish();
    while (framer.next()) {
    }
    return framer.counters();
}

string contentOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

TEST(FramerTest, FindsCheckedSentencesOnLinesOfTheirOwn) {
    EXPECT_EQ(framed("$PA*11\r\n!PB*12\n$PC*13"),
              (Sentences{{0, "$PA*11\r\n", 'R'}, {8, "!PB*12\n", 'R'}, {15, "$PC*13", 'R'}}));
}

TEST(FramerTest, FindsCheckedSentencesWhereverTheyStand) {
    EXPECT_EQ(framed("12:35:19 $PA*11\r\n"), (Sentences{{9, "$PA*11\r\n", 'R'}}));
    EXPECT_EQ(framed("\xEF\xBB\xBF$PA*11\r\n"), (Sentences{{3, "$PA*11\r\n", 'R'}}));
    EXPECT_EQ(framed(string("\xB5\x62\x01\x00\x24\xFF", 6) + "$PA*11\r\n\xB5\x62$PB*12\r\n"),
              (Sentences{{6, "$PA*11\r\n", 'R'}, {16, "$PB*12\r\n", 'R'}}));
    EXPECT_EQ(framed("$PA*11$PB*12tail\n"), (Sentences{{0, "$PA*11", 'R'}, {6, "$PB*12", 'R'}}));
    EXPECT_EQ(framed("$GPGGA,1$PA*11\r\n"), (Sentences{{8, "$PA*11\r\n", 'R'}}));
}

TEST(FramerTest, TakesAnyBytesIntoACheckedSentence) {
    const string sentence = withChecksum("$P\x01\xFF\t\x7F!A$,");
    EXPECT_EQ(framed(sentence + "\r\n"), (Sentences{{0, sentence + "\r\n", 'R'}}));
}

TEST(FramerTest, ReadsChecksumsOfEitherCase) {
    EXPECT_EQ(framed("$PJ*1A\n$PJ*1a\n"), (Sentences{{0, "$PJ*1A\n", 'R'}, {7, "$PJ*1a\n", 'R'}}));
    EXPECT_EQ(
        framed("$k\xA0*CB\n$k\xA0*cB\n$k\xA0*Cb\n"),
        (Sentences{{0, "$k\xA0*CB\n", 'R'}, {7, "$k\xA0*cB\n", 'R'}, {14, "$k\xA0*Cb\n", 'R'}}));
}

TEST(FramerTest, TakesTheLastOfSeveralStartsThatFit) {
    // Two equal starts cancel each other out, and so does any pair behind them.
    EXPECT_EQ(framed("$AA$AA$PA*11\n"), (Sentences{{6, "$PA*11\n", 'R'}}));
    EXPECT_EQ(framed("$!!$PA*35\n"), (Sentences{{2, "!$PA*35\n", 'R'}}));
}

TEST(FramerTest, GoesOnWhereNoStartFits) {
    const string twoStars = withChecksum("$A*00B");
    EXPECT_EQ(framed(twoStars + "\n"), (Sentences{{0, twoStars + "\n", 'R'}}));
    const string starInFront = withChecksum("$P**A*");
    EXPECT_EQ(framed(starInFront + "\n"), (Sentences{{0, starInFront + "\n", 'R'}}));
}

TEST(FramerTest, UsesNoByteTwice) {
    // What stands behind the first would fit with its start.
    const string longer = withChecksum("$PA*11B");
    EXPECT_EQ(framed(longer + "\n"), (Sentences{{0, "$PA*11", 'R'}}));
}

TEST(FramerTest, ForgetsStartsAtCarriageReturnLineFeedAndNul) {
    EXPECT_EQ(framed(withChecksum("$P\rA") + "\n"), Sentences{});
    EXPECT_EQ(framed(withChecksum(string("$P\0A", 4)) + "\n"), Sentences{});
    EXPECT_EQ(framed(withChecksum("$P\nA") + "\n"), (Sentences{{0, "$P\n", 'N'}}));
    EXPECT_EQ(framed(withChecksum(string("$P\0$PA", 6)) + "\n"), Sentences{});
    EXPECT_EQ(framed(string("$P\0$PA*11\n", 10)), (Sentences{{3, "$PA*11\n", 'R'}}));
    EXPECT_EQ(framed("$P\r$PA*11\n"), (Sentences{{3, "$PA*11\n", 'R'}}));
}

TEST(FramerTest, TakesTheCarriageReturnsThatLeadToALineFeed) {
    EXPECT_EQ(framed("$PA*11\r\r\r\n"), (Sentences{{0, "$PA*11\r\r\r\n", 'R'}}));
    EXPECT_EQ(framed("$PA*11\r"), (Sentences{{0, "$PA*11", 'R'}}));
    EXPECT_EQ(framed("$PA*11\r\r$PB*12\r\n"),
              (Sentences{{0, "$PA*11", 'R'}, {8, "$PB*12\r\n", 'R'}}));
    EXPECT_EQ(framed("$PA*11 \r\n"), (Sentences{{0, "$PA*11", 'R'}}));
    EXPECT_EQ(framed(string("$PA*11\r\0\n", 9)), (Sentences{{0, "$PA*11", 'R'}}));
}

TEST(FramerTest, TakesLinesAsTheyStand) {
    EXPECT_EQ(
        framed("$PA\r\n!PB\n$PC*00\r\r\n$PD"),
        (Sentences{
            {0, "$PA\r\n", 'N'}, {5, "!PB\n", 'N'}, {9, "$PC*00\r\r\n", 'W'}, {18, "$PD", 'N'}}));
    EXPECT_EQ(framed("$PA\r"), (Sentences{{0, "$PA\r", 'N'}}));
    EXPECT_EQ(framed("$ ~\n$\n!"), (Sentences{{0, "$ ~\n", 'N'}, {4, "$\n", 'N'}, {6, "!", 'N'}}));
    EXPECT_EQ(framed("$PA,$GPGGA,1\n"), (Sentences{{0, "$PA,$GPGGA,1\n", 'N'}}));
}

TEST(FramerTest, SkipsLinesThatAreNoSentences) {
    for (const string& line :
         {string("PA"), string(" $PA"), string("\xEF\xBB\xBF$PA"), string("$P\tA"),
          string("$PA\x7F"), string("$PA\x80"), string("$PA\x1F"), string("$P\0A", 4),
          string("$P\rA"), string("$P\r\0", 4), string("\r"), string(), string("#$PA"),
          string("$PA\r\x80\r")}) {
        EXPECT_EQ(framed(line + "\n"), Sentences{}) << line;
        EXPECT_EQ(framed(line), Sentences{}) << line;
        EXPECT_EQ(framed("$PB\n" + line + "\n$PC\n"),
                  (Sentences{{0, "$PB\n", 'N'}, {5 + line.size(), "$PC\n", 'N'}}));
    }
}

// Wherever it stands among those that are looked at together.
TEST(FramerTest, SkipsLinesWithADelete) {
    const string line = "$GPTXT,0123456789abcdef\n";
    ASSERT_EQ(framed(line).size(), 1U);
    for (size_t place = 1; place + 1 < line.size(); ++place) {
        string other = line;
        other[place] = '\x7F';
        EXPECT_EQ(framed(other), Sentences()) << place;
    }
}

TEST(FramerTest, SkipsTheRestOfALineWithACheckedSentence) {
    EXPECT_EQ(framed("$GPGGA,1$PA*11$PB\r\n$PC\n"),
              (Sentences{{8, "$PA*11", 'R'}, {19, "$PC\n", 'N'}}));
}

TEST(FramerTest, SkipsABareG) {
    EXPECT_EQ(framed("$G\n"), Sentences{});
    EXPECT_EQ(framed("$G"), Sentences{});
    EXPECT_EQ(framed("$G\r\n!G\n$GP\n"),
              (Sentences{{0, "$G\r\n", 'N'}, {4, "!G\n", 'N'}, {7, "$GP\n", 'N'}}));
    EXPECT_EQ(framed("$G*47\n"), (Sentences{{0, "$G*47\n", 'R'}}));
}

TEST(FramerTest, TakesLinesAsLongAsAMessageHolds) {
    const string longest = filled(MESSAGE_ROOM - 1);
    EXPECT_EQ(framed(longest + "\n"), (Sentences{{0, longest + "\n", 'N'}}));
    EXPECT_EQ(framed(longest), (Sentences{{0, longest, 'N'}}));
    EXPECT_EQ(framed(longest + "\r\n"), Sentences{});
    EXPECT_EQ(framed(longest + "x\n"), Sentences{});
    EXPECT_EQ(framed(longest + "x"), Sentences{});
    EXPECT_EQ(framed(longest.substr(1) + "\n" + longest.substr(0, 9) + "\n"),
              (Sentences{{MESSAGE_ROOM - 1, longest.substr(0, 9) + "\n", 'N'}}));
}

TEST(FramerTest, TakesCheckedSentencesAsLongAsAMessageHolds) {
    const string longest = withChecksum(filled(MESSAGE_ROOM - 4));
    ASSERT_EQ(longest.size(), MESSAGE_ROOM - 1);
    EXPECT_EQ(framed(longest + "\n"), (Sentences{{0, longest + "\n", 'R'}}));
    EXPECT_EQ(framed("noise" + longest), (Sentences{{5, longest, 'R'}}));
    const string tooLong = withChecksum(filled(MESSAGE_ROOM - 3));
    EXPECT_EQ(framed(tooLong + "\n"), Sentences{});
    EXPECT_EQ(framed("$PA" + tooLong + "\n$PB*12\n"),
              (Sentences{{tooLong.size() + 4, "$PB*12\n", 'R'}}));
}

TEST(FramerTest, LeavesALineEndThatDoesNotFit) {
    const string longest = withChecksum(filled(MESSAGE_ROOM - 4));
    EXPECT_EQ(framed(longest + "\r\n"), (Sentences{{0, longest, 'R'}}));
    const string shorter = withChecksum(filled(MESSAGE_ROOM - 6));
    EXPECT_EQ(framed(shorter + "\r\r\n"), (Sentences{{0, shorter + "\r\r\n", 'R'}}));
    EXPECT_EQ(framed(shorter + "\r\r\r\n$PA\n"),
              (Sentences{{0, shorter, 'R'}, {shorter.size() + 4, "$PA\n", 'N'}}));
}

// Whatever the size of the framer's buffer, a power of two, a sentence lies across its end.
TEST(FramerTest, KeepsTheLongestSentencesWhole) {
    const string stands = filled(MESSAGE_ROOM - 1) + "\n";
    const string checked = withChecksum(filled(MESSAGE_ROOM - 4)) + "\n";
    for (const size_t end : {size_t{1} << 17, size_t{1} << 18, size_t{1} << 19}) {
        for (size_t behind = 0; behind < 4; ++behind) {
            string noise(end - MESSAGE_ROOM + behind, 'x');
            noise.back() = '\n';
            EXPECT_EQ(framedSentences(noise + stands, 1), (Sentences{{noise.size(), stands, 'N'}}));
            EXPECT_EQ(framedSentences(noise + checked, 1),
                      (Sentences{{noise.size(), checked, 'R'}}));
        }
    }
}

// Behind the last byte lie others that were fed long before.
TEST(FramerTest, ReadsNothingBehindTheEnd) {
    string noise(1000000, '1');
    noise.back() = '\n';
    for (const char* const end : {"$PA*", "$PA*1", "$PA\r"}) {
        EXPECT_EQ(framedSentences(noise + end, 100), (Sentences{{noise.size(), end, 'N'}}));
    }
}

TEST(FramerTest, CountsEveryByte) {
    const Framer::Counters count =
        countersOf("noise$PA*11\r\n$PB*FF\r\n$PC\n\xFF\xFF\n$PD*14\r$PE,\r\n");
    EXPECT_EQ(count.checked, 2U);
    EXPECT_EQ(count.wrong, 1U);
    EXPECT_EQ(count.unchecked, 1U);
    EXPECT_EQ(count.sentences(), 4U);
    EXPECT_EQ(count.bytesRead, 41U);
    EXPECT_EQ(count.bytesRecorded, 8U + 8U + 4U + 6U);
    EXPECT_EQ(count.bytesSkipped(), 41U - 26U);
}

TEST(FramerTest, GivesASentenceOutAsSoonAsItsLineEndIsKnown) {
    Framer framer;
    framer.feed("$PA*11\r");
    EXPECT_FALSE(framer.next().has_value());
    framer.feed("\n");
    EXPECT_TRUE(framer.next().has_value());
    EXPECT_FALSE(framer.next().has_value());
    framer.feed("$PB*12$");
    EXPECT_TRUE(framer.next().has_value());
    EXPECT_FALSE(framer.next().has_value());
}

TEST(FramerTest, FindsNothingInNothing) {
    EXPECT_EQ(framed(""), Sentences{});
    EXPECT_EQ(framed("\n\r\n"), Sentences{});
    EXPECT_EQ(framed(string(5, '\0')), Sentences{});
}

TEST(FramerTest, AgreesWithTheModelOnLogs) {
    std::vector<std::filesystem::path> logs = {VEXTRACE_SOURCE_DIR "/examples/data/drive.nmea"};
    if (std::filesystem::is_directory(VEXTRACE_LOG_DIR)) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(VEXTRACE_LOG_DIR)) {
            if (entry.is_regular_file()) {
                logs.push_back(entry.path());
            }
        }
    }
    for (const auto& log : logs) {
        const string input = contentOf(log);
        EXPECT_EQ(describe(framed(input)), describe(modelSentences(input))) << log;
    }
}

// Streams in which everything that has a meaning occurs often.
TEST(FramerTest, AgreesWithTheModelOnMixedStreams) {
    const std::vector<string> pieces = {
        "$",  "!", "*",    "\r", "\n",     string(1, '\0'), "$PA*11",     "!PB*12",     "*00",
        "*1", "A", "\xFF", "$G", "$GPGGA", "\r\n",          "$PA*11\r\n", "$PC*00\r\n", "*7b"};
    std::mt19937 random(20260517);
    for (int round = 0; round < 20000; ++round) {
        string input;
        for (size_t count = random() % 24; count > 0; --count) {
            input += pieces[random() % pieces.size()];
        }
        const string expected = describe(modelSentences(input));
        ASSERT_EQ(describe(framedSentences(input, 1 + random() % 40)), expected);
        ASSERT_EQ(describe(framedSentences(input, 1)), expected);
    }
}
