#include <string>

#include "libvexstream/utc.h"
#include "tools/export/Format.h"
#include "tools/export/text.h"
#include "tools/io/escape.h"

namespace vextrace::tools {

namespace {

constexpr const char* KML_HEAD =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<kml xmlns=\"http://www.opengis.net/kml/2.2\""
    " xmlns:gx=\"http://www.google.com/kml/ext/2.2\">\n"
    "<Document>\n"
    "<Schema id=\"fix\">\n"
    "<gx:SimpleArrayField name=\"speed\" type=\"double\">"
    "<displayName>Speed (km/h)</displayName></gx:SimpleArrayField>\n"
    "</Schema>\n";
constexpr const char* SPEEDS_HEAD =
    "<ExtendedData><SchemaData schemaUrl=\"#fix\"><gx:SimpleArrayData name=\"speed\">\n";
constexpr const char* SPEEDS_FOOT = "</gx:SimpleArrayData></SchemaData></ExtendedData>\n";
constexpr const char* KML_FOOT = "</Document>\n</kml>\n";

/// KML 2.2: a folder for each trace, a placemark for each line, with the time, the place, the
/// course and the speed of each fix. A track lists all its times, then all its places and so on, so
/// a long line becomes several tracks, each of which begins where the one before ends. A track
/// needs times: lines without a date are plain ones, in pieces as well.
class Kml : public Format {
public:
    using Format::Format;

    Content content() const override { return Content::VALID_FIXES; }

    void begin() override { out.write(KML_HEAD); }

    void beginTrace(const std::string& trace) override {
        name = "<name>" + html(escaped(trace)) + "</name>";
        out.write("<Folder>" + name + "\n");
    }

    void beginLine(const Fix& first) override {
        isTimed = hasDate(first.stamp);
        out.write("<Placemark>" + name + (isTimed ? "<gx:MultiTrack>\n" : "<MultiGeometry>\n"));
    }

    void addFix(const Fix& fix, const GpsView& /*message*/, uint64_t /*number*/) override {
        if (count == FIXES_PER_PIECE) {
            writePiece();
            append(last);
        }
        append(fix);
        last = fix;
    }

    void endLine() override {
        writePiece();
        out.write(isTimed ? "</gx:MultiTrack></Placemark>\n" : "</MultiGeometry></Placemark>\n");
    }

    void endTrace() override { out.write("</Folder>\n"); }

    void end() override { out.write(KML_FOOT); }

private:
    static constexpr size_t FIXES_PER_PIECE = 4096;

    // What is missing keeps its place, so that the lists go together.
    void append(const Fix& fix) {
        ++count;
        times += "<when>";
        appendUtc(times, fix.stamp);
        times += "</when>\n";
        appendPlace(fix);
        courses += "<gx:angles>";
        if (fix.course) {
            appendNumber(courses, *fix.course);
            courses += " 0 0";  // neither tilt nor roll
            hasCourses = true;
        }
        courses += "</gx:angles>\n";
        speeds += "<gx:value>";
        if (fix.speed) {
            appendNumber(speeds, *fix.speed);
            hasSpeeds = true;
        }
        speeds += "</gx:value>\n";
    }

    void appendPlace(const Fix& fix) {
        const char separator = isTimed ? ' ' : ',';
        places += isTimed ? "<gx:coord>" : "";
        appendCoordinate(places, *fix.longitude);
        places += separator;
        appendCoordinate(places, *fix.latitude);
        if (fix.altitude) {
            places += separator;
            appendNumber(places, *fix.altitude);
        }
        places += isTimed ? "</gx:coord>\n" : "\n";
    }

    void writePiece() {
        if (isTimed) {
            writeTrack();
        } else {
            writePlaces();
        }
        clear();
    }

    void writePlaces() {
        const bool isLine = count > 1;
        out.write(isLine ? "<LineString><coordinates>\n" : "<Point><coordinates>\n");
        out.write(places.view());
        out.write(isLine ? "</coordinates></LineString>\n" : "</coordinates></Point>\n");
    }

    void writeTrack() {
        out.write("<gx:Track>\n");
        out.write(times.view());
        out.write(places.view());
        if (hasCourses) {
            out.write(courses.view());
        }
        if (hasSpeeds) {
            out.write(SPEEDS_HEAD);
            out.write(speeds.view());
            out.write(SPEEDS_FOOT);
        }
        out.write("</gx:Track>\n");
    }

    void clear() {
        for (TextBuffer* list : {&times, &places, &courses, &speeds}) {
            list->clear();
        }
        hasCourses = false;
        hasSpeeds = false;
        count = 0;
    }

    std::string name;      // of the trace, as an element
    bool isTimed = false;  // the fixes of the line have dates
    Fix last;
    size_t count = 0;  // of fixes in the lists
    TextBuffer times;
    TextBuffer places;
    TextBuffer courses;
    bool hasCourses = false;
    TextBuffer speeds;
    bool hasSpeeds = false;
};

}  // namespace

std::unique_ptr<Format> makeKml(OutputFile& output) {
    return std::make_unique<Kml>(output);
}

}  // namespace vextrace::tools
