#include <algorithm>
#include <iterator>
#include <string_view>

#include "libvextrace/GPSTraceMessage.h"
#include "libvextrace/internal/NmeaCoordinate.h"
#include "libvextrace/internal/NmeaFieldStream.h"
#include "libvextrace/internal/nmeaFields.h"
#include "libvextrace/nmeaNumbers.h"

using vextrace::internal::GGA_FIELDS;
using vextrace::internal::NmeaCoordinate;
using vextrace::internal::NmeaField;
using vextrace::internal::NmeaFieldStream;
using vextrace::internal::NmeaNumberReader;
using vextrace::internal::RMC_FIELDS;

namespace {

// Reads the fields behind field 0 into their members; leaves them empty where memory fails.
template <class Fields, size_t COUNT>
void splitFields(NmeaFieldStream& s, std::string_view item, const NmeaField<Fields> (&table)[COUNT],
                 Fields& fields) {
    try {
        for (size_t i = 0; i < COUNT; ++i) {
            s.readField(item, i + 1 < COUNT ? ',' : '*');
            fields.*table[i].member = item;
            item = {};
        }
    } catch (...) {
        fields = Fields();
        throw;
    }
}

void split(std::string_view sentence, GPSTraceMessage::gprmc_t& gprmc) {
    NmeaFieldStream s(sentence);
    std::string_view item;
    s.readField(item, ',');  // sentence code
    item = {};
    splitFields(s, item, RMC_FIELDS, gprmc);
}

void split(std::string_view sentence, GPSTraceMessage::gpgga_t& gpgga) {
    NmeaFieldStream s(sentence);
    std::string_view item;
    // Unlike in RMC the buffer is meant to keep field 0: where the sentence holds no comma, all of
    // it becomes the time.
    s.readField(item, ',');
    splitFields(s, item, GGA_FIELDS, gpgga);
}

template <class Fields, size_t COUNT>
bool isEmpty(const Fields& fields, const NmeaField<Fields> (&table)[COUNT]) {
    return std::all_of(std::begin(table), std::end(table), [&](const NmeaField<Fields>& field) {
        return (fields.*field.member).empty();
    });
}

}  // namespace

// Fields that are not empty stay: they are those of the held sentence, which never changes. Fields
// that are empty while their sentence is held were never split, or memory failed.
void GPSTraceMessage::splitNewSentences() {
    if (isEmpty(gprmc, RMC_FIELDS)) {
        parseRMC();
    }
    if (isEmpty(gpgga, GGA_FIELDS)) {
        parseGGA();
    }
}

bool GPSTraceMessage::parseRMC() {
    const auto iter = gpsStrings.find(std::string_view(GPRMC));
    if (iter == gpsStrings.end()) {
        return false;
    }
    split(iter->second, gprmc);
    return true;
}

bool GPSTraceMessage::parseGGA() {
    const auto iter = gpsStrings.find(std::string_view(GPGGA));
    if (iter == gpsStrings.end()) {
        return false;
    }
    split(iter->second, gpgga);
    return true;
}

// A sentence that is not held is empty, and so are its fields.
GPSTraceMessage::gprmc_t GPSTraceMessage::splitRMC() const {
    gprmc_t fields;
    split(getSentence(GPRMC), fields);
    return fields;
}

GPSTraceMessage::gpgga_t GPSTraceMessage::splitGGA() const {
    gpgga_t fields;
    split(getSentence(GPGGA), fields);
    return fields;
}

bool GPSTraceMessage::getGPRMC(numeric_gprmc_t& numericGprmc) const {
    const auto iter = gpsStrings.find(std::string_view(GPRMC));
    if (iter == gpsStrings.end()) {
        return false;
    }
    vextrace::readNumbers(iter->second, numericGprmc);
    return true;
}

bool GPSTraceMessage::getGPGGA(numeric_gpgga_t& numericGpgga) const {
    const auto iter = gpsStrings.find(std::string_view(GPGGA));
    if (iter == gpsStrings.end()) {
        return false;
    }
    vextrace::readNumbers(iter->second, numericGpgga);
    return true;
}

double GPSTraceMessage::coordinateToDouble(const std::string& degree) {
    return NmeaCoordinate(NmeaNumberReader(), degree).degrees();
}
