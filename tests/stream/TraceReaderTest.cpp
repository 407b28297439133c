#include "libvexstream/TraceReader.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <numeric>
#include <random>
#include <stdexcept>
#include <utility>

#include "tests/stream/traces.h"

using namespace vextrace;
using Kind = TraceItem::Kind;

namespace traceReaderTest {
namespace {

constexpr uint64_t STAMP = 0x189A'BCDE'F012'3456;
constexpr size_t LONGEST = 65537;

using Messages = std::vector<TraceBytes>;

TraceBytes gps(std::string_view payload) {
    return messageOf(22, STAMP, payload);
}

TraceBytes fix(int second) {
    const std::string time = "1235" + std::to_string(second);
    return gps("$GPGGA," + time + ",4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47\r\n" +
               "$GPRMC," + time + ",A,4807.038,N,01131.000,E,022.4,084.4,230394,,,A*6A\r\n");
}

// Its payload is full of what might be headers.
TraceBytes can(char number) {
    const char payload[] = {1, 0, 3, number, 0, 8, 0, 0, '\xFF', 22, 0, 12};
    return messageOf(1, STAMP, {payload, sizeof payload});
}

// GPS messages long and short among others; every kind of type that is judged in its own way.
const Messages SMALL_TRACE = {
    fix(10),
    can(1),
    can(2),
    gps("$GPRMC,123511,V,,,,,,,230394,,,N*53\n"),
    messageOf(0, STAMP, ""),
    fix(12),
    gps("!AIVDM,1\n$GPGSV,1\r\n"),
    messageOf(0xC123, STAMP, std::string("\0\x16$G\n\0\0\0", 8)),
    messageOf(135, STAMP, std::string(20, '\0')),
    fix(13),
    gps("$PXYZ\n"),
    can(3),
    fix(14),
};

bool isGps(const TraceBytes& message) {
    return message[2] == 0 && message[3] == 22;
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

Messages gpsOf(const Messages& messages) {
    Messages chosen;
    std::copy_if(messages.begin(), messages.end(), std::back_inserter(chosen), isGps);
    return chosen;
}

std::vector<ReadItem> damageOf(const std::vector<ReadItem>& items) {
    std::vector<ReadItem> damage;
    std::copy_if(items.begin(), items.end(), std::back_inserter(damage),
                 [](const ReadItem& item) { return item.kind == Kind::DAMAGE; });
    return damage;
}

// Items lie behind one another and account for every byte.
void expectCovered(const std::vector<ReadItem>& items, size_t length) {
    uint64_t offset = 0;
    for (const ReadItem& item : items) {
        EXPECT_EQ(item.offset, offset);
        EXPECT_GT(item.length, 0U);
        offset += item.length;
    }
    EXPECT_EQ(offset, length);
}

// How many of the wanted messages are not among those found, which are in the same order.
size_t missing(const Messages& wanted, const Messages& found) {
    auto next = found.begin();
    size_t count = 0;
    for (const TraceBytes& message : wanted) {
        const auto place = std::find(next, found.end(), message);
        if (place == found.end()) {
            ++count;
        } else {
            next = place + 1;
        }
    }
    return count;
}

// The bytes [from, to) of a trace, replaced by others.
struct Spot {
    size_t from;
    size_t to;
    TraceBytes replacement;

    TraceBytes appliedTo(const TraceBytes& trace) const {
        const auto at = [&](size_t offset) {
            return trace.begin() + static_cast<std::ptrdiff_t>(offset);
        };
        return joined({{trace.begin(), at(from)}, replacement, {at(to), trace.end()}});
    }

    // The messages that it does not touch.
    Messages outside(const Messages& messages) const {
        Messages left;
        size_t begin = 0;
        for (const TraceBytes& message : messages) {
            const size_t end = begin + message.size();
            if (end <= from || begin >= to) {
                left.push_back(message);
            }
            begin = end;
        }
        return left;
    }
};

void PrintTo(const Spot& spot, std::ostream* os) {
    *os << "bytes " << spot.from << " to " << spot.to << " replaced by "
        << testing::PrintToString(spot.replacement);
}

TraceBytes randomBytes(std::mt19937& random, size_t count) {
    TraceBytes bytes(count);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<uint8_t>(random()); });
    return bytes;
}

TraceBytes contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TraceBytes beginningOf(const TraceBytes& bytes, size_t length) {
    return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length)};
}

bool isTrace(const TraceBytes& bytes) {
    MemorySource source(bytes);
    TraceReader reader(source);
    readAll(reader);
    return reader.foundMessage();
}

}  // namespace

