#include "tools/trace/SummaryTable.h"

#include <fmt/core.h>

#include <algorithm>

#include "libvexstream/utc.h"
#include "tools/io/escape.h"
#include "tools/io/plural.h"
#include "tools/io/utf8.h"

namespace vextrace::tools {

namespace {

constexpr size_t WIDEST_NAME = 40;  // a longer one moves its line to the right
constexpr timeStamp_t SECOND = 1'000'000'000;

std::string padded(const std::string& text, size_t width) {
    const size_t length = characterCount(text);
    return text + std::string(width > length ? width - length : 0, ' ');
}

std::string lineOf(const std::string& name, std::string_view begin, std::string_view duration,
                   std::string_view fixes, std::string_view way, std::string_view speed,
                   std::string_view damage) {
    return fmt::format("{}  {:<20}  {:>10}  {:>9}  {:>11}  {:>7}  {}\n", name, begin, duration,
                       fixes, way, speed, damage);
}

std::string durationText(timeStamp_t nanoseconds) {
    const timeStamp_t seconds = nanoseconds / SECOND;
    return fmt::format("{}:{:02}:{:02}", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

}  // namespace

SummaryTable::SummaryTable(const std::vector<std::string>& names)
    : nameWidth(characterCount(fmt::format("all {}", counted(names.size(), "trace")))) {
    for (const std::string& name : names) {
        nameWidth = std::max(nameWidth, std::min(WIDEST_NAME, characterCount(shownName(name))));
    }
}

std::string SummaryTable::head() const {
    return lineOf(padded("trace", nameWidth), "begin", "h:mm:ss", "fixes", "km", "km/h", "damage");
}

std::string SummaryTable::row(const std::string& trace, const Summary& summary) {
    Values values;
    const TimeSpan& times = summary.times();
    if (times.first && summary.messagesWithoutDate < summary.gpsMessages) {
        values.begin = *times.first - *times.first % SECOND;
    }
    values.duration = times.first ? *times.last - *times.first : 0;
    values.fixes = summary.validFixes;
    values.metres = summary.path.metres();
    values.speed = summary.speed.greatest;
    values.damagedPlaces = summary.damagedPlaces;
    all.begin = all.begin && values.begin ? std::min(all.begin, values.begin)
                                          : std::max(all.begin, values.begin);
    all.duration += values.duration;
    all.fixes += values.fixes;
    all.metres += values.metres;
    all.speed = std::max(all.speed, values.speed);
    all.damagedPlaces += values.damagedPlaces;
    ++traces;
    return line(shownName(trace), values);
}

std::string SummaryTable::sum() const {
    return line(fmt::format("all {}", counted(traces, "trace")), all);
}

std::string SummaryTable::line(const std::string& name, const Values& values) const {
    return lineOf(padded(name, nameWidth), values.begin ? utcText(*values.begin) : "-",
                  durationText(values.duration), fmt::format("{}", values.fixes),
                  fmt::format("{:.3f}", values.metres / 1000),
                  values.speed ? fmt::format("{:.1f}", *values.speed) : "-",
                  values.damagedPlaces == 0 ? "none" : counted(values.damagedPlaces, "place"));
}

}  // namespace vextrace::tools
