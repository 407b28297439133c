#include <gtest/gtest.h>

#include "libvextrace/InvalidMessageException.h"
#include "libvextrace/serialise.h"
#include "tests/memory/failingMemory.h"
#include "tests/memory/longSentences.h"
#include "tests/support/messages.h"

using vextrace::appendSerialised;
using vextrace::serialise;

TEST(FailingSerialiseTest, GivesAllBytesOrNone) {
    GPSTraceMessage message(258, LONG_RMC);
    message.addRecord(LONG_GGA);
    const Bytes bytes = writtenBytes(message);
    EXPECT_EQ(failEachAllocation([&] { EXPECT_EQ(serialise(message), bytes); }), 1U);
}

TEST(FailingSerialiseTest, LeavesTheVectorThatCouldNotGrow) {
    const GPSTraceMessage message(258, LONG_RMC);
    const Bytes before = {0xEE, 0xEF};
    Bytes bytes = before;
    failingMemory::failAt(1);
    EXPECT_THROW(appendSerialised(message, bytes), std::bad_alloc);
    failingMemory::failAt(0);
    EXPECT_EQ(bytes, before);
    appendSerialised(message, bytes);
    EXPECT_EQ(bytes.size(), 2 + writtenBytes(message).size());
}

TEST(FailingSerialiseTest, LeavesTheVectorWhateverFailsWhenAMessageIsRefused) {
    const GPSTraceMessage tooLong(258, std::string(65536, 'x'));
    const Bytes before = {0xEE, 0xEF};
    size_t n = 1;
    for (bool refused = false; !refused; ++n) {
        Bytes bytes = before;
        failingMemory::failAt(n);
        try {
            appendSerialised(tooLong, bytes);
            ADD_FAILURE() << "appended";
        } catch (const InvalidMessageException&) {
            refused = true;
        } catch (const std::bad_alloc&) {
        }
        failingMemory::failAt(0);
        EXPECT_EQ(bytes, before) << n;
    }
    EXPECT_GT(n, 2U);
}

TEST(FailingSerialiseTest, NeedsNoMemoryForAVectorThatHasRoom) {
    const GPSTraceMessage message(258, LONG_RMC);
    Bytes bytes;
    bytes.reserve(1000);
    failingMemory::failAt(1);
    appendSerialised(message, bytes);
    failingMemory::failAt(0);
    EXPECT_EQ(bytes, writtenBytes(message));
}
