#include "libvexstream/internal/Resync.h"

#include <algorithm>
#include <cstddef>
#include <span>

#include "libvexstream/internal/soundness.h"

namespace vextrace {

namespace {

// How far messages of unknown types are passed, and how far a chain is followed.
constexpr uint64_t UNKNOWN_REACH = 2 * LONGEST_MESSAGE;
constexpr uint64_t CHAIN_REACH = 3 * LONGEST_MESSAGE;
static_assert(LONGEST_MESSAGE + UNKNOWN_REACH + CHAIN_REACH + LONGEST_MESSAGE <= TraceWindow::ROOM,
              "a message, those behind it, the chain, and the last message that it leads to");

// Evidence for a chain, in bits: so seldom it happens by chance. Binary data are full of zeros, and
// an eighth of all ids is free for types of one's own.
constexpr unsigned EVIDENCE_OF_MARKER = 1;
constexpr unsigned EVIDENCE_OF_FREE_ID = 4;
constexpr unsigned EVIDENCE_OF_ID = 8;
constexpr unsigned EVIDENCE_OF_TIME = 24;
constexpr unsigned EVIDENCE_OF_EXACT_END = 28;

// Behind a message in its place; behind one whose time is far from that of the message before;
// where one is looked for; and where even that it is a trace is open.
constexpr unsigned ENOUGH_IN_SEQUENCE = 28;
constexpr unsigned ENOUGH_BEHIND_A_GAP = 96;
constexpr unsigned ENOUGH_IN_TRACE = 32;
constexpr unsigned ENOUGH_ANYWHERE = 64;

// Nine minutes, where stamps are nanoseconds.
constexpr timeStamp_t NEAR = timeStamp_t{1} << 39;

bool areFar(timeStamp_t a, timeStamp_t b) {
    return std::max(a, b) - std::min(a, b) >= NEAR;
}

// Small numbers, above all 0, are near one another everywhere.
bool areNear(timeStamp_t a, timeStamp_t b) {
    return std::min(a, b) > NEAR && !areFar(a, b);
}

bool isFree(msgid_t id) {
    return id >= 0xC000 && id <= 0xDFFF;
}

unsigned evidenceOf(msgid_t id) {
    return id == MSGID_MARKER ? EVIDENCE_OF_MARKER
           : isFree(id)       ? EVIDENCE_OF_FREE_ID
                              : EVIDENCE_OF_ID;
}

// Types that may hold whole messages: by their names, or because nobody knows.
bool mayHoldMessages(msgid_t id) {
    switch (id) {
        case MSGID_CONTAINER:
        case MSGID_WRAPPER:
        case MSGID_CASCADE:
        case MSGID_BYTESTREAM:
        case MSGID_ETHERNET_RX:
        case MSGID_ETHERNET_TX:
            return true;
        default:
            return messageName(id).empty();
    }
}

std::span<const uint8_t> payloadOf(const uint8_t* message, size_t length) {
    return std::span(message, length).subspan(MessageBase::MO_BASE_DERIVED);
}

// What a GPS message says of the chain that leads to it. Nothing where it may be one as others
// write it, nor where the message is of another type.
std::optional<Verdict> verdictOfGps(const uint8_t* message, size_t length) {
    if (messageId(message) != MSGID_GPS) {
        return std::nullopt;
    }
    const auto payload = payloadOf(message, length);
    if (isCanonical(payload)) {
        return Verdict::SOUND;
    }
    return holdsNul(payload) ? std::optional(Verdict::UNSOUND) : std::nullopt;
}

}  // namespace

Resync::Place Resync::find(uint64_t from, uint64_t to) {
    for (uint64_t offset = from; offset < to; ++offset) {
        if (window.available(offset, HEADER_FRONT) < HEADER_FRONT) {
            return growing ? Place{Verdict::UNDECIDED, offset}
                           : Place{Verdict::UNSOUND, window.end()};
        }
        if (!mayBeHeader(window.at(offset))) {
            continue;
        }
        const Verdict verdict = judge(offset);
        if (verdict == Verdict::SOUND && messageId(window.at(offset)) != MSGID_GPS) {
            return {verdict, betterStart(offset).value_or(offset)};
        }
        if (verdict != Verdict::UNSOUND) {
            return {verdict, offset};
        }
    }
    return {Verdict::UNSOUND, to};
}

bool Resync::soundBegins(uint64_t from, uint64_t to) {
    const Place place = find(from, to);
    return place.verdict == Verdict::SOUND && place.offset < to;
}

Verdict Resync::judgeInSequence(uint64_t offset, size_t length) {
    const uint64_t end = offset + length;
    return isExpected(messageId(window.at(offset))) ? judgeKnown(offset, end)
                                                    : judgeUnknown(offset, end);
}

// Where the chain breaks off behind a message, the damage is there, or the message's size field is
// wrong.
Verdict Resync::judgeKnown(uint64_t offset, uint64_t end) {
    if (chainBehind(offset, end) == Verdict::UNSOUND) {
        const bool isWrong =
            isTorn(end) ? gpsBegins(offset + 1, end) : soundBegins(offset + 1, end);
        return isWrong ? Verdict::UNSOUND : Verdict::SOUND;
    }
    if (hasLikelyTime(offset, end)) {
        return swallows(offset, end) ? Verdict::UNSOUND : Verdict::SOUND;
    }
    return holdsBetter(offset, end) ? Verdict::UNSOUND : Verdict::SOUND;
}

// A type that nobody knows is more likely a wrong id, and its size field no better; but several of
// them in a row are not.
Verdict Resync::judgeUnknown(uint64_t offset, uint64_t end) {
    if (beginsUnknownRun(offset)) {
        return Verdict::SOUND;
    }
    const Verdict chain = chainBehind(offset, behindUnknown(end));
    return chain == Verdict::SOUND && holdsBetter(offset, end) ? Verdict::UNSOUND : chain;
}

// The end of the trace is evidence enough.
Verdict Resync::chainBehind(uint64_t offset, uint64_t end) {
    const timeStamp_t stamp = messageStamp(window.at(offset));
    const bool isBehindGap = lastStamp && areFar(stamp, *lastStamp);
    const Verdict chain =
        chainFrom(end, stamp, isBehindGap ? ENOUGH_BEHIND_A_GAP : ENOUGH_IN_SEQUENCE);
    const bool reachesEnd = window.available(chainEnd, 1) == 0;
    return chain == Verdict::UNSOUND && reachesEnd ? Verdict::SOUND : chain;
}

// Bytes that are taken for a header seldom hold a time near those of the messages around.
bool Resync::hasLikelyTime(uint64_t offset, uint64_t end) {
    const timeStamp_t stamp = messageStamp(window.at(offset));
    const bool isLast =
        window.available(end, MessageBase::MO_BASE_DERIVED) < MessageBase::MO_BASE_DERIVED;
    return !lastStamp || !areFar(stamp, *lastStamp) || isLast ||
           !areFar(stamp, messageStamp(window.at(end)));
}

// Whether messages that are beyond doubt, two at least, lead exactly to the end of the one at this
// offset, whose type holds none: its size field is that of another message's end.
bool Resync::swallows(uint64_t offset, uint64_t end) {
    const uint8_t* const message = window.at(offset);
    const auto length = static_cast<size_t>(end - offset);
    if (mayHoldMessages(messageId(message)) || length < 3 * MessageBase::MO_BASE_DERIVED) {
        return false;
    }
    const timeStamp_t stamp = messageStamp(message);
    countMessages(message, length, [stamp](const uint8_t* inner, size_t innerLength) {
        return messageId(inner) == MSGID_GPS ? isCanonical(payloadOf(inner, innerLength))
                                             : areNear(messageStamp(inner), stamp);
    });
    return *std::max_element(counts.begin() + MessageBase::MO_BASE_DERIVED, counts.end()) > 2;
}

bool Resync::holdsBetter(uint64_t offset, uint64_t end) {
    return betterStart(offset) || gpsBegins(offset + 1, end);
}

// Where inside the message at this offset most messages begin that lead to the end of the chain
// behind it, which was followed just before; nothing unless they are more than lead there from that
// message. The more, the less likely it is that they are there by chance.
std::optional<uint64_t> Resync::betterStart(uint64_t offset) {
    const uint8_t* const bytes = window.at(offset);
    const size_t first = messageLength(bytes);
    countMessages(bytes, static_cast<size_t>(chainEnd - offset),
                  [](const uint8_t*, size_t) { return true; });
    const auto begin = counts.begin() + 1;
    const auto most = std::max_element(begin, counts.begin() + static_cast<std::ptrdiff_t>(first));
    return *most > counts[first] + 1 ? std::optional(offset + 1 + static_cast<size_t>(most - begin))
                                     : std::nullopt;
}

// Of each position one more than the messages that lead from it to the end; 0 where none do.
template <class IsMessage>
void Resync::countMessages(const uint8_t* bytes, size_t length, IsMessage isMessage) {
    counts.assign(length + 1, 0);
    counts[length] = 1;
    for (size_t i = length - MessageBase::MO_BASE_DERIVED; i > 0; --i) {
        const size_t size = messageLength(bytes + i);
        if (i + size <= length && counts[i + size] != 0 && mayBeHeader(bytes + i) &&
            isMessage(bytes + i, size)) {
            counts[i] = static_cast<uint16_t>(counts[i + size] + 1);
        }
    }
}

bool Resync::gpsBegins(uint64_t from, uint64_t to) {
    for (uint64_t offset = from; offset < to; ++offset) {
        if (window.available(offset, HEADER_FRONT) < HEADER_FRONT) {
            return false;
        }
        const uint8_t* const front = window.at(offset);
        if (messageId(front) == MSGID_GPS && mayBeHeader(front) &&
            judgeGps(offset, messageLength(front)) == Verdict::SOUND) {
            return true;
        }
    }
    return false;
}

// Whether nothing but the beginning of a message is left.
bool Resync::isTorn(uint64_t offset) {
    const size_t there = window.available(offset, LONGEST_MESSAGE);
    const bool runsOut = there < HEADER_FRONT || (mayBeHeader(window.at(offset)) &&
                                                  messageLength(window.at(offset)) > there);
    return runsOut && !soundBegins(offset + 1, offset + there);
}

// Whether in a trace so many messages of unknown types lead from one to the next, with times near
// that of the last sound message, that chance made none. Of bytes that repeat all times would be
// the same.
bool Resync::beginsUnknownRun(uint64_t offset) {
    if (!lastStamp) {
        return false;
    }
    const timeStamp_t stamp = messageStamp(window.at(offset));
    const uint64_t limit = offset + UNKNOWN_REACH - LONGEST_MESSAGE;
    unsigned evidence = 0;
    bool timeGoesOn = false;
    for (; evidence < ENOUGH_BEHIND_A_GAP && offset < limit; evidence += EVIDENCE_OF_TIME) {
        if (window.available(offset, MessageBase::MO_BASE_DERIVED) < MessageBase::MO_BASE_DERIVED) {
            return false;
        }
        const uint8_t* const message = window.at(offset);
        const size_t length = messageLength(message);
        const timeStamp_t time = messageStamp(message);
        if (isExpected(messageId(message)) || length < MessageBase::MO_BASE_DERIVED ||
            !areNear(time, *lastStamp) || window.available(offset, length) < length) {
            return false;
        }
        timeGoesOn |= time != stamp;
        offset += length;
    }
    return timeGoesOn && evidence >= ENOUGH_BEHIND_A_GAP;
}

uint64_t Resync::behindUnknown(uint64_t offset) {
    const uint64_t limit = offset + UNKNOWN_REACH - LONGEST_MESSAGE;
    while (offset < limit && window.available(offset, HEADER_FRONT) == HEADER_FRONT) {
        const size_t length = messageLength(window.at(offset));
        if (isExpected(messageId(window.at(offset))) || length < MessageBase::MO_BASE_DERIVED ||
            window.available(offset, length) < length) {
            break;
        }
        offset += length;
    }
    return offset;
}

Verdict Resync::judge(uint64_t offset) {
    const size_t length = messageLength(window.at(offset));
    return messageId(window.at(offset)) == MSGID_GPS ? judgeGps(offset, length)
                                                     : judgeOther(offset, length);
}

Verdict Resync::judgeGps(uint64_t offset, size_t length) {
    const size_t there = window.available(offset, length);
    if (there == length) {
        return isCanonical(payloadOf(window.at(offset), length)) ? Verdict::SOUND
                                                                 : Verdict::UNSOUND;
    }
    const bool mayBecomeSound = growing && (there < MessageBase::MO_BASE_DERIVED ||
                                            !holdsNul(payloadOf(window.at(offset), there)));
    return mayBecomeSound ? Verdict::UNDECIDED : Verdict::UNSOUND;
}

// GPS messages are never lost to one of another type that may have been found by chance.
Verdict Resync::judgeOther(uint64_t offset, size_t length) {
    const size_t there = window.available(offset, length);
    if (there < length && !growing) {
        return Verdict::UNSOUND;
    }
    const unsigned enough = lastStamp ? ENOUGH_IN_TRACE : ENOUGH_ANYWHERE;
    const Verdict chain =
        there < length ? Verdict::UNDECIDED : chainFrom(offset, lastStamp, enough);
    return chain == Verdict::UNSOUND || gpsBegins(offset + 1, offset + there) ? Verdict::UNSOUND
                                                                              : chain;
}

// Whether from this start on one message leads to the next until there is enough evidence, to which
// stamps near a given time add.
Verdict Resync::chainFrom(uint64_t start, std::optional<timeStamp_t> time, unsigned enough) {
    unsigned evidence = 0;
    uint64_t& offset = chainEnd;
    offset = start;
    while (evidence < enough && offset - start <= CHAIN_REACH) {
        const size_t there = window.available(offset, HEADER_FRONT);
        if (there == 0) {
            return evidence + EVIDENCE_OF_EXACT_END >= enough ? Verdict::SOUND : Verdict::UNSOUND;
        }
        if (there == HEADER_FRONT && !mayBeHeader(window.at(offset))) {
            return Verdict::UNSOUND;
        }
        const size_t length = there == HEADER_FRONT ? messageLength(window.at(offset)) : there + 1;
        if (window.available(offset, length) < length) {
            return growing ? Verdict::UNDECIDED : Verdict::UNSOUND;
        }
        const uint8_t* const message = window.at(offset);
        if (const std::optional<Verdict> verdict = verdictOfGps(message, length)) {
            return *verdict;
        }
        evidence += evidenceOf(messageId(message));
        evidence += time && areNear(messageStamp(message), *time) ? EVIDENCE_OF_TIME : 0;
        offset += length;
    }
    return evidence >= enough / 2 ? Verdict::SOUND : Verdict::UNSOUND;
}

}  // namespace vextrace
