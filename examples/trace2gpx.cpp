/// \file
/// Writes the fixes of a trace file as a GPX track.
#include <cmath>
#include <iomanip>
#include <iostream>
#include <sstream>

#include "commandLine.h"
#include "numberText.h"
#include "traceFile.h"

namespace {

constexpr const char* USAGE =
    "Usage: trace2gpx FILE\n"
    "Writes the valid fixes of the trace file FILE (- is standard input) as a GPX 1.1 track to\n"
    "standard output. Time stamps are taken as nanoseconds since 1970, 0 as no time.\n";

constexpr const char* HEAD =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<gpx version=\"1.1\" creator=\"trace2gpx\" xmlns=\"http://www.topografix.com/GPX/1/1\">\n"
    "  <trk>\n"
    "    <trkseg>\n";
constexpr const char* FOOT =
    "    </trkseg>\n"
    "  </trk>\n"
    "</gpx>\n";

std::string degrees(double number) {
    return decimal(number, 10);
}

// GPX ends the range of longitudes before 180 degrees, which are -180 degrees as well.
std::string longitudeText(double longitude) {
    const std::string text = degrees(longitude);
    return text == degrees(180) ? degrees(-180) : text;
}

// The day of the year, counted from 1970, as yyyy-mm-dd. Years begin in March here, so that the
// leap day is the last one of its year, and eras of 400 years repeat.
std::string dateText(uint64_t daysSince1970) {
    constexpr uint64_t DAYS_PER_ERA = 146097;
    const uint64_t days = daysSince1970 + 719468;  // since 1 March of the year 0
    const uint64_t dayOfEra = days % DAYS_PER_ERA;
    const uint64_t yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const uint64_t dayOfYear = dayOfEra - (yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100);
    const uint64_t monthFromMarch = (dayOfYear * 5 + 2) / 153;
    const uint64_t day = dayOfYear - (monthFromMarch * 153 + 2) / 5 + 1;
    const uint64_t month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
    const uint64_t year = days / DAYS_PER_ERA * 400 + yearOfEra + (month <= 2 ? 1 : 0);
    std::ostringstream text;
    text << std::setfill('0') << std::setw(4) << year << '-' << std::setw(2) << month << '-'
         << std::setw(2) << day;
    return text.str();
}

// With its point, without zeros at the end; nothing when there is no fraction.
std::string fractionText(uint64_t nanoseconds) {
    if (nanoseconds == 0) {
        return "";
    }
    std::ostringstream text;
    text << '.' << std::setfill('0') << std::setw(9) << nanoseconds;
    return text.str().substr(0, text.str().find_last_not_of('0') + 1);
}

std::string timeText(timeStamp_t nanoseconds) {
    const uint64_t seconds = nanoseconds / 1'000'000'000;
    std::ostringstream text;
    text << dateText(seconds / 86400) << 'T' << std::setfill('0') << std::setw(2)
         << seconds / 3600 % 24 << ':' << std::setw(2) << seconds / 60 % 60 << ':' << std::setw(2)
         << seconds % 60 << fractionText(nanoseconds % 1'000'000'000) << 'Z';
    return text.str();
}

// A garbled sentence may call itself valid and hold no position.
bool hasPosition(const GPSTraceMessage::gprmc_t& fields) {
    return !fields.latitude.empty() && !fields.longitude.empty() &&
           (fields.latitudeHemisphere == "N" || fields.latitudeHemisphere == "S") &&
           (fields.longitudeHemisphere == "E" || fields.longitudeHemisphere == "W");
}

// Also false for values that are no number.
bool isWithin(double value, double limit) {
    return std::fabs(value) <= limit;
}

bool isFix(const GPSTraceMessage& gps, const GPSTraceMessage::numeric_gprmc_t& rmc) {
    return rmc.status && hasPosition(gps.getRMC()) && isWithin(rmc.latitude, 90) &&
           isWithin(rmc.longitude, 180);
}

void writeElevation(const GPSTraceMessage& gps) {
    GPSTraceMessage::numeric_gpgga_t gga;
    if (gps.getGPGGA(gga) && !gps.getGGA().antennaAltitude.empty() &&
        std::isfinite(gga.antennaAltitude)) {
        std::cout << "        <ele>" << decimal(gga.antennaAltitude, 3) << "</ele>\n";
    }
}

void writeFix(const GPSTraceMessage& gps) {
    GPSTraceMessage::numeric_gprmc_t rmc;
    if (!gps.getGPRMC(rmc) || !isFix(gps, rmc)) {
        return;
    }
    std::cout << "      <trkpt lat=\"" << degrees(rmc.latitude) << "\" lon=\""
              << longitudeText(rmc.longitude) << "\">\n";
    writeElevation(gps);
    if (gps.getTimeStamp() != 0) {
        std::cout << "        <time>" << timeText(gps.getTimeStamp()) << "</time>\n";
    }
    std::cout << "      </trkpt>\n";
}

void writeFixes(TraceReader& trace) {
    while (const std::unique_ptr<GPSTraceMessage> gps = trace.next()) {
        splitFields(*gps);
        writeFix(*gps);
    }
}

void run(const CommandLine& arguments) {
    TraceReader trace(arguments.files[0]);
    std::cout << HEAD;
    try {
        writeFixes(trace);
    } catch (const DamagedTrace&) {
        std::cout << FOOT;  // what could be read is a complete document
        throw;
    }
    std::cout << FOOT;
}

}  // namespace

int main(int argc, char* argv[]) {
    return runProgram({"trace2gpx", USAGE, {}, 1, run}, argc, argv);
}
