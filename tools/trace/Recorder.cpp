#include "tools/trace/Recorder.h"

#include <fmt/core.h>
#include <poll.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <utility>

#include "libvexstream/utc.h"
#include "tools/io/errors.h"
#include "tools/io/plural.h"
#include "tools/io/standardStreams.h"

namespace vextrace::tools {

namespace {

constexpr size_t BUFFER_SIZE = size_t{64} * 1024;
constexpr int SIGNAL_STATUS = 128;  // as shells have it

timeStamp_t systemClock() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<timeStamp_t>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(now).count());
}

const char* signalName(int signal) {
    return signal == SIGINT ? "SIGINT" : signal == SIGTERM ? "SIGTERM" : "SIGHUP";
}

}  // namespace

Recorder::Recorder(const RecordOptions& options)
    : input(options.input),
      line(input, options.baud),
      output(options.output, options.existing, input),
      epochs(options.stamps, options.date),
      stamps(options.stamps),
      idle(static_cast<int>(options.idle.count())),
      buffer(BUFFER_SIZE) {
    output.setSync(options.sync);
    output.setTogether(input.size().has_value());
    if (input.size()) {  // what comes live has no end to be near to
        progress.emplace(input.size());
    }
}

int Recorder::run() {
    if (!output.notice().empty()) {
        tell(output.notice());
    }
    const Ending ending = record();
    sumUp(ending);
    return ending.status;
}

Recorder::Ending Recorder::record() {
    try {
        Ending ending = follow();
        framer.finish();
        writeSentences();
        output.write(epochs.take());
        output.close();
        if (framer.counters().sentences() == 0 && ending.status == STATUS_OK) {
            ending.status = STATUS_DATA;
            ending.fault = input.name() + ": holds no NMEA sentence";
        }
        return ending;
    } catch (const DataError& error) {
        passOverRest();
        return {"by a write error", STATUS_DATA, error.what()};
    }
}

// What was read and cannot be written is accounted for all the same.
void Recorder::passOverRest() {
    framer.finish();
    while (framer.next()) {
    }
}

// Until there is no more.
Recorder::Ending Recorder::follow() {
    while (true) {
        const int ready = wait();
        if (const int signal = StopSignals::caught(); signal != 0) {
            readWhatIsThere();
            return {std::string("by ") + signalName(signal), SIGNAL_STATUS + signal, {}};
        }
        if (ready == 0) {
            output.write(epochs.take());
        } else if (ready > 0) {
            if (std::optional<Ending> ending = readOn()) {
                return *std::move(ending);
            }
        }
    }
}

// What a receiver sent before a signal came may lie in the kernel still. A file has no such bytes,
// and what never pauses has no end to wait for.
void Recorder::readWhatIsThere() {
    constexpr uint64_t MOST = uint64_t{1} << 20;
    const uint64_t end = framer.counters().bytesRead + MOST;
    pollfd waiting = {input.descriptor(), POLLIN, 0};
    while (!input.size() && StopSignals::count() == 1 && framer.counters().bytesRead < end &&
           poll(&waiting, 1, 0) > 0 && !readOn()) {
    }
}

// What is there; the ending where there is nothing more.
std::optional<Recorder::Ending> Recorder::readOn() {
    size_t count = 0;
    try {
        count = input.read(buffer.data(), buffer.size());
    } catch (const DataError& error) {
        return Ending{"by a read error", STATUS_DATA, error.what()};
    }
    if (count == 0) {
        return endOfInput();
    }
    take({reinterpret_cast<const char*>(buffer.data()), count});
    if (progress) {
        progress->update(framer.counters().bytesRead);
    }
    return std::nullopt;
}

// For the input or a signal, or until silence ends the epoch in hand; 0 is silence.
int Recorder::wait() {
    std::array<pollfd, 2> waiting = {
        {{input.descriptor(), POLLIN, 0}, {signals.descriptor(), POLLIN, 0}}};
    return poll(waiting.data(), waiting.size(), epochs.isEmpty() ? -1 : idle);
}

Recorder::Ending Recorder::endOfInput() const {
    if (line.isLine()) {
        return {"by a hang-up", STATUS_DATA, input.name() + ": the line was hung up"};
    }
    return {"at the end of the input", STATUS_OK, {}};
}

void Recorder::take(std::string_view bytes) {
    if (stamps == StampSource::ARRIVAL) {
        arrivals.note(framer.counters().bytesRead, systemClock());
    }
    framer.feed(bytes);
    writeSentences();
}

void Recorder::writeSentences() {
    while (const std::optional<Framer::Sentence> sentence = framer.next()) {
        output.write(epochs.add(sentence->text, sentence->checksum, arrivals.of(sentence->offset)));
    }
}

void Recorder::sumUp(const Ending& ending) const {
    const Framer::Counters& read = framer.counters();
    const TraceOutput::Counters& written = output.written();
    tell(fmt::format("{}: {} read, {} recorded, {} skipped", input.name(),
                     counted(read.bytesRead, "byte"), read.bytesRecorded, read.bytesSkipped()));
    tell(fmt::format("{}: {}, {} checked, {} with a wrong checksum, {} without", input.name(),
                     counted(read.sentences(), "sentence"), read.checked, read.wrong,
                     read.unchecked));
    tell(fmt::format("{}: {}, {}, {} written", output.name(), counted(written.epochs, "epoch"),
                     counted(written.messages, "message"), counted(written.bytes, "byte")));
    if (written.first != 0) {
        tell(fmt::format("{}: {} to {}", output.name(), utcText(written.first),
                         utcText(written.last)));
    }
    if (written.messagesWithoutDate > 0) {
        tell(fmt::format("{}: {} without a date", output.name(),
                         counted(written.messagesWithoutDate, "message")));
    }
    if (written.sentences < read.sentences()) {
        tell(fmt::format("{}: lacks the last {}", output.name(),
                         counted(read.sentences() - written.sentences, "sentence")));
    }
    tell(fmt::format("{}: ended {}", input.name(), ending.how));
    if (!ending.fault.empty()) {
        tell(ending.fault);
    }
}

}  // namespace vextrace::tools