TEST(TraceReaderTest, GivesEveryMessageOfASoundTraceByteForByte) {
    const std::vector<ReadItem> items = readTrace(joined(SMALL_TRACE));
    EXPECT_EQ(messagesOf(items), SMALL_TRACE);
    expectCovered(items, joined(SMALL_TRACE).size());
    for (const ReadItem& item : items) {
        EXPECT_EQ(item.kind, isGps(item.bytes) ? Kind::GPS : Kind::OTHER);
        EXPECT_EQ(item.id, item.bytes[2] << 8 | item.bytes[3]);
        const std::string payload(item.bytes.begin() + 14, item.bytes.end());
        EXPECT_EQ(item.payload, isGps(item.bytes) ? payload : "");
    }
}

TEST(TraceReaderTest, DecodesHeaderAndSentences) {
    TraceBytes message = gps("$GPRMC,123519,A\r\n$GPTXT,x\n");
    message[4] = 0xAB;
    message[5] = 0xCD;
    MemorySource source(message);
    TraceReader reader(source);
    EXPECT_FALSE(reader.foundMessage());
    const TraceItem item = reader.next();
    ASSERT_NE(item.gps, nullptr);
    EXPECT_EQ(item.gps->getTimeStamp(), STAMP);
    EXPECT_EQ(item.gps->getHeaderReserved(), 0xABCD);
    EXPECT_EQ(item.gps->getSentence("$GPRMC"), "$GPRMC,123519,A\r\n");
    EXPECT_EQ(item.gps->getSentence("$GPTXT"), "$GPTXT,x\n");
    EXPECT_TRUE(reader.foundMessage());
    EXPECT_EQ(reader.position(), message.size());
    EXPECT_EQ(reader.next().kind, Kind::END);
    EXPECT_EQ(reader.next().kind, Kind::END);
}

TEST(TraceReaderTest, AnEmptyTraceIsAtItsEnd) {
    EXPECT_TRUE(readTrace({}).empty());
}

TEST(TraceReaderTest, SaysWhereDamageIsAndWhy) {
    const struct {
        TraceBytes damage;
        std::string reason;
    } cases[] = {
        {{0, 0}, "size field 0 is too small for a header"},
        {{0, 11, 0, 22}, "size field 11 is too small for a header"},
        {{0}, "a message of 14 bytes is cut off after 1"},
        {{0, 99, 0, 22, 0}, "a message of 101 bytes is cut off after 5"},
        {gps(""), "GPSTraceMessage: No NMEA code found."},
        {gps("\n\n"), "GPSTraceMessage: No NMEA code found."},
        {gps(std::string("$GPRMC\0\n", 8)), "the GPS message holds a NUL byte"},
        {messageOf(0x4711, 0, "x$"), "no message follows where its size field says"},
    };
    for (const auto& [damage, reason] : cases) {
        // In front of a message a torn one runs into it, and so says another reason.
        const bool torn = reason.find("cut off") != std::string::npos;
        const TraceBytes behind = torn ? TraceBytes() : joined({{'\n'}, fix(11)});
        const auto items = readTrace(joined({fix(10), damage, behind}));
        ASSERT_EQ(items.size(), torn ? 2U : 3U) << reason;
        EXPECT_EQ(items[1].kind, Kind::DAMAGE);
        EXPECT_EQ(items[1].offset, fix(10).size());
        EXPECT_EQ(items[1].length, damage.size() + (torn ? 0 : 1));
        EXPECT_EQ(items[1].bytes, torn ? damage : joined({damage, {'\n'}}));
        EXPECT_EQ(items[1].reason, reason);
    }
}

TEST(TraceReaderTest, EveryBeginningGivesItsWholeMessages) {
    const TraceBytes trace = joined(SMALL_TRACE);
    for (size_t length = 0; length <= trace.size(); ++length) {
        Messages whole;
        size_t end = 0;
        for (const TraceBytes& message : SMALL_TRACE) {
            if (end + message.size() > length) {
                break;
            }
            end += message.size();
            whole.push_back(message);
        }
        const auto items = readTrace(beginningOf(trace, length));
        EXPECT_EQ(messagesOf(items), whole);
        expectCovered(items, length);
        EXPECT_EQ(damageOf(items).size(), end < length ? 1U : 0U);
    }
}

