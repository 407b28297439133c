#include <string>
#include <string_view>

#include "libvexstream/sentence.h"
#include "libvexstream/utc.h"
#include "tools/export/Format.h"
#include "tools/export/text.h"
#include "tools/io/escape.h"

namespace vextrace::tools {

namespace {

constexpr const char* HEAD =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<gpx version=\"1.1\" creator=\"vextrace\" xmlns=\"http://www.topografix.com/GPX/1/1\""
    " xmlns:tpx=\"http://www.garmin.com/xmlschemas/TrackPointExtension/v2\">\n";
constexpr const char* FOOT = "</gpx>\n";

constexpr double KMH_PER_METRE_PER_SECOND = 3.6;

// The range of longitudes ends before 180 degrees, which are -180 degrees as well.
double gpxLongitude(double longitude) {
    constexpr double LAST = 180 - 0.5e-12;
    return longitude < LAST ? longitude : -180;
}

// The range of courses ends before 360 degrees.
double gpxCourse(double course) {
    constexpr double LAST = 360 - 0.5e-3;
    return course < LAST ? course : 0;
}

// The dimensions of the fix, from a GSA sentence.
std::string_view dimensions(const GpsView& message) {
    const std::string_view gsa = message.getSentence("$GPGSA");
    if (gsa.empty() || storedChecksum(gsa) == Checksum::WRONG) {
        return "";
    }
    const std::string_view mode = field(gsa, 2);
    return mode == "3" ? "3d" : mode == "2" ? "2d" : "";
}

std::string_view fixType(const Fix& fix, const GpsView& message) {
    switch (fix.quality.value_or(0)) {
        case 2:
        case 4:  // with corrections that tell whole wavelengths
        case 5:  // or parts of them
            return "dgps";
        case 3:
            return "pps";
        default:
            return dimensions(message);
    }
}

/// GPX 1.1: a track for each trace with a segment for each line. Speed and course have no place of
/// their own in it; they stand in the extension that most readers of GPX know. Numbers are rounded:
/// some readers take decimals of no more than 18 digits.
class Gpx : public Format {
public:
    using Format::Format;

    Content content() const override { return Content::VALID_FIXES; }

    void begin() override { out.write(HEAD); }

    void beginTrace(const std::string& name) override {
        out.write("<trk>\n<name>" + html(escaped(name)) + "</name>\n");
    }

    void beginLine(const Fix& /*first*/) override { out.write("<trkseg>\n"); }

    void addFix(const Fix& fix, const GpsView& message, uint64_t /*number*/) override {
        TextBuffer& point = out.pending();
        point += "<trkpt lat=\"";
        appendDegrees(point, *fix.latitude);
        point += "\" lon=\"";
        appendDegrees(point, gpxLongitude(*fix.longitude));
        point += "\">";
        appendChildren(fix, message);
        point += "</trkpt>\n";
        out.flushWhenFull();
    }

    void endLine() override { out.write("</trkseg>\n"); }

    void endTrace() override { out.write("</trk>\n"); }

    void end() override { out.write(FOOT); }

private:
    // In the order that the schema wants.
    void appendChildren(const Fix& fix, const GpsView& message) {
        TextBuffer& point = out.pending();
        if (fix.altitude) {
            append("<ele>", *fix.altitude, "</ele>");
        }
        if (hasDate(fix.stamp)) {
            point += "<time>";
            appendUtc(point, fix.stamp);
            point += "</time>";
        }
        if (const std::string_view type = fixType(fix, message); !type.empty()) {
            point += "<fix>";
            point += type;
            point += "</fix>";
        }
        if (fix.satellites) {
            point += "<sat>";
            appendNumber(point, *fix.satellites);
            point += "</sat>";
        }
        if (fix.hdop) {
            append("<hdop>", *fix.hdop, "</hdop>");
        }
        if (fix.speed || fix.course) {
            appendMovement(fix);
        }
    }

    void appendMovement(const Fix& fix) {
        out.pending() += "<extensions><tpx:TrackPointExtension>";
        if (fix.speed) {
            append("<tpx:speed>", *fix.speed / KMH_PER_METRE_PER_SECOND, "</tpx:speed>");
        }
        if (fix.course) {
            append("<tpx:course>", gpxCourse(*fix.course), "</tpx:course>");
        }
        out.pending() += "</tpx:TrackPointExtension></extensions>";
    }

    void append(std::string_view opening, double number, std::string_view closing) {
        out.pending() += opening;
        appendThousandths(out.pending(), number);
        out.pending() += closing;
    }
};

}  // namespace

std::unique_ptr<Format> makeGpx(OutputFile& output) {
    return std::make_unique<Gpx>(output);
}

}  // namespace vextrace::tools
