#include "tests/stream/model/framerModel.h"

#include <cctype>
#include <cstdlib>
#include <ostream>
#include <sstream>
#include <string_view>

#include "libvexstream/Framer.h"

namespace {

constexpr size_t LONGEST = 65535 - 12;

bool isStart(char c) {
    return c == '$' || c == '!';
}

bool hasChecksumAt(const std::string& line, size_t star) {
    return star + 2 < line.size() && line[star] == '*' &&
           std::isxdigit(static_cast<unsigned char>(line[star + 1])) != 0 &&
           std::isxdigit(static_cast<unsigned char>(line[star + 2])) != 0;
}

// The start of the checked sentence that ends with the checksum there; npos where there is none.
size_t startOf(const std::string& line, size_t star, size_t from) {
    const long sent = std::strtol(line.substr(star + 1, 2).c_str(), nullptr, 16);
    long sum = 0;
    for (size_t i = star; i-- > from;) {
        const char c = line[i];
        if (c == '\r' || c == '\0') {
            break;
        }
        if (isStart(c) && sum == sent) {
            return star + 3 - i + 1 <= LONGEST ? i : std::string::npos;
        }
        sum ^= static_cast<unsigned char>(c);
    }
    return std::string::npos;
}

// Its line feed is stored with it, be it there or not.
bool standsAsItIs(const std::string& line) {
    for (const char c : line.substr(0, line.find_last_not_of('\r') + 1)) {
        if (c < ' ' || c > '~') {
            return false;
        }
    }
    return !line.empty() && isStart(line.front()) && line != "$G" && line.size() + 1 <= LONGEST;
}

void addLine(const std::string& line, uint64_t offset, bool hasLineFeed,
             std::vector<ModelSentence>& found) {
    const size_t foundBefore = found.size();
    size_t from = 0;
    for (size_t star = 0; star < line.size(); ++star) {
        const size_t start =
            hasChecksumAt(line, star) ? startOf(line, star, from) : std::string::npos;
        if (start == std::string::npos) {
            continue;
        }
        from = star + 3;
        star = from - 1;
        const bool takesLineEnd = hasLineFeed && line.size() + 1 - start <= LONGEST &&
                                  line.find_first_not_of('\r', from) == std::string::npos;
        const std::string text =
            takesLineEnd ? line.substr(start) + '\n' : line.substr(start, from - start);
        found.push_back({offset + start, text, 'R'});
    }
    if (found.size() == foundBefore && standsAsItIs(line)) {
        const size_t printed = line.find_last_not_of('\r') + 1;
        const bool checksum = printed > 3 && hasChecksumAt(line, printed - 3);
        found.push_back({offset, line + (hasLineFeed ? "\n" : ""), checksum ? 'W' : 'N'});
    }
}

char letterOf(vextrace::Checksum checksum) {
    return checksum == vextrace::Checksum::RIGHT   ? 'R'
           : checksum == vextrace::Checksum::WRONG ? 'W'
                                                   : 'N';
}

void drain(vextrace::Framer& framer, std::vector<ModelSentence>& found) {
    while (const auto sentence = framer.next()) {
        found.push_back(
            {sentence->offset, std::string(sentence->text), letterOf(sentence->checksum)});
    }
}

}  // namespace

std::vector<ModelSentence> modelSentences(const std::string& input) {
    std::vector<ModelSentence> found;
    size_t begin = 0;
    for (size_t end = input.find('\n'); end != std::string::npos; end = input.find('\n', begin)) {
        addLine(input.substr(begin, end - begin), begin, true, found);
        begin = end + 1;
    }
    addLine(input.substr(begin), begin, false, found);
    return found;
}

std::vector<ModelSentence> framedSentences(const std::string& input, size_t pieceSize) {
    vextrace::Framer framer;
    std::vector<ModelSentence> found;
    for (size_t begin = 0; begin < input.size(); begin += pieceSize) {
        framer.feed(std::string_view(input).substr(begin, pieceSize));
        drain(framer, found);
    }
    framer.finish();
    drain(framer, found);
    return found;
}

std::ostream& operator<<(std::ostream& os, const ModelSentence& sentence) {
    os << sentence.offset << ' ' << sentence.checksum << ' ';
    for (const char c : sentence.text.substr(0, 200)) {
        if (c >= ' ' && c <= '~') {
            os << c;
        } else {
            os << '<' << static_cast<int>(static_cast<unsigned char>(c)) << '>';
        }
    }
    return os << " (" << sentence.text.size() << " bytes)";
}

std::string describe(const std::vector<ModelSentence>& sentences) {
    std::ostringstream text;
    for (const ModelSentence& sentence : sentences) {
        text << sentence << '\n';
    }
    return text.str();
}
