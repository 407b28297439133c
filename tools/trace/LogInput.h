#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tools/io/InputFile.h"
#include "tools/io/Progress.h"

namespace vextrace::tools {

/// A log, read as it is wanted.
class LogInput {
public:
    explicit LogInput(InputFile& file) : input(file), progress(file.size()), bytes(BUFFER_SIZE) {}

    /// What the consumer, a Framer or a Recording, finds next; nothing at the end of the log.
    template <class Consumer>
    auto next(Consumer& consumer) {
        while (true) {
            auto found = consumer.next();
            if (found || ended) {
                return found;
            }
            feed(consumer);
        }
    }

    const std::string& name() const { return input.name(); }

private:
    static constexpr size_t BUFFER_SIZE = size_t{64} * 1024;

    template <class Consumer>
    void feed(Consumer& consumer) {
        const size_t count = input.read(bytes.data(), bytes.size());
        if (count == 0) {
            ended = true;
            consumer.finish();
        } else {
            consumer.feed({reinterpret_cast<const char*>(bytes.data()), count});
        }
        progress.update(consumer.counters().bytesRead);
    }

    InputFile& input;
    Progress progress;
    std::vector<uint8_t> bytes;
    bool ended = false;
};

}  // namespace vextrace::tools
