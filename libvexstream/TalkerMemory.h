#pragma once

#include <string_view>
#include <vector>

#include "libvexstream/sentence.h"
#include "libvexstream/visibility.h"
#include "libvextrace/MessageBase.h"

namespace vextrace {

/// Judges the stored sentences of a trace, in their order.
///
/// A message makes the talker of "$GNRMC" GP and keeps the checksum, which tells the talker; but so
/// a few wrong checksums look like those of another talker. Receivers hardly ever change theirs, so
/// for RMC and GGA the talker goes on: another one counts as right only from the second sentence in
/// a row of that code that has it; the one before counts as wrong. GP and GN go on from the first
/// sentence of a trace; as long as none does, each talker is right.
///
/// Some receivers send GGA for each system in every epoch, one behind the other. What is in a row
/// has the same place among the sentences of its code with one stamp.
class VEXSTREAM_EXPORT TalkerMemory {
public:
    /// To be asked once for each sentence of the trace; codes other than RMC and GGA need no
    /// memory. \param stamp  of its message
    Verdict judge(std::string_view sentence, timeStamp_t stamp);

    /// What follows is another trace.
    void endTrace() { *this = {}; }

    /// Whether both judge alike whatever comes.
    bool operator==(const TalkerMemory&) const = default;

private:
    static constexpr char NONE = '\0';

    // That of the sentences of one place; the letter behind G.
    struct Talker {
        char lasting = NONE;
        char last = NONE;  // of the sentence before, where its checksum fits a talker

        bool goesOn(char letter);
        bool operator==(const Talker&) const = default;
    };

    // Of the sentences of one code.
    struct Talkers {
        static constexpr size_t MOST_PLACES = 16;

        std::vector<Talker> places;
        size_t place = 0;  // of the sentence in hand
        timeStamp_t stamp = 0;

        Talker& next(timeStamp_t ofSentence);
        bool operator==(const Talkers&) const = default;
    };

    Talkers* talkersOf(std::string_view sentence);

    Talkers rmc;
    Talkers gga;
};

}  // namespace vextrace
