#include <cmath>
#include <optional>
#include <string>
#include <string_view>

#include "libvexstream/utc.h"
#include "tools/export/Format.h"
#include "tools/export/text.h"
#include "tools/io/escape.h"
#include "tools/io/json.h"

namespace vextrace::tools {

namespace {

constexpr double ANTIMERIDIAN = 180;

struct Position {
    double longitude;
    double latitude;
    std::optional<double> altitude;
};

// Where the way from one position to another crosses the antimeridian, seen from the first.
Position crossing(const Position& from, const Position& to) {
    const double edge = std::copysign(ANTIMERIDIAN, from.longitude);
    const double part = (edge - from.longitude) / (to.longitude + 2 * edge - from.longitude);
    Position place = {edge, from.latitude + part * (to.latitude - from.latitude), std::nullopt};
    if (from.altitude && to.altitude) {
        place.altitude = *from.altitude + part * (*to.altitude - *from.altitude);
    }
    return place;
}

/// GeoJSON by RFC 7946: a feature for each line, with its trace, its first and last time. The line
/// is cut where it crosses the antimeridian. Whether it does must be known before its first
/// position is written, so lines are kept; one that grows too long is written as a cut line, cut or
/// not.
class GeoJson : public Format {
public:
    explicit GeoJson(OutputFile& output) : Format(output) {
        coordinates.room(LONGEST_KEPT + LONGEST_POSITION);
    }

    Content content() const override { return Content::VALID_FIXES; }

    void beginTrace(const std::string& name) override { trace = Json(utf8Name(name)).text(); }

    void begin() override { out.write(R"({"type":"FeatureCollection","features":[)"); }

    void beginLine(const Fix& first) override {
        begun = first.stamp;
        fixes = 0;
        positions = 0;
        partBegin = 0;
        isCut = false;
        isWritten = false;
    }

    void addFix(const Fix& fix, const GpsView& /*message*/, uint64_t /*number*/) override {
        Position position = {*fix.longitude, *fix.latitude, fix.altitude};
        if (fixes != 0) {
            leadTo(position);
        }
        append(position);
        last = position;
        ended = fix.stamp;
        ++fixes;
        if (coordinates.size() > LONGEST_KEPT && positions > 1) {
            writeKept();
        }
    }

    void endLine() override {
        if (isWritten) {
            endGeometry("]]");
        } else if (isCut) {
            beginGeometry("MultiLineString", "[[");
            endGeometry("]]");
        } else if (fixes > 1) {
            beginGeometry("LineString", "[");
            endGeometry("]");
        } else {
            beginGeometry("Point", "");
            endGeometry("");
        }
        writeProperties();
    }

    void end() override { out.write("\n]}\n"); }

private:
    static constexpr size_t LONGEST_KEPT = size_t{4} * 1024 * 1024;
    static constexpr size_t LONGEST_POSITION = 2048;

    // Cuts the line where it crosses the antimeridian on its way to the position. On the
    // antimeridian both longitudes are right; that of the side it comes from needs no cut.
    void leadTo(Position& position) {
        if (std::fabs(position.longitude) == ANTIMERIDIAN) {
            position.longitude = std::copysign(ANTIMERIDIAN, last.longitude);
        }
        if (std::fabs(position.longitude - last.longitude) <= ANTIMERIDIAN) {
            return;
        }
        Position edge = crossing(last, position);
        if (std::fabs(last.longitude) != ANTIMERIDIAN) {
            append(edge);
        }
        cut();
        edge.longitude = -edge.longitude;
        append(edge);
    }

    // A part of one position, which lies on the antimeridian, is none.
    void cut() {
        if (positions > 1) {
            coordinates += "],[";
            isCut = true;
            partBegin = coordinates.size();
        }
        coordinates.truncate(partBegin);
        positions = 0;
    }

    void append(const Position& position) {
        coordinates += positions == 0 ? "[" : ",[";
        appendCoordinate(coordinates, position.longitude);
        coordinates += ',';
        appendCoordinate(coordinates, position.latitude);
        if (position.altitude) {
            coordinates += ',';
            appendNumber(coordinates, *position.altitude);
        }
        coordinates += ']';
        ++positions;
    }

    void beginGeometry(std::string_view type, std::string_view opening) {
        out.write(features++ == 0 ? "\n" : ",\n");
        out.write(R"({"type":"Feature","geometry":{"type":")");
        out.write(type);
        out.write(R"(","coordinates":)");
        out.write(opening);
    }

    void endGeometry(std::string_view closing) {
        out.write(coordinates.view());
        coordinates.clear();
        out.write(closing);
        out.write("}");
    }

    void writeKept() {
        if (!isWritten) {
            beginGeometry("MultiLineString", "[[");
        }
        isWritten = true;
        out.write(coordinates.view());
        coordinates.clear();
    }

    void writeProperties() {
        TextBuffer& properties = out.pending();
        properties += R"(,"properties":{"trace":)";
        properties += trace;
        properties += R"(,"first_utc":)";
        appendTime(properties, begun);
        properties += ",\"last_utc\":";
        appendTime(properties, ended);
        properties += ",\"fixes\":";
        appendNumber(properties, fixes);
        properties += "}}";
        out.flushWhenFull();
    }

    static void appendTime(TextBuffer& text, timeStamp_t stamp) {
        if (!hasDate(stamp)) {
            text += "null";
            return;
        }
        text += '"';
        appendUtc(text, stamp);
        text += '"';
    }

    std::string trace;  // as a JSON text
    uint64_t features = 0;
    // Of the line in hand.
    uint64_t fixes = 0;
    timeStamp_t begun = 0;
    timeStamp_t ended = 0;
    Position last = {};
    bool isCut = false;
    bool isWritten = false;  // its beginning is
    TextBuffer coordinates;  // what is not written
    size_t partBegin = 0;    // of the part in hand, in the coordinates
    size_t positions = 0;    // of the part in hand
};

}  // namespace

std::unique_ptr<Format> makeGeoJson(OutputFile& output) {
    return std::make_unique<GeoJson>(output);
}

}  // namespace vextrace::tools
