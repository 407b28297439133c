#include <cstdint>

#include "fuzz/finding.h"
#include "tests/model/differential.h"

namespace {

std::vector<std::string> linesWithTheirEnds(const std::string& text) {
    std::vector<std::string> lines;
    for (size_t begin = 0; begin < text.size();) {
        const size_t end = text.find('\n', begin);
        const size_t length = end == std::string::npos ? text.size() - begin : end + 1 - begin;
        lines.push_back(text.substr(begin, length));
        begin += length;
    }
    return lines;
}

}  // namespace

/// A text that begins like a sentence is taken line by line as sentences of one message; anything
/// else is a program of operations on a few messages.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(data, data + size);
    if (!text.empty() && text.front() == '$') {
        stopAt(differenceInSentences(0x0123456789ABCDEF, linesWithTheirEnds(text)));
    } else {
        stopAt(differenceInProgram(text));
    }
    return 0;
}
