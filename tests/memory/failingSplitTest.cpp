// The states in which a failed split leaves a message, and what addRecord makes of them: the same
// as the model, which splits both sentences each time.
#include <gtest/gtest.h>

#include <vector>

#include "tests/memory/failingMemory.h"
#include "tests/memory/longSentences.h"
#include "tests/model/compareMessages.h"
#include "tests/support/fieldTexts.h"
#include "tests/support/messages.h"

namespace {

const std::vector<std::string> RECORDS = {LONG_RMC,  OTHER_RMC, "$GPRMC", "$GPRMC,,,,,,,,,,,,*00",
                                          LONG_GGA,  OTHER_GGA, "$GPGGA", "$GPGGA,,,,,,,,,,,,,,*00",
                                          LONG_OTHER};

// Built from one record or none, and grown by another or none.
std::vector<GPSTraceMessage> states() {
    std::vector<GPSTraceMessage> all(1);
    for (const std::string& first : RECORDS) {
        all.emplace_back(258, first);
        for (const std::string& second : RECORDS) {
            all.emplace_back(258, first);
            all.back().addRecord(second);
        }
    }
    return all;
}

GPSModel modelOf(const GPSTraceMessage& message) {
    GPSModel model;
    model.stamp = message.getTimeStamp();
    for (const auto& [code, sentence] : message.getSentences()) {
        model.sentences[code] = sentence;
    }
    return model;
}

std::string differenceBehind(const GPSTraceMessage& message, const std::string& record) {
    const MessagePair pair{std::make_unique<GPSTraceMessage>(message), modelOf(message)};
    MessagePair next = cloned(pair);
    next.library->addRecord(record);
    next.model.addRecord(record);
    Comparison comparison;
    compareFields(comparison, next);
    compareWriting(comparison, next);
    return comparison.text();
}

// The fields that the held sentences are split into, or none.
void expectWholeFieldsOrNone(const GPSTraceMessage& message) {
    GPSTraceMessage whole;
    for (const auto& [code, sentence] : message.getSentences()) {
        whole.addRecord(sentence);
    }
    const Texts rmc = fieldTexts(message.getRMC());
    const Texts gga = fieldTexts(message.getGGA());
    EXPECT_TRUE(rmc == Texts(12) || rmc == fieldTexts(whole.getRMC()));
    EXPECT_TRUE(gga == Texts(14) || gga == fieldTexts(whole.getGGA()));
}

// Adds with the n-th allocation failing. False when it needs no more than n - 1.
bool addFailingAt(size_t n, GPSTraceMessage& message, const std::string& record) {
    failingMemory::failAt(n);
    try {
        message.addRecord(record);
        failingMemory::failAt(0);
        return false;
    } catch (const std::bad_alloc&) {
        failingMemory::failAt(0);
        return true;
    }
}

bool formatFailingAt(size_t n, GPSTraceMessage& message) {
    failingMemory::failAt(n);
    try {
        message.formatForRDB();
        failingMemory::failAt(0);
        return false;
    } catch (const std::bad_alloc&) {
        failingMemory::failAt(0);
        return true;
    }
}

// The sentences are those from before, or one more of the record's.
void expectStoredWholeOrNotAtAll(const GPSTraceMessage& before, const GPSTraceMessage& after,
                                 const std::string& record) {
    GPSTraceMessage more = before;
    more.addRecord(record);
    EXPECT_TRUE(after.getSentences() == before.getSentences() ||
                after.getSentences() == more.getSentences());
    EXPECT_EQ(after.getTimeStamp(), before.getTimeStamp());
}

}  // namespace

TEST(FailingSplitTest, IsMadeGoodByTheNextRecordInEveryState) {
    size_t failures = 0;
    for (const GPSTraceMessage& state : states()) {
        for (const std::string& record : RECORDS) {
            GPSTraceMessage message = state;
            for (size_t n = 1; addFailingAt(n, message, record); message = state, ++n) {
                ++failures;
                expectStoredWholeOrNotAtAll(state, message, record);
                expectWholeFieldsOrNone(message);
                for (const std::string& next : RECORDS) {
                    ASSERT_EQ(differenceBehind(message, next), "")
                        << payloadOf(state) << record << next << n;
                }
            }
        }
    }
    EXPECT_GT(failures, 1000U);
}

TEST(FailingSplitTest, IsMadeGoodAfterASecondFailure) {
    const GPSTraceMessage state(258, LONG_RMC);
    for (size_t first = 1;; ++first) {
        GPSTraceMessage once = state;
        if (!addFailingAt(first, once, LONG_GGA)) {
            EXPECT_GT(first, 8U);
            break;
        }
        GPSTraceMessage twice = once;
        for (size_t second = 1; addFailingAt(second, twice, LONG_GGA); twice = once, ++second) {
            expectWholeFieldsOrNone(twice);
            ASSERT_EQ(differenceBehind(twice, LONG_OTHER), "") << first << ' ' << second;
        }
    }
}

TEST(FailingSplitTest, IsMadeGoodAfterAFailedText) {
    size_t failures = 0;
    for (const GPSTraceMessage& state : states()) {
        GPSTraceMessage message = state;
        for (size_t n = 1; formatFailingAt(n, message); message = state, ++n) {
            ++failures;
            EXPECT_EQ(writtenBytes(message), writtenBytes(state));
            expectWholeFieldsOrNone(message);
            ASSERT_EQ(differenceBehind(message, LONG_OTHER), "") << payloadOf(state) << n;
            GPSTraceMessage again = message;
            GPSTraceMessage never = state;
            EXPECT_EQ(again.formatForRDB(), never.formatForRDB());
        }
    }
    EXPECT_GT(failures, 100U);
}
