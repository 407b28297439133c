#include "tools/trace/Recorder.h"

#include <fmt/core.h>

#include <algorithm>

#include "libvexstream/utc.h"
#include "tools/io/errors.h"
#include "tools/io/plural.h"
#include "tools/io/standardStreams.h"
#include "tools/io/waiting.h"

namespace vextrace::tools {

namespace {

using std::chrono::milliseconds;

constexpr size_t BUFFER_SIZE = size_t{64} * 1024;
constexpr int SIGNAL_STATUS = 128;  // as shells have it

timeStamp_t systemClock() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<timeStamp_t>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(now).count());
}

}  // namespace

Recorder::Recorder(const RecordOptions& given)
    : options(given),
      input(given.input),
      line(input, given.baud),
      recording(given.stamps, given.date),
      buffer(BUFFER_SIZE),
      lastRead(Clock::now()) {}

int Recorder::run() {
    if (!openOutput()) {
        return SIGNAL_STATUS + StopSignals::caught();
    }
    Ending ending = record();
    progress.reset();
    live.reset();
    if (output->cutOff() != 0 && ending.status == STATUS_OK) {
        ending.status = STATUS_DATA;
    }
    if (!options.quiet) {
        sumUp(ending);
    }
    if (!ending.fault.empty()) {
        tell(ending.fault);
    }
    return ending.status;
}

// False where a signal ended that.
bool Recorder::openOutput() {
    try {
        output.emplace(options.output, options.existing, input);
    } catch (const Interrupted& interrupted) {
        tell(fmt::format("{}: ended by {}, before anything was recorded", options.output,
                         StopSignals::nameOf(interrupted.signal)));
        return false;
    }
    if (!output->notice().empty()) {
        tell(output->notice());
    }
    output->setSync(options.sync);
    output->setTogether(input.size().has_value());
    if (!options.quiet && input.size()) {
        progress.emplace(input.size());
    } else if (!options.quiet) {
        live.emplace(input.name(), Clock::now());
    }
    return true;
}

Recorder::Ending Recorder::record() {
    try {
        Ending ending = follow();
        recording.finish();
        writeSentences();
        write(recording.take());
        output->close();
        if (recording.counters().sentences() == 0 && ending.status == STATUS_OK) {
            ending.status = STATUS_DATA;
            ending.fault = input.name() + ": holds no NMEA sentence";
        }
        return ending;
    } catch (const DataError& error) {
        passOverRest();
        return {"by a write error", STATUS_DATA, error.what()};
    } catch (const BrokenPipe&) {
        passOverRest();
        return {"by a write error", STATUS_DATA, output->name() + ": nobody reads it any more"};
    }
}

// What was read and cannot be written is accounted for all the same.
void Recorder::passOverRest() {
    recording.finish();
    while (recording.next()) {
    }
}

// Until there is no more.
Recorder::Ending Recorder::follow() {
    while (true) {
        switch (waitForInput(input, signals, output->sink(), untilNext(Clock::now()))) {
            case Awaited::SIGNAL:
                return endBySignal();
            case Awaited::NO_READER:
                throw BrokenPipe();
            case Awaited::INPUT:
                if (std::optional<Ending> ending = readOn()) {
                    return *std::move(ending);
                }
                break;
            case Awaited::TIME:
                break;
        }
        attend(Clock::now());
    }
}

// Until silence ends the epoch in hand, or the line is to be renewed.
std::optional<milliseconds> Recorder::untilNext(Clock::time_point now) const {
    std::optional<milliseconds> time;
    if (!recording.isEmpty()) {
        time = std::chrono::ceil<milliseconds>(lastRead + options.idle - now);
    }
    if (live && live->isShown()) {
        const milliseconds update = live->untilUpdate(now);
        time = std::min(time.value_or(update), update);
    }
    return time;
}

void Recorder::attend(Clock::time_point now) {
    if (!recording.isEmpty() && now - lastRead >= options.idle && !input.size()) {
        write(recording.take());
    }
    if (live) {
        live->update(recording.counters(), output->written().bytes, now);
    }
}

Recorder::Ending Recorder::endBySignal() {
    readWhatIsThere();
    const int signal = StopSignals::caught();
    return {std::string("by ") + StopSignals::nameOf(signal), SIGNAL_STATUS + signal, {}};
}

// What a receiver sent before a signal came may lie in the kernel still. A file has no such bytes,
// and what never pauses has no end to wait for.
void Recorder::readWhatIsThere() {
    constexpr uint64_t MOST = uint64_t{1} << 20;
    const uint64_t end = recording.counters().bytesRead + MOST;
    while (!input.size() && StopSignals::count() == 1 && recording.counters().bytesRead < end &&
           hasInput(input) && !readOn()) {
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
    lastRead = Clock::now();
    if (live) {
        live->noteBytes(lastRead);
    }
    recording.feed({reinterpret_cast<const char*>(buffer.data()), count},
                   options.stamps == StampSource::ARRIVAL ? systemClock() : 0);
    writeSentences();
    if (progress) {
        progress->update(recording.counters().bytesRead);
    }
    return std::nullopt;
}

Recorder::Ending Recorder::endOfInput() const {
    if (line.isLine()) {
        return {"by a hang-up", STATUS_DATA, input.name() + ": the line was hung up"};
    }
    return {"at the end of the input", STATUS_OK, {}};
}

void Recorder::writeSentences() {
    while (const std::optional<Recording::Step> step = recording.next()) {
        write(step->part);
        if (live) {
            live->note(step->sentence);
        }
    }
}

void Recorder::write(const EpochBuilder::Part& part) {
    output->write(part);
    if (live) {
        live->note(part);
    }
}

void Recorder::sumUp(const Ending& ending) const {
    const Framer::Counters& read = recording.counters();
    tell(fmt::format("{}: {} read, {} recorded, {} skipped", input.name(),
                     counted(read.bytesRead, "byte"), read.bytesRecorded, read.bytesSkipped()));
    tell(fmt::format("{}: {}, {} checked, {} with a wrong checksum, {} without", input.name(),
                     counted(read.sentences(), "sentence"), read.checked, read.wrong,
                     read.unchecked));
    sumUpOutput();
    tell(fmt::format("{}: ended {}", input.name(), ending.how));
}

void Recorder::sumUpOutput() const {
    const TraceOutput::Counters& written = output->written();
    const uint64_t sentences = recording.counters().sentences();
    const auto say = [&](const std::string& text) { tell(output->name() + ": " + text); };
    say(fmt::format("{}, {}, {} written", counted(written.epochs, "epoch"),
                    counted(written.messages, "message"), counted(written.bytes, "byte")));
    if (output->cutOff() != 0) {
        say(counted(output->cutOff(), "byte") + " of these cut off by another program");
    }
    if (written.first != 0) {
        say(utcText(written.first) + " to " + utcText(written.last));
    }
    if (written.messagesWithoutDate > 0) {
        say(counted(written.messagesWithoutDate, "message") + " without a date");
    }
    if (written.sentences < sentences) {
        say("lacks the last " + counted(sentences - written.sentences, "sentence"));
    }
}

}  // namespace vextrace::tools