namespace {

// A size field of another type may be changed so that it reaches to the end of a later message.
// Then the trace is sound: nobody can tell that message from a long one.
bool isSoundSwallow(const Messages& messages, const Spot& spot) {
    const TraceBytes damaged = spot.appliedTo(joined(messages));
    size_t begin = 0;
    for (const TraceBytes& message : messages) {
        if (spot.from < begin + 2 && spot.from >= begin && !isGps(message)) {
            break;
        }
        begin += message.size();
    }
    if (begin == damaged.size()) {
        return false;
    }
    const size_t wrongEnd = begin + 2 + size_t{damaged[begin]} * 256 + damaged[begin + 1];
    size_t end = 0;
    return std::any_of(messages.begin(), messages.end(), [&](const TraceBytes& message) {
        end += message.size();
        return end == wrongEnd;
    });
}

// All values take a minute under the sanitizers: they are tried where the environment says so.
std::vector<int> valuesToTry() {
    std::vector<int> values = {0, 1, 10, 12, 22, 24, 36, 77, 100, 128, 193, 255};
    if (std::getenv("VEXTRACE_ALL_CHANGES") != nullptr) {
        values.resize(256);
        std::iota(values.begin(), values.end(), 0);
    }
    return values;
}

}  // namespace

TEST(TraceReaderTest, AChangedByteCostsTheMessageThatHoldsIt) {
    const TraceBytes trace = joined(SMALL_TRACE);
    for (size_t i = 0; i < trace.size(); ++i) {
        for (const int value : valuesToTry()) {
            const Spot spot{i, i + 1, {static_cast<uint8_t>(value)}};
            const auto items = readTrace(spot.appliedTo(trace));
            expectCovered(items, trace.size());
            if (!isSoundSwallow(SMALL_TRACE, spot)) {
                EXPECT_EQ(missing(spot.outside(SMALL_TRACE), messagesOf(items)), 0U)
                    << testing::PrintToString(spot);
            }
        }
    }
}

// Bytes may come to lie so that what is left of a message and its neighbour reads as one.
TEST(TraceReaderTest, LostAndInsertedBytesCostTheGpsMessagesTheyTouchAndOneOtherAtMost) {
    const TraceBytes trace = joined(SMALL_TRACE);
    std::mt19937 random(20261121);
    for (size_t from = 0; from < trace.size(); ++from) {
        for (const size_t count :
             std::initializer_list<size_t>{1, 2, 3, 4, 13, 14, 20, 33, 100, 300}) {
            const size_t to = std::min(from + count, trace.size());
            const auto copy = trace.begin() + static_cast<int>(random() % (trace.size() - 300));
            const Spot spots[] = {
                {from, to, {}},
                {from, from, TraceBytes(count, 0)},
                {from, from, randomBytes(random, count)},
                {from, from, {copy, copy + static_cast<int>(count)}},
                {from, to, TraceBytes(to - from, 0xFF)},
                {from, to, randomBytes(random, to - from)},
                {from, to, {copy, copy + static_cast<int>(to - from)}},
            };
            for (const Spot& spot : spots) {
                const TraceBytes damaged = spot.appliedTo(trace);
                const auto items = readTrace(damaged);
                expectCovered(items, damaged.size());
                const Messages found = messagesOf(items);
                const Messages wanted = spot.outside(SMALL_TRACE);
                EXPECT_EQ(missing(gpsOf(wanted), gpsOf(found)), 0U) << testing::PrintToString(spot);
                EXPECT_LE(missing(wanted, found), 1U) << testing::PrintToString(spot);
            }
        }
    }
}

TEST(TraceReaderTest, FindsAGpsMessageBetweenTwoDamagedPlaces) {
    const Messages trace = {fix(10), fix(11), fix(12), fix(13), fix(14)};
    TraceBytes bytes = joined(trace);
    for (const size_t message : {size_t{1}, size_t{3}}) {
        std::fill_n(bytes.begin() + static_cast<int>(message * fix(10).size()), 4, '$');
    }
    const auto items = readTrace(bytes);
    EXPECT_EQ(messagesOf(items), (Messages{trace[0], trace[2], trace[4]}));
    EXPECT_EQ(damageOf(items).size(), 2U);
}

TEST(TraceReaderTest, FindsATraceBetweenOtherBytes) {
    std::mt19937 random(1);
    for (int i = 0; i < 200; ++i) {
        const TraceBytes front = randomBytes(random, random() % 3000);
        const TraceBytes back = randomBytes(random, random() % 3000);
        const auto items = readTrace(joined({front, joined(SMALL_TRACE), back}));
        EXPECT_EQ(missing(SMALL_TRACE, messagesOf(items)), 0U) << i;
    }
}

