// What a copy assignment leaves behind when memory fails.
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "tests/memory/failingMemory.h"
#include "tests/memory/longSentences.h"
#include "tests/support/fieldTexts.h"
#include "tests/support/messages.h"

namespace {

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

bool isSame(const GPSTraceMessage& message, const GPSTraceMessage& other) {
    return sameHeader(message, other) && message.getSentences() == other.getSentences() &&
           fieldTexts(message.getRMC()) == fieldTexts(other.getRMC()) &&
           fieldTexts(message.getGGA()) == fieldTexts(other.getGGA());
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
            EXPECT_TRUE(isSame(assigned, source));
            return n - 1;
        }
        test(assigned);
    }
}

}  // namespace

TEST(FailingAssignmentTest, ChangesNothingInAnyState) {
    size_t failures = 0;
    for (const GPSTraceMessage& target : states(0x0102030405060708, LONG_RMC, LONG_GGA)) {
        for (const GPSTraceMessage& source : states(0x1112131415161718, OTHER_RMC, OTHER_GGA)) {
            const GPSTraceMessage untouched = source;
            failures += forEachFailure(target, source, [&](const GPSTraceMessage& assigned) {
                EXPECT_TRUE(isSame(assigned, target));
                EXPECT_TRUE(isSame(source, untouched));
            });
        }
    }
    EXPECT_GT(failures, 300U);
}

TEST(FailingAssignmentTest, ChangesNothingOfAMessageAssignedToItself) {
    for (const GPSTraceMessage& state : states(258, LONG_RMC, LONG_GGA)) {
        for (size_t n = 1;; ++n) {
            GPSTraceMessage message = state;
            const bool failed = assignFailingAt(n, message, message);
            EXPECT_TRUE(isSame(message, state)) << n;
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
        EXPECT_TRUE(isSame(again, source));
    });
}
