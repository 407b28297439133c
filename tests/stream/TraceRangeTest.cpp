/// \file
/// Parts of a trace that are read side by side.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "libvexstream/TraceReader.h"
#include "tests/stream/traces.h"

using namespace vextrace;
using Kind = TraceItem::Kind;

namespace traceRangeTest {
namespace {

constexpr uint64_t SECOND = 1'000'000'000;
constexpr uint64_t STAMP = 1'795'264'519 * SECOND;

TraceBytes fix(unsigned number) {
    return messageOf(22, STAMP + number * SECOND,
                     "$GPRMC," + std::to_string(100000 + number % 100000) +
                         ",A,4807.038,N,01131.000,E,022.4,084.4,230394,,,A*6A\r\n");
}

TraceBytes traceOf(unsigned count) {
    TraceBytes trace;
    for (unsigned number = 0; number < count; ++number) {
        const TraceBytes message =
            number % 5 == 2 ? messageOf(1, STAMP + number * SECOND, "\1\2\3\4") : fix(number);
        trace.insert(trace.end(), message.begin(), message.end());
    }
    return trace;
}

// Kind, place and length of an item.
struct Found {
    Kind kind;
    uint64_t offset;
    uint64_t length;

    bool operator==(const Found& other) const {
        return kind == other.kind && offset == other.offset && length == other.length;
    }
};

std::vector<Found> foundIn(const TraceBytes& trace, const TraceRange& range) {
    MemorySource source(trace);
    TraceReader reader(source, range);
    std::vector<Found> found;
    for (TraceItem item = reader.next(); item.kind != Kind::END; item = reader.next()) {
        if (!item.isBefore) {
            found.push_back({item.kind, item.offset, item.length});
        }
    }
    return found;
}

// The parts between the boundaries, one behind the other.
std::vector<Found> foundInParts(const TraceBytes& trace, std::vector<uint64_t> boundaries) {
    std::vector<Found> found;
    uint64_t begin = 0;
    boundaries.push_back(TraceRange().end);
    for (const uint64_t end : boundaries) {
        TraceRange range;
        range.begin = begin;
        range.end = end;
        const std::vector<Found> part = foundIn(trace, range);
        found.insert(found.end(), part.begin(), part.end());
        begin = end;
    }
    return found;
}

}  // namespace

TEST(TraceRangeTest, TwoPartsAreTheWholeAtEveryBoundary) {
    TraceBytes trace = traceOf(12);
    trace.erase(trace.begin() + 200, trace.begin() + 215);
    trace.insert(trace.begin() + 500, 30, 0xFF);
    const std::vector<Found> whole = foundIn(trace, TraceRange());
    for (uint64_t boundary = 0; boundary <= trace.size() + 1; ++boundary) {
        EXPECT_TRUE(foundInParts(trace, {boundary}) == whole) << boundary;
    }
}

TEST(TraceRangeTest, BehindTheEndOfTheTraceThereIsNothing) {
    const TraceBytes trace = traceOf(3);
    constexpr uint64_t LAST = std::numeric_limits<uint64_t>::max();
    for (const uint64_t begin :
         {uint64_t{trace.size()}, uint64_t{trace.size()} + 1, LAST - 1, LAST}) {
        for (const uint64_t lead : {uint64_t{0}, uint64_t{1}, uint64_t{100}}) {
            EXPECT_TRUE(foundIn(trace, {begin, LAST, true, lead}).empty()) << begin << ' ' << lead;
        }
    }
}

TEST(TraceRangeTest, BeginsInAGrowingTraceWhenItHasGrownSoFar) {
    const TraceBytes trace = traceOf(6);
    const uint64_t begin = fix(0).size() + fix(1).size();
    FedSource source;
    TraceReader reader(source, {begin, std::numeric_limits<uint64_t>::max(), false, 0});
    reader.setGrowing(true);
    uint64_t items = 0;
    for (const uint8_t byte : trace) {
        source.feed({&byte, 1});
        for (TraceItem item = reader.next(); item.kind != Kind::END; item = reader.next()) {
            EXPECT_EQ(item.offset, begin + (items == 0 ? 0 : 18 + (items - 1) * fix(0).size()));
            ++items;
        }
    }
    EXPECT_EQ(items, 4U);
}

TEST(TraceRangeTest, PartsOfLargeDamagedTracesAreTheWhole) {
    std::mt19937_64 random(1);
    TraceBytes trace = traceOf(60'000);
    for (int i = 0; i < 40; ++i) {
        const auto place = static_cast<std::ptrdiff_t>(random() % (trace.size() - 1000));
        for (size_t byte = 0; byte < random() % 400; ++byte) {
            trace[static_cast<size_t>(place) + byte] = static_cast<uint8_t>(random());
        }
    }
    const std::vector<Found> whole = foundIn(trace, TraceRange());
    for (int round = 0; round < 6; ++round) {
        std::vector<uint64_t> boundaries(4);
        for (uint64_t& boundary : boundaries) {
            boundary = random() % trace.size();
        }
        std::sort(boundaries.begin(), boundaries.end());
        EXPECT_TRUE(foundInParts(trace, boundaries) == whole) << round;
    }
}

// What is divided at once ends within the second of the long messages. A chain of much evidence
// behind it must not outweigh the far time of the one in front of that.
TEST(TraceRangeTest, WhatIsBehindWhatIsDividedAtOnceCountsTheSameForAllWhoBegin) {
    constexpr size_t PART = size_t{192} * 1024;
    std::mt19937 random(5);
    const auto junk = [&random](size_t size) {
        std::string bytes(size, '\0');
        for (char& byte : bytes) {
            byte = static_cast<char>(0x80 | (random() & 0x7F));
        }
        return bytes;
    };
    TraceBytes trace;
    const auto add = [&trace](const auto& bytes) {
        trace.insert(trace.end(), bytes.begin(), bytes.end());
    };
    add(junk(1000));
    for (const char* payload : {"\x90", "\x91", "\x92", "\x93", "\x94", "\x95", "\x96", "\x97"}) {
        add(messageOf(0xC001, 0, payload + std::string("\x92")));
    }
    add(junk(PART - 100 - trace.size()));
    const uint64_t begin = trace.size();
    add(messageOf(0xC002, STAMP, junk(60000)));
    add(messageOf(0xC003, STAMP + 20 * SECOND, junk(60000)));
    for (unsigned number = 0; number < 20; ++number) {
        add(fix(100'000 + number));
    }
    const auto startsOf = [&trace](uint64_t from) {
        std::vector<uint64_t> starts;
        for (const Found& found : foundIn(trace, {from, trace.size(), false, 0})) {
            if (found.kind != Kind::DAMAGE) {
                starts.push_back(found.offset);
            }
        }
        return starts;
    };
    const std::vector<uint64_t> whole = startsOf(0);
    EXPECT_FALSE(whole.empty());
    for (const uint64_t from : {uint64_t{990}, uint64_t{1200}, begin - 5, begin}) {
        EXPECT_EQ(startsOf(from), whole) << from;
    }
}

TEST(TraceRangeTest, LongDamageBelongsToThePartInWhichItBegins) {
    const TraceBytes trace = joined({traceOf(10), TraceBytes(3'000'000, 0xFF), traceOf(10)});
    const std::vector<Found> whole = foundIn(trace, TraceRange());
    for (const uint64_t boundary : {uint64_t{100}, uint64_t{1'000'000}, uint64_t{2'900'000}}) {
        EXPECT_TRUE(foundInParts(trace, {boundary}) == whole) << boundary;
    }
}

TEST(TraceRangeTest, GivesWhatLiesInFrontWhereItIsAskedTo) {
    const TraceBytes trace = traceOf(4);
    TraceRange range;
    range.begin = fix(0).size() + 1;
    range.givesBefore = true;
    MemorySource source(trace);
    TraceReader reader(source, range);
    std::vector<bool> isBefore;
    for (TraceItem item = reader.next(); item.kind != Kind::END; item = reader.next()) {
        isBefore.push_back(item.isBefore);
    }
    EXPECT_EQ(isBefore, (std::vector<bool>{true, true, false, false}));
}

}  // namespace traceRangeTest