TEST(TraceReaderTest, PassesOverAMegabyteOfAnything) {
    std::mt19937 random(2);
    constexpr size_t MEGABYTE = 1 << 20;
    for (const TraceBytes& block :
         {TraceBytes(MEGABYTE, 0), TraceBytes(MEGABYTE, 0xFF), TraceBytes(MEGABYTE, '$'),
          randomBytes(random, MEGABYTE), gps(std::string(65523, 'x'))}) {
        const auto items = readTrace(joined({fix(10), block, {7}, fix(11), fix(12)}));
        EXPECT_EQ(gpsOf(messagesOf(items)).size(), 3U);
        expectCovered(items, fix(10).size() * 3 + block.size() + 1);
    }
}

// A message of another type that was found by chance would take many with it.
TEST(TraceReaderTest, FindsTheFirstOfManyShortMessagesBehindRandomBytes) {
    std::mt19937 random(3);
    uint64_t stamp = STAMP;
    Messages cans;
    for (int i = 0; i < 4000; ++i) {
        const TraceBytes data = randomBytes(random, random() % 9);
        cans.push_back(messageOf(1, stamp += random() % 1'000'000,
                                 std::string(4, '\0') + std::string(data.begin(), data.end())));
    }
    for (int i = 0; i < 100; ++i) {
        const auto items = readTrace(joined({can(5), randomBytes(random, 4096), joined(cans)}));
        EXPECT_LE(missing(cans, messagesOf(items)), 1U);
    }
}

