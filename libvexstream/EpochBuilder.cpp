#include "libvexstream/EpochBuilder.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "libvexstream/utc.h"
#include "libvextrace/InvalidMessageException.h"
#include "libvexutil/datablock.h"

namespace vextrace {

namespace {

constexpr uint64_t HALF_A_DAY = uint64_t{12} * 3600 * 1'000'000'000;
constexpr uint32_t NO_ENTRY = UINT32_MAX;
// No receiver has so many; they are forgotten.
constexpr size_t MOST_CODES = 4096;

// The code of a sentence that ends in a line feed, as a number.
uint64_t codeNumber(std::string_view sentence) {
    std::array<char, sizeof(uint64_t)> code = {};
    sentence.copy(code.data(), GPSTraceMessage::NMEA_CODE_SIZE);
    uint64_t number = 0;
    std::memcpy(&number, code.data(), sizeof(number));
    return number;
}

}  // namespace

EpochBuilder::EpochBuilder(StampSource stampSource, std::chrono::sys_days firstDate)
    : source(stampSource), lastDate(firstDate) {}

const EpochBuilder::Part& EpochBuilder::add(std::string_view sentence, Checksum checksum,
                                            timeStamp_t arrival) {
    const size_t size = sentence.size() + (sentence.ends_with('\n') ? 0 : 1);
    if (size > MESSAGE_ROOM) {
        throw InvalidMessageException(IM_INVALID_LEN,
                                      "EpochBuilder: No message has room for the sentence.",
                                      static_cast<uint16_t>(std::min<size_t>(size, UINT16_MAX)));
    }
    const std::optional<TimeOfDay> time = timeOf(sentence);
    const bool beginsEpoch = time && epochTime && !(*time == *epochTime);
    if (beginsEpoch || text.size() + size > PART_ROOM) {
        take();
    } else {
        clearPart();
    }
    if (beginsEpoch) {
        endEpoch();
    }
    if (isEmpty() && !epochGoesOn) {
        epochArrival = arrival;
    }
    sourceSendsRight |= checksum == Checksum::RIGHT;
    if (time) {
        ++timed;
        noteTime(sentence, *time, checksum);
    }
    collect(sentence);
    return part;
}

const EpochBuilder::Part& EpochBuilder::take() {
    clearPart();
    if (isEmpty()) {
        return part;
    }
    part.stamp = stamp();
    part.sentences = entries.size();
    part.timedSentences = std::exchange(timed, 0);
    part.messages = drafts.size();
    part.beginsEpoch = !epochGoesOn;
    for (const Draft& draft : drafts) {
        build(draft);
    }
    epochGoesOn = epochTime.has_value();
    text.clear();
    entries.clear();
    drafts.clear();
    ++partNumber;
    return part;
}

void EpochBuilder::clearPart() {
    part.bytes.clear();
    part.messages = 0;
    part.sentences = 0;
    part.timedSentences = 0;
}

void EpochBuilder::endEpoch() {
    if (epochIsTrusted) {
        lastDate = date();
        lastTime = epochTime->nanoseconds;
    }
    epochTime.reset();
    epochDate.reset();
    epochIsTrusted = false;
    epochGoesOn = false;
}

void EpochBuilder::noteTime(std::string_view sentence, const TimeOfDay& time, Checksum checksum) {
    epochTime = time;
    if (checksum == Checksum::RIGHT || !sourceSendsRight) {
        epochIsTrusted = true;
        epochDate = epochDate ? epochDate : dateOf(sentence);
    }
}

void EpochBuilder::collect(std::string_view sentence) {
    const size_t begin = text.size();
    text += sentence;
    if (!sentence.ends_with('\n')) {
        text += '\n';
    }
    const size_t size = text.size() - begin;
    if (text.compare(begin, 2, "$G") == 0) {
        text[begin + 2] = 'P';  // as messages hold it
    }
    Draft& draft = draftFor(codeNumber(std::string_view(text).substr(begin)), size);
    const auto number = static_cast<uint32_t>(entries.size());
    (draft.first == NO_ENTRY ? draft.first : entries[draft.last].next) = number;
    draft.last = number;
    draft.size += size;
    entries.push_back({static_cast<uint32_t>(begin), static_cast<uint32_t>(size), NO_ENTRY});
}

// The first one with room behind that of the last sentence of this code.
EpochBuilder::Draft& EpochBuilder::draftFor(uint64_t code, size_t size) {
    if (places.size() > MOST_CODES && isEmpty()) {
        places.clear();
    }
    Place& place = places[code];
    size_t number = place.part == partNumber ? place.next : 0;
    while (number < drafts.size() && drafts[number].size + size > MESSAGE_ROOM) {
        ++number;
    }
    if (number == drafts.size()) {
        drafts.push_back({NO_ENTRY, NO_ENTRY, 0});
    }
    place = {partNumber, number + 1};
    return drafts[number];
}

std::chrono::sys_days EpochBuilder::date() const {
    if (epochDate) {
        return *epochDate;
    }
    const uint64_t time = epochTime->nanoseconds;
    const bool nextDay = lastTime && *lastTime > time && *lastTime - time > HALF_A_DAY;
    return lastDate + std::chrono::days(nextDay ? 1 : 0);
}

timeStamp_t EpochBuilder::stamp() const {
    if (source == StampSource::ARRIVAL) {
        return epochArrival;
    }
    return epochTime ? stampOf(date(), epochTime->nanoseconds) : stampOf(lastDate, 0);
}

// The bytes are those that the library writes, without a message that would hold copies: header,
// and the sentences in ascending order of their codes.
void EpochBuilder::build(const Draft& draft) {
    ordered.clear();
    for (uint32_t number = draft.first; number != NO_ENTRY; number = entries[number].next) {
        ordered.push_back(
            std::string_view(text).substr(entries[number].begin, entries[number].size));
    }
    std::sort(ordered.begin(), ordered.end());
    const size_t begin = part.bytes.size();
    part.bytes.resize(begin + MessageBase::MO_BASE_DERIVED);
    uint8_t* const header = part.bytes.data() + begin;
    const size_t behindSize =
        MessageBase::MO_BASE_DERIVED - MessageBase::MSGSIZE_LENGTH + draft.size;
    uint16ToByteArray(static_cast<uint16_t>(behindSize), header + MessageBase::MO_MSGSIZE);
    uint16ToByteArray(MSGID_GPS, header + MessageBase::MO_MSGID);
    uint64ToByteArray(part.stamp, header + MessageBase::MO_TIMESTAMP);
    for (const std::string_view sentence : ordered) {
        part.bytes.insert(part.bytes.end(), sentence.begin(), sentence.end());
    }
}

}  // namespace vextrace
