#include <cstdint>

#include "fuzz/finding.h"
#include "tests/model/differential.h"

/// Any bytes as a range of serialised messages, and as one message.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(data, data + size);
    stopAt(differenceInWalk(bytes));
    stopAt(differenceInReading(bytes));
    return 0;
}
