#include "libvexstream/sentence.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>

#include "libvexstream/internal/FieldReader.h"
#include "libvexstream/internal/digits.h"
#include "libvexstream/utc.h"

namespace vextrace {

namespace {

constexpr uint64_t NANOSECONDS_PER_SECOND = 1'000'000'000;
constexpr size_t WHOLE_SECONDS = 6;  // hhmmss
constexpr size_t ADDRESS_SIZE = 6;   // "$", two characters of talker, three of type
constexpr size_t TALKER_SIZE = 2;
constexpr size_t CHECKSUM_SIZE = 3;  // "*hh"

// Of the checksum of a sentence that ends in "*hh" from that which was sent: 0 where it is right.
std::optional<uint8_t> difference(std::string_view sentence) {
    const std::string_view text = withoutLineEnd(sentence);
    if (text.size() <= CHECKSUM_SIZE || text[text.size() - CHECKSUM_SIZE] != '*') {
        return std::nullopt;
    }
    const int high = hexDigit(text[text.size() - 2]);
    const int low = hexDigit(text[text.size() - 1]);
    if (high < 0 || low < 0) {
        return std::nullopt;
    }
    const uint8_t sum = checksumOf(text.substr(1, text.size() - 1 - CHECKSUM_SIZE));
    return static_cast<uint8_t>(sum ^ (high * 16 + low));
}

bool mayStandInContent(char c) {
    return c >= ' ' && c <= '~' && c != '$' && c != '!' && c != '*';
}

bool endsField(char c) {
    return c == ',' || c == '*';
}

// Three letters as a number.
constexpr uint32_t type(std::string_view letters) {
    uint32_t number = 0;
    for (const char letter : letters) {
        number = number << 8 | static_cast<unsigned char>(letter);
    }
    return number;
}

// type("RMC") of "$GPRMC,..."; that of none where the address is of another form, or proprietary.
uint32_t typeOf(std::string_view sentence) {
    if (sentence.size() <= ADDRESS_SIZE || sentence[0] != '$' || sentence[1] == 'P' ||
        sentence[ADDRESS_SIZE] != ',') {
        return 0;
    }
    const bool isShort = endsField(sentence[1]) || endsField(sentence[2]);
    return isShort ? 0 : type(sentence.substr(1 + TALKER_SIZE, ADDRESS_SIZE - 1 - TALKER_SIZE));
}

// Whether the second letter of the talker may have been this one before it was stored. Q counts
// where receivers send it most: elsewhere it would more often be a P with one flipped bit.
bool isOtherTalker(std::string_view sentence, char letter) {
    switch (letter) {
        case 'A':
        case 'B':
        case 'I':
        case 'L':
        case 'N':
            return true;
        case 'Q':
            return typeOf(sentence) == type("GSV") || typeOf(sentence) == type("GSA");
        default:
            return false;
    }
}

// Of hhmmss.
std::optional<unsigned> secondsOfDay(std::string_view text) {
    if (text.size() != WHOLE_SECONDS || !isDigits(text)) {
        return std::nullopt;
    }
    const unsigned hour = number(text.substr(0, 2));
    const unsigned minute = number(text.substr(2, 2));
    const unsigned second = number(text.substr(4, 2));
    const unsigned lastSecond = hour == 23 && minute == 59 ? 60 : 59;  // with a leap second
    if (hour > 23 || minute > 59 || second > lastSecond) {
        return std::nullopt;
    }
    return hour * 3600 + minute * 60 + second;
}

std::optional<std::chrono::sys_days> dateOfRMC(std::string_view text) {
    if (text.size() != 6 || !isDigits(text)) {
        return std::nullopt;
    }
    const unsigned year = number(text.substr(4, 2));
    return calendarDay(year + (year < 80 ? 2000 : 1900), number(text.substr(2, 2)),
                       number(text.substr(0, 2)));
}

std::optional<std::chrono::sys_days> dateOfZDA(std::string_view sentence) {
    const std::string_view day = field(sentence, 2);
    const std::string_view month = field(sentence, 3);
    const std::string_view year = field(sentence, 4);
    if (day.size() > 2 || month.size() > 2 || year.size() != 4 || !isDigits(day) ||
        !isDigits(month) || !isDigits(year)) {
        return std::nullopt;
    }
    return calendarDay(number(year), number(month), number(day));
}

}  // namespace

uint8_t checksumOf(std::string_view content) {
    uint8_t sum = 0;
    for (const char c : content) {
        sum ^= static_cast<uint8_t>(c);
    }
    return sum;
}

std::string makeSentence(std::string_view content) {
    if (!std::all_of(content.begin(), content.end(), mayStandInContent)) {
        throw std::invalid_argument("no content of a sentence: " + std::string(content));
    }
    constexpr const char* DIGITS = "0123456789ABCDEF";
    const uint8_t sum = checksumOf(content);
    std::string sentence = "$";
    sentence.append(content).append({'*', DIGITS[sum >> 4], DIGITS[sum & 15], '\r', '\n'});
    return sentence;
}

Checksum receivedChecksum(std::string_view sentence) {
    const std::optional<uint8_t> wrong = difference(sentence);
    return !wrong ? Checksum::NONE : *wrong == 0 ? Checksum::RIGHT : Checksum::WRONG;
}

Verdict storedVerdict(std::string_view sentence) {
    const std::optional<uint8_t> wrong = difference(sentence);
    if (!wrong) {
        return {};
    }
    const auto talker = static_cast<char>(*wrong ^ 'P');
    const bool fits =
        talker == 'P' || (sentence.substr(0, 3) == "$GP" && isOtherTalker(sentence, talker));
    return fits ? Verdict{Checksum::RIGHT, talker} : Verdict{Checksum::WRONG};
}

std::string_view withoutLineEnd(std::string_view sentence) {
    if (!sentence.empty() && sentence.back() == '\n') {
        sentence.remove_suffix(1);
    }
    while (!sentence.empty() && sentence.back() == '\r') {
        sentence.remove_suffix(1);
    }
    return sentence;
}

std::string_view field(std::string_view sentence, size_t index) {
    if (index > sentence.size()) {
        return {};  // without counting so far
    }
    FieldReader fields(sentence);
    fields.skip(index);
    return fields.next();
}

std::optional<TimeOfDay> TimeOfDay::parse(std::string_view text) {
    const std::optional<unsigned> seconds = secondsOfDay(text.substr(0, WHOLE_SECONDS));
    if (!seconds) {
        return std::nullopt;
    }
    TimeOfDay time = {*seconds * NANOSECONDS_PER_SECOND,
                      std::string(text.substr(0, WHOLE_SECONDS))};
    if (text.size() == WHOLE_SECONDS) {
        return time;
    }
    std::string_view fraction = text.substr(WHOLE_SECONDS + 1);
    if (text[WHOLE_SECONDS] != '.' || !isDigits(fraction)) {
        return std::nullopt;
    }
    fraction = fraction.substr(0, fraction.find_last_not_of('0') + 1);
    if (!fraction.empty()) {
        time.nanoseconds += fractionToNanoseconds(fraction);
        time.digits += fraction;
    }
    return time;
}

std::string_view timeField(std::string_view sentence) {
    switch (typeOf(sentence)) {
        case type("GLL"):
            return field(sentence, 5);
        case type("RMC"):
        case type("GGA"):
        case type("GNS"):
        case type("ZDA"):
        case type("GST"):
        case type("GBS"):
            return FieldReader(sentence.substr(ADDRESS_SIZE + 1)).next();
        default:
            return {};
    }
}

std::optional<TimeOfDay> timeOf(std::string_view sentence) {
    return TimeOfDay::parse(timeField(sentence));
}

std::optional<std::chrono::sys_days> dateOf(std::string_view sentence) {
    switch (typeOf(sentence)) {
        case type("RMC"):
            return dateOfRMC(field(sentence, 9));
        case type("ZDA"):
            return dateOfZDA(sentence);
        default:
            return std::nullopt;
    }
}

}  // namespace vextrace
