#include "tools/export/Exporter.h"

#include <fmt/core.h>

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

Exporter::Exporter(Format& document, const ExportChoice& chosen)
    : format(document),
      choice(chosen),
      content(document.content()),
      fixes(chosen.unchecked ? FixSource::ALL : FixSource::NOT_WRONG) {}

void Exporter::add(const GpsView& message, uint64_t number) {
    if (content == Format::Content::SENTENCES) {
        format.addMessage(message);
    } else {
        addFixOf(message, number);
    }
    lastMessage = message.getTimeStamp();
}

void Exporter::addOutside(const GpsView& message) {
    ++outside;
    lastMessage = message.getTimeStamp();
    if (content == Format::Content::SENTENCES) {
        format.passOver(message);
    } else {
        fixes.read(message);
    }
}

void Exporter::addFixOf(const GpsView& message, uint64_t number) {
    const std::optional<Fix> fix = fixes.read(message);
    if (!fix) {
        countWithoutFix(message.getTimeStamp());
    } else if (fix->repeats) {
        ++repeated;
    } else if (fix->isDoubtful() && !choice.unchecked) {
        ++doubtful;
    } else if (content == Format::Content::ALL_FIXES) {
        format.addFix(*fix, message, number);
    } else if (fix->valid) {
        addToLine(*fix, message, number);
    } else {
        ++invalid;
    }
}

void Exporter::addToLine(const Fix& fix, const GpsView& message, uint64_t number) {
    if (lastOfLine) {
        const timeStamp_t between =
            fix.stamp > *lastOfLine ? fix.stamp - *lastOfLine : *lastOfLine - fix.stamp;
        if (between > choice.gap || hasDate(fix.stamp) != hasDate(*lastOfLine)) {
            format.endLine();
        }
    }
    lastOfLine = fix.stamp;
    format.addFix(fix, message, number);
}

// What a message has no room for stands in others of the same stamp, which lack nothing.
void Exporter::countWithoutFix(timeStamp_t stamp) {
    if (stamp != lastMessage) {
        ++withoutFix;
    }
}

void Exporter::endTrace() {
    format.endLine();
    format.endTrace();
    fixes.endTrace();
    lastOfLine.reset();
    lastMessage.reset();
}

std::string Exporter::leftOut() const {
    std::string list;
    appendCount(list, repeated, "repetition", "repetitions", "of a fix in its epoch");
    appendCount(list, doubtful, "fix", "fixes", "with a wrong checksum");
    appendCount(list, invalid, "fix", "fixes", "that the receiver does not call valid");
    appendCount(list, withoutFix, "epoch", "epochs", "without RMC and GGA");
    appendCount(list, outside, "message", "messages", "from before or after the time asked for");
    appendCount(list, others, "message", "messages", "of other types");
    return list;
}

}  // namespace vextrace::tools
