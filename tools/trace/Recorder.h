#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "libvexstream/Recording.h"
#include "tools/io/InputFile.h"
#include "tools/io/Progress.h"
#include "tools/io/SerialLine.h"
#include "tools/io/signals.h"
#include "tools/trace/LiveLine.h"
#include "tools/trace/TraceOutput.h"

namespace vextrace::tools {

struct RecordOptions {
    std::string input = "-";   ///< "-" is standard input
    std::string output = "-";  ///< "-" is standard output
    ExistingFile existing = ExistingFile::REFUSE;
    std::optional<unsigned> baud;  ///< of a serial line
    StampSource stamps = StampSource::SENTENCES;
    std::chrono::sys_days date;           ///< as long as no sentence brings one
    std::chrono::milliseconds idle{500};  ///< silence that ends an epoch
    bool sync = false;                    ///< wait for the device behind each epoch
    bool quiet = false;                   ///< tell of faults alone
};

/// Records what a receiver sends as a trace, an epoch as soon as it is over, until the input ends
/// or a signal asks for the end.
class Recorder {
public:
    /// \throws UsageError where the options cannot be carried out; nothing has been changed then
    explicit Recorder(const RecordOptions& given);

    /// Records, and tells on standard error what became of every byte.
    /// \return the exit status: that of the data, or 128 and the number of the signal
    /// \throws UsageError where the output cannot be used; nothing has been changed then
    int run();

private:
    using Clock = LiveLine::Clock;

    struct Ending {
        std::string how;
        int status;
        std::string fault;  // empty where it is none
    };

    bool openOutput();
    Ending record();
    void passOverRest();
    Ending follow();
    Ending endBySignal();
    std::optional<Ending> readOn();
    void readWhatIsThere();
    std::optional<std::chrono::milliseconds> untilNext(Clock::time_point now) const;
    void attend(Clock::time_point now);
    Ending endOfInput() const;
    void writeSentences();
    void write(const EpochBuilder::Part& part);
    void sumUp(const Ending& ending) const;
    void sumUpOutput() const;

    const RecordOptions options;
    InputFile input;
    StopSignals signals;  // before the line, which they must not leave as it is set up
    SerialLine line;
    std::optional<TraceOutput> output;
    Recording recording;
    std::vector<uint8_t> buffer;
    Clock::time_point lastRead;
    std::optional<Progress> progress;  // of a file
    std::optional<LiveLine> live;      // of what has no end to be near to
};

}  // namespace vextrace::tools
