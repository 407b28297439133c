#include "tools/trace/summaryText.h"

#include <fmt/core.h>

#include <optional>
#include <string_view>

#include "libvexstream/messageNames.h"
#include "libvexstream/utc.h"
#include "tools/io/escape.h"
#include "tools/io/plural.h"

namespace vextrace::tools {

namespace {

// A code that is a smaller part of the sentences is rare: mostly one that was garbled.
constexpr uint64_t RARE = 1000;

constexpr uint64_t NANOSECONDS = 1'000'000'000;

double inSeconds(timeStamp_t nanoseconds) {
    return static_cast<double>(nanoseconds) / NANOSECONDS;
}

// "12.5 s", with no more decimals than it has.
std::string secondsText(timeStamp_t nanoseconds) {
    std::string fraction = fmt::format(".{:09}", nanoseconds % NANOSECONDS);
    fraction.erase(fraction.find_last_not_of(".0") + 1);
    return fmt::format("{}{} s", nanoseconds / NANOSECONDS, fraction);
}

std::string line(std::string_view name, std::string_view value) {
    return fmt::format("  {:<16}{}\n", name, value);
}

std::string messagesText(const Summary& summary) {
    std::string text =
        fmt::format("{} GPS, {} of other types", summary.gpsMessages, summary.otherMessages);
    std::string_view separator = ": ";
    for (const auto& [id, count] : summary.otherById) {
        const std::string_view name = messageName(id);
        text += fmt::format("{}{} ({}) {}", separator, name.empty() ? "unnamed" : name,
                            static_cast<unsigned>(id), count);
        separator = ", ";
    }
    return text;
}

std::string sentencesText(const SentenceCounts& sentences, bool isLong) {
    uint64_t rareCodes = 0;
    uint64_t rare = 0;
    std::string text = fmt::format("{}", sentences.total());
    std::string_view separator = ": ";
    for (const SentenceCounts::Row& row : sentences.rows()) {
        if (!isLong && row.number < sentences.total() / RARE) {
            ++rareCodes;
            rare += row.number;
            continue;
        }
        text += fmt::format("{}{} {}", separator, escaped(row.code), row.number);
        separator = ", ";
    }
    if (rareCodes != 0) {
        text += fmt::format(", {} {}", counted(rareCodes, "rare code"), rare);
    }
    if (sentences.others() != 0) {
        text += fmt::format(", further codes {}", sentences.others());
    }
    return text;
}

std::string damageText(const Summary& summary) {
    return summary.damagedPlaces == 0
               ? "none"
               : fmt::format("{}, {} passed over", counted(summary.damagedPlaces, "place"),
                             counted(summary.damagedBytes, "byte"));
}

std::string timeText(const Summary& summary) {
    const TimeSpan& times = summary.times();
    std::string text = "none";
    if (times.first) {
        text = fmt::format("{} to {}, {}", utcText(*times.first), utcText(*times.last),
                           secondsText(*times.last - *times.first));
    }
    if (summary.messagesWithoutDate != 0) {
        text += fmt::format("; {} without a date", counted(summary.messagesWithoutDate, "message"));
    }
    if (times.stepsBack != 0) {
        text += fmt::format("; {} back", counted(times.stepsBack, "step"));
    }
    return text;
}

std::string fixesText(const Summary& summary) {
    std::string text = fmt::format("{} valid, {} not valid, {} with a wrong checksum",
                                   summary.validFixes, summary.invalidFixes, summary.doubtfulFixes);
    if (summary.repeatedFixes != 0) {
        text += fmt::format(", {} repeated", summary.repeatedFixes);
    }
    return text;
}

std::string gapsText(const TimeSpan& times) {
    if (!times.longestGap) {
        return "none";
    }
    return fmt::format("{}, the longest {} after {}", times.gapCount,
                       secondsText(times.longestGap->length()), utcText(times.longestGap->begin));
}

std::string satellitesText(const SatelliteCounts& satellites) {
    return satellites.least() ? fmt::format("{} least, {} median, {} most", *satellites.least(),
                                            *satellites.median(), *satellites.most())
                              : "none";
}

std::string distanceText(const Path& path) {
    std::string text = fmt::format("{:.3f} km", path.metres() / 1000);
    if (path.metresAcrossGaps() > 0) {
        text += fmt::format("; {:.3f} km across gaps", path.metresAcrossGaps() / 1000);
    }
    return text;
}

std::string rangeText(const ValueRange& range, std::string_view unit) {
    return range.least
               ? fmt::format("{:.1f} {} to {:.1f} {}", *range.least, unit, *range.greatest, unit)
               : "none";
}

std::string boxText(const std::optional<Box>& box) {
    if (!box) {
        return "none";
    }
    return fmt::format("latitude {:.7f} to {:.7f} deg, longitude {:.7f} to {:.7f} deg{}",
                       box->south, box->north, box->west, box->east,
                       box->west > box->east ? ", across the 180th meridian" : "");
}

Json messagesJson(const Summary& summary) {
    Json byId = Json::array();
    for (const auto& [id, count] : summary.otherById) {
        const std::string_view name = messageName(id);
        byId.add(Json{{"id", static_cast<unsigned>(id)},
                      {"name", name.empty() ? Json() : Json(name)},
                      {"count", count}});
    }
    return {{"gps", summary.gpsMessages}, {"other", summary.otherMessages}, {"other_by_id", byId}};
}

Json sentencesJson(const Summary& summary) {
    Json byCode = Json::object();
    for (const SentenceCounts::Row& row : summary.sentences.rows()) {
        byCode.add(escaped(row.code), row.number);
    }
    return {{"count", summary.sentences.total()},
            {"by_code", byCode},
            {"of_other_codes", summary.sentences.others()},
            {"wrong_checksum", summary.wrongChecksums},
            {"no_checksum", summary.noChecksums}};
}

Json timeJson(const Summary& summary) {
    const TimeSpan& times = summary.times();
    return {{"first", times.first ? Json(utcText(*times.first)) : Json()},
            {"last", times.last ? Json(utcText(*times.last)) : Json()},
            {"first_ns", Json(times.first)},
            {"last_ns", Json(times.last)},
            {"without_date", summary.messagesWithoutDate},
            {"steps_back", times.stepsBack}};
}

Json gapsJson(const Summary& summary) {
    const TimeSpan& times = summary.times();
    Json list = Json::array();
    for (const Gap& gap : times.gaps) {
        list.add(Json{{"begin", utcText(gap.begin)},
                      {"end", utcText(gap.end)},
                      {"seconds", inSeconds(gap.length())}});
    }
    return {{"limit_s", inSeconds(summary.gapLimit())},
            {"count", times.gapCount},
            {"longest_s", times.longestGap ? Json(inSeconds(times.longestGap->length())) : Json()},
            {"list", list}};
}

Json boxJson(const std::optional<Box>& box) {
    if (!box) {
        return {};
    }
    return {{"south", box->south}, {"west", box->west}, {"north", box->north}, {"east", box->east}};
}

}  // namespace

std::string summaryText(const Summary& summary, bool isLong) {
    return line("bytes", std::to_string(summary.bytes)) + line("messages", messagesText(summary)) +
           line("damage", damageText(summary)) +
           line("sentences", sentencesText(summary.sentences, isLong)) +
           line("checksums",
                fmt::format("{} wrong, {} missing", summary.wrongChecksums, summary.noChecksums)) +
           line("time", timeText(summary)) +
           line("gaps > " + secondsText(summary.gapLimit()), gapsText(summary.times())) +
           line("fixes", fixesText(summary)) +
           line("satellites", satellitesText(summary.satellites)) +
           line("distance", distanceText(summary.path)) +
           line("highest speed", summary.speed.greatest
                                     ? fmt::format("{:.1f} km/h", *summary.speed.greatest)
                                     : "none") +
           line("altitude", rangeText(summary.altitude, "m")) +
           line("box", boxText(summary.positions.box()));
}

Json summaryJson(const Json::Member& head, const Summary& summary) {
    return {head,
            {"bytes", summary.bytes},
            {"messages", messagesJson(summary)},
            {"damage", Json{{"places", summary.damagedPlaces}, {"bytes", summary.damagedBytes}}},
            {"sentences", sentencesJson(summary)},
            {"time", timeJson(summary)},
            {"gaps", gapsJson(summary)},
            {"fixes", Json{{"valid", summary.validFixes},
                           {"not_valid", summary.invalidFixes},
                           {"wrong_checksum", summary.doubtfulFixes},
                           {"repeated", summary.repeatedFixes}}},
            {"satellites", Json{{"least", Json(summary.satellites.least())},
                                {"median", Json(summary.satellites.median())},
                                {"most", Json(summary.satellites.most())}}},
            {"distance_m", summary.path.metres()},
            {"distance_across_gaps_m", summary.path.metresAcrossGaps()},
            {"highest_speed_kmh", Json(summary.speed.greatest)},
            {"altitude_m", Json{{"lowest", Json(summary.altitude.least)},
                                {"highest", Json(summary.altitude.greatest)}}},
            {"box", boxJson(summary.positions.box())}};
}

}  // namespace vextrace::tools
