#include "libvexstream/internal/Division.h"

#include <algorithm>
#include <limits>

namespace vextrace {

namespace {

// How many messages a chain is followed, and how far it may take to lead on again. Behind damage
// it is followed over more where they are short, since each says so little for itself.
constexpr unsigned MOST_MESSAGES = 8;
constexpr unsigned MOST_TO_BEGIN = 16;
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

// Of a message that is found behind damage: only with a near time is it asked what it holds.
constexpr int ENOUGH_TO_HOLD = 20;

// A trace has one damage in 2^26 bytes at most, and behind it a message begins within some 2^14.
constexpr int COST_OF_DAMAGE = 26;
constexpr int COST_OF_BEGINNING = 14;

constexpr uint64_t ANYWHERE = std::numeric_limits<uint64_t>::max();
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
    if (evidence.lengthAt(offset) == 0 || swallows(offset, length)) {
        return false;
    }
    const Chain chain = follow(offset);
    const uint64_t end = offset + length;
    if (chain.leadsOn && !chain.regained) {
        return true;
    }
    const int history = ofHistory(offset);
    if (chain.regained) {
        const uint64_t again = *chain.regained;
        const int bits = ofChain(offset, again);
        // Passing over all of it costs no more than that.
        if (bits < -COST_OF_BEGINNING - COST_OF_DAMAGE) {
            return false;
        }
        const int other = mostIn(offset + 1, end, ANYWHERE).bits;
        if (other == 0) {
            return true;
        }
        return bits >= within(offset + 1, again) - COST_OF_DAMAGE &&
               bits + ofStart(again, ANYWHERE) >= other - COST_OF_BEGINNING - COST_OF_DAMAGE;
    }
    const int alone = evidence.ofMessage(offset, length) + Evidence::OF_NOTHING_BEHIND;
    if (std::min(history, 0) + alone < LEAST ||
        history + std::max(evidence.inChain(offset, length), alone) < LEAST_IN_PLACE) {
        return false;
    }
    const int other = mostIn(offset + 1, end, ANYWHERE).bits;
    return history + ofStart(offset, ANYWHERE) >= other - COST_OF_BEGINNING - COST_OF_DAMAGE ||
           holdsChain(offset, length);
}

// Whether messages lead exactly to the end of this one, whose type holds none, and are not its
// payload: its size field is wrong.
bool Division::swallows(uint64_t offset, size_t length) {
    if (length < 3 * MessageBase::MO_BASE_DERIVED || evidence.mayHold(offset) ||
        evidence.ofMessage(offset, length) >= ENOUGH_TO_BEGIN) {
        return false;
    }
    return ofChainTo(offset + MessageBase::MO_BASE_DERIVED + 1, offset + length) >=
           ENOUGH_TO_LEAD_ON;
}

// The most evidence of a chain from anywhere behind an offset exactly to an end, whatever is there.
int Division::ofChainTo(uint64_t begin, uint64_t end) {
    const auto count = static_cast<size_t>(end - begin);
    inSequence.assign(count + 1, IMPOSSIBLE);
    inSequence[count] = 0;
    int most = 0;
    for (size_t i = count; i-- > 0;) {
        const size_t length = evidence.lengthAt(begin + i);
        if (length == 0 || length > count - i || inSequence[i + length] == IMPOSSIBLE) {
            continue;
        }
        const int bits = length == count - i ? evidence.ofMessage(begin + i, length)
                                             : evidence.inChain(begin + i, length);
        inSequence[i] = bits < 0 ? IMPOSSIBLE : bits + inSequence[i + length];
        most = std::max(most, inSequence[i]);
    }
    return most;
}

// Of the messages from this one on that begin before the end, as long as each has evidence.
int Division::ofStart(uint64_t offset, uint64_t end) {
    int bits = 0;
    for (unsigned i = 0; i < MOST_MESSAGES && offset < end; ++i) {
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

// The beginning within [from, to) with the most evidence before the end. What it leads to is worth
// less than it is.
Division::Beginning Division::mostIn(uint64_t from, uint64_t to, uint64_t end) {
    Beginning most = {to, 0};
    uint64_t next = to;  // in its chain
    for (; from < to; ++from) {
        if (from == next) {
            next += evidence.lengthAt(from);
            continue;
        }
        const int bits = isBeginning(from) == Soundness::SOUND ? ofStart(from, end) : 0;
        if (bits > most.bits) {
            most = {from, bits};
            next = from + evidence.lengthAt(from);
        }
    }
    return most;
}

// Within a message may begin others with more evidence, which it does not hold.
uint64_t Division::bestFrom(uint64_t offset) {
    const uint64_t limit = offset + evidence.lengthAt(offset);
    for (;;) {
        const size_t length = evidence.lengthAt(offset);
        const int bits = evidence.inChain(offset, length);
        if (evidence.ofMessage(offset, length) >= ENOUGH_TO_BEGIN ||
            evidence.ofHeld(offset, length) > 0) {
            return offset;
        }
        const uint64_t end = offset + length;
        const Beginning other = mostIn(offset + 1, std::min(end, limit), end);
        if (other.bits <= bits || (bits >= ENOUGH_TO_HOLD && holdsChain(offset, length))) {
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
    Chain chain = {true, std::nullopt};
    int bits = std::min(ofHistory(offset), 0);
    const uint64_t begin = offset;
    for (unsigned i = 0; i < MOST_MESSAGES && offset - begin <= REACH; ++i) {
        if (endsAt(offset) || (!chain.leadsOn && isBeginning(offset) == Soundness::SOUND)) {
            return {chain.leadsOn, chain.leadsOn ? chain.regained : offset};
        }
        const size_t length = evidence.lengthAt(offset);
        if (length == 0) {
            return {false, std::nullopt};
        }
        const int more = evidence.inChain(offset, length);
        bits += more;
        offset += length;
        if (chain.leadsOn && bits >= ENOUGH_TO_LEAD_ON) {
            return chain;
        }
        chain.leadsOn = chain.leadsOn && bits >= LEAST;
        chain.regained = more < 0 ? offset : chain.regained;
    }
    return chain.leadsOn ? chain : Chain{false, std::nullopt};
}

Soundness Division::isBeginning(uint64_t offset) {
    if (evidence.isHopeless(offset)) {
        return Soundness::UNSOUND;
    }
    int bits = 0;
    const uint64_t limit = offset + MOST_MESSAGES * LONGEST_MESSAGE;
    for (unsigned i = 0; i < MOST_TO_BEGIN && offset < limit; ++i) {
        const size_t length = evidence.lengthAt(offset);
        if (length == 0) {
            return growing && evidence.isIncomplete(offset) ? Soundness::UNDECIDED
                                                            : Soundness::UNSOUND;
        }
        const int more = evidence.inChain(offset, length);
        bits += more;
        const bool isNothing = i == 0 && more == 0 && !evidence.speaksFor(offset, length);
        if (more < 0 || isNothing) {
            return Soundness::UNSOUND;
        }
        offset += length;
        if (bits >= ENOUGH_TO_BEGIN) {
            return Soundness::SOUND;
        }
        if (window.available(offset, 1) == 0) {
            return bits + OF_THE_END >= ENOUGH_TO_BEGIN ? Soundness::SOUND
                   : growing                            ? Soundness::UNDECIDED
                                                        : Soundness::UNSOUND;
        }
    }
    return Soundness::UNSOUND;
}

Division::Place Division::findBeginning(uint64_t from, uint64_t to) {
    for (uint64_t offset = from; offset < to; ++offset) {
        if (window.available(offset, 1) == 0) {
            return {Soundness::UNSOUND, offset};
        }
        const Soundness soundness = isBeginning(offset);
        if (soundness == Soundness::SOUND) {
            return {soundness, bestFrom(offset)};
        }
        if (soundness == Soundness::UNDECIDED) {
            return {soundness, offset};
        }
    }
    return {Soundness::UNSOUND, to};
}

bool Division::anyBegins(uint64_t from, uint64_t to) {
    while (from < to && isBeginning(from) != Soundness::SOUND) {
        ++from;
    }
    return from < to;
}

// Whether messages within this one lead exactly to its end: then it holds them, if any.
bool Division::holdsChain(uint64_t offset, size_t length) {
    return evidence.mayHold(offset) &&
           within(offset + MessageBase::MO_BASE_DERIVED, offset + length) > 0;
}

// Of what a message holds: messages that are its payload, or lie there where its type has others.
int Division::ofHeld(uint64_t offset, size_t length) {
    const uint64_t payload = offset + MessageBase::MO_BASE_DERIVED;
    const bool isHolder = evidence.mayHold(offset) && evidence.inChain(offset, length) > LEAST;
    return isHolder ? std::max(within(payload, offset + length), 0)
                    : evidence.ofHeld(offset, length);
}

// Of the messages from this one to the end of the chain, and of what they hold.
int Division::ofChain(uint64_t offset, uint64_t end) {
    int bits = before ? std::min(ofHistory(offset), 0) : Evidence::OF_NOTHING_BEHIND;
    while (offset < end) {
        const size_t length = evidence.lengthAt(offset);
        bits += evidence.inChain(offset, length) + ofHeld(offset, length);
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
            if (bits - COST_OF_BEGINNING > inDamage && isBeginning(begin + i) == Soundness::SOUND) {
                inDamage = bits - COST_OF_BEGINNING;
            }
        }
        inSequence[i] =
            std::max(bits, inDamage == IMPOSSIBLE ? IMPOSSIBLE : inDamage - COST_OF_DAMAGE);
    }
    return inDamage;
}

}  // namespace vextrace
