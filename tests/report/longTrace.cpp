/// \file
/// Writes a made-up trace of a week with ten fixes a second to standard output: a lap after the
/// other around a town, with stops, a tunnel of a minute, and one second at a speed of its own.
///
///     longTrace [FIXES]
#include <fmt/format.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "libvextrace/MessageBase.h"
#include "libvextrace/messageID.h"

namespace {

constexpr uint64_t WEEK = uint64_t{7} * 86400 * 10;
constexpr uint64_t START = 1794787200;  // 2026-11-16 00:00:00, in seconds since 1970

using Bytes = fmt::memory_buffer;

void addNumber(uint64_t number, int bytes, Bytes& out) {
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) {
        out.push_back(static_cast<char>(number >> shift & 0xFF));
    }
}

// What stands from the place on becomes a sentence.
void endSentence(size_t begin, Bytes& out) {
    unsigned checksum = 0;
    for (size_t i = begin + 1; i < out.size(); ++i) {
        checksum ^= static_cast<unsigned char>(out[i]);
    }
    fmt::format_to(std::back_inserter(out), "*{:02X}\r\n", checksum);
}

struct Point {
    double latitude, longitude, speed, altitude;
    unsigned satellites;
};

// Laps of different length; every fourth minute the vehicle stands still.
class Vehicle {
public:
    Point next(uint64_t tenths) {
        const auto seconds = static_cast<double>(tenths) / 10;
        const bool stands = tenths / 2400 % 4 == 3;
        const double wanted = stands ? 0 : 90 + 40 * std::sin(seconds / 47);
        speed += (wanted - speed) * 0.01;
        way += speed / 36000;  // km
        const double size = 1 + 0.3 * std::sin(seconds / 70000);
        const double angle = way / 4;
        Point point = {48.1 + size * 0.05 * std::sin(angle) + 0.01 * std::sin(5 * angle),
                       11.5 + size * 0.08 * std::cos(angle) + 0.008 * std::sin(7 * angle),
                       speed / 1.852, 520 + 30 * std::sin(angle) + 4 * std::sin(seconds / 13),
                       static_cast<unsigned>(9 + 2 * std::sin(seconds / 600))};
        const bool peak = tenths / 10 == 345678;
        if (peak) {
            point.speed = 234.5 / 1.852;
        }
        return point;
    }

private:
    double speed = 0;
    double way = 0;
};

std::string coordinate(double degrees, int digits, char hemisphere) {
    const double whole = std::floor(degrees);
    return fmt::format("{:0{}.0f}{:08.5f},{}", whole, digits, (degrees - whole) * 60, hemisphere);
}

void addMessage(uint64_t tenths, const Point& point, Bytes& out) {
    const uint64_t second = tenths / 10 % 86400;
    const std::string time = fmt::format("{:02}{:02}{:02}.{}0", second / 3600, second / 60 % 60,
                                         second % 60, tenths % 10);
    const std::string position =
        coordinate(point.latitude, 2, 'N') + ',' + coordinate(point.longitude, 3, 'E');
    const size_t header = out.size();
    addNumber(0, MessageBase::MSGSIZE_LENGTH, out);
    addNumber(MSGID_GPS, 2, out);
    addNumber(0, 2, out);
    addNumber((START * 10 + tenths) * 100000000, 8, out);
    size_t begin = out.size();
    fmt::format_to(std::back_inserter(out), "$GPGGA,{},{},1,{:02},0.9,{:.1f},M,46.9,M,,", time,
                   position, point.satellites, point.altitude);
    endSentence(begin, out);
    begin = out.size();
    fmt::format_to(std::back_inserter(out), "$GPRMC,{},A,{},{:.3f},{:05.1f},{}1126,,,A", time,
                   position, point.speed, static_cast<double>(tenths % 3600) / 10,
                   16 + tenths / 864000);
    endSentence(begin, out);
    const size_t size = out.size() - header - MessageBase::MSGSIZE_LENGTH;
    out[header] = static_cast<char>(size >> 8);
    out[header + 1] = static_cast<char>(size & 0xFF);
}

int writeTrace(uint64_t fixes) {
    Vehicle vehicle;
    Bytes out;
    for (uint64_t tenths = 0; tenths < fixes; ++tenths) {
        const Point point = vehicle.next(tenths);
        const bool inTunnel = tenths / 600 == 5000;
        if (!inTunnel) {
            addMessage(tenths, point, out);
        }
        if (out.size() > 1 << 16 || tenths + 1 == fixes) {
            if (std::fwrite(out.data(), 1, out.size(), stdout) != out.size()) {
                return 1;
            }
            out.clear();
        }
    }
    return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
    try {
        return writeTrace(argc > 1 ? std::strtoull(argv[1], nullptr, 10) : WEEK);
    } catch (const std::exception& error) {
        fmt::print(stderr, "vextrace_long_trace: {}\n", error.what());
        return 1;
    }
}
