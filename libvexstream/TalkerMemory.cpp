#include "libvexstream/TalkerMemory.h"

#include "libvextrace/GPSTraceMessage.h"

namespace vextrace {

Verdict TalkerMemory::judge(std::string_view sentence) {
    const Verdict verdict = storedVerdict(sentence);
    Talker* const talker = talkerOf(sentence);
    if (talker == nullptr) {
        return verdict;
    }
    if (verdict.checksum != Checksum::RIGHT) {
        talker->last = NONE;
        return verdict;
    }
    return talker->goesOn(verdict.talker) ? verdict : Verdict{Checksum::WRONG};
}

// Null where the code needs no memory.
TalkerMemory::Talker* TalkerMemory::talkerOf(std::string_view sentence) {
    if (sentence.starts_with(GPSTraceMessage::GPRMC)) {
        return &rmc;
    }
    return sentence.starts_with(GPSTraceMessage::GPGGA) ? &gga : nullptr;
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
