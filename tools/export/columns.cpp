#include "tools/export/columns.h"

#include "libvexstream/utc.h"
#include "tools/export/text.h"

namespace vextrace::tools {

namespace {

constexpr auto APPEND_NUMBER = [](TextBuffer& text, auto number) { appendNumber(text, number); };

template <auto MEMBER, auto APPEND = APPEND_NUMBER>
bool appendMember(TextBuffer& text, const Fix& fix) {
    const auto& value = fix.*MEMBER;
    if (value) {
        APPEND(text, *value);
    }
    return value.has_value();
}

template <auto APPEND>
bool appendStamp(TextBuffer& text, const Fix& fix) {
    const bool isTime = hasDate(fix.stamp);
    if (isTime) {
        APPEND(text, fix.stamp);
    }
    return isTime;
}

bool appendValid(TextBuffer& text, const Fix& fix) {
    text += fix.valid ? "true" : "false";
    return true;
}

bool appendChecksum(TextBuffer& text, const Fix& fix) {
    const Checksum checksum = fix.checksum();
    text += checksum == Checksum::RIGHT ? "right" : checksum == Checksum::WRONG ? "wrong" : "none";
    return true;
}

}  // namespace

const std::array<Column, COLUMN_COUNT> COLUMNS = {{
    {"time_utc", true, appendStamp<appendUtc>},
    {"time_ns", false, appendStamp<appendInteger>},
    {"valid", false, appendValid},
    {"latitude_deg", false, appendMember<&Fix::latitude, appendCoordinate>},
    {"longitude_deg", false, appendMember<&Fix::longitude, appendCoordinate>},
    {"altitude_m", false, appendMember<&Fix::altitude>},
    {"speed_kmh", false, appendMember<&Fix::speed>},
    {"course_deg", false, appendMember<&Fix::course>},
    {"satellites", false, appendMember<&Fix::satellites>},
    {"quality", false, appendMember<&Fix::quality>},
    {"hdop", false, appendMember<&Fix::hdop>},
    {"checksum", true, appendChecksum},
}};

}  // namespace vextrace::tools
