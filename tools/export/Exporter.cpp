#include "tools/export/Exporter.h"

#include <fmt/core.h>

#include <algorithm>
#include <string_view>

#include "libvexstream/utc.h"

namespace vextrace::tools {

namespace {

// Adds "2 fixes that are not valid" to a list; of 1 the form for one.
void appendCount(std::string& list, uint64_t count, std::string_view one, std::string_view many,
                 std::string_view reason) {
    if (count != 0) {
        list += fmt::format("{}{} {} {}", list.empty() ? "" : ", ", count, count == 1 ? one : many,
                            reason);
    }
}

}  // namespace

void Exporter::addMessage(const TraceItem& message, uint64_t number) {
    if (message.gps == nullptr) {
        ++others;
    } else if (content == Format::Content::SENTENCES) {
        begun().addMessage(*message.gps);
    } else {
        addFixOf(*message.gps, number);
    }
}

void Exporter::passOver(const TraceItem& message) {
    if (message.gps == nullptr) {
        ++others;
        return;
    }
    ++outside;
    if (content == Format::Content::SENTENCES) {
        begun().passOver(*message.gps);
    } else {
        chooser.passOver(*message.gps);
    }
}

void Exporter::addFixOf(const GpsView& message, uint64_t number) {
    const FixChooser::Outcome outcome = chooser.choose(message);
    ++outcomes[static_cast<size_t>(outcome)];
    if (outcome != FixChooser::Outcome::TAKEN) {
        return;
    }
    const Fix& fix = chooser.fix();
    if (content == Format::Content::ALL_FIXES) {
        begun().addFix(fix, message, number);
    } else if (fix.valid) {
        addToLine(fix, message, number);
    } else {
        ++invalid;
    }
}

void Exporter::addToLine(const Fix& fix, const GpsView& message, uint64_t number) {
    if (lastOfLine && !goesOn(*lastOfLine, fix.stamp)) {
        format.endLine();
        lastOfLine.reset();
    }
    if (!lastOfLine) {
        begun().beginLine(fix);
    }
    lastOfLine = fix.stamp;
    format.addFix(fix, message, number);
}

bool Exporter::goesOn(timeStamp_t before, timeStamp_t stamp) const {
    return std::max(before, stamp) - std::min(before, stamp) <= gap &&
           hasDate(before) == hasDate(stamp);
}

void Exporter::endTrace(uint64_t /*bytes*/) {
    if (lastOfLine) {
        format.endLine();
    }
    if (isBegun) {
        format.endTrace();
    }
    lastOfLine.reset();
    isBegun = false;
    chooser.endTrace();
}

// The format, which knows of the trace.
Format& Exporter::begun() {
    if (!isBegun) {
        format.beginTrace(name);
    }
    isBegun = true;
    return format;
}

std::string Exporter::leftOut() const {
    std::string list;
    appendCount(list, count(FixChooser::Outcome::REPEATED), "repetition", "repetitions",
                "of a fix in its epoch");
    appendCount(list, count(FixChooser::Outcome::WRONG), "fix", "fixes", "with a wrong checksum");
    appendCount(list, invalid, "fix", "fixes", "that the receiver does not call valid");
    appendCount(list, count(FixChooser::Outcome::NO_FIX), "epoch", "epochs", "without RMC and GGA");
    appendCount(list, outside, "message", "messages", "from before or after the time asked for");
    appendCount(list, others, "message", "messages", "of other types");
    return list;
}

}  // namespace vextrace::tools