TEST(TraceReaderTest, KeepsOfLongDamageTheFront) {
    const TraceBytes zeros(300'000, 0);
    const auto items = readTrace(joined({fix(10), zeros, fix(11)}));
    ASSERT_EQ(items.size(), 3U);
    EXPECT_EQ(items[1].length, zeros.size());
    EXPECT_EQ(items[1].bytes, TraceBytes(LONGEST, 0));
}

TEST(TraceReaderTest, HoldsATornMessageWhole) {
    const TraceBytes longest = gps("$GPTXT," + std::string(65515, 'x') + "\n");
    ASSERT_EQ(longest.size(), LONGEST);
    const TraceBytes torn = beginningOf(longest, LONGEST - 1);
    const auto items = readTrace(joined({fix(10), torn}));
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(items[1].bytes, torn);
}

TEST(TraceReaderTest, PassesOverAMessageThatIsTheNextOne) {
    const TraceBytes trace = joined({fix(10), can(1), fix(11), fix(12)});
    MemorySource source(trace);
    TraceReader reader(source);
    EXPECT_TRUE(reader.passOver(fix(10)));
    EXPECT_TRUE(reader.foundMessage());
    EXPECT_FALSE(reader.passOver(fix(11)));
    EXPECT_EQ(reader.position(), fix(10).size());
    const TraceItem item = reader.next();
    EXPECT_EQ(item.kind, Kind::OTHER);
    EXPECT_EQ(item.offset, fix(10).size());
    EXPECT_TRUE(reader.passOver(fix(11)));
    EXPECT_EQ(reader.next().offset, trace.size() - fix(12).size());
    EXPECT_FALSE(reader.passOver(fix(12)));
    EXPECT_EQ(reader.next().kind, Kind::END);
    EXPECT_EQ(reader.position(), trace.size());
}

TEST(TraceReaderTest, PassesOverNoMessageWithoutBytes) {
    const TraceBytes trace = fix(10);
    MemorySource source(trace);
    TraceReader reader(source);
    EXPECT_FALSE(reader.passOver({}));
    EXPECT_FALSE(reader.foundMessage());
    EXPECT_EQ(copied(reader.next()).bytes, trace);
    EXPECT_FALSE(reader.passOver({}));
}

TEST(TraceReaderTest, PassesOverNothingOutsideItsRangeNorAMessageThatIsCutOff) {
    const TraceBytes trace = joined({fix(10), fix(11), fix(12)});
    MemorySource whole(trace);
    TraceRange range;
    range.end = fix(10).size();
    TraceReader first(whole, range);
    EXPECT_TRUE(first.passOver(fix(10)));
    EXPECT_FALSE(first.passOver(fix(11)));
    const size_t cut = trace.size() - 1;
    MemorySource torn({trace.data(), cut});
    TraceReader reader(torn);
    EXPECT_TRUE(reader.passOver(fix(10)));
    EXPECT_TRUE(reader.passOver(fix(11)));
    EXPECT_FALSE(reader.passOver(fix(12)));
    EXPECT_EQ(reader.next().kind, Kind::DAMAGE);
    MemorySource again(trace);
    range.begin = 5;
    range.end = trace.size();
    TraceReader second(again, range);
    EXPECT_FALSE(second.passOver(fix(10)));
    EXPECT_EQ(second.next().offset, fix(10).size());
}

TEST(TraceReaderTest, ReadsTheLongestMessages) {
    Messages trace;
    for (char c = 'a'; c < 'k'; ++c) {
        trace.push_back(gps("$GPTXT," + std::string(65515, c) + "\n"));
        trace.push_back(messageOf(0xC0DE, STAMP, std::string(65523, c)));
        trace.push_back(messageOf(0xC0DE, STAMP, std::string(65523, '\0')));
        trace.push_back(messageOf(12, STAMP, std::string(65523, '\xFF')));
    }
    EXPECT_EQ(messagesOf(readTrace(joined(trace))), trace);
    Messages found = messagesOf(readTrace(joined({{0, 0, 0}, joined(trace)})));
    EXPECT_EQ(found, trace);
    TraceBytes changed = joined(trace);
    changed[LONGEST] = 0x77;
    found = messagesOf(readTrace(changed));
    EXPECT_EQ(missing(trace, found), 1U);
}

TEST(TraceReaderTest, TakesTypesThatNobodyKnowsInTheirPlace) {
    const TraceBytes unknown = messageOf(0x4711, STAMP, "$GPRMC\n");
    const TraceBytes invalid = messageOf(0xFFFF, STAMP, "");
    for (const Messages& trace : {Messages{unknown, fix(10)}, Messages{fix(10), unknown},
                                  Messages{fix(10), unknown, unknown, invalid, fix(11)},
                                  Messages{invalid, can(1), can(2), unknown}, Messages{unknown}}) {
        EXPECT_EQ(messagesOf(readTrace(joined(trace))), trace);
    }
}

TEST(TraceReaderTest, TakesManyMessagesOfATypeThatNobodyKnows) {
    std::mt19937 random(4);
    for (const size_t size : {0U, 8U, 100U, 1000U, 15000U}) {
        Messages trace = {fix(10)};
        uint64_t stamp = STAMP;
        for (size_t length = 0; length < 300'000; length += trace.back().size()) {
            const TraceBytes data = randomBytes(random, size);
            trace.push_back(messageOf(12345, stamp += 1 + random() % 1'000'000,
                                      {reinterpret_cast<const char*>(data.data()), size}));
        }
        EXPECT_EQ(messagesOf(readTrace(joined(trace))), trace) << size;
        trace.push_back(fix(11));
        EXPECT_EQ(messagesOf(readTrace(joined(trace))), trace) << size;
    }
}

TEST(TraceReaderTest, TakesNoBytesThatRepeatForMessages) {
    for (const char* const period : {" ", "A", "-\n", "0123456789abcdef\n"}) {
        std::string text;
        while (text.size() < 300'000) {
            text += period;
        }
        EXPECT_FALSE(isTrace(TraceBytes(text.begin(), text.end()))) << period;
    }
}

TEST(TraceReaderTest, LeavesAMessageWholeThatHoldsOthers) {
    const TraceBytes inner = joined({fix(10), can(1), fix(11), fix(12)});
    for (const uint16_t id : std::initializer_list<uint16_t>{12, 253, 4, 0xC0DE}) {
        const Messages trace = {
            fix(12), messageOf(id, STAMP, std::string(inner.begin(), inner.end())), fix(13)};
        EXPECT_EQ(messagesOf(readTrace(joined(trace))), trace);
    }
}

TEST(TraceReaderTest, LeavesAMessageOfAnyTypeWholeThatHoldsOneOther) {
    const TraceBytes inner = fix(10);
    const std::string payload(inner.begin(), inner.end());
    const Messages trace = {fix(12), messageOf(1, STAMP, payload), fix(13)};
    EXPECT_EQ(messagesOf(readTrace(joined(trace))), trace);
}

TEST(TraceReaderTest, TakesTheWholeLinesOfAMessageWhoseSizeFieldIsTooSmall) {
    TraceBytes message = gps("$GPGGA,1\n$GPRMC,2\n");
    message[1] = static_cast<uint8_t>(message[1] - 9);
    auto items = readTrace(joined({message, fix(10)}));
    ASSERT_EQ(items.size(), 3U);
    EXPECT_EQ(items[0].payload, "$GPGGA,1\n");
    EXPECT_EQ(items[1].length, 9U);
    message[1] = static_cast<uint8_t>(message[1] + 1);
    items = readTrace(joined({message, fix(10)}));
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(items[0].kind, Kind::DAMAGE);
}

TEST(TraceReaderTest, TakesSentencesAsOthersWriteThem) {
    const Messages trace = {gps("$GPRMC,1\n$GPGGA,1\n"), gps("\n\n$GPRMC,1\n"), gps("$GPRMC,1"),
                            gps("$GPRMC,1\n$GPRMC,2\n"), gps("anything")};
    EXPECT_EQ(messagesOf(readTrace(joined(trace))), trace);
}

TEST(TraceReaderTest, TakesAMessageOfSentencesWhateverStandsAroundIt) {
    TraceBytes alone = messageOf(MSGID_GPS, 0x7FFF'0123'4567'89AB, "$GPRMC,1\n");
    alone[MessageBase::MO_HDRRESERVED] = 0xAB;
    for (const TraceBytes& behind : {TraceBytes(20), fix(2), messageOf(0xBEEF, 77, "x")}) {
        const auto items = readTrace(joined({fix(1), alone, behind}));
        ASSERT_GE(items.size(), 2U);
        EXPECT_EQ(items[0].bytes, fix(1));
        EXPECT_EQ(items[1].bytes, alone);
    }
}

TEST(TraceReaderTest, OtherFilesAreNoTrace) {
    std::mt19937 random(4);
    EXPECT_FALSE(isTrace(contentOf(VEXTRACE_SOURCE_DIR "/examples/data/drive.nmea")));
    EXPECT_FALSE(isTrace(contentOf(VEXTRACE_SOURCE_DIR "/README.md")));
    EXPECT_FALSE(isTrace(randomBytes(random, 1 << 20)));
    EXPECT_FALSE(isTrace(TraceBytes(1 << 20, 0)));
    EXPECT_FALSE(isTrace(TraceBytes(1 << 20, 0xFF)));
    EXPECT_FALSE(isTrace({0}));
    EXPECT_TRUE(isTrace(joined({{'x'}, fix(10)})));
    EXPECT_TRUE(isTrace(messageOf(0, 0, "")));
}

namespace {

// A file that is written while it is read.
class GrowingTrace : public ByteSource {
public:
    explicit GrowingTrace(TraceBytes content = {}) : bytes(std::move(content)) {}

    void append(const TraceBytes& more) { bytes.insert(bytes.end(), more.begin(), more.end()); }
    void cut(size_t length) { bytes.resize(length); }

    size_t read(uint8_t* dest, size_t room) override {
        const size_t count = position < bytes.size() ? std::min(room, bytes.size() - position) : 0;
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(position), count, dest);
        position += count;
        return count;
    }
    bool goBack(size_t count) override {
        position -= count;
        return true;
    }

private:
    TraceBytes bytes;
    size_t position = 0;
};

}  // namespace

TEST(TraceReaderTest, GivesAGrowingTraceAsItGrows) {
    GrowingTrace file;
    TraceReader reader(file);
    reader.setGrowing(true);
    for (const TraceBytes& message : SMALL_TRACE) {
        for (const uint8_t byte : message) {
            EXPECT_EQ(reader.next().kind, Kind::END);
            file.append({byte});
        }
        const TraceItem item = reader.next();
        EXPECT_EQ(copied(item).bytes, message);
    }
}

TEST(TraceReaderTest, FindsMessagesBehindDamageInAGrowingTrace) {
    GrowingTrace file;
    TraceReader reader(file);
    reader.setGrowing(true);
    const TraceBytes trace = joined({{1, 2, 3, 4, 0, 99}, fix(10), {0, 0, 7}, can(1), fix(11)});
    std::vector<ReadItem> items;
    for (const uint8_t byte : trace) {
        file.append({byte});
        const std::vector<ReadItem> more = readAll(reader);
        items.insert(items.end(), more.begin(), more.end());
    }
    EXPECT_EQ(messagesOf(items), (Messages{fix(10), can(1), fix(11)}));
    expectCovered(items, trace.size());
}

TEST(TraceReaderTest, KeepsTypesThatNobodyKnowsWhereverAGrowingTraceEnds) {
    Messages trace = {fix(10)};
    for (uint64_t i = 1; i < 5; ++i) {
        trace.push_back(messageOf(0x4711, STAMP + i * 1'000'000'000'000, "ABCDEFGH"));
    }
    const TraceBytes bytes = joined(trace);
    for (size_t cut = 1; cut < bytes.size(); ++cut) {
        GrowingTrace file(beginningOf(bytes, cut));
        TraceReader reader(file);
        reader.setGrowing(true);
        std::vector<ReadItem> items = readAll(reader);
        file.append({bytes.begin() + static_cast<std::ptrdiff_t>(cut), bytes.end()});
        for (const ReadItem& item : readAll(reader)) {
            items.push_back(item);
        }
        EXPECT_EQ(messagesOf(items), trace) << "first " << cut << " bytes";
    }
}

TEST(TraceReaderTest, TellsInAGrowingTraceThatAMessageIsCutOffBeforeItsSizeIsReached) {
    // No other header may begin in it.
    const TraceBytes torn = beginningOf(messageOf(1, 0, std::string(0xEB00 - 12, '\0')), 99);
    GrowingTrace file(joined({fix(10), torn}));
    TraceReader reader(file);
    reader.setGrowing(true);
    EXPECT_EQ(messagesOf(readAll(reader)), Messages{fix(10)});
    Messages others;
    std::vector<ReadItem> items;
    for (int i = 0; items.empty() && i < 100; ++i) {
        others.push_back(fix(i));
        for (const uint8_t byte : others.back()) {
            file.append({byte});
            const std::vector<ReadItem> more = readAll(reader);
            items.insert(items.end(), more.begin(), more.end());
        }
    }
    EXPECT_LT(others.size(), 5U);
    EXPECT_EQ(messagesOf(items), others);
}

TEST(TraceReaderTest, LooksOnceMoreAtAMessageThatIsCutOffWhenAGrowingTraceRests) {
    const TraceBytes torn = beginningOf(messageOf(1, 0, std::string(0xEB00 - 12, '\0')), 40000);
    const Messages others = {fix(10), can(1), fix(11)};
    const TraceBytes back = joined(others);
    for (const bool isReplaced : {false, true}) {
        GrowingTrace file(torn);
        TraceReader reader(file);
        reader.setGrowing(true);
        EXPECT_TRUE(readAll(reader).empty());
        file.cut(torn.size() - (isReplaced ? back.size() : 0));
        file.append(back);
        std::vector<ReadItem> items = readAll(reader);
        for (const ReadItem& item : readAll(reader)) {
            items.push_back(item);
        }
        EXPECT_EQ(messagesOf(items), others) << isReplaced;
    }
}

TEST(TraceReaderTest, ATornEndOfAGrowingTraceMayBeReplaced) {
    GrowingTrace file(joined({fix(10), beginningOf(fix(11), 50)}));
    TraceReader reader(file);
    reader.setGrowing(true);
    EXPECT_EQ(readAll(reader).size(), 1U);
    file.cut(fix(10).size());
    EXPECT_TRUE(readAll(reader).empty());
    file.append(fix(12));
    EXPECT_EQ(messagesOf(readAll(reader)), Messages{fix(12)});
}

TEST(TraceReaderTest, WhatWasSeenOfATornEndSaysNothingOfAnother) {
    const TraceBytes sound = gps("$GNRMC,1\n");
    const TraceBytes unsound = gps(std::string_view("$GNRM\0,1\n", 9));
    const std::string payload = "as long as a" + std::string(unsound.begin(), unsound.end());
    const TraceBytes torn = messageOf(1, STAMP, payload + std::string(100, 'x'));
    GrowingTrace file(joined({fix(10), beginningOf(torn, 26 + unsound.size() + 10)}));
    TraceReader reader(file);
    reader.setGrowing(true);
    EXPECT_EQ(readAll(reader).size(), 1U);
    file.cut(fix(10).size());
    const Messages others = {can(1), sound, can(2), fix(12)};
    file.append(joined(others));
    EXPECT_EQ(messagesOf(readAll(reader)), others);
}

TEST(TraceReaderTest, LeavesContainersWholeInAGrowingTrace) {
    const TraceBytes inner = joined({fix(11), can(1), fix(12), can(2)});
    const std::string payload(inner.begin(), inner.end());
    for (const uint16_t id : std::initializer_list<uint16_t>{12, 0xC0DE}) {
        GrowingTrace file(fix(10));
        TraceReader reader(file);
        reader.setGrowing(true);
        EXPECT_EQ(copied(reader.next()).bytes, fix(10));
        const TraceBytes container = messageOf(id, STAMP, payload);
        for (const uint8_t byte : container) {
            EXPECT_EQ(reader.next().kind, Kind::END);
            file.append({byte});
        }
        EXPECT_EQ(copied(reader.next()).bytes, container);
    }
}

TEST(TraceReaderTest, GrowingEndsAreDamageOnceTheyGrowNoMore) {
    const TraceBytes torn = beginningOf(fix(11), 50);
    GrowingTrace file(joined({fix(10), torn}));
    TraceReader reader(file);
    reader.setGrowing(true);
    EXPECT_EQ(readAll(reader).size(), 1U);
    reader.setGrowing(false);
    const auto items = readAll(reader);
    ASSERT_EQ(items.size(), 1U);
    EXPECT_EQ(items[0].kind, Kind::DAMAGE);
    EXPECT_EQ(items[0].bytes, torn);
}

namespace {

// Gives these bytes, then fails.
class FailingSource : public ByteSource {
public:
    explicit FailingSource(const TraceBytes& bytes) : before(bytes) {}

    size_t read(uint8_t* dest, size_t room) override {
        const size_t count = before.read(dest, room);
        if (count == 0) {
            throw std::runtime_error("the disk has gone");
        }
        return count;
    }

private:
    MemorySource before;
};

// Fails once at an offset.
class InterruptedSource : public ByteSource {
public:
    InterruptedSource(const TraceBytes& bytes, size_t offset)
        : front(std::span(bytes).first(offset)), back(std::span(bytes).subspan(offset)) {}

    size_t read(uint8_t* dest, size_t room) override {
        const size_t count = front.read(dest, std::min(room, mostAtOnce));
        if (count == 0 && !std::exchange(hasFailed, true)) {
            throw std::runtime_error("interrupted");
        }
        given += count;
        return count == 0 ? back.read(dest, room) : count;
    }

    size_t mostAtOnce = std::numeric_limits<size_t>::max();
    size_t given = 0;  // of the bytes in front of the failure

private:
    MemorySource front;
    MemorySource back;
    bool hasFailed = false;
};

}  // namespace

TEST(TraceReaderTest, WaitsForLittleBehindSoundMessagesOfAnyType) {
    Messages trace;
    for (char number = 0; number < 100; ++number) {
        trace.push_back(can(number));
    }
    const TraceBytes bytes = joined(trace);
    InterruptedSource source(bytes, bytes.size());
    source.mostAtOnce = 10;
    TraceReader reader(source);
    for (size_t i = 0; i + 5 < trace.size(); ++i) {
        EXPECT_EQ(copied(reader.next()).bytes, trace[i]);
        EXPECT_LE(source.given, reader.position() + 4 * trace[i].size());
    }
}

TEST(TraceReaderTest, ReadsOnBehindAReadErrorThatPasses) {
    const Messages trace = {fix(10), can(1), fix(11), messageOf(12, STAMP, "held"), fix(12)};
    const TraceBytes bytes = joined(trace);
    for (size_t offset = 0; offset <= bytes.size(); ++offset) {
        InterruptedSource source(bytes, offset);
        TraceReader reader(source);
        std::vector<ReadItem> items;
        EXPECT_THROW(
            for (TraceItem item = reader.next(); item.kind != Kind::END;
                 item = reader.next()) { items.push_back(copied(item)); },
            std::runtime_error);
        for (const ReadItem& item : readAll(reader)) {
            items.push_back(item);
        }
        EXPECT_EQ(messagesOf(items), trace) << offset;
        EXPECT_EQ(items.size(), trace.size()) << offset;
    }
}

TEST(TraceReaderTest, GivesWhatWasReadBeforeAReadError) {
    for (const TraceBytes& end : {TraceBytes(), TraceBytes{0}, can(1), TraceBytes{0, 0, 0, 0, 0},
                                  beginningOf(fix(1), 100)}) {
        const TraceBytes trace = joined({fix(10), fix(11), end});
        FailingSource source(trace);
        TraceReader reader(source);
        EXPECT_EQ(copied(reader.next()).bytes, fix(10));
        EXPECT_EQ(copied(reader.next()).bytes, fix(11));
        if (end == can(1)) {
            EXPECT_EQ(copied(reader.next()).bytes, end);
        }
        try {
            reader.next();
            FAIL() << "no error";
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "the disk has gone");
        }
    }
}

TEST(TraceReaderTest, GivesWhatIsBehindASizeFieldThatIsTooLargeBeforeAReadError) {
    TraceBytes tooLong = can(1);
    tooLong[0] = 0x77;
    const TraceBytes trace = joined({fix(10), tooLong, fix(11), can(2), fix(12)});
    FailingSource source(trace);
    TraceReader reader(source);
    EXPECT_EQ(copied(reader.next()).bytes, fix(10));
    EXPECT_EQ(copied(reader.next()).bytes, tooLong);
    for (const TraceBytes& message : {fix(11), can(2), fix(12)}) {
        EXPECT_EQ(copied(reader.next()).bytes, message);
    }
    EXPECT_THROW(reader.next(), std::runtime_error);
}

}  // namespace traceReaderTest
