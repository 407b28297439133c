/// \file
/// Shows the messages of a trace file.
#include <algorithm>
#include <cctype>
#include <iomanip>
#include <iostream>
#include <sstream>

#include "commandLine.h"
#include "numberText.h"
#include "traceFile.h"

namespace {

constexpr const char* USAGE =
    "Usage: traceview [OPTION]... FILE\n"
    "Prints the trace line of each GPS message of the trace file FILE (- is standard input).\n"
    "Options choose other views instead, several may be given:\n"
    "  --fields  the fields of its RMC and GGA sentences, numbered, without line ends\n"
    "  --fix     its RMC and GGA sentences as numbers\n"
    "  --rdb     the RDB text; nothing where there is no position\n"
    "  --hex     its bytes in the file\n"
    "and which messages:\n"
    "  --first   only the first one that has a position\n";

void showLine(const GPSTraceMessage& gps) {
    std::cout << gps << '\n';
}

// The last field of a sentence may hold the line end, which would show as a blank line.
template <class Fields>
void showFields(const char* title, const Fields& fields) {
    std::ostringstream text;
    text << title << '\n' << fields;
    char previous = '\0';
    for (const char character : text.str()) {
        if (character != '\r' && (character != '\n' || previous != '\n')) {
            std::cout << character;
            previous = character;
        }
    }
}

void showFields(const GPSTraceMessage& gps) {
    if (gps.hasNmeaDataType(GPSTraceMessage::NMEA_DATA_GPRMC)) {
        showFields("RMC", gps.getRMC());
    }
    if (gps.hasNmeaDataType(GPSTraceMessage::NMEA_DATA_GPGGA)) {
        showFields("GGA", gps.getGGA());
    }
}

// hhmmss or ddmmyy.
std::string sixDigits(uint64_t number) {
    std::ostringstream text;
    text << std::setw(6) << std::setfill('0') << number;
    return text.str();
}

// Receivers send up to eight decimals of a minute, which take ten of a degree.
template <class Fields, class Numbers>
std::string position(const Fields& fields, const Numbers& numbers) {
    if (fields.latitude.empty() || fields.longitude.empty()) {
        return "no position";
    }
    return "latitude " + decimal(numbers.latitude, 10) + " deg, longitude " +
           decimal(numbers.longitude, 10) + " deg";
}

std::string quality(const GPSTraceMessage::gpgga_t& fields) {
    const std::string digit = fields.gpsQualityIndicator.substr(0, 1);
    return digit.find_first_of("0123456789") == 0 ? "quality " + digit : "quality unknown";
}

void showFix(const GPSTraceMessage& gps) {
    GPSTraceMessage::numeric_gprmc_t rmc;
    if (gps.getGPRMC(rmc)) {
        std::cout << "RMC: time " << sixDigits(rmc.timeUTC) << ", date " << sixDigits(rmc.dateUTC)
                  << (rmc.status ? ", valid, " : ", not valid, ") << position(gps.getRMC(), rmc)
                  << ", speed " << decimal(rmc.speed, 6) << " km/h, course "
                  << decimal(rmc.course, 4) << " deg\n";
    }
    GPSTraceMessage::numeric_gpgga_t gga;
    if (gps.getGPGGA(gga)) {
        std::cout << "GGA: time " << sixDigits(gga.timeUTC) << ", " << quality(gps.getGGA()) << ", "
                  << position(gps.getGGA(), gga) << ", "
                  << counted(gga.numberSatellites, "satellite") << ", altitude "
                  << decimal(gga.antennaAltitude, 4) << " m\n";
    }
}

// Takes a copy, because the text refreshes the message's fields.
std::string rdbText(GPSTraceMessage gps) {
    return gps.formatForRDB();
}

void showRDB(const GPSTraceMessage& gps) {
    const std::string text = rdbText(gps);
    if (!text.empty()) {
        std::cout << text << '\n';
    }
}

constexpr size_t BYTES_PER_LINE = 16;

std::string hexDumpLine(const std::vector<uint8_t>& bytes, size_t begin) {
    std::ostringstream line;
    line << std::hex << std::setfill('0') << std::setw(4) << begin << ' ';
    std::string characters;
    for (size_t i = begin; i < begin + BYTES_PER_LINE; ++i) {
        if (i < bytes.size()) {
            line << ' ' << std::setw(2) << unsigned{bytes[i]};
            characters += std::isprint(bytes[i]) != 0 ? static_cast<char>(bytes[i]) : '.';
        } else {
            line << "   ";
        }
    }
    return line.str() + "  " + characters;
}

void showBytes(const GPSTraceMessage& gps) {
    const std::vector<uint8_t> bytes = serialise(gps);
    for (size_t begin = 0; begin < bytes.size(); begin += BYTES_PER_LINE) {
        std::cout << hexDumpLine(bytes, begin) << '\n';
    }
}

struct View {
    const char* option;
    void (*show)(const GPSTraceMessage& gps);
};

constexpr View VIEWS[] = {
    {"--fields", showFields}, {"--fix", showFix}, {"--rdb", showRDB}, {"--hex", showBytes}};

bool isGiven(const CommandLine& arguments, const char* option) {
    return std::count(arguments.options.begin(), arguments.options.end(), option) != 0;
}

std::vector<View> chosenViews(const CommandLine& arguments) {
    std::vector<View> views;
    for (const View& view : VIEWS) {
        if (isGiven(arguments, view.option)) {
            views.push_back(view);
        }
    }
    return views.empty() ? std::vector<View>{{"", showLine}} : views;
}

// Satellites alone make an RDB text, even while they are too few for a position.
bool hasPosition(const GPSTraceMessage& gps) {
    return !rdbText(gps).empty() &&
           (!gps.getRMC().latitude.empty() || !gps.getGGA().latitude.empty());
}

void run(const CommandLine& arguments) {
    const std::vector<View> views = chosenViews(arguments);
    const bool onlyFirst = isGiven(arguments, "--first");
    TraceReader trace(arguments.files[0]);
    while (const std::unique_ptr<GPSTraceMessage> gps = trace.next()) {
        splitFields(*gps);
        if (onlyFirst && !hasPosition(*gps)) {
            continue;
        }
        for (const View& view : views) {
            view.show(*gps);
        }
        if (onlyFirst) {
            break;
        }
    }
}

}  // namespace

int main(int argc, char* argv[]) {
    return runProgram(
        {"traceview", USAGE, {"--fields", "--fix", "--rdb", "--hex", "--first"}, 1, run}, argc,
        argv);
}
