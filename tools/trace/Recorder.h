#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "libvexstream/Arrivals.h"
#include "libvexstream/EpochBuilder.h"
#include "libvexstream/Framer.h"
#include "tools/io/InputFile.h"
#include "tools/io/Progress.h"
#include "tools/io/SerialLine.h"
#include "tools/io/StopSignals.h"
#include "tools/trace/TraceOutput.h"

namespace vextrace::tools {

struct RecordOptions {
    std::string input = "-";   ///< "-" is standard input
    std::string output = "-";  ///< "-" is standard output
    ExistingTrace existing = ExistingTrace::REFUSE;
    std::optional<unsigned> baud;  ///< of a serial line
    StampSource stamps = StampSource::SENTENCES;
    std::chrono::sys_days date;           ///< as long as no sentence brings one
    std::chrono::milliseconds idle{500};  ///< silence that ends an epoch
    bool sync = false;                    ///< wait for the device behind each epoch
};

/// Records what a receiver sends as a trace, an epoch as soon as it is over, until the input ends
/// or a signal asks for the end.
class Recorder {
public:
    /// \throws UsageError where the options cannot be carried out; nothing has been changed then
    explicit Recorder(const RecordOptions& options);

    /// Records, and tells on standard error what became of every byte.
    /// \return the exit status: that of the data, or 128 and the number of the signal
    /// \throws BrokenPipe when nobody reads the trace any more
    int run();

private:
    struct Ending {
        std::string how;
        int status;
        std::string fault;  // empty where it is none
    };

    Ending record();
    void passOverRest();
    Ending follow();
    std::optional<Ending> readOn();
    void readWhatIsThere();
    int wait();
    Ending endOfInput() const;
    void take(std::string_view bytes);
    void writeSentences();
    void sumUp(const Ending& ending) const;

    InputFile input;
    StopSignals signals;  // before the line, which they must not leave as it is set up
    SerialLine line;
    TraceOutput output;
    Framer framer;
    Arrivals arrivals;
    EpochBuilder epochs;
    const StampSource stamps;
    const int idle;
    std::vector<uint8_t> buffer;
    std::optional<Progress> progress;
};

}  // namespace vextrace::tools
