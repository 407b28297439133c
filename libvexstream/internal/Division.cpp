#include "libvexstream/internal/Division.h"

#include <algorithm>

namespace vextrace {

namespace {

// A chain leads on with as much as a beginning has still behind a far time of another source.
constexpr int ENOUGH_TO_LEAD_ON = 40;

// Of a message that leads on whatever stands before and behind it.
constexpr int ENOUGH_ALONE =
    ENOUGH_TO_LEAD_ON - Evidence::LEAST_OF_NEIGHBOUR - Evidence::OF_NOTHING_BEHIND;

// Of a chain in which a message may begin. To follow it so far costs less than the best division of
// all that is around it.
constexpr unsigned FEW_MESSAGES = 8;

// Where the one before leads to, a message stands in fifteen of sixteen cases, even in front of
// damage.
constexpr int OF_ITS_PLACE = 4;

}  // namespace

void Division::setGrowing(bool isGrowing) {
    growing = isGrowing;
    evidence.setGrowing(isGrowing);
    best.forget();
}

void Division::forget() {
    evidence.forget();
    best.forget();
}

bool Division::mayHold(uint64_t offset) {
    return window.available(offset, HEADER_FRONT) == HEADER_FRONT && evidence.mayHold(offset);
}

void Division::setBefore(uint64_t offset) {
    std::copy_n(window.at(offset), MessageBase::MO_BASE_DERIVED, before.emplace().begin());
}

bool Division::keepsCanonical(uint64_t offset, size_t length) {
    return evidence.ofCanonical(offset, length) >= ENOUGH_ALONE;
}

bool Division::keeps(uint64_t offset, size_t length) {
    if (evidence.lengthAt(offset) == 0) {
        return false;
    }
    if (leadsOn(offset) && !mayBeTooLong(offset, length)) {
        return true;
    }
    best.find(offset);
    const int bits = OF_ITS_PLACE + ofHistory(offset) + best.ofMessage(offset, length);
    return !best.isTorn(offset, length) &&
           bits + best.inSequence(offset + length) >= best.inDamage(offset);
}

// What the message before says counts against alone: it knows nothing of the length.
bool Division::leadsOn(uint64_t offset) {
    const BestDivision::Chain chain = best.chainFrom(offset);
    const int bits = std::min(ofHistory(offset), 0) + chain.bits;
    return bits >= (evidence.endsAt(chain.end) ? 0 : ENOUGH_TO_LEAD_ON);
}

// Whether another message, which its type does not hold, ends where this one does: its size field
// may be wrong.
bool Division::mayBeTooLong(uint64_t offset, size_t length) {
    if (!evidence.mayCover(offset, length) || evidence.mayHold(offset)) {
        return false;
    }
    const uint64_t payload = offset + MessageBase::MO_BASE_DERIVED;
    const uint64_t end = offset + length;
    for (uint64_t i = end - MessageBase::MO_BASE_DERIVED; i > payload; --i) {
        const auto rest = static_cast<size_t>(end - i);
        if (evidence.lengthAt(i) == rest && evidence.inChain(i, rest) > 0) {
            return true;
        }
    }
    return false;
}

int Division::ofHistory(uint64_t offset) {
    return before ? evidence.behind(before->data(), offset) : 0;
}

// Whether a message begins there as far as the next few say: the best division knows the rest, but
// takes nothing for a beginning that is in doubt here.
bool Division::mayBegin(uint64_t offset) {
    if (evidence.atMost(offset) <= 0) {
        return false;
    }
    const BestDivision::Chain chain = best.chainFrom(offset, FEW_MESSAGES);
    return (!chain.breaksOff || chain.bits >= BestDivision::ENOUGH_TO_BEGIN) &&
           evidence.inChain(offset, evidence.lengthAt(offset)) > 0;
}

// Of what begins at the end of a growing trace, of which more may come.
Soundness Division::isBeginning(uint64_t offset) {
    if (evidence.atMost(offset) < 0) {
        return Soundness::UNSOUND;
    }
    const BestDivision::Chain chain = best.chainFrom(offset);
    if (chain.bits < BestDivision::ENOUGH_TO_BEGIN) {
        return evidence.endsAt(chain.end) ? Soundness::UNDECIDED : Soundness::UNSOUND;
    }
    return mayBegin(offset) ? Soundness::SOUND : Soundness::UNSOUND;
}

Division::Place Division::findBeginning(uint64_t from, uint64_t to) {
    uint64_t offset = from;
    for (; offset < to && window.available(offset, 1) != 0; ++offset) {
        if (growing && isBeginning(offset) == Soundness::UNDECIDED) {
            return {Soundness::UNDECIDED, offset};
        }
        if (mayBegin(offset)) {
            best.find(offset);
            if (const auto begin = best.beginFrom(offset)) {
                return {Soundness::SOUND, *begin};
            }
            if (!growing) {
                return {Soundness::UNSOUND, best.end()};
            }
        }
    }
    return {Soundness::UNSOUND, offset};
}

bool Division::anyBegins(uint64_t from, uint64_t to) {
    while (from < to && isBeginning(from) != Soundness::SOUND) {
        ++from;
    }
    return from < to;
}

}  // namespace vextrace
