#pragma once

#include <string>

#include "tools/io/json.h"
#include "tools/trace/Summary.h"

namespace vextrace::tools {

/// A summary for people: a line for each kind of number, with units; "none" where there is no
/// value.
/// \param isLong  whether codes that are less than a thousandth of the sentences have a count each
std::string summaryText(const Summary& summary, bool isLong);

/// A summary for programs, behind a member that says of what. These keys are stable; a value that
/// is not known is null.
///
///     bytes                        of the trace
///     messages.gps, .other         counts
///     messages.other_by_id         array of {id, name, count}; name is null where the id has none
///     damage.places, .bytes        what was passed over because it is no message
///     sentences.count
///     sentences.by_code            object; what is no printable ASCII is escaped in the codes
///     sentences.of_other_codes     of those beyond the first thousand codes
///     sentences.wrong_checksum, .no_checksum
///     time.first, .last            earliest and latest, ISO 8601 in UTC; of messages with a date
///     time.first_ns, .last_ns      the same in nanoseconds since 1970
///     time.without_date            GPS messages whose time stamp has no date
///     time.steps_back              GPS messages with an earlier time than the one before
///     gaps.limit_s                 a longer pause between two GPS messages is a gap
///     gaps.count, .longest_s
///     gaps.list                    array of {begin, end, seconds}, the first hundred
///     fixes.valid, .not_valid, .wrong_checksum
///     satellites.least, .median, .most
///     distance_m, distance_across_gaps_m
///     highest_speed_kmh
///     altitude_m.lowest, .highest
///     box.south, .west, .north, .east  degrees; west > east across the 180th meridian; or null
Json summaryJson(const Json::Member& head, const Summary& summary);

}  // namespace vextrace::tools
