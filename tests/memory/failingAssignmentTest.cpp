// What a copy assignment leaves behind when memory fails.
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "tests/memory/failingMemory.h"
#include "tests/memory/longSentences.h"
#include "tests/support/fieldTexts.h"
#include "tests/support/messages.h"

namespace {

const Texts NO_RMC(12);
const Texts NO_GGA(14);

GPSTraceMessage added(timeStamp_t timeStamp, const std::vector<std::string>& records) {
    GPSTraceMessage message;
    message.setTimeStamp(timeStamp);
    message.setHeaderReserved(static_cast<uint16_t>(timeStamp + 1));
    message.setMbnr(static_cast<uint32_t>(timeStamp + 2));
    for (const std::string& record : records) {
        message.addRecord(record);
    }
    return message;
}

// The states that differ in what is held and in what is split.
std::vector<GPSTraceMessage> states(timeStamp_t timeStamp, const std::string& rmc,
                                    const std::string& gga) {
    return {
        added(timeStamp, {}),
        GPSTraceMessage(timeStamp, rmc),
        GPSTraceMessage(timeStamp, gga),
        added(timeStamp, {rmc}),
        added(timeStamp, {gga}),
        added(timeStamp, {rmc, gga}),
        added(timeStamp, {rmc, gga, LONG_OTHER}),
        added(timeStamp, {LONG_OTHER, "$GPRMC", gga}),
        added(timeStamp, {rmc, "$GPGGA,,,,,,,,,,,,,,*00"}),
    };
}

bool sameHeader(const GPSTraceMessage& a, const GPSTraceMessage& b) {
    return a.getMsgID() == b.getMsgID() && a.getTimeStamp() == b.getTimeStamp() &&
           a.getHeaderReserved() == b.getHeaderReserved() && a.getMbnr() == b.getMbnr();
}

// Whether header and sentences are all those of the other, its fields whole or empty.
bool isAllOf(const GPSTraceMessage& other, const GPSTraceMessage& message) {
    const Texts rmc = fieldTexts(message.getRMC());
    const Texts gga = fieldTexts(message.getGGA());
    return sameHeader(message, other) && message.getSentences() == other.getSentences() &&
           (rmc == NO_RMC || rmc == fieldTexts(other.getRMC())) &&
           (gga == NO_GGA || gga == fieldTexts(other.getGGA()));
}

void expectMadeGoodByTheNextRecord(const GPSTraceMessage& message) {
    GPSTraceMessage next = message;
    next.addRecord(LONG_OTHER);
    GPSTraceMessage expected;
    for (const auto& [code, sentence] : next.getSentences()) {
        expected.addRecord(sentence);
    }
    EXPECT_EQ(fieldTexts(next.getRMC()), fieldTexts(expected.getRMC()));
    EXPECT_EQ(fieldTexts(next.getGGA()), fieldTexts(expected.getGGA()));
    EXPECT_EQ(next.formatForRDB(), expected.formatForRDB());
}

// Assigns with the n-th allocation failing. False when it needs no more than n - 1.
bool assignFailingAt(size_t n, GPSTraceMessage& target, const GPSTraceMessage& source) {
    failingMemory::failAt(n);
    try {
        target = source;
        failingMemory::failAt(0);
        return false;
    } catch (const std::bad_alloc&) {
        failingMemory::failAt(0);
        return true;
    }
}

// Calls the test with each message that a failing assignment leaves; returns how many there were.
size_t forEachFailure(const GPSTraceMessage& target, const GPSTraceMessage& source,
                      const std::function<void(const GPSTraceMessage&)>& test) {
    for (size_t n = 1;; ++n) {
        SCOPED_TRACE("allocation " + std::to_string(n) + " failed");
        GPSTraceMessage assigned = target;
        if (!assignFailingAt(n, assigned, source)) {
            EXPECT_EQ(writtenBytes(assigned), writtenBytes(source));
            return n - 1;
        }
        test(assigned);
    }
}

}  // namespace

TEST(FailingAssignmentTest, LeavesAllOfOneOfTheTwoMessagesInEveryState) {
    size_t failures = 0;
    for (const GPSTraceMessage& target : states(0x0102030405060708, LONG_RMC, LONG_GGA)) {
        for (const GPSTraceMessage& source : states(0x1112131415161718, OTHER_RMC, OTHER_GGA)) {
            const GPSTraceMessage untouched = source;
            failures += forEachFailure(target, source, [&](const GPSTraceMessage& assigned) {
                EXPECT_TRUE(isAllOf(target, assigned) || isAllOf(source, assigned));
                EXPECT_TRUE(isAllOf(untouched, source));
                expectMadeGoodByTheNextRecord(assigned);
            });
        }
    }
    EXPECT_GT(failures, 300U);
}

TEST(FailingAssignmentTest, LeavesAllOfAMessageAssignedToItself) {
    for (const GPSTraceMessage& state : states(258, LONG_RMC, LONG_GGA)) {
        for (size_t n = 1;; ++n) {
            GPSTraceMessage message = state;
            const bool failed = assignFailingAt(n, message, message);
            EXPECT_TRUE(isAllOf(state, message)) << n;
            expectMadeGoodByTheNextRecord(message);
            if (!failed) {
                break;
            }
        }
    }
}

TEST(FailingAssignmentTest, LeavesNoBlockBehind) {
    const GPSTraceMessage target = added(1, {LONG_RMC, LONG_GGA});
    const GPSTraceMessage source = added(2, {OTHER_RMC, OTHER_GGA, LONG_OTHER});
    const size_t failures = failEachAllocation([&] {
        GPSTraceMessage assigned = target;
        assigned = source;
    });
    EXPECT_GT(failures, 10U);
}

TEST(FailingAssignmentTest, MayBeTriedAgain) {
    const GPSTraceMessage source = added(2, {OTHER_RMC, OTHER_GGA});
    forEachFailure(added(1, {LONG_RMC, LONG_GGA}), source, [&](const GPSTraceMessage& assigned) {
        GPSTraceMessage again = assigned;
        again = source;
        EXPECT_TRUE(isAllOf(source, again));
        EXPECT_EQ(fieldTexts(again.getRMC()), fieldTexts(source.getRMC()));
        EXPECT_EQ(fieldTexts(again.getGGA()), fieldTexts(source.getGGA()));
    });
}
