// What registration does when another thread is faster. Whoever adds an id allocates an entry: the
// other's part is played there, so that the two meet in every run.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "libvextrace/MessageFactory.h"
#include "tests/memory/failingMemory.h"
#include "tests/support/runAtOnce.h"

namespace {

constexpr msgid_t testID(unsigned number) {
    return static_cast<msgid_t>(0xC000 + number);
}

MessageBase* readOne(const uint8_t* /*psrc*/, size_t /*len*/) {
    return nullptr;
}

MessageBase* readOther(const uint8_t* /*psrc*/, size_t /*len*/) {
    throw InvalidMessageException(IM_MISC, "other");
}

// Registers while the other thread registers, which the function does.
bool registerDuring(void (*other)(), msgid_t id, MessageFactory::Reader reader) {
    failingMemory::duringAllocations(other);
    const bool registered = MessageFactory::registerReader(id, reader);
    failingMemory::duringAllocations(nullptr);
    return registered;
}

constexpr unsigned THREADS = 2;
constexpr std::chrono::seconds PATIENCE{60};
std::atomic<unsigned> arrivals{0};
std::atomic<bool> isAlone{false};

// Waits for the other thread to come as far. Where registration lets only one of them come here,
// the test must fail, not hang.
void waitForTheOther() {
    const unsigned round = arrivals++ / THREADS;
    const auto end = std::chrono::steady_clock::now() + PATIENCE;
    while (arrivals < (round + 1) * THREADS && !isAlone) {
        std::this_thread::yield();
        isAlone = isAlone || std::chrono::steady_clock::now() > end;
    }
}

}  // namespace

TEST(RegistrationRaceTest, LeavesTheIDToTheReaderThatWasFaster) {
    const auto other = [] { EXPECT_TRUE(MessageFactory::registerReader(testID(1), readOther)); };
    EXPECT_FALSE(registerDuring(other, testID(1), readOne));
    EXPECT_EQ(MessageFactory::getReader(testID(1)), &readOther);
}

TEST(RegistrationRaceTest, AgreesWithTheSameReaderThatWasFaster) {
    const auto other = [] { EXPECT_TRUE(MessageFactory::registerReader(testID(2), readOne)); };
    const size_t before = failingMemory::liveBlocks();
    EXPECT_TRUE(registerDuring(other, testID(2), readOne));
    EXPECT_EQ(MessageFactory::getReader(testID(2)), &readOne);
    // The entry of the faster one; the slower one's is released again.
    EXPECT_EQ(failingMemory::liveBlocks(), before + 1);
}

TEST(RegistrationRaceTest, TakesItsPlaceBesideAnotherIDThatWasFaster) {
    const auto other = [] { EXPECT_TRUE(MessageFactory::registerReader(testID(3), readOther)); };
    EXPECT_TRUE(registerDuring(other, testID(4), readOne));
    EXPECT_EQ(MessageFactory::getReader(testID(3)), &readOther);
    EXPECT_EQ(MessageFactory::getReader(testID(4)), &readOne);
}

TEST(RegistrationRaceTest, GivesEachIDToOneOfTwoThreadsThatMeet) {
    constexpr unsigned IDS = 100;
    std::atomic<unsigned> winners[IDS] = {};
    arrivals = 0;
    isAlone = false;
    runAtOnce(THREADS, IDS, [&winners](unsigned thread, unsigned round) {
        failingMemory::duringAllocations(waitForTheOther);
        if (MessageFactory::registerReader(testID(100 + round),
                                           thread == 0 ? readOne : readOther)) {
            ++winners[round];
        }
    });
    failingMemory::duringAllocations(nullptr);
    EXPECT_FALSE(isAlone);
    EXPECT_EQ(arrivals, THREADS * IDS);  // both were at each entry at once
    for (unsigned i = 0; i < IDS; ++i) {
        EXPECT_EQ(winners[i], 1U) << i;
        EXPECT_NE(MessageFactory::getReader(testID(100 + i)), nullptr) << i;
    }
}
