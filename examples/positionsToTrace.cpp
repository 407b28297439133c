/// \file
/// Turns lines such as "2026-05-17T10:00:00Z,48.1173,11.5167,545.4" (UTC of the years that RMC can
/// tell, degrees, metres) into sentences as a receiver sends them, and these into a trace.
#include <array>
#include <cmath>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <sstream>

#include "libvexstream/EpochBuilder.h"
#include "libvexstream/utc.h"

using namespace vextrace;

// "4807.0380,N": minutes are rounded once, so that they never become 60.
std::string coordinate(double degrees, int digits, const char* sides) {
    const long parts = std::lround(std::abs(degrees) * 600000);  // ten-thousandths of a minute
    std::ostringstream text;
    text << std::setfill('0') << std::setw(digits) << (parts / 600000 * 100 + parts / 10000 % 60)
         << '.' << std::setw(4) << parts % 10000 << ',' << sides[degrees < 0 ? 1 : 0];
    return text.str();
}

int main(int argc, char* argv[]) {
    if (argc != 3) {
        std::cerr << "Usage: positionsToTrace NMEA TRACE <TABLE\n";
        return 2;
    }
    std::ofstream log(argv[1], std::ios::binary);
    std::ofstream trace(argv[2], std::ios::binary);
    EpochBuilder epochs(StampSource::SENTENCES, {});
    const auto text = [](const std::vector<uint8_t>& v) { return std::string(v.begin(), v.end()); };
    bool allRead = true;
    for (std::string line; std::getline(std::cin, line);) {
        const std::string utc = utcText(parseUtc(field(line, 0)).value_or(0));
        std::istringstream in(line.substr(line.find(',') + 1));
        auto [north, east, up] = std::array{0.0, 0.0, 0.0};
        if (utc < "1980" || utc >= "2080" || !(in >> north) || in.get() != ',' || !(in >> east) ||
            in.get() != ',' || !(in >> up) || std::abs(north) > 90 || std::abs(east) > 180 ||
            std::abs(up) >= 1e6) {
            std::cerr << "No position: " << line << '\n';
            allRead = false;
            continue;
        }
        const auto time = utc.substr(11, 2) + utc.substr(14, 2) + utc.substr(17, utc.size() - 18);
        const auto date = utc.substr(8, 2) + utc.substr(5, 2) + utc.substr(2, 2);
        const auto place = coordinate(north, 4, "NS") + ',' + coordinate(east, 5, "EW");
        std::ostringstream altitude;
        altitude << std::fixed << std::setprecision(1) << up;
        for (const std::string& sentence :
             {makeSentence("GPRMC," + time + ",A," + place + ",,," + date + ",,,A"),
              makeSentence("GPGGA," + time + ',' + place + ",1,,," + altitude.str() + ",M,,M,,")}) {
            log << sentence;
            trace << text(epochs.add(sentence, 0).bytes);
        }
    }
    trace << text(epochs.take().bytes);
    return log.flush() && trace.flush() && allRead ? 0 : 1;
}
