#include "libvexstream/EpochBuilder.h"

#include <algorithm>
#include <utility>

#include "libvexstream/internal/codeNumber.h"
#include "libvexstream/utc.h"
#include "libvextrace/InvalidMessageException.h"
#include "libvexutil/datablock.h"

namespace vextrace {

namespace {

constexpr uint64_t HALF_A_DAY = uint64_t{12} * 3600 * 1'000'000'000;
// No receiver has so many; they are forgotten.
constexpr size_t MOST_CODES = 4096;

// Writes the header of a GPS message; gives the place behind it.
uint8_t* writeHeader(uint8_t* dest, timeStamp_t stamp, size_t payload) {
    constexpr size_t BEHIND_SIZE = MessageBase::MO_BASE_DERIVED - MessageBase::MSGSIZE_LENGTH;
    uint16ToByteArray(static_cast<uint16_t>(BEHIND_SIZE + payload), dest + MessageBase::MO_MSGSIZE);
    uint16ToByteArray(MSGID_GPS, dest + MessageBase::MO_MSGID);
    uint16ToByteArray(0, dest + MessageBase::MO_HDRRESERVED);
    uint64ToByteArray(stamp, dest + MessageBase::MO_TIMESTAMP);
    return dest + MessageBase::MO_BASE_DERIVED;
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
    const std::string_view sent = timeField(sentence);
    const bool saysAgain = epochTime && sent == sentTime;
    std::optional<TimeOfDay> time = saysAgain ? std::nullopt : TimeOfDay::parse(sent);
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
    if (time || saysAgain) {
        ++timed;
        noteTimed(sentence, checksum);
    }
    if (time) {
        epochTime = std::move(time);
        sentTime = sent;
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
    part.messages = sizes.size();
    part.beginsEpoch = !epochGoesOn;
    build();
    epochGoesOn = epochTime.has_value();
    text.clear();
    entries.clear();
    sizes.clear();
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

void EpochBuilder::noteTimed(std::string_view sentence, Checksum checksum) {
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
    if (sentence.starts_with("$G")) {
        text[begin + 2] = 'P';  // as messages hold it
    }
    const uint64_t code = codeNumber(std::string_view(text).substr(begin));
    entries.push_back(
        {code, messageFor(code, size), static_cast<uint32_t>(begin), static_cast<uint32_t>(size)});
}

// The first one with room behind that of the last sentence of this code.
uint32_t EpochBuilder::messageFor(uint64_t code, size_t size) {
    if (places.size() > MOST_CODES && isEmpty()) {
        places.clear();
    }
    Place& place = places[code];
    uint32_t number = place.part == partNumber ? place.next : 0;
    while (number < sizes.size() && sizes[number] + size > MESSAGE_ROOM) {
        ++number;
    }
    if (number == sizes.size()) {
        sizes.push_back(0);
    }
    sizes[number] += static_cast<uint32_t>(size);
    place = {partNumber, number + 1};
    return number;
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
void EpochBuilder::build() {
    std::sort(entries.begin(), entries.end());
    part.bytes.resize(text.size() + sizes.size() * MessageBase::MO_BASE_DERIVED);
    uint8_t* dest = part.bytes.data();
    auto entry = entries.cbegin();
    for (uint32_t message = 0; message < sizes.size(); ++message) {
        dest = writeHeader(dest, part.stamp, sizes[message]);
        for (; entry != entries.cend() && entry->message == message; ++entry) {
            dest =
                std::copy_n(text.begin() + static_cast<ptrdiff_t>(entry->begin), entry->size, dest);
        }
    }
}

}  // namespace vextrace
