#include "libvexstream/internal/Division.h"

#include <algorithm>
#include <limits>

namespace vextrace {

namespace {

// How many messages a chain is followed, and how far it may take to lead on again.
constexpr unsigned MOST_MESSAGES = 8;
constexpr uint64_t REACH = 2 * LONGEST_MESSAGE;
static_assert(REACH + (MOST_MESSAGES + 1) * LONGEST_MESSAGE <= TraceWindow::ROOM,
              "what is behind a chain that leads on again, from each of its bytes");

// A message begins in the midst of anything once in 2^64 places by chance, of which a trace of
// 1 GB has 2^30: beyond doubt, even where chance is not quite what the evidence takes it for. A
// chain that leads from any place exactly to the end of the trace does so once in 2^16 times, and
// it is asked for at one place in a trace.
constexpr int ENOUGH_TO_BEGIN = 64;
constexpr int OF_THE_END = 48;

// A chain leads on with as much as a beginning has still behind a far time and a doubt. It does
// not below one message in doubt behind which nothing follows.
constexpr int ENOUGH_TO_LEAD_ON = 40;
constexpr int LEAST = -20;
static_assert(ENOUGH_TO_BEGIN + LEAST >= ENOUGH_TO_LEAD_ON,
              "what is kept in front of damage leads on to the beginning behind it");

// Of the last message in front of damage, with the one before it: where a message stands, one is
// expected.
constexpr int LEAST_IN_PLACE = -4;

// A trace has one damage in 2^26 bytes at most, and behind it a message begins within some 2^14.
constexpr int COST_OF_DAMAGE = 26;
constexpr int COST_OF_BEGINNING = 14;

constexpr int IMPOSSIBLE = std::numeric_limits<int>::min() / 2;

}  // namespace

void Division::setGrowing(bool isGrowing) {
    growing = isGrowing;
    evidence.setGrowing(isGrowing);
}

void Division::setBefore(uint64_t offset) {
    std::copy_n(window.at(offset), MessageBase::MO_BASE_DERIVED, before.emplace().begin());
}

bool Division::keeps(uint64_t offset, size_t length) {
    const Chain chain = follow(offset);
    if (chain.leadsOn) {
        return true;
    }
    const uint64_t end = offset + length;
    if (chain.regained) {
        return !anyBegins(offset + 1, end) ||
               ofChain(offset, *chain.regained) >=
                   within(offset + 1, *chain.regained) - COST_OF_DAMAGE;
    }
    const int history = ofHistory(offset);
    if (history + evidence.ofMessage(offset, length) + Evidence::OF_NOTHING_BEHIND <
        LEAST_IN_PLACE) {
        return false;
    }
    const int other = mostIn(offset + 1, end).bits;
    return history + ofStart(offset) >= other - COST_OF_BEGINNING - COST_OF_DAMAGE ||
           holdsChain(offset, length);
}

// Of the messages from this one on, as long as each has evidence.
int Division::ofStart(uint64_t offset) {
    int bits = 0;
    for (unsigned i = 0; i < MOST_MESSAGES; ++i) {
        const size_t length = evidence.lengthAt(offset);
        const int more = length == 0 ? -1 : evidence.inChain(offset, length);
        if (more < 0) {
            break;
        }
        bits += more;
        offset += length;
    }
    return bits;
}

// The beginning with the most evidence within [from, to).
Division::Beginning Division::mostIn(uint64_t from, uint64_t to) {
    Beginning most = {to, 0};
    for (; from < to; ++from) {
        const int bits = isBeginning(from) == Verdict::SOUND ? ofStart(from) : 0;
        if (bits > most.bits) {
            most = {from, bits};
        }
    }
    return most;
}

// Within a message may begin another with more evidence, which it does not hold.
uint64_t Division::bestFrom(uint64_t offset) {
    const uint64_t end = offset + evidence.lengthAt(offset);
    for (;;) {
        const size_t length = evidence.lengthAt(offset);
        if (evidence.ofMessage(offset, length) >= ENOUGH_TO_BEGIN) {
            return offset;
        }
        const Beginning other = mostIn(offset + 1, std::min(offset + length, end));
        if (other.bits <= ofStart(offset) || holdsChain(offset, length)) {
            return offset;
        }
        offset = other.offset;
    }
}

int Division::ofHistory(uint64_t offset) {
    return before ? evidence.behind(before->data(), offset) : 0;
}

bool Division::endsAt(uint64_t offset) {
    return window.available(offset, 1) == 0 || (growing && evidence.isIncomplete(offset));
}

// What the message before says counts against alone: it knows nothing of the length.
Division::Chain Division::follow(uint64_t offset) {
    int bits = std::min(ofHistory(offset), 0);
    const uint64_t begin = offset;
    bool leadsOn = true;
    for (unsigned i = 0; i < MOST_MESSAGES; ++i) {
        if (!leadsOn && offset - begin > REACH) {
            return {false, std::nullopt};
        }
        if (endsAt(offset) || (!leadsOn && isBeginning(offset) == Verdict::SOUND)) {
            return {leadsOn, offset};
        }
        const size_t length = evidence.lengthAt(offset);
        if (length == 0) {
            return {false, std::nullopt};
        }
        bits += evidence.inChain(offset, length);
        if (leadsOn && bits >= ENOUGH_TO_LEAD_ON) {
            return {true, std::nullopt};
        }
        leadsOn = leadsOn && bits >= LEAST;
        offset += length;
    }
    return {leadsOn, std::nullopt};
}

Verdict Division::isBeginning(uint64_t offset) {
    if (evidence.isHopeless(offset)) {
        return Verdict::UNSOUND;
    }
    int bits = 0;
    for (unsigned i = 0; i < MOST_MESSAGES; ++i) {
        const size_t length = evidence.lengthAt(offset);
        if (length == 0) {
            return growing && evidence.isIncomplete(offset) ? Verdict::UNDECIDED : Verdict::UNSOUND;
        }
        const int more = evidence.inChain(offset, length);
        bits += more;
        offset += length;
        if (more < 0) {
            return Verdict::UNSOUND;
        }
        if (bits >= ENOUGH_TO_BEGIN) {
            return Verdict::SOUND;
        }
        if (window.available(offset, 1) == 0) {
            return bits + OF_THE_END >= ENOUGH_TO_BEGIN ? Verdict::SOUND
                   : growing                            ? Verdict::UNDECIDED
                                                        : Verdict::UNSOUND;
        }
    }
    return Verdict::UNSOUND;
}

Division::Place Division::findBeginning(uint64_t from, uint64_t to) {
    for (uint64_t offset = from; offset < to; ++offset) {
        if (window.available(offset, 1) == 0) {
            return {Verdict::UNSOUND, offset};
        }
        const Verdict verdict = isBeginning(offset);
        if (verdict == Verdict::SOUND) {
            return {verdict, bestFrom(offset)};
        }
        if (verdict == Verdict::UNDECIDED) {
            return {verdict, offset};
        }
    }
    return {Verdict::UNSOUND, to};
}

bool Division::anyBegins(uint64_t from, uint64_t to) {
    while (from < to && isBeginning(from) != Verdict::SOUND) {
        ++from;
    }
    return from < to;
}

// Whether messages within this one lead exactly to its end: then it holds them.
bool Division::holdsChain(uint64_t offset, size_t length) {
    return within(offset + MessageBase::MO_BASE_DERIVED, offset + length) > 0;
}

// Of the messages from this one to the end of the chain, and of what they hold.
int Division::ofChain(uint64_t offset, uint64_t end) {
    int bits = before ? std::min(ofHistory(offset), 0) : Evidence::OF_NOTHING_BEHIND;
    while (offset < end) {
        const size_t length = evidence.lengthAt(offset);
        bits += evidence.inChain(offset, length) +
                std::max(within(offset + MessageBase::MO_BASE_DERIVED, offset + length), 0);
        offset += length;
    }
    return bits;
}

// The most evidence of a division that begins in damage and leads to the end in sequence.
int Division::within(uint64_t begin, uint64_t end) {
    const auto count = static_cast<size_t>(end - begin);
    inSequence.assign(count + 1, IMPOSSIBLE);
    inSequence[count] = 0;
    int inDamage = IMPOSSIBLE;
    for (size_t i = count; i-- > 0;) {
        const size_t length = evidence.lengthAt(begin + i);
        int bits = IMPOSSIBLE;
        if (length != 0 && length <= count - i && inSequence[i + length] > IMPOSSIBLE) {
            bits = evidence.inChain(begin + i, length) + inSequence[i + length];
            if (bits - COST_OF_BEGINNING > inDamage && isBeginning(begin + i) == Verdict::SOUND) {
                inDamage = bits - COST_OF_BEGINNING;
            }
        }
        inSequence[i] =
            std::max(bits, inDamage == IMPOSSIBLE ? IMPOSSIBLE : inDamage - COST_OF_DAMAGE);
    }
    return inDamage;
}

}  // namespace vextrace
