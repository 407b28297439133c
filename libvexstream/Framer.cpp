#include "libvexstream/Framer.h"

#include <algorithm>
#include <cstring>

#include "libvexstream/internal/digits.h"

namespace vextrace {

namespace {

constexpr size_t BUFFER_SIZE = size_t{256} * 1024;
// No sentence reaches further back.
constexpr size_t HISTORY = MESSAGE_ROOM;
constexpr size_t CHECKSUM_SIZE = 3;  // "*hh"

constexpr ptrdiff_t WORD_SIZE = sizeof(uint64_t);

// Those before START are ordinary: they end nothing and begin nothing.
enum class Kind : uint8_t { PRINTABLE, BINARY, START, STAR, CARRIAGE_RETURN, LINE_FEED, NUL };

constexpr Kind kindOf(unsigned char byte) {
    switch (byte) {
        case '$':
        case '!':
            return Kind::START;
        case '*':
            return Kind::STAR;
        case '\r':
            return Kind::CARRIAGE_RETURN;
        case '\n':
            return Kind::LINE_FEED;
        case '\0':
            return Kind::NUL;
        default:
            return byte >= 0x20 && byte < 0x7F ? Kind::PRINTABLE : Kind::BINARY;
    }
}

constexpr std::array<Kind, 256> makeKinds() {
    std::array<Kind, 256> kinds = {};
    for (size_t byte = 0; byte < kinds.size(); ++byte) {
        kinds[byte] = kindOf(static_cast<unsigned char>(byte));
    }
    return kinds;
}

constexpr std::array<Kind, 256> KINDS = makeKinds();

Kind kind(char byte) {
    return KINDS[static_cast<unsigned char>(byte)];
}

uint64_t wordAt(const char* bytes) {
    uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof(word));
    return word;
}

// Whether eight bytes are printable and behind "*", as in most of a sentence: there is nothing else
// to know of them.
bool isPlain(uint64_t word) {
    constexpr uint64_t ONES = 0x0101010101010101;
    constexpr uint64_t HIGH_BITS = 0x80 * ONES;
    const uint64_t fromDelete = word | (word + ONES);
    const uint64_t upToStar = ~(word + (0x80 - '+') * ONES);
    return ((fromDelete | upToStar) & HIGH_BITS) == 0;
}

// The exclusive or of the bytes of the word.
uint8_t folded(uint64_t word) {
    word ^= word >> 32;
    word ^= word >> 16;
    word ^= word >> 8;
    return static_cast<uint8_t>(word);
}

// As it is stored, "$GP" without a line feed, it would run into the next sentence.
bool isBare(std::string_view line) {
    return line == "$G" || line == "$G\n";
}

}  // namespace

Framer::Framer() : buffer(BUFFER_SIZE) {}

void Framer::feed(std::string_view bytes) {
    input = bytes;
    count.bytesRead += bytes.size();
}

std::optional<Framer::Sentence> Framer::next() {
    do {
        if (const std::optional<Sentence> sentence = scan()) {
            return sentence;
        }
    } while (refill());
    return finished ? endLine() : std::nullopt;
}

bool Framer::refill() {
    if (bufferEnd - bufferBegin == buffer.size()) {
        const uint64_t begin = position - std::min<uint64_t>(position - bufferBegin, HISTORY);
        std::copy(buffer.begin() + static_cast<ptrdiff_t>(begin - bufferBegin), buffer.end(),
                  buffer.begin());
        bufferBegin = begin;
    }
    const size_t used = bufferEnd - bufferBegin;
    const size_t added = input.copy(buffer.data() + used, buffer.size() - used);
    input.remove_prefix(added);
    bufferEnd += added;
    return added > 0;
}

std::optional<Framer::Sentence> Framer::scan() {
    while (!checkedWaits) {
        if (position == bufferEnd || mustWait()) {
            return std::nullopt;
        }
        switch (kind(at(position))) {
            case Kind::PRINTABLE:
            case Kind::BINARY:
                passOrdinary();
                break;
            case Kind::START:
                addToSum();
                starts[sum] = position;
                break;
            case Kind::STAR:
                if (!findChecked()) {
                    addToSum();
                }
                break;
            case Kind::CARRIAGE_RETURN:
                passCarriageReturn();
                break;
            case Kind::LINE_FEED:
                ++position;
                if (const std::optional<Sentence> sentence = endLine()) {
                    return sentence;
                }
                break;
            case Kind::NUL:
                lineStands = false;
                ++position;
                runBegin = position;
        }
    }
    return endChecked();
}

