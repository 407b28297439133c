#include "tools/trace/views.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iterator>
#include <string>
#include <string_view>
#include <system_error>

#include "libvexstream/internal/digits.h"
#include "libvexstream/sentence.h"
#include "libvextrace/internal/traceLine.h"
#include "libvextrace/nmeaNumbers.h"
#include "tools/io/escape.h"
#include "tools/io/plural.h"

namespace vextrace::tools {

namespace {

// The first fields of a sentence, its address among them; empty where it has fewer. Each ends at a
// comma; the last one of the sentence at "*" or the line end.
template <size_t COUNT>
std::array<std::string_view, COUNT> fieldsOf(std::string_view sentence) {
    std::array<std::string_view, COUNT> fields;
    const char* next = sentence.data();
    const char* const end = next + sentence.size();
    for (std::string_view& field : fields) {
        const char* const begin = next;
        while (next != end && *next != ',' && *next != '*' && *next != '\r' && *next != '\n') {
            ++next;
        }
        field = {begin, static_cast<size_t>(next - begin)};
        if (next == end || *next != ',') {
            break;
        }
        ++next;
    }
    return fields;
}

// With so many decimals, never with an exponent.
void addDecimal(std::string& text, double number, int decimals) {
    char digits[400];
    const auto result =
        std::to_chars(digits, std::end(digits), number, std::chars_format::fixed, decimals);
    text.append(digits, result.ptr);
}

// Adds ", NAME VALUE UNIT", or says that there is none.
void addNumber(std::string& line, std::string_view name, std::string_view sent, double value,
               int decimals, std::string_view unit) {
    line += ", ";
    line += name;
    if (sent.empty()) {
        line += " missing";
    } else if (!isNumber(sent) || !std::isfinite(value)) {
        line += " invalid";
    } else {
        line += ' ';
        addDecimal(line, value, decimals);
        line += ' ';
        line += unit;
    }
}

// Digits, and behind a point more of them, are shown as they were sent.
void addDigits(std::string& line, std::string_view name, std::string_view sent) {
    const bool isValid = isNumber(sent) && isDigits(sent.substr(0, sent.find('.')));
    line += name;
    line += ' ';
    line += sent.empty() ? "missing" : isValid ? sent : "invalid";
}

// A number and its hemisphere.
using SentCoordinate = const std::string_view*;

bool isCoordinate(SentCoordinate sent, std::string_view hemispheres) {
    return isNumber(sent[0]) && sent[1].size() == 1 &&
           hemispheres.find(sent[1]) != std::string_view::npos;
}

void addPosition(std::string& line, SentCoordinate latitude, SentCoordinate longitude, double north,
                 double east) {
    if (latitude->empty() || longitude->empty()) {
        line += ", position missing";
    } else if (isCoordinate(latitude, "NS") && isCoordinate(longitude, "EW") &&
               std::fabs(north) <= 90 && std::fabs(east) <= 180) {
        addNumber(line, "latitude", latitude[0], north, 10, "deg");
        addNumber(line, "longitude", longitude[0], east, 10, "deg");
    } else {
        line += ", position invalid";
    }
}

void addStatus(std::string& line, std::string_view sent, bool isValid) {
    line += sent.empty() ? ", status missing" : isValid ? ", valid" : ", not valid";
}

// As many as a Fix takes for possible.
void addSatellites(std::string& line, std::string_view sent) {
    constexpr unsigned MOST = 999;
    unsigned number = 0;
    const auto read = std::from_chars(sent.data(), sent.data() + sent.size(), number);
    if (isDigits(sent) && read.ec == std::errc() && number <= MOST) {
        line += ", " + counted(number, "satellite");
    } else {
        line += sent.empty() ? ", satellites missing" : ", satellites invalid";
    }
}

void addVerdict(std::string& line, std::optional<Checksum> checksum) {
    line += checksum == Checksum::WRONG ? "wrong checksum, " : "";
}

void showRmc(std::string_view sentence, std::optional<Checksum> checksum, std::string& line) {
    const auto rmc = fieldsOf<10>(sentence);
    GPSTraceMessage::numeric_gprmc_t numbers;
    readNumbers(sentence, numbers);
    line += "RMC: ";
    addVerdict(line, checksum);
    addDigits(line, "time", rmc[1]);
    addDigits(line, ", date", rmc[9]);
    addStatus(line, rmc[2], numbers.status);
    addPosition(line, &rmc[3], &rmc[5], numbers.latitude, numbers.longitude);
    addNumber(line, "speed", rmc[7], numbers.speed, 6, "km/h");
    addNumber(line, "course", rmc[8], numbers.course, 4, "deg");
}

void showGga(std::string_view sentence, std::optional<Checksum> checksum, std::string& line) {
    const auto gga = fieldsOf<11>(sentence);
    GPSTraceMessage::numeric_gpgga_t numbers;
    readNumbers(sentence, numbers);
    line += "GGA: ";
    addVerdict(line, checksum);
    addDigits(line, "time", gga[1]);
    addDigits(line, ", quality", gga[6]);
    addPosition(line, &gga[2], &gga[4], numbers.latitude, numbers.longitude);
    addSatellites(line, gga[7]);
    if (gga[9].empty() || gga[10].empty() || gga[10] == "M") {
        addNumber(line, "altitude", gga[9], numbers.antennaAltitude, 4, "m");
    } else {
        line += ", altitude invalid";
    }
}

constexpr std::string_view HEX_DIGITS = "0123456789abcdef";
constexpr size_t BYTES_PER_LINE = 16;

// At least four digits.
void addOffset(std::string& line, size_t offset) {
    for (int bits = offset > 0xFFFF ? 16 : 12; bits >= 0; bits -= 4) {
        line += HEX_DIGITS[offset >> bits & 0x0F];
    }
    line += ' ';
}

void addBytes(std::string& line, std::span<const uint8_t> bytes) {
    constexpr size_t CHARACTERS = 3 * BYTES_PER_LINE + 2;
    const size_t begin = line.size();
    line.append(CHARACTERS + bytes.size(), ' ');
    char* const row = line.data() + begin;
    for (size_t i = 0; i < bytes.size(); ++i) {
        const uint8_t byte = bytes[i];
        row[3 * i + 1] = HEX_DIGITS[byte >> 4];
        row[3 * i + 2] = HEX_DIGITS[byte & 0x0F];
        row[CHARACTERS + i] = byte >= 0x20 && byte <= 0x7E ? static_cast<char>(byte) : '.';
    }
}

}  // namespace

void Views::addReceived(std::string_view text) {
    if (raw) {
        line += text;
    } else {
        appendEscaped(line, text);
    }
}

void Views::showLine(const GpsView& gps) {
    beginLine();
    fmt::format_to(std::back_inserter(line), "{:016x} 00000000{}", gps.getTimeStamp(),
                   internal::GPS_COLUMN);
    for (const std::string_view sentence : gps.getSentences()) {
        line += ' ';
        addReceived(internal::shownSentence(sentence));
    }
    endLine();
}

void Views::showFields(const GPSTraceMessage& gps) {
    if (gps.hasNmeaDataType(GPSTraceMessage::NMEA_DATA_GPRMC)) {
        dump.seekp(0);
        dump << "RMC\n" << gps.splitRMC();
        showDump();
    }
    if (gps.hasNmeaDataType(GPSTraceMessage::NMEA_DATA_GPGGA)) {
        dump.seekp(0);
        dump << "GGA\n" << gps.splitGGA();
        showDump();
    }
}

// A line of its own, where there is any text.
void Views::showReceived(std::string_view text) {
    if (!text.empty()) {
        beginLine();
        addReceived(text);
        endLine();
    }
}

// The last field of a sentence may hold its line end, which would show as a blank line.
void Views::showDump() {
    std::string_view rest = dump.view().substr(0, static_cast<size_t>(dump.tellp()));
    while (!rest.empty()) {
        const size_t end = rest.find('\n');
        showReceived(withoutLineEnd(rest.substr(0, end)));
        rest.remove_prefix(end + 1);
    }
}

void Views::showFix(const GpsView& gps, const Fix& fix) {
    if (const std::string_view rmc = gps.getSentence(GPSTraceMessage::GPRMC); !rmc.empty()) {
        beginLine();
        showRmc(rmc, fix.rmcChecksum, line);
        endLine();
    }
    if (const std::string_view gga = gps.getSentence(GPSTraceMessage::GPGGA); !gga.empty()) {
        beginLine();
        showGga(gga, fix.ggaChecksum, line);
        endLine();
    }
}

void Views::showRdb(const GPSTraceMessage& gps) {
    showReceived(withoutLineEnd(gps.rdbText()));
}

void Views::showBytes(std::span<const uint8_t> bytes) {
    for (size_t begin = 0; begin < bytes.size(); begin += BYTES_PER_LINE) {
        beginLine();
        addOffset(line, begin);
        addBytes(line, bytes.subspan(begin, std::min(BYTES_PER_LINE, bytes.size() - begin)));
        endLine();
    }
}

}  // namespace vextrace::tools
