/// \file
/// Turns a table of positions, with lines such as "2026-05-17T10:00:00Z,48.1173,11.5167,545.4"
/// (UTC, degrees, metres), into the sentences that a receiver would have sent, and these into a
/// trace.
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>

#include "libvexstream/EpochBuilder.h"
#include "libvexstream/utc.h"

using namespace vextrace;

// "4807.0380,N": minutes are rounded once, so that they never become 60.
std::string coordinate(double degrees, int digits, const char* sides) {
    const long parts = std::lround(std::abs(degrees) * 600000);  // ten-thousandths of a minute
    char text[32];
    std::snprintf(text, sizeof text, "%0*ld%02ld.%04ld,%c", digits, parts / 600000,
                  parts / 10000 % 60, parts % 10000, sides[degrees < 0 ? 1 : 0]);
    return text;
}

int main(int argc, char* argv[]) {
    if (argc != 3) {
        std::cerr << "Usage: positionsToTrace NMEA TRACE <TABLE\n";
        return 2;
    }
    std::ofstream log(argv[1], std::ios::binary), trace(argv[2], std::ios::binary);
    EpochBuilder epochs(StampSource::SENTENCES, {});
    const auto write = [&trace](const EpochBuilder::Part& part) {
        trace.write(reinterpret_cast<const char*>(part.bytes.data()), std::ssize(part.bytes));
    };
    bool allRead = true;
    for (std::string line; std::getline(std::cin, line);) {
        double north = NAN, east = NAN, metres = NAN;
        std::sscanf(line.c_str(), "%*[^,],%lf,%lf,%lf", &north, &east, &metres);
        const auto stamp = parseUtc(field(line, 0));
        if (!stamp || !(std::abs(north) <= 90 && std::abs(east) <= 180 && std::abs(metres) < 1e6)) {
            std::cerr << "No position: " << line << '\n';
            allRead = false;
            continue;
        }
        const std::string utc = utcText(*stamp);  // 2026-05-17T10:00:00.25Z
        const std::string time = utc.substr(11, 2) + utc.substr(14, 2) + utc.substr(17, 2) +
                                 utc.substr(19, utc.size() - 20);
        const std::string date = utc.substr(8, 2) + utc.substr(5, 2) + utc.substr(2, 2);
        const std::string place = coordinate(north, 2, "NS") + ',' + coordinate(east, 3, "EW");
        char altitude[32];
        std::snprintf(altitude, sizeof altitude, "%.1f", metres);
        for (const std::string& sentence :
             {makeSentence("GPRMC," + time + ",A," + place + ",,," + date + ",,,A"),
              makeSentence("GPGGA," + time + ',' + place + ",1,,," + altitude + ",M,,M,,")}) {
            log << sentence;
            write(epochs.add(sentence, 0));
        }
    }
    write(epochs.take());
    return log.flush() && trace.flush() && allRead ? 0 : 1;
}
