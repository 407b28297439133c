#pragma once

#include <string_view>

#include "libvexstream/sentence.h"
#include "libvexstream/visibility.h"

namespace vextrace {

/// Judges the stored sentences of a trace, in their order.
///
/// A message makes the talker of "$GNRMC" GP and keeps the checksum, which tells the talker; but so
/// a few wrong checksums look like those of another talker. Receivers hardly ever change theirs, so
/// for RMC and GGA the talker goes on: another one counts as right only from the second sentence in
/// a row of that code that has it; the one before counts as wrong. GP and GN go on from the first
/// sentence of a trace; as long as none does, each talker is right.
class VEXSTREAM_EXPORT TalkerMemory {
public:
    /// To be asked once for each sentence of the trace; the other codes need no memory.
    Verdict judge(std::string_view sentence);

    /// What follows is another trace.
    void endTrace() { *this = {}; }

private:
    static constexpr char NONE = '\0';

    // Of the sentences of one code; the letter behind G.
    struct Talker {
        char lasting = NONE;
        char last = NONE;  // of the sentence before, where its checksum fits a talker

        bool goesOn(char letter);
    };

    Talker* talkerOf(std::string_view sentence);

    Talker rmc;
    Talker gga;
};

}  // namespace vextrace