// Most bytes come through here. Whether one is printable decides nothing: in binary protocols that
// is as good as random.
void Framer::passOrdinary() {
    const char* const begin = buffer.data() + (position - bufferBegin);
    const char* const end = buffer.data() + (bufferEnd - bufferBegin);
    const char* byte = begin;
    uint64_t passed = 0;
    for (; end - byte >= WORD_SIZE && isPlain(wordAt(byte)); byte += WORD_SIZE) {
        passed ^= wordAt(byte);
    }
    uint8_t last = sum ^ folded(passed);
    bool binary = false;
    for (; byte != end && kind(*byte) <= Kind::BINARY; ++byte) {
        last ^= static_cast<uint8_t>(*byte);
        binary |= kind(*byte) == Kind::BINARY;
    }
    sum = last;
    lineStands &= !binary;
    position += static_cast<uint64_t>(byte - begin);
}

// A star is judged with the two bytes behind it, a carriage return with one.
bool Framer::mustWait() const {
    const Kind k = kind(at(position));
    const uint64_t behind = k == Kind::STAR              ? CHECKSUM_SIZE - 1
                            : k == Kind::CARRIAGE_RETURN ? 1
                                                         : 0;
    return !finished && !isKnown(position + behind);
}

void Framer::addToSum() {
    sum ^= static_cast<uint8_t>(at(position));
    ++position;
}

void Framer::passCarriageReturn() {
    ++position;
    runBegin = position;
    if (isKnown(position) && at(position) != '\r' && at(position) != '\n') {
        lineStands = false;
    }
}

bool Framer::findChecked() {
    const uint64_t end = position + CHECKSUM_SIZE;
    if (end > bufferEnd) {
        return false;
    }
    const int high = hexDigit(at(position + 1));
    const int low = hexDigit(at(position + 2));
    if (high < 0 || low < 0) {
        return false;
    }
    // The sums behind the start and before the star differ by the checksum.
    const uint64_t behindStart = starts[sum ^ static_cast<uint8_t>(high * 16 + low)];
    if (behindStart <= runBegin || end - (behindStart - 1) >= MESSAGE_ROOM) {
        return false;
    }
    checkedWaits = true;
    checkedBegin = behindStart - 1;
    checkedEnd = end;
    lineStands = false;
    position = end;
    return true;
}

std::optional<Framer::Sentence> Framer::endChecked() {
    // As long as there is room for this one and a line feed.
    while (isKnown(position) && at(position) == '\r' &&
           position + 2 - checkedBegin <= MESSAGE_ROOM) {
        ++position;
    }
    if (!isKnown(position) && !finished) {
        return std::nullopt;
    }
    checkedWaits = false;
    runBegin = position;
    if (isKnown(position) && at(position) == '\n') {
        ++position;
        checkedEnd = position;
        beginLine();
    }
    ++count.checked;
    return give(checkedBegin, checkedEnd, Checksum::RIGHT);
}

std::optional<Framer::Sentence> Framer::endLine() {
    const uint64_t begin = lineBegin;
    const bool stands = lineStands;
    beginLine();
    if (!stands || position == begin || position - begin > MESSAGE_ROOM ||
        kind(at(begin)) != Kind::START) {
        return std::nullopt;
    }
    const std::string_view line = text(begin, position);
    if (isBare(line) || (line.back() != '\n' && line.size() == MESSAGE_ROOM)) {
        return std::nullopt;
    }
    const Checksum checksum = receivedChecksum(line);
    ++(checksum == Checksum::NONE ? count.unchecked : count.wrong);
    return give(begin, position, checksum);
}

void Framer::beginLine() {
    lineBegin = position;
    lineStands = true;
    runBegin = position;
}

Framer::Sentence Framer::give(uint64_t begin, uint64_t end, Checksum checksum) {
    count.bytesRecorded += end - begin;
    return {text(begin, end), begin, checksum};
}

}  // namespace vextrace
