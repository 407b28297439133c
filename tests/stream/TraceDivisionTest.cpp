/// \file
/// What a reader promises of bytes that are no messages, whatever they are.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "libvexstream/TraceReader.h"
#include "tests/stream/traces.h"

using namespace vextrace;
using Kind = TraceItem::Kind;
using Messages = std::vector<TraceBytes>;

namespace traceDivisionTest {
namespace {

constexpr uint64_t SECOND = 1'000'000'000;
constexpr uint64_t STAMP = 1'795'264'519 * SECOND;

TraceBytes fix(unsigned number) {
    const std::string time = std::to_string(100000 + number % 100000);
    return messageOf(22, STAMP + number * SECOND,
                     "$GPGGA," + time +
                         ",4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47\r\n$GPRMC," + time +
                         ",A,4807.038,N,01131.000,E,022.4,084.4,230394,,,A*6A\r\n");
}

TraceBytes can(unsigned number) {
    const char payload[] = {1, 0, 3, static_cast<char>(number), 0, 8, 0, 0, '\xFF', 22, 0, 12};
    return messageOf(1, STAMP + number * SECOND / 10, {payload, sizeof payload});
}

Messages fixes(unsigned begin, unsigned end) {
    Messages messages;
    for (unsigned number = begin; number < end; ++number) {
        messages.push_back(fix(number));
    }
    return messages;
}

// Of a logger that records two buses.
Messages mixed(unsigned count) {
    Messages messages;
    for (unsigned number = 0; number < count; ++number) {
        messages.push_back(number % 4 == 0 ? fix(number) : can(number * 10));
    }
    return messages;
}

Messages messagesOf(const std::vector<ReadItem>& items) {
    Messages messages;
    for (const ReadItem& item : items) {
        if (item.kind != Kind::DAMAGE) {
            messages.push_back(item.bytes);
        }
    }
    return messages;
}

Messages kept(const TraceBytes& trace) {
    return messagesOf(readTrace(trace));
}

size_t sizeOf(const Messages& messages) {
    return joined(messages).size();
}

// What was kept, back to back, is a sound trace of the same messages.
void expectSoundAgain(const Messages& messages) {
    const std::vector<ReadItem> items = readTrace(joined(messages));
    EXPECT_EQ(items.size(), messages.size());
    EXPECT_TRUE(messagesOf(items) == messages);
}

// Foreign bytes between sound messages. Gives how many of them are kept.
size_t keptOf(const TraceBytes& foreign) {
    const Messages front = fixes(0, 10);
    const Messages back = fixes(20, 30);
    const Messages found = kept(joined({joined(front), foreign, joined(back)}));
    for (const Messages* sound : {&front, &back}) {
        for (const TraceBytes& message : *sound) {
            const bool isNeighbour = message == front.back() || message == back.front();
            EXPECT_TRUE(isNeighbour ||
                        std::find(found.begin(), found.end(), message) != found.end());
        }
    }
    expectSoundAgain(found);
    const size_t sound = sizeOf(front) + sizeOf(back);
    return std::max(sizeOf(found), sound) - sound;
}

std::string textOf(const TraceBytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

TraceBytes repeated(const TraceBytes& pattern, size_t size) {
    TraceBytes bytes;
    while (bytes.size() < size) {
        bytes.insert(bytes.end(), pattern.begin(), pattern.end());
    }
    return bytes;
}

TraceBytes noise(std::mt19937_64& random, size_t size) {
    TraceBytes bytes(size);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<uint8_t>(random()); });
    return bytes;
}

// How many messages of the trace are not kept; each of the others is.
size_t lost(const Messages& sound, const Messages& found) {
    size_t count = 0;
    auto next = found.begin();
    for (const TraceBytes& message : sound) {
        const auto place = std::find(next, found.end(), message);
        if (place == found.end()) {
            ++count;
        } else {
            next = place + 1;
        }
    }
    return count;
}

}  // namespace

TEST(TraceDivisionTest, KeepsNothingOfNoise) {
    std::mt19937_64 random(1);
    EXPECT_EQ(keptOf(noise(random, 4'000'000)), 0U);
}

