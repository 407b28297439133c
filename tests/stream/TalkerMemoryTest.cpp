#include "libvexstream/TalkerMemory.h"

#include <gtest/gtest.h>

#include <string>

using namespace vextrace;
using std::string;

namespace {

// As a message stores what this talker sent; "?" for a sentence whose checksum fits none.
string stored(char talker, const string& type) {
    string sentence = makeSentence(string("G") + (talker == '?' ? 'X' : talker) + type +
                                   ",120000,A,4807.038,N,01131.000,E,022.4,084.4,230394,,,A");
    sentence[2] = 'P';
    return sentence;
}

// The verdicts on sentences of these talkers, "R" or "W"; "-" is one without a checksum. Those in
// parentheses have one stamp.
string verdicts(TalkerMemory& memory, const string& talkers, const string& type = "RMC") {
    static timeStamp_t stamp = 0;
    string result;
    bool isEpoch = false;
    for (const char talker : talkers) {
        const string sentence = talker == '-' ? "$GP" + type + ",120000\r\n" : stored(talker, type);
        stamp += isEpoch ? 0 : 1;
        if (talker == '(' || talker == ')') {
            isEpoch = talker == '(';
            continue;
        }
        const Checksum checksum = memory.judge(sentence, stamp).checksum;
        result += checksum == Checksum::RIGHT ? 'R' : checksum == Checksum::WRONG ? 'W' : '-';
    }
    return result;
}

string verdicts(const string& talkers, const string& type = "RMC") {
    TalkerMemory memory;
    return verdicts(memory, talkers, type);
}

}  // namespace

TEST(TalkerMemoryTest, AnotherTalkerIsRightFromTheSecondInARow) {
    EXPECT_EQ(verdicts("PPPNNN"), "RRRWRR");
    EXPECT_EQ(verdicts("NNPP"), "RRWR");
    EXPECT_EQ(verdicts("NLNNAN"), "RWRRWR");
    EXPECT_EQ(verdicts("NLNLNLLL"), "RWRWRWRR");
    EXPECT_EQ(verdicts("NLABI"), "RWWWW");
}

TEST(TalkerMemoryTest, EachPlaceOfAnEpochHasATalkerOfItsOwn) {
    EXPECT_EQ(verdicts("(PL)(PL)(PL)", "GGA"), "RWRRRR");
    EXPECT_EQ(verdicts("(PL)(PL)L(PL)(AL)", "GGA"), "RWRRWRRWR");
    EXPECT_EQ(verdicts("(PLA)(PLA)(PL)(PLA)(PLP)", "GGA"), "RWWRRRRRRRRRRW");
    EXPECT_EQ(verdicts(string(1, '(').append(40, 'N').append("L)")), string(40, 'R').append("W"));
}

TEST(TalkerMemoryTest, WhatIsNotRightBreaksTheRow) {
    EXPECT_EQ(verdicts("NL?LL"), "RWWWR");
    EXPECT_EQ(verdicts("NL-LL"), "RW-WR");
    EXPECT_EQ(verdicts("N?-N"), "RW-R");
}

TEST(TalkerMemoryTest, EveryTalkerMayBeginATrace) {
    for (const char* const talkers : {"PP", "NN", "AA", "BB", "II", "LL"}) {
        EXPECT_EQ(verdicts(talkers), "RR") << talkers;
    }
    EXPECT_EQ(verdicts("LLNN"), "RRWR");
}

TEST(TalkerMemoryTest, AFirstSentenceOfARareTalkerMakesNoOtherWrong) {
    EXPECT_EQ(verdicts("LNNL"), "RRRW");
    EXPECT_EQ(verdicts("LANB"), "RRRW");
}

TEST(TalkerMemoryTest, RmcAndGgaHaveTalkersOfTheirOwn) {
    TalkerMemory memory;
    EXPECT_EQ(verdicts(memory, "NN", "RMC"), "RR");
    EXPECT_EQ(verdicts(memory, "PP", "GGA"), "RR");
    EXPECT_EQ(verdicts(memory, "N", "RMC"), "R");
    EXPECT_EQ(verdicts(memory, "N", "GGA"), "W");
}

TEST(TalkerMemoryTest, OtherCodesNeedNoMemory) {
    EXPECT_EQ(verdicts("PNLAB?P", "GSV"), "RRRRRWR");
    EXPECT_EQ(verdicts("PNLPN", "GNS"), "RRRRR");
    TalkerMemory memory;
    EXPECT_EQ(memory.judge(makeSentence("GQGSV,1"), 1).talker, 'P');
    EXPECT_EQ(memory.judge("$GPGSV,1*49", 1).talker, 'Q');
    EXPECT_EQ(memory.judge(makeSentence("BDRMC,1"), 1).checksum, Checksum::RIGHT);
    EXPECT_EQ(memory.judge("!AIVDM", 1).checksum, Checksum::NONE);
}

TEST(TalkerMemoryTest, TellsTheTalkerOfARightSentence) {
    TalkerMemory memory;
    EXPECT_EQ(memory.judge(stored('N', "GGA"), 1).talker, 'N');
    EXPECT_EQ(memory.judge(stored('N', "GGA"), 2).talker, 'N');
    EXPECT_EQ(memory.judge(stored('L', "GGA"), 3).talker, 'P');
    EXPECT_EQ(memory.judge(stored('?', "GGA"), 4).talker, 'P');
    EXPECT_EQ(memory.judge(stored('L', "VTG"), 5).talker, 'L');
}

TEST(TalkerMemoryTest, BeginsAnewWithATrace) {
    TalkerMemory memory;
    EXPECT_EQ(verdicts(memory, "NN"), "RR");
    memory.endTrace();
    EXPECT_EQ(verdicts(memory, "PP"), "RR");
}
