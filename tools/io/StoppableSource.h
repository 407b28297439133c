#pragma once

#include "libvexstream/ByteSource.h"
#include "tools/io/errors.h"
#include "tools/io/signals.h"

namespace vextrace::tools {

/// Another source, which a signal that is waited for stops wherever it is.
class StoppableSource : public ByteSource {
public:
    explicit StoppableSource(ByteSource& other) : source(other) {}

    size_t read(uint8_t* dest, size_t room) override {
        stopWhenTold();
        return source.read(dest, room);
    }
    bool goBack(size_t count) override { return source.goBack(count); }
    uint64_t skip(uint64_t count) override { return source.skip(count); }

    /// \throws Interrupted when a signal has come
    static void stopWhenTold() {
        if (const int signal = StopSignals::caught(); signal != 0) {
            throw Interrupted(signal);
        }
    }

private:
    ByteSource& source;
};

}  // namespace vextrace::tools