TEST(TraceDivisionTest, KeepsNothingOfPatterns) {
    for (const TraceBytes& pattern : std::vector<TraceBytes>{{0xFF, 0xFF, 0, 2},
                                                             {0},
                                                             {0xFF},
                                                             {'U'},
                                                             {0, 12, 0, 22},
                                                             {0, 12, 0, 1},
                                                             {0, 12, 0, 1, 0, 0, 0, 0},
                                                             {0x80, 0, 0, 1},
                                                             {0xC0, 0},
                                                             {0, 22},
                                                             {1, 2, 3},
                                                             {1, 2, 3, 4, 5},
                                                             {0, 13, 0, 1, 0, 0, 7},
                                                             {1, 2, 3, 4, 5, 6, 7, 8},
                                                             {'$', 'G', '\n'},
                                                             {0xFF, 0xFF, 0, 22},
                                                             {0, 14, 0, 22, '$', 'G', '\n', 0},
                                                             {0x7F, 0xFF, 0, 1, 0, 0}}) {
        EXPECT_EQ(keptOf(repeated(pattern, 300'000)), 0U) << testing::PrintToString(pattern);
    }
}

TEST(TraceDivisionTest, KeepsNothingOfCounters) {
    TraceBytes narrow(200'000);
    TraceBytes wide(400'000);
    for (size_t i = 0; i < 100'000; ++i) {
        uint16ToByteArray(static_cast<uint16_t>(i), narrow.data() + 2 * i);
        wide[4 * i + 1] = static_cast<uint8_t>(i >> 16);
        uint16ToByteArray(static_cast<uint16_t>(i), wide.data() + 4 * i + 2);
    }
    EXPECT_EQ(keptOf(narrow), 0U);
    EXPECT_EQ(keptOf(wide), 0U);
}

TEST(TraceDivisionTest, KeepsNothingOfTextAndOfSentencesThatAreNotInMessages) {
    EXPECT_EQ(keptOf(repeated({'T', 'h', 'e', ' ', 'q', 'u', 'i', 'c', 'k', '\n'}, 200'000)), 0U);
    const TraceBytes message = fix(7);
    EXPECT_EQ(keptOf(repeated({message.begin() + 14, message.end()}, 200'000)), 0U);
}

namespace {

// Headers of the ids in turn, whose sizes are \p size, or any where it is 0.
TraceBytes runOfHeaders(const std::vector<unsigned>& ids, unsigned size, uint64_t step) {
    std::mt19937_64 random(2);
    TraceBytes run;
    for (unsigned i = 0; i < 3000; ++i) {
        const auto id = static_cast<uint16_t>(ids[i % ids.size()]);
        TraceBytes header = messageOf(id, STAMP + i * step, "");
        const auto any = static_cast<unsigned>(random() % 65'536);
        uint16ToByteArray(static_cast<uint16_t>(size == 0 ? any : size), header.data());
        run.insert(run.end(), header.begin(), header.end());
    }
    return run;
}

}  // namespace

TEST(TraceDivisionTest, KeepsNothingOfRunsOfHeaders) {
    for (const unsigned id : {0U, 1U, 2U, 22U, 0x1234U, 0xC123U}) {
        for (const unsigned size : {300U, 1000U, 40'000U, 65'535U, 0U}) {
            for (const uint64_t step : {uint64_t{0}, uint64_t{1}, SECOND / 1000, SECOND}) {
                EXPECT_EQ(keptOf(runOfHeaders({id}, size, step)), 0U)
                    << id << ' ' << size << ' ' << step;
            }
        }
    }
}

// Their size fields lead to another header of the run.
TEST(TraceDivisionTest, KeepsNothingOfRunsOfHeadersOfSeveralTypes) {
    for (const unsigned size : {3 * 14 - 2U, 100 * 14 - 2U, 4000 * 14 - 2U}) {
        for (const uint64_t step : {uint64_t{0}, SECOND / 1000, SECOND}) {
            EXPECT_EQ(keptOf(runOfHeaders({1, 2, 4, 5, 0x1234}, size, step)), 0U)
                << size << ' ' << step;
        }
    }
}

// As the tables of a program have them: small numbers, and zeros around them.
TEST(TraceDivisionTest, KeepsNothingOfTablesThatAreMostlyZeros) {
    std::mt19937_64 random(3);
    TraceBytes table(2'000'000);
    for (size_t i = 0; i < table.size(); i += 4 + random() % 8) {
        table[i] = static_cast<uint8_t>(random());
    }
    EXPECT_EQ(keptOf(table), 0U);
}

// What lies directly behind a message has its place, but nothing else that speaks for it.
TEST(TraceDivisionTest, KeepsNothingOfTextThatLeadsToAMessage) {
    const Messages front = fixes(0, 5);
    const Messages back = fixes(10, 20);
    for (const size_t count : {size_t{0x2020 + 2}, size_t{0x6672 + 2 + 0x2020 + 2}}) {
        TraceBytes text(count, ' ');
        if (count > 0x6672) {
            text[0] = 0x66;
            text[1] = 0x72;
        }
        EXPECT_EQ(lost(back, kept(joined({joined(front), text, joined(back)}))), 0U);
        EXPECT_EQ(keptOf(text), 0U);
    }
}

// A logger may write the same once more.
TEST(TraceDivisionTest, OneDamageAmongTheSameFixesCostsTheOneThatItTouches) {
    const Messages sound(40, fix(7));
    const TraceBytes trace = joined(sound);
    const size_t begin = 20 * fix(7).size();
    for (size_t place = begin; place < begin + 14; ++place) {
        TraceBytes changed = trace;
        changed[place] ^= 0x55;
        const Messages found = kept(changed);
        EXPECT_GE(std::count(found.begin(), found.end(), fix(7)), 39) << place - begin;
        expectSoundAgain(found);
    }
}

TEST(TraceDivisionTest, TouchesNoSoundTrace) {
    const std::string content = textOf(joined(fixes(0, 5)));
    const uint64_t farAway = STAMP + 1'000'000 * SECOND;
    for (const Messages& sound : std::vector<Messages>{
             fixes(0, 50),
             mixed(200),
             {fix(0), messageOf(12, farAway, content), fix(1)},
             {fix(0), messageOf(12, STAMP, content), messageOf(12, STAMP + 1, content)},
             {messageOf(12, 0, content)},
             {fix(0), messageOf(12, STAMP, textOf(messageOf(12, STAMP, content))), fix(1)},
             {fix(0), messageOf(12, STAMP, "four" + content), fix(1)},
             {can(1), messageOf(1, STAMP, std::string("twice as long\0\0\0", 16)), can(2)},
             {fix(0), messageOf(0x4711, STAMP, "unknown"), fix(1)},
             {fix(0), fix(5'000'000), fix(1), can(1), fix(9'000'000)},
             {can(1), can(1), can(1), can(1)},
             {messageOf(0, 0, "")}}) {
        const std::vector<ReadItem> items = readTrace(joined(sound));
        EXPECT_TRUE(messagesOf(items) == sound);
        EXPECT_EQ(items.size(), sound.size());
    }
}

namespace {

// Twenty messages, of the types in turn.
template <typename Payload>
Messages messagesOfTypes(const std::vector<unsigned>& ids, uint64_t start, uint64_t step,
                         Payload payload) {
    Messages messages;
    for (unsigned i = 0; i < 20; ++i) {
        const auto id = static_cast<uint16_t>(ids[i % ids.size()]);
        messages.push_back(messageOf(id, start + i * step, textOf(payload())));
    }
    return messages;
}

}  // namespace

// Of whatever little speaks for it: a clock that stands, begins at 0 or shows no date, messages
// that are minutes apart, a type without a name, payloads that are zeros or noise.
TEST(TraceDivisionTest, TouchesNoTraceOfFewTypesWhateverItsTimesAndPayloads) {
    std::mt19937_64 random(5);
    for (const std::vector<unsigned>& ids : std::vector<std::vector<unsigned>>{
             {0}, {1, 4, 8}, {12}, {0x1234}, {0xC001, 0xD123, 0xC444}}) {
        for (const uint64_t start : {uint64_t{1000}, 5 * SECOND, 36'000 * SECOND, STAMP}) {
            for (const uint64_t step : {uint64_t{0}, uint64_t{1000}, SECOND, 1000 * SECOND}) {
                for (const size_t size : {size_t{0}, size_t{8}, size_t{60}, size_t{9000}}) {
                    for (const bool isNoise : {false, true}) {
                        const Messages sound = messagesOfTypes(ids, start, step, [&] {
                            return isNoise ? noise(random, size) : TraceBytes(size);
                        });
                        EXPECT_TRUE(kept(joined(sound)) == sound)
                            << ids[0] << ' ' << start << ' ' << step << ' ' << size << isNoise;
                    }
                }
            }
        }
    }
}

// Each holds the next one and nothing else.
TEST(TraceDivisionTest, TouchesNoContainersInContainersHoweverDeep) {
    TraceBytes nest = fix(0);
    while (nest.size() + 14 < 65'536) {
        TraceBytes header = messageOf(12, STAMP, "");
        uint16ToByteArray(static_cast<uint16_t>(nest.size() + 12), header.data());
        nest.insert(nest.begin(), header.begin(), header.end());
    }
    const Messages sound = {fix(0), nest, fix(1)};
    EXPECT_TRUE(kept(joined(sound)) == sound);
}

TEST(TraceDivisionTest, AContainerIsWorthWhatItHoldsInFrontOfDamageToo) {
    Messages inner;
    for (unsigned number = 0; number < 1000; ++number) {
        inner.push_back(can(number));
    }
    for (const std::string& front : {std::string(), std::string("four")}) {
        const TraceBytes container = messageOf(12, STAMP, front + textOf(joined(inner)));
        const TraceBytes junk(5, 0xFF);
        const Messages sound = {fix(0), container, fix(2)};
        EXPECT_TRUE(kept(joined({fix(0), container, junk, fix(2)})) == sound);
    }
}

// A message that lost bytes ends within the next one, which is of a type without a name and so has
// little to say for itself.
TEST(TraceDivisionTest, AMessageThatLostBytesCostsNoneBehindIt) {
    const Messages front = mixed(20);
    const Messages behind = {messageOf(0xC001, STAMP + 20 * SECOND, "free"),
                             messageOf(0, STAMP + 21 * SECOND, ""), can(220), fix(23), fix(24)};
    const TraceBytes whole = messageOf(1, STAMP + 19 * SECOND, std::string(60, 'x'));
    const auto toTheFirst = static_cast<int>(behind[0].size());
    const auto toTheSecond = toTheFirst + static_cast<int>(behind[1].size());
    for (int count = 1; count < 40; ++count) {
        if (count == toTheFirst || count == toTheSecond) {
            continue;  // it is a sound message then, which holds others
        }
        const TraceBytes torn(whole.begin(), whole.end() - count);
        const Messages found = kept(joined({joined(front), torn, joined(behind)}));
        EXPECT_EQ(lost(front, found), 0U) << count;
        EXPECT_EQ(lost(behind, found), 0U) << count;
        expectSoundAgain(found);
    }
}

// Long traces are divided in parts, of which nothing must be seen.
TEST(TraceDivisionTest, OneDamageCostsTheSameWhereverItLies) {
    const Messages sound = mixed(4800);
    const TraceBytes whole = joined(sound);
    ASSERT_GT(whole.size(), 262'144U);
    for (size_t place = 196'000; place < 197'200; place += 7) {
        TraceBytes trace = whole;
        trace.erase(trace.begin() + static_cast<std::ptrdiff_t>(place),
                    trace.begin() + static_cast<std::ptrdiff_t>(place + 9));
        const Messages found = kept(trace);
        EXPECT_LE(lost(sound, found), 2U) << place;
        EXPECT_GE(found.size(), sound.size() - 2) << place;
    }
}

TEST(TraceDivisionTest, ATornFirstMessageCostsNoOther) {
    const Messages behind = {can(1), can(2), can(3), can(4)};
    const TraceBytes torn = fix(0);
    for (size_t cut = 1; cut < torn.size(); ++cut) {
        const TraceBytes rest(torn.begin() + static_cast<std::ptrdiff_t>(cut), torn.end());
        EXPECT_EQ(lost(behind, kept(joined({rest, joined(behind)}))), 0U) << cut;
    }
}

TEST(TraceDivisionTest, AMessageThatEndsInOthersIsNoneWhateverIsBehindIt) {
    Messages inner;
    for (unsigned number : {20U, 21U}) {
        inner.push_back(can(number));
    }
    const std::string swallowed = "x" + textOf(joined(inner));
    const TraceBytes front = joined(mixed(20));
    const TraceBytes swallower = messageOf(5, STAMP + 6 * SECOND, swallowed);
    const uint64_t next = STAMP + 7 * SECOND;
    const TraceBytes doubtful = messageOf(1, next, textOf(messageOf(1, next, "twice")));
    for (const TraceBytes& behind : {can(30), doubtful}) {
        const Messages found = kept(joined({front, swallower, behind, joined(fixes(10, 20))}));
        for (const TraceBytes& message : inner) {
            EXPECT_NE(std::find(found.begin(), found.end(), message), found.end());
        }
        EXPECT_EQ(std::find(found.begin(), found.end(), swallower), found.end());
        expectSoundAgain(found);
    }
}

// Messages of which one has no type and a far time are no payload of a frame, though they lead to
// its end: the frame's size field is wrong.
TEST(TraceDivisionTest, AMessageThatEndsBehindAnotherOneDoesNotHoldIt) {
    const Messages front = fixes(0, 10);
    const Messages behind = fixes(20, 40);
    const std::string again = "\x12" + textOf(messageOf(8, STAMP + 11 * SECOND, "")).substr(2);
    const TraceBytes junk = messageOf(0x29EC, 0x1234567890ABCDEF, again);
    TraceBytes frame = messageOf(8, STAMP + 11 * SECOND, textOf(junk));
    const size_t wrong = frame.size() + sizeOf(fixes(20, 30)) - 2;
    uint16ToByteArray(static_cast<uint16_t>(wrong), frame.data());
    const TraceBytes noBeginning(3, 0xFF);
    Messages sound = front;
    sound.insert(sound.end(), behind.begin(), behind.end());
    EXPECT_TRUE(kept(joined({joined(front), noBeginning, frame, joined(behind)})) == sound);
}

TEST(TraceDivisionTest, OneDamageCostsAtMostTheTwoFixesThatItTouches) {
    std::mt19937_64 random(3);
    const Messages sound = fixes(0, 20);
    const TraceBytes whole = joined(sound);
    for (int round = 0; round < 2000; ++round) {
        TraceBytes trace = whole;
        const size_t place = random() % (trace.size() - 40);
        const auto at = trace.begin() + static_cast<std::ptrdiff_t>(place);
        switch (round % 4) {
            case 0:
                *at = static_cast<uint8_t>(random());
                break;
            case 1:
                trace.erase(at, at + static_cast<std::ptrdiff_t>(1 + random() % 30));
                break;
            case 2: {
                const TraceBytes more = noise(random, 1 + random() % 30);
                trace.insert(at, more.begin(), more.end());
                break;
            }
            default:
                std::fill_n(at, 1 + random() % 30, round % 8 < 4 ? 0 : 0xFF);
                break;
        }
        const Messages found = kept(trace);
        EXPECT_LE(lost(sound, found), 2U) << round << " at " << place;
        expectSoundAgain(found);
    }
}

TEST(TraceDivisionTest, SplicedTracesLoseAtMostTheTwoMessagesAtTheJoint) {
    std::mt19937_64 random(4);
    const TraceBytes first = joined(fixes(0, 12));
    const TraceBytes second = joined(fixes(1000, 1012));
    for (int round = 0; round < 300; ++round) {
        const size_t end = random() % first.size();
        const size_t begin = random() % second.size();
        const TraceBytes front(first.begin(), first.begin() + static_cast<std::ptrdiff_t>(end));
        const TraceBytes back(second.begin() + static_cast<std::ptrdiff_t>(begin), second.end());
        const size_t length = fix(0).size();
        Messages sound = fixes(0, static_cast<unsigned>(end / length));
        const Messages behind =
            fixes(1000 + static_cast<unsigned>((begin + length - 1) / length), 1012);
        sound.insert(sound.end(), behind.begin(), behind.end());
        const Messages found = kept(joined({front, back}));
        EXPECT_LE(lost(sound, found), 2U) << end << ' ' << begin;
        expectSoundAgain(found);
    }
}

TEST(TraceDivisionTest, NoiseOfEveryLengthBetweenMessagesOfTwoBusesLeavesASoundTrace) {
    std::mt19937_64 random(5);
    for (size_t length = 0; length < 200; ++length) {
        TraceBytes trace = joined(mixed(40));
        const TraceBytes more = noise(random, length);
        const size_t place = random() % trace.size();
        trace.insert(trace.begin() + static_cast<std::ptrdiff_t>(place), more.begin(), more.end());
        expectSoundAgain(kept(trace));
    }
}

}  // namespace traceDivisionTest
