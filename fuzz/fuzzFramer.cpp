#include <cstdint>

#include "fuzz/finding.h"
#include "tests/stream/model/framerModel.h"

/// Any bytes as what a receiver sent, in pieces whose size the first byte says.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string input(data + 1, data + size);
    const std::vector<ModelSentence> wanted = modelSentences(input);
    for (const size_t pieceSize : {size_t{1} + data[0], input.size() + 1}) {
        const std::vector<ModelSentence> got = framedSentences(input, pieceSize);
        if (!(got == wanted)) {
            stopAt("wanted\n" + describe(wanted) + "got\n" + describe(got));
        }
    }
    return 0;
}
