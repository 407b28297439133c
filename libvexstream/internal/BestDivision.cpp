#include "libvexstream/internal/BestDivision.h"

#include <limits>

namespace vextrace {

namespace {

constexpr uint64_t PART = uint64_t{192} * 1024;
constexpr uint64_t BEHIND_PART = LONGEST_MESSAGE;

// How far a chain is followed.
constexpr uint64_t REACH = 6 * LONGEST_MESSAGE;
constexpr uint64_t IN_FRONT = uint64_t{16} * 1024;  // of the place asked for, in one go
static_assert(IN_FRONT + PART + BEHIND_PART + LONGEST_MESSAGE + REACH + LONGEST_MESSAGE +
                      LONGEST_MESSAGE <=
                  TraceWindow::ROOM,
              "a chain behind what the last place leads to, and the message behind it");

// A chain that leads from any place exactly to the end of the trace does so once in 2^16 times, and
// it is asked for at one place in a trace: the rest of what leaves no doubt.
constexpr int OF_THE_END = BestDivision::ENOUGH_TO_BEGIN - 16;

// A trace has one damage in 2^26 bytes at most, and behind it a message begins within some 2^14.
constexpr int COST_OF_DAMAGE = 26;
constexpr int COST_OF_BEGINNING = 14;

constexpr uint32_t NOWHERE = std::numeric_limits<uint32_t>::max();
constexpr int IMPOSSIBLE = std::numeric_limits<int>::min() / 2;

}  // namespace

BestDivision::Chain BestDivision::chainFrom(uint64_t offset, unsigned mostMessages) {
    int bits = 0;
    bool breaksOff = false;
    const uint64_t limit = offset + REACH;
    for (unsigned i = 0; i < mostMessages && offset < limit && bits < ENOUGH_TO_BEGIN; ++i) {
        const size_t length = evidence.lengthAt(offset);
        const int more = length == 0 ? IMPOSSIBLE : ofLink(offset, length);
        breaksOff = bits + more < 0;
        if (breaksOff) {
            break;
        }
        bits += more;
        offset += length;
    }
    return {window.available(offset, 1) == 0 ? bits + OF_THE_END : bits, offset, breaksOff};
}

// A message is in the chains of those in front of it, too. What is missing behind it may come.
int BestDivision::ofLink(uint64_t offset, size_t length) {
    constexpr uint64_t FAR_ENOUGH = 2 * LONGEST_MESSAGE;
    Link& link = links[offset % links.size()];
    if (link.offset == offset) {
        return link.bits;
    }
    const int bits = evidence.inChain(offset, length);
    if (window.end() >= offset + FAR_ENOUGH) {
        link = {offset, bits};
    }
    return bits;
}

void BestDivision::find(uint64_t offset) {
    const uint64_t end = (offset / PART + 1) * PART;
    const size_t there = window.available(offset, static_cast<size_t>(end - offset + BEHIND_PART));
    if (offset >= first && end == partEnd && offset + there == first + count) {
        return;
    }
    first = offset;
    partEnd = end;
    count = there;
    places.resize(std::max(places.size(), count));
    for (size_t i = count; i-- > 0;) {
        places[i] = Place{beginBehind(i)};
        if (mayBegin(i)) {
            settle(i);
        }
    }
}

// Whether a message at a place, and what its chain leads to, may leave no doubt.
bool BestDivision::mayBegin(size_t i) {
    const int most = evidence.atMost(first + i);
    if (most <= 0) {
        return false;
    }
    const size_t length = evidence.lengthAt(first + i);
    settle(i + length);
    return most + behindOf(first + i + length).chain >= ENOUGH_TO_BEGIN;
}

// Finds S of a place and of those that its chain leads to.
void BestDivision::settle(size_t i) {
    while (i < count && places[i].next == 0) {
        open.push_back(static_cast<uint32_t>(i));
        const size_t length = evidence.lengthAt(first + i);
        i = length == 0 ? count : i + length;
    }
    for (; !open.empty(); open.pop_back()) {
        weigh(open.back());
    }
}

void BestDivision::weigh(size_t i) {
    const uint64_t offset = first + i;
    const size_t length = evidence.lengthAt(offset);
    Place place{beginBehind(i)};
    int damage = inDamageBehind(i);
    int bits = evidence.endsAt(offset) ? 0 : IMPOSSIBLE;
    if (length != 0) {
        const int own = evidence.inChain(offset, length);
        const Behind behind = behindOf(offset + length);
        const int chain = std::clamp(own + behind.chain, 0, ENOUGH_TO_BEGIN);
        place.chain = static_cast<uint16_t>(chain);
        bits = withHeld(own, offset, length) + behind.inSequence;
        if (own > 0 && chain == ENOUGH_TO_BEGIN && bits - COST_OF_BEGINNING >= damage) {
            place.begin = static_cast<uint32_t>(i);
            damage = bits - COST_OF_BEGINNING;
        }
    }
    const bool isMessage = bits >= damage - COST_OF_DAMAGE;
    place.inSequence = isMessage ? bits : damage - COST_OF_DAMAGE;
    const size_t end = length == 0 ? count : i + length;
    goOn(place, isMessage ? end : place.begin);
    places[i] = place;
}

// Some steps leave out as much as the two behind them together: any place is reached in few.
void BestDivision::goOn(Place& place, size_t next) const {
    const size_t then = next < count ? places[next].farther : count;
    const bool areTwo = then < count && places[next].rank == places[then].rank;
    place.next = static_cast<uint32_t>(next);
    place.rank = static_cast<uint16_t>(areTwo ? places[next].rank + 1 : 0);
    place.farther = areTwo ? places[then].farther : place.next;
}

// Whether what is in sequence at a place has a message that ends there.
bool BestDivision::leadsTo(size_t i, size_t end) const {
    while (i < end) {
        i = places[i].farther <= end ? places[i].farther : places[i].next;
    }
    return i == end;
}

uint32_t BestDivision::beginBehind(size_t i) const {
    return i + 1 < count ? places[i + 1].begin : NOWHERE;
}

int BestDivision::inDamageBehind(size_t i) const {
    const uint32_t begin = beginBehind(i);
    return begin == NOWHERE ? 0 : places[begin].inSequence - COST_OF_BEGINNING;
}

std::optional<uint64_t> BestDivision::beginFrom(uint64_t offset) const {
    const uint32_t begin = places[placeOf(offset)].begin;
    const bool isInPart = begin != NOWHERE && first + begin < partEnd;
    return isInPart ? std::optional<uint64_t>(first + begin) : std::nullopt;
}

// Of a place that is settled. Behind the last one the chain from there on is sure.
BestDivision::Behind BestDivision::behindOf(uint64_t offset) {
    const size_t i = placeOf(offset);
    if (i < count) {
        return {places[i].inSequence, places[i].chain};
    }
    const int bits = chainFrom(offset).bits;
    return {evidence.endsAt(offset) ? 0 : bits - COST_OF_DAMAGE, std::min(bits, ENOUGH_TO_BEGIN)};
}

int BestDivision::inDamage(uint64_t offset) const {
    return inDamageBehind(placeOf(offset)) - COST_OF_DAMAGE;
}

int BestDivision::inSequence(uint64_t offset) {
    settle(placeOf(offset));
    return behindOf(offset).inSequence;
}

int BestDivision::ofMessage(uint64_t offset, size_t length) {
    settle(placeOf(offset + length));
    return withHeld(evidence.inChain(offset, length), offset, length);
}

int BestDivision::withHeld(int bits, uint64_t offset, size_t length) {
    if (bits <= Evidence::OF_NOTHING_BEHIND || !evidence.mayCover(offset, length)) {
        return bits;
    }
    const size_t payload = placeOf(offset) + MessageBase::MO_BASE_DERIVED;
    const size_t end = placeOf(offset) + length;
    if (end > count || places[payload].begin >= end || !leadsTo(places[payload].begin, end)) {
        return bits;
    }
    const size_t begin = places[payload].begin;
    const int held = std::max(places[begin].inSequence - behindOf(offset + length).inSequence, 0);
    return begin == payload || evidence.mayHold(offset) ? bits + held : bits - held;
}

bool BestDivision::isTorn(uint64_t offset, size_t length) {
    const size_t end = placeOf(offset) + length;
    const uint32_t begin = beginBehind(placeOf(offset));
    if (end >= count || begin >= end || messageId(window.at(offset)) == MSGID_GPS) {
        return false;
    }
    settle(end);
    return places[end].next == places[end].begin && !leadsTo(begin, end);
}

}  // namespace vextrace
