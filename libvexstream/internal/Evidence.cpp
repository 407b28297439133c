#include "libvexstream/internal/Evidence.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "libvexstream/internal/repetition.h"
#include "libvexstream/utc.h"

namespace vextrace {

namespace {

using Payload = GpsPayloads::Kind;

constexpr size_t HEADER = MessageBase::MO_BASE_DERIVED;

// Of 65,536 ids 85 have a name. Binary data are full of zeros, whatever they mean: one number in
// four is 0 there, and hardly one message in thirty is a marker. An eighth of all ids is free for
// types of one's own, and so may be an eighth of all messages. Of a thousand messages hardly one
// has any other id, unless the next one has it, too.
constexpr int OF_NAMED_ID = 9;
constexpr int OF_MARKER = -3;
constexpr int OF_FREE_ID = 0;
constexpr int OF_UNKNOWN_ID = -10;

// A length is any of 65,536 by chance, and of messages mostly a short one: a bit for each halving
// below 8 kB. Below 128 bytes small numbers are as common everywhere.
constexpr int WIDTH_OF_NO_EVIDENCE = 13;
constexpr int MOST_OF_LENGTH = 6;

// Of two stamps 31 of 64 bits are the same by chance where they are within eight seconds of
// nanoseconds, and 25 where they are within nine minutes, but what counts is like that, too; so is
// what repeats. Small numbers are near one another everywhere, and 0 is no time. A recorder tells a
// time of day or a date of its days; other times are near only as texts and code are like others of
// their kind. Between minutes and an hour neither is likelier; its clock jumps farther once in tens
// of thousands of messages at most.
constexpr timeStamp_t NEAR = timeStamp_t{1} << 33;
constexpr timeStamp_t LIKE = timeStamp_t{1} << 39;
constexpr timeStamp_t FAR = timeStamp_t{1} << 42;
constexpr int OF_NEAR_TIME = 24;
constexpr int OF_LIKE_TIME = 8;
constexpr int OF_FAR_TIME = Evidence::OF_NOTHING_BEHIND;

// Reserved words are mostly all the same.
constexpr int OF_ANOTHER_RESERVED = Evidence::LEAST_OF_NEIGHBOUR - OF_FAR_TIME;

// So many messages tell that others are held.
constexpr unsigned MOST_HELD = 8;

// Six bytes and more of the header that were there already: 48 bits that a message has by chance.
constexpr int OF_REPETITION = -40;

// By chance a payload holds no NUL byte, ends in a line feed and has its lines in order in one of
// some 2^16 cases at best, each letter of it is printable in one of three, and its first two bytes
// are those of a sentence in one of 2^15. Others than the library may write it in another order,
// seldom, and hardly without its line feed, as it is where it is cut.
constexpr int OF_SENTENCES = 96;
constexpr int OF_LINES = 32;
constexpr int OF_LOOSE_LINES = -8;
constexpr int OF_CUT_LINE = -40;

uint16_t number16(const uint8_t* bytes) {
    return static_cast<uint16_t>(bytes[0] << 8 | bytes[1]);
}

timeStamp_t number64(const uint8_t* bytes) {
    const auto number32 = [](const uint8_t* part) {
        return uint32_t{part[0]} << 24 | uint32_t{part[1]} << 16 | uint32_t{part[2]} << 8 | part[3];
    };
    return timeStamp_t{number32(bytes)} << 32 | number32(bytes + 4);
}

timeStamp_t stampOf(const uint8_t* header) {
    return number64(header + MessageBase::MO_TIMESTAMP);
}

bool isFree(uint16_t id) {
    return id >= 0xC000 && id <= 0xDFFF;
}

int ofId(uint16_t id) {
    if (id == MSGID_MARKER) {
        return OF_MARKER;
    }
    if (isFree(id)) {
        return OF_FREE_ID;
    }
    const auto type = static_cast<msgid_t>(id);
    if (!isExpected(type)) {
        return OF_UNKNOWN_ID;
    }
    return messageName(type).empty() ? OF_FREE_ID : OF_NAMED_ID;
}

std::array<int8_t, 0x10000> bitsOfIds() {
    std::array<int8_t, 0x10000> bits = {};
    for (size_t i = 0; i < bits.size(); ++i) {
        bits[i] = static_cast<int8_t>(ofId(static_cast<uint16_t>(i)));
    }
    return bits;
}

int ofLength(size_t length) {
    return std::clamp(WIDTH_OF_NO_EVIDENCE - static_cast<int>(std::bit_width(length)), 0,
                      MOST_OF_LENGTH);
}

bool isOfARecorder(timeStamp_t stamp) {
    constexpr timeStamp_t DAY = timeStamp_t{86'400} * 1'000'000'000;
    constexpr timeStamp_t YEAR = 365 * DAY;
    return stamp < 2 * DAY || (hasDate(stamp) && stamp < 130 * YEAR);
}

int ofTimes(timeStamp_t a, timeStamp_t b) {
    const auto [low, high] = std::minmax(a, b);
    if (low == 0) {
        return 0;
    }
    if (high - low >= FAR) {
        return OF_FAR_TIME;
    }
    if (low <= LIKE || high - low >= LIKE) {
        return 0;
    }
    return a == b || high - low >= NEAR || !isOfARecorder(low) ? OF_LIKE_TIME : OF_NEAR_TIME;
}

bool haveSameId(const uint8_t* header, const uint8_t* other) {
    return std::memcmp(header + MessageBase::MO_MSGID, other + MessageBase::MO_MSGID,
                       sizeof(uint16_t)) == 0;
}

// Of a message, by another header in its chain.
int ofNeighbour(const uint8_t* header, const uint8_t* other) {
    const bool isSame = number16(header + MessageBase::MO_HDRRESERVED) ==
                        number16(other + MessageBase::MO_HDRRESERVED);
    return ofTimes(stampOf(header), stampOf(other)) + (isSame ? 0 : OF_ANOTHER_RESERVED);
}

}  // namespace

// Asked at every byte; made by those who read traces.
Evidence::Evidence(TraceWindow& trace) : window(trace) {
    static const auto bits = bitsOfIds();
    idBits = bits.data();
}

int Evidence::idOf(const uint8_t* header) const {
    return idBits[number16(header + MessageBase::MO_MSGID)];
}

size_t Evidence::lengthAt(uint64_t offset) {
    if (window.available(offset, HEADER) < HEADER) {
        return 0;
    }
    const size_t length = number16(window.at(offset)) + MessageBase::MSGSIZE_LENGTH;
    if (length < HEADER || window.available(offset, length) < length) {
        return 0;
    }
    const bool isGps = number16(window.at(offset) + MessageBase::MO_MSGID) == MSGID_GPS;
    const bool isUnreadable =
        isGps && payloads.kindOf(offset, payloadOf(offset, length)) == Payload::UNREADABLE;
    return isUnreadable ? 0 : length;
}

// Whether nothing but the beginning of a message is there, which may become a whole one.
bool Evidence::isIncomplete(uint64_t offset) {
    const size_t there = window.available(offset, LONGEST_MESSAGE);
    if (there < HEADER_FRONT) {
        return there > 0;
    }
    const uint8_t* const front = window.at(offset);
    if (there < HEADER) {
        return messageLength(front) >= HEADER;
    }
    if (!mayBeHeader(front) || messageLength(front) <= there) {
        return false;
    }
    return messageId(front) != MSGID_GPS || there <= HEADER ||
           !holdsNul({front + HEADER, there - HEADER});
}

std::span<const uint8_t> Evidence::payloadOf(uint64_t offset, size_t length) const {
    return {window.at(offset) + HEADER, length - HEADER};
}

// A message that is held may have the header of the one that holds it.
bool Evidence::standsAgain(uint64_t offset, size_t length) {
    const uint8_t* const header = window.at(offset);
    // In the text of a GPS message stands no header.
    const bool isGps = number16(header + MessageBase::MO_MSGID) == MSGID_GPS;
    return !isGps && hasHeaderAgain(header, length) &&
           !(mayHold(offset) && ofHeld(offset, length) > 0);
}

int Evidence::ofMessage(uint64_t offset, size_t length) {
    const int bits = ofContent(offset, length);
    return bits > 0 && standsAgain(offset, length) ? OF_REPETITION : bits;
}

// Without regard to what else the message holds.
int Evidence::ofContent(uint64_t offset, size_t length) {
    return isPeriodic(window.at(offset)) ? OF_REPETITION : ofType(offset, length);
}

int Evidence::ofType(uint64_t offset, size_t length) {
    const int bits = idOf(window.at(offset)) + ofLength(length);
    if (messageId(window.at(offset)) != MSGID_GPS) {
        return bits;
    }
    switch (payloads.kindOf(offset, payloadOf(offset, length))) {
        case Payload::SENTENCES:
            return bits + OF_SENTENCES;
        case Payload::LINES:
            return bits + OF_LINES;
        case Payload::CUT:
            return bits + OF_CUT_LINE;
        default:
            return bits + OF_LOOSE_LINES;
    }
}

bool Evidence::hasHeader(uint64_t offset) {
    return window.available(offset, HEADER) == HEADER &&
           number16(window.at(offset)) + MessageBase::MSGSIZE_LENGTH >= HEADER;
}

// Whether a message is the one behind it once more, as far as the eye reaches.
bool Evidence::isSentAgain(uint64_t offset, size_t length) {
    const uint64_t next = offset + length;
    if (stampOf(window.at(offset)) != stampOf(window.at(next))) {
        return false;
    }
    const size_t count = window.available(next, std::min(length, EYE));
    return std::memcmp(window.at(offset), window.at(next), count) == 0;
}

// Of a message by what stands where the next one must.
int Evidence::ofNext(uint64_t offset, size_t length) {
    const uint64_t next = offset + length;
    if (hasHeader(next)) {
        return std::max(ofNeighbour(window.at(offset), window.at(next)), OF_NOTHING_BEHIND);
    }
    return endsAt(next) ? 0 : OF_NOTHING_BEHIND;
}

int Evidence::inChain(uint64_t offset, size_t length) {
    const uint64_t next = offset + length;
    const bool leadsOn = hasHeader(next);
    const int own = ofMessage(offset, length);  // may move the bytes
    const uint8_t* const header = window.at(offset);
    // What speaks against an id, or for messages that are the same, the last of them says for all.
    const bool isSame = leadsOn && haveSameId(header, window.at(next));
    const int once = own - (isSame ? std::min(idOf(header), 0) : 0);
    if (own < OF_SENTENCES && leadsOn && isSentAgain(offset, length)) {
        return once >= 0 && standsAgain(offset, length) ? OF_REPETITION : std::min(once, 0);
    }
    const int bits = once + ofNext(offset, length);
    // What has evidence of its own was asked for that; what has no type and a far time is in doubt.
    if (own <= 0 && bits > OF_UNKNOWN_ID + OF_FAR_TIME && standsAgain(offset, length)) {
        return OF_REPETITION;
    }
    return bits;
}

bool Evidence::mayHold(uint64_t offset) {
    const auto type = messageId(window.at(offset));
    switch (type) {
        case MSGID_CONTAINER:
        case MSGID_WRAPPER:
        case MSGID_CASCADE:
        case MSGID_BYTESTREAM:
        case MSGID_ETHERNET_RX:
        case MSGID_ETHERNET_TX:
            return true;
        default:
            return idOf(window.at(offset)) == OF_FREE_ID;
    }
}

bool Evidence::mayCover(uint64_t offset, size_t length) {
    return length >= 3 * HEADER && messageId(window.at(offset)) != MSGID_GPS;
}

// Of the messages that are the payload of this one, as far as they are looked at. One that is none
// tells that it is no chain.
int Evidence::ofHeld(uint64_t offset, size_t length) {
    const uint64_t end = offset + length;
    uint64_t inner = offset + HEADER;
    int bits = 0;
    for (unsigned i = 0; i < MOST_HELD && inner < end; ++i) {
        const size_t innerLength = lengthAt(inner);
        if (innerLength == 0 || innerLength > end - inner) {
            return 0;
        }
        const bool isLast = innerLength == end - inner;
        const int more =
            ofContent(inner, innerLength) + (isLast ? 0 : std::min(ofNext(inner, innerLength), 0));
        if (more <= OF_NOTHING_BEHIND) {
            return 0;
        }
        bits = std::min(bits + more, OF_SENTENCES);
        inner += innerLength;
    }
    return std::max(bits, 0);
}

// Asked at every byte, of what is there alone: that settles nearly all places of nearly all bytes.
int Evidence::atMost(uint64_t offset) {
    constexpr size_t ALL_THAT_COUNTS = LONGEST_MESSAGE + HEADER;
    const bool isThere = window.available(offset, ALL_THAT_COUNTS) == ALL_THAT_COUNTS;
    const uint8_t* const header = window.at(offset);
    if (!isThere || number16(header + MessageBase::MO_MSGID) == MSGID_GPS) {
        return inChainAtMost(offset);
    }
    const int id = idOf(header);
    const size_t length = number16(header) + MessageBase::MSGSIZE_LENGTH;
    const uint8_t* const next = header + length;
    static_assert(OF_FREE_ID + MOST_OF_LENGTH + OF_FAR_TIME <= 0);
    static_assert(OF_NAMED_ID + MOST_OF_LENGTH + OF_NOTHING_BEHIND <= 0);
    static_assert(OF_REPETITION - OF_UNKNOWN_ID + OF_NEAR_TIME <= 0);
    const bool isFar = id <= OF_FREE_ID && ofTimes(stampOf(header), stampOf(next)) == OF_FAR_TIME;
    if (isFar || length < HEADER || number16(next) + MessageBase::MSGSIZE_LENGTH < HEADER) {
        return OF_NOTHING_BEHIND;
    }
    const int bits = (haveSameId(header, next) ? std::max(id, 0) : id) + ofLength(length) +
                     std::max(ofNeighbour(header, next), OF_NOTHING_BEHIND);
    return bits > 0 && isPeriodic(header) ? OF_NOTHING_BEHIND : bits;
}

// The same where bytes may be missing, which may still come.
int Evidence::inChainAtMost(uint64_t offset) {
    const size_t length = lengthAt(offset);
    if (length == 0) {
        return 0;
    }
    const int next = ofNext(offset, length);  // may move the bytes
    const int id = idOf(window.at(offset));
    return std::max(ofType(offset, length) - std::min(id, 0) + next, 0);
}

int Evidence::behind(const uint8_t* before, uint64_t offset) {
    return ofNeighbour(window.at(offset), before);
}

}  // namespace vextrace
