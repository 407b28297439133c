#include "libvexstream/TalkerMemory.h"

#include <algorithm>

#include "libvextrace/GPSTraceMessage.h"

namespace vextrace {

Verdict TalkerMemory::judge(std::string_view sentence, timeStamp_t stamp) {
    const Verdict verdict = storedVerdict(sentence);
    Talkers* const talkers = talkersOf(sentence);
    if (talkers == nullptr) {
        return verdict;
    }
    Talker& talker = talkers->next(stamp);
    if (verdict.checksum != Checksum::RIGHT) {
        talker.last = NONE;
        return verdict;
    }
    return talker.goesOn(verdict.talker) ? verdict : Verdict{Checksum::WRONG};
}

// Null where the code needs no memory.
TalkerMemory::Talkers* TalkerMemory::talkersOf(std::string_view sentence) {
    if (sentence.starts_with(GPSTraceMessage::GPRMC)) {
        return &rmc;
    }
    return sentence.starts_with(GPSTraceMessage::GPGGA) ? &gga : nullptr;
}

// A place that is new goes on as the one before it.
TalkerMemory::Talker& TalkerMemory::Talkers::next(timeStamp_t ofSentence) {
    const bool goesOn = !places.empty() && ofSentence == stamp;
    place = goesOn ? std::min(place + 1, MOST_PLACES - 1) : 0;
    stamp = ofSentence;
    if (place == places.size()) {
        places.push_back({places.empty() ? NONE : places.back().lasting, NONE});
    }
    return places[place];
}

// Most receivers are GP or GN. A first sentence that seems to be of another talker may be a wrong
// one, which must not make the next ones wrong.
bool TalkerMemory::Talker::goesOn(char letter) {
    const bool isUsual = letter == 'P' || letter == 'N';
    if (letter == last || (lasting == NONE && isUsual)) {
        lasting = letter;
    }
    last = letter;
    return lasting == NONE || lasting == letter;
}

}  // namespace vextrace
