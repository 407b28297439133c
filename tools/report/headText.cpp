#include "tools/report/headText.h"

#include <fmt/core.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "libvexstream/utc.h"
#include "tools/io/escape.h"
#include "tools/io/plural.h"
#include "tools/report/shownTexts.h"

namespace vextrace::tools {

namespace {

constexpr size_t LISTED_FILES = 20;
constexpr size_t LONGEST_NAME = 200;

std::string countedGrouped(uint64_t number, std::string_view noun) {
    return fmt::format("{} {}{}", grouped(number), noun, number == 1 ? "" : "s");
}

std::string speedText(const std::optional<double>& speed) {
    return speed ? fmt::format("{:.1f} km/h", *speed) : "none";
}

std::string rangeText(const std::string& least, const std::string& greatest) {
    return least == greatest ? least : fmt::format("{} to {}", least, greatest);
}

std::string filesText(const std::vector<SurveyedTrace>& traces) {
    std::string text;
    for (size_t i = 0; i < std::min(traces.size(), LISTED_FILES); ++i) {
        text += fmt::format("{}{} ({})", i == 0 ? "" : ", ", traces[i].name,
                            shownSize(traces[i].bytes));
    }
    if (traces.size() > LISTED_FILES) {
        text += fmt::format(" and {} more", grouped(traces.size() - LISTED_FILES));
    }
    return text;
}

Fact distanceFact(const Path& path) {
    const double across = path.metresAcrossGaps();
    return {"Distance", shownDistance(path.metres()),
            across > 0 ? fmt::format("{} more across gaps", shownDistance(across)) : ""};
}

std::string gapsText(const Summary& summary) {
    const TimeSpan& times = summary.times();
    return times.longestGap
               ? fmt::format("{} between messages, the longest {}",
                             countedGrouped(times.gapCount, "gap"),
                             shownDuration(times.longestGap->length()))
               : fmt::format("no gap over {} between messages", shownDuration(summary.gapLimit()));
}

// The times in which none of the drives was.
std::vector<timeStamp_t> pausesBetween(const std::vector<SurveyedTrace>& traces) {
    std::vector<std::pair<timeStamp_t, timeStamp_t>> spans;
    for (const SurveyedTrace& trace : traces) {
        if (trace.first) {
            spans.emplace_back(*trace.first, *trace.last);
        }
    }
    std::sort(spans.begin(), spans.end());
    std::vector<timeStamp_t> pauses;
    timeStamp_t end = spans.empty() ? 0 : spans.front().second;
    for (const auto& [first, last] : spans) {
        if (first > end) {
            pauses.push_back(first - end);
        }
        end = std::max(end, last);
    }
    return pauses;
}

std::string pausesText(const std::vector<timeStamp_t>& pauses) {
    if (pauses.empty()) {
        return "";
    }
    const std::string longest = shownDuration(*std::max_element(pauses.begin(), pauses.end()));
    return pauses.size() == 1 ? fmt::format("; {} between the drives", longest)
                              : fmt::format("; {} between the drives, the longest {}",
                                            countedGrouped(pauses.size(), "pause"), longest);
}

Fact durationFact(const Summary& summary, const std::vector<SurveyedTrace>& traces) {
    if (!summary.times().first) {
        return {"Duration", "none", ""};
    }
    timeStamp_t duration = 0;
    for (const SurveyedTrace& trace : traces) {
        duration += trace.duration();
    }
    if (traces.size() == 1) {
        return {"Duration", shownDuration(duration), gapsText(summary)};
    }
    return {"Duration", shownDuration(duration),
            fmt::format("sum of {} drives; {}{}", grouped(traces.size()), gapsText(summary),
                        pausesText(pausesBetween(traces)))};
}

Fact movingFact(const Motion& motion) {
    if (motion.known() == 0) {
        return {"Moving", "not known", "no speeds"};
    }
    return {"Moving", shownDuration(motion.moving()),
            fmt::format("{:.0f} km/h or more", Motion::LEAST_SPEED)};
}

Fact meanSpeedFact(const Motion& motion) {
    const auto moving = motion.meanWhileMoving();
    if (!moving) {
        return {"Mean speed", speedText(motion.mean()), motion.mean() ? "never moving" : ""};
    }
    return {"Mean speed", speedText(moving),
            fmt::format("while moving; with stops {}", speedText(motion.mean()))};
}

Fact altitudeFact(const ValueRange& altitude) {
    if (!altitude.least) {
        return {"Altitude", "none", ""};
    }
    return {"Altitude",
            rangeText(fmt::format("{:.1f}", *altitude.least),
                      fmt::format("{:.1f}", *altitude.greatest)) +
                " m",
            fmt::format("range {:.1f} m", *altitude.greatest - *altitude.least)};
}

Fact satellitesFact(const SatelliteCounts& satellites) {
    if (!satellites.least()) {
        return {"Satellites", "none", ""};
    }
    return {"Satellites",
            rangeText(std::to_string(*satellites.least()), std::to_string(*satellites.most())),
            fmt::format("median {}", *satellites.median())};
}

Fact fixesFact(const Summary& summary) {
    std::string detail =
        fmt::format("{} valid, {} not", grouped(summary.validFixes), grouped(summary.invalidFixes));
    if (summary.doubtfulFixes != 0) {
        detail += fmt::format("; {} more with a wrong checksum", grouped(summary.doubtfulFixes));
    }
    return {"Fixes", grouped(summary.validFixes + summary.invalidFixes), detail};
}

Fact sentencesFact(const Summary& summary) {
    if (summary.wrongChecksums == 0 && summary.noChecksums == 0) {
        return {"Sentences", grouped(summary.sentences.total()), "all with a right checksum"};
    }
    return {"Sentences", grouped(summary.sentences.total()),
            fmt::format("{} with a wrong checksum, {} with none", grouped(summary.wrongChecksums),
                        grouped(summary.noChecksums))};
}

std::string timeText(const std::optional<timeStamp_t>& stamp) {
    const std::string text = stamp ? shownUtc(*stamp) : "–";
    return text.substr(0, text.find(" UTC"));
}

}  // namespace

// Not in the middle of a character.
std::string shortName(const std::string& name) {
    if (name.size() <= LONGEST_NAME) {
        return name;
    }
    size_t end = LONGEST_NAME;
    while ((static_cast<unsigned char>(name[end]) & 0xC0) == 0x80) {
        --end;
    }
    return name.substr(0, end) + "...";
}

void DamageNotes::add(const std::string& name, const TraceItem& damage) {
    add(fmt::format("{} is damaged at byte {}: {}. {} passed over.", name, grouped(damage.offset),
                    damage.reason, countedGrouped(damage.length, "byte")));
}

void DamageNotes::add(const std::string& note) {
    if (notes.size() < MOST) {
        notes.push_back(note);
    } else {
        ++further;
    }
}

std::vector<std::string> DamageNotes::texts() const {
    std::vector<std::string> result = notes;
    if (further != 0) {
        result.push_back(further == 1
                             ? "There is 1 more damaged place."
                             : fmt::format("There are {} more damaged places.", grouped(further)));
    }
    return result;
}

std::string titleOf(const std::vector<SurveyedTrace>& traces) {
    const std::string& first = traces.front().name;
    const std::string name = first.substr(first.find_last_of('/') + 1);
    return traces.size() == 1 ? name
                              : fmt::format("{} and {} more", name, grouped(traces.size() - 1));
}

std::string spanOf(const Summary& summary) {
    const TimeSpan& times = summary.times();
    if (!times.first || !hasDate(*times.last)) {
        return "No date is known.";
    }
    return shownSpan(*times.first, *times.last);
}

std::vector<Fact> factsOf(const Summary& summary, const std::vector<SurveyedTrace>& traces) {
    return {
        distanceFact(summary.path),
        durationFact(summary, traces),
        movingFact(summary.motion),
        {"Highest speed", speedText(summary.speed.greatest), ""},
        meanSpeedFact(summary.motion),
        altitudeFact(summary.altitude),
        satellitesFact(summary.satellites),
        fixesFact(summary),
        {"Messages", grouped(summary.gpsMessages),
         fmt::format("{} of other types", grouped(summary.otherMessages))},
        sentencesFact(summary),
        {traces.size() == 1 ? "File" : "Files", filesText(traces), "", true},
    };
}

std::vector<std::string> notesOf(const Summary& summary) {
    std::vector<std::string> notes;
    if (summary.doubtfulFixes != 0) {
        notes.push_back(fmt::format(
            "{} left out of the track, the charts and the numbers, because a sentence has a wrong "
            "checksum.",
            summary.doubtfulFixes == 1 ? "1 fix is"
                                       : grouped(summary.doubtfulFixes) + " fixes are"));
    }
    if (summary.messagesWithoutDate != 0) {
        notes.push_back(fmt::format("{} no date: their times count from 1970-01-01.",
                                    summary.messagesWithoutDate == 1
                                        ? "1 message has"
                                        : grouped(summary.messagesWithoutDate) + " messages have"));
    }
    if (const uint64_t steps = summary.times().stepsBack; steps != 0) {
        notes.push_back(fmt::format(
            "The time goes back {}: the charts show the fixes in order of time, the track in the "
            "order of the trace.",
            steps == 1 ? "once" : countedGrouped(steps, "time")));
    }
    return notes;
}

std::vector<SentenceRow> rowsOf(const SentenceCounts& sentences) {
    std::vector<SentenceRow> result;
    for (const SentenceCounts::Row& row : sentences.rows()) {
        if (result.size() == MOST_ROWS) {
            break;
        }
        result.push_back({escaped(row.code), grouped(row.number), grouped(row.wrongChecksums),
                          timeText(row.first), timeText(row.last), row.wrongChecksums != 0});
    }
    return result;
}

std::string furtherCodes(const SentenceCounts& sentences) {
    uint64_t further = sentences.others();
    const std::vector<SentenceCounts::Row> rows = sentences.rows();
    for (size_t i = MOST_ROWS; i < rows.size(); ++i) {
        further += rows[i].number;
    }
    return further == 0
               ? ""
               : fmt::format("And {} of further codes.", countedGrouped(further, "sentence"));
}

}  // namespace vextrace::tools
