/// \file
/// The trace message of a GPS receiver.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <map>
#include <string>
#include <string_view>

#include "libvextrace/MessageBase.h"
#include "libvextrace/MessageFactory.h"
#include "libvextrace/visibility.h"

/// Use a message through `const MessageBase&`. Whoever writes or shows a trace handles messages of
/// every type alike, so getSize(), writeToByteArray() and toString() are reached through the base
/// and are private here: `static_cast<const MessageBase&>(gps).getSize()` compiles, `gps.getSize()`
/// does not. serialise() and print() take a message as it is.
///
/// What a GPS receiver reported at one time stamp: NMEA 0183 sentences, kept byte for byte as text,
/// the first of each six-character code; the comma-separated fields of RMC and GGA; and on request
/// the fix as numbers.
///
///     $GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W,A*07
///       0      1    2    3     4     5     6   7     8     9      10  11 12
///
///      1 UTC time hhmmss   2 status, A valid      3, 4 latitude ddmm.mmm, N or S
///      5, 6 longitude dddmm.mmm, E or W           7 speed in knots   8 course in degrees
///      9 UTC date ddmmyy   10, 11 magnetic variation in degrees, E or W   12 mode
///
///     $GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47
///       0      1       2     3     4     5 6 7   8    9   10 11  12 13 14
///
///      1 UTC time          2 to 5 position as above   6 quality   7 satellites in use
///      8 horizontal dilution of precision         9, 10 altitude of the antenna, unit
///     11, 12 geoidal separation, unit    13 age of the differential data   14 its station
///
/// No checksum is verified and no field is checked: what the receiver sent is what is recorded.
/// Texts may hold any bytes. Missing fields read as empty texts and zeros. Malformed ones read as
/// they stand and as whatever number strtol and strtod make of them, which may be infinite, not a
/// number, or absurd: check ranges as well as the status. Where a sentence was cut off, its last
/// field holds the rest of the line, checksum and line end included.
///
/// In its byte-array form the message is the header (see MessageBase) and behind it the stored
/// sentences in ascending order of their codes, each with its line feed, nothing between them:
///
///     byte  0      2      4          6            14
///          +------+------+----------+------------+-------------------------------------+
///          | size |  22  | reserved | time stamp | $GPGGA,...*47\n  $GPRMC,...*07\n    |
///          +------+------+----------+------------+-------------------------------------+
///
/// Not every text comes back from these bytes. A message without sentences is refused; a lone line
/// feed is skipped; behind a NUL byte nothing is read; a sentence with inner line feeds comes back
/// in pieces, each under its own code; for a bare "$G" see addRecord().
///
/// The size field has room for 65,523 bytes of sentences, line feeds included. A message takes and
/// holds more, but cannot be written then: writing throws InvalidMessageException (IM_INVALID_LEN).
/// Where input may be that long, see that getSize(), asked through MessageBase, stays below 65,536.
///
/// The message owns all its data. Copies are deep. Moving throws nothing and leaves a message that
/// may be used, whose sentences are not specified. A copy assignment that fails, with
/// std::bad_alloc only, changes nothing.
///
/// Threads may read one message side by side. Member functions that are not const change it, and
/// must not overlap with any other use of the same message. Different messages share nothing.
///
/// A type that derives from this one must override clone(): the one inherited copies the
/// GPSTraceMessage alone.
class VEXTRACE_EXPORT GPSTraceMessage : public MessageBase {
public:
    /// The fields of an RMC sentence as text.
    struct gprmc_t {
        std::string timeUTC;                     ///< hhmmss, often with a fraction
        std::string status;                      ///< A valid, V warning
        std::string latitude;                    ///< ddmm.mmm
        std::string latitudeHemisphere;          ///< N or S
        std::string longitude;                   ///< dddmm.mmm
        std::string longitudeHemisphere;         ///< E or W
        std::string speed;                       ///< knots
        std::string course;                      ///< degrees
        std::string dateUTC;                     ///< ddmmyy
        std::string magneticVariation;           ///< degrees
        std::string magneticVariationDirection;  ///< E or W; in sentences without mode indicator
                                                 ///< all the rest, with checksum and line end
        std::string modeIndicator;               ///< all up to the "*", surplus fields included;
                                                 ///< where there is no "*", up to the end
    };

    /// The fields of a GGA sentence as text.
    struct gpgga_t {
        std::string timeUTC;                ///< hhmmss, often with a fraction; the whole sentence
                                            ///< where it holds no comma
        std::string latitude;               ///< ddmm.mmm
        std::string latitudeHemisphere;     ///< N or S
        std::string longitude;              ///< dddmm.mmm
        std::string longitudeHemisphere;    ///< E or W
        std::string gpsQualityIndicator;    ///< 0 no fix, 1 GPS, 2 differential, ...
        std::string numberSatellites;       ///< satellites in use
        std::string horizontalDelution;     ///< horizontal dilution of precision
        std::string antennaAltitude;        ///< above mean sea level
        std::string antennaAltitudeUnit;    ///< M for metres
        std::string geoidalSeparation;      ///< geoid above the ellipsoid
        std::string geoidalSeparationUnit;  ///< M for metres
        std::string ageGPSdata;             ///< seconds since the last differential correction
        std::string referenceId;            ///< all up to the "*", surplus fields included;
                                            ///< where there is no "*", up to the end
    };

    /// The numbers of an RMC sentence.
    struct numeric_gprmc_t {
        numeric_gprmc_t();  ///< all zeros, false

        uint64_t timeUTC = 0;  ///< the number hhmmss; fractions of a second are dropped
        bool status = false;   ///< true when the status field begins with A: data valid
        double latitude = 0;   ///< decimal degrees, north positive
        double longitude = 0;  ///< decimal degrees, east positive
        double speed = 0;      ///< over ground, km/h
        double course = 0;     ///< over ground, degrees
        uint64_t dateUTC = 0;  ///< the number ddmmyy
    };

    /// The numbers of a GGA sentence.
    struct numeric_gpgga_t {
        numeric_gpgga_t();  ///< all zeros, false

        uint64_t timeUTC = 0;           ///< the number hhmmss; fractions of a second are dropped
        bool status = false;            ///< true when there is a time; says nothing of the fix
        double latitude = 0;            ///< decimal degrees, north positive
        double longitude = 0;           ///< decimal degrees, east positive
        uint16_t numberSatellites = 0;  ///< satellites in use
        double antennaAltitude = 0;     ///< in the sentence's unit, which is metres
    };

    /// The sentences that are split into fields. The type is fixed, so that any value may be asked
    /// for.
    enum nmeaDataType_t : int {
        NMEA_DATA_GPRMC = 0,  ///< RMC, held under GPRMC
        NMEA_DATA_GPGGA = 1   ///< GGA, held under GPGGA
    };

    /// Length of a sentence's code in characters.
    static constexpr size_t NMEA_CODE_SIZE = 6;

    /// Code of the RMC sentence, of every talker that begins with G.
    static constexpr char GPRMC[NMEA_CODE_SIZE + 1] = "$GPRMC";
    /// Code of the GGA sentence, likewise.
    static constexpr char GPGGA[NMEA_CODE_SIZE + 1] = "$GPGGA";

    /// A message without sentences, time stamp 0.
    GPSTraceMessage();

    /// A message that holds one sentence. The fields stay empty until addRecord() or
    /// formatForRDB() splits it.
    ///
    /// \param timeStamp  when the sentence was received
    /// \param record     the sentence; stored as addRecord() does, any text is taken
    GPSTraceMessage(timeStamp_t timeStamp, const std::string& record);

    /// The same from bytes, all of which are taken, NUL bytes included.
    ///
    /// \param timeStamp  when the sentence was received
    /// \param data       read only, not kept; may be null when \p dataSize is 0
    /// \param dataSize   bytes readable at \p data
    /// \throws std::logic_error when \p data is null and \p dataSize is not 0
    GPSTraceMessage(timeStamp_t timeStamp, const uint8_t* data, size_t dataSize);

    /// Copies all of the message.
    GPSTraceMessage(const GPSTraceMessage&) = default;
    /// Takes all of the message over.
    GPSTraceMessage(GPSTraceMessage&&) noexcept = default;
    /// Copies all of the message; changes nothing where memory fails.
    GPSTraceMessage& operator=(const GPSTraceMessage& other);
    /// Takes all of the message over.
    GPSTraceMessage& operator=(GPSTraceMessage&&) noexcept = default;
    ~GPSTraceMessage() override = default;

    /// Stores one more sentence, then splits the held RMC and GGA sentences into their fields.
    ///
    /// A line feed is appended where \p record ends in none; then, in a sentence that begins with
    /// "$G", the third character becomes "P": GN, GL, GA and every other talker that begins with G
    /// is kept as GP, so that their sentences share a code. Others ($BD, $QZ, $P, !AI) stay as they
    /// are. The first six characters are the sentence's code. Where the message holds a
    /// sentence of that code already, that one stays and \p record is dropped. A text of several
    /// lines is stored whole under the code of its first line. A bare "$G" is stored as "$GP",
    /// without a line feed, and so runs into the next sentence when the message is written.
    ///
    /// Whether the sentence was stored shows in getSentences().size(), which then is one more than
    /// before. A sentence of a code that is held costs a look-up and no allocation; sentences that
    /// are held are split again only where all their fields were found empty.
    ///
    /// No text is too long to be stored, but with it the message may be too long to be written, see
    /// above.
    ///
    /// \param record  the sentence; copied, any text is taken
    /// \throws std::bad_alloc only; the sentence is then stored whole or not at all, and fields
    ///         that could not be split are empty until the next addRecord()
    void addRecord(const std::string& record);

    /// The same from bytes, all of which are taken, NUL bytes included.
    ///
    /// \param data      read only, not kept; may be null when \p dataSize is 0
    /// \param dataSize  bytes readable at \p data
    /// \throws std::logic_error when \p data is null and \p dataSize is not 0; nothing has changed
    ///         then
    /// \throws std::bad_alloc as above
    void addRecord(const uint8_t* data, size_t dataSize);

    /// Stores one more sentence as addRecord() does, and splits none: for messages that are written
    /// and not asked for fields. The next addRecord() splits it.
    ///
    /// \param record  the sentence; copied, any text is taken
    /// \throws std::bad_alloc only; nothing has changed then
    void storeSentence(std::string_view record);

    /// The held sentence of this code, such as "$GPGSV", as it is stored: with its line feed, the
    /// third character of every talker that begins with G made "P". Empty when there is none. The
    /// view is valid until the message is assigned to, moved from or destroyed.
    std::string_view getSentence(std::string_view code) const;

    /// All held sentences by their codes, in the order in which they are written:
    ///
    ///     for (const auto& [code, sentence] : gps.getSentences()) { ... }
    ///
    /// Nothing is copied. Sentences are never changed or removed; addRecord() may add some, which
    /// invalidates no iterator. The reference is valid as long as the message is.
    const std::map<std::string, const std::string, std::less<>>& getSentences() const {
        return gpsStrings;
    }

    /// The held sentence with the smallest code, with its line feed; empty when there is none.
    const std::string getString() const;

    /// Whether a sentence of this type is held; false for values outside the enumeration.
    bool hasNmeaDataType(nmeaDataType_t type) const;

    /// The fields as of the last addRecord() or formatForRDB(); empty texts before. For a message
    /// that was constructed or decoded see splitRMC().
    gprmc_t getRMC() const;

    /// The fields as of the last addRecord() or formatForRDB(); empty texts before. For a message
    /// that was constructed or decoded see splitGGA().
    gpgga_t getGGA() const;

    /// The fields of the held RMC sentence, split anew; empty texts where none is held. Changes
    /// nothing, and needs no addRecord() before.
    gprmc_t splitRMC() const;

    /// The fields of the held GGA sentence, as splitRMC() gives those of RMC.
    gpgga_t splitGGA() const;

    /// Reads the numbers of the held RMC sentence; no addRecord() need have run.
    ///
    /// Numbers are read as strtol (base 10) and strtod read them, from the front of the field as
    /// far as it goes, with the decimal point of the C locale in force; no digits give 0.
    ///
    /// \param gprmc  every member is written, missing fields as zeros
    /// \throws std::bad_alloc only, and only where a field is no plain decimal number of at most 9
    ///         digits before the point and 15 in all, or where the processor computes with more
    ///         precision than double's; some members of \p gprmc may be written then
    /// \return false, with \p gprmc untouched, when no RMC sentence is held
    bool getGPRMC(numeric_gprmc_t& gprmc) const;

    /// Reads the numbers of the held GGA sentence, as getGPRMC() does.
    ///
    /// \param gpgga  every member is written, missing fields as zeros
    /// \return false, with \p gpgga untouched, when no GGA sentence is held
    bool getGPGGA(numeric_gpgga_t& gpgga) const;

    /// The position as the logger's RDB output records it (RDB is that output's name), such as
    /// "48°7.038 N, 11°31.000 E, 545.4M" (UTF-8): whole degrees, minutes to three decimals and the
    /// hemisphere of latitude and longitude, then the altitude where there is one. From the GGA
    /// sentence when it counts any satellites; else from the RMC sentence when its status is "A",
    /// without altitude; else the empty text. Numbers are written in the C++ global locale.
    /// Refreshes the fields; rdbText() gives the same text and changes nothing.
    ///
    /// A text does not mean that there is a position: empty coordinates give "0°0.000 , 0°0.000 ".
    /// Hemispheres, altitude and unit are the fields as they stand, which in a sentence that was
    /// cut off may bring its line end into the text. Minutes may be rounded to "60.000", which is
    /// not carried into the degrees.
    std::string formatForRDB();

    /// What formatForRDB() returns. Changes nothing, and needs no addRecord() before.
    std::string rdbText() const;

    /// The same from this sentence alone: the empty text where it is not held or gives no position,
    /// and for values outside the enumeration.
    std::string rdbText(nmeaDataType_t sentence) const;

    /// Makes MessageFactory decode messages of this type. True unless another reader holds the id.
    static bool registerMessage() {
        return MessageFactory::registerReader(MSGID_GPS, &readFromByteArray);
    }

    /// A deep copy, owned by the caller; never null. Of a type that derives from this one it copies
    /// the GPSTraceMessage alone, so such a type needs a clone() of its own.
    GPSTraceMessage* clone() const override;

    /// True when \p msg is a GPSTraceMessage that holds exactly the same sentences, byte for byte.
    /// Nothing else is compared, neither time stamp nor fields.
    bool operator==(const MessageBase& msg) const override;

    /// The same; keeps comparisons of two GPS messages unambiguous in C++20.
    bool operator==(const GPSTraceMessage& msg) const {
        return operator==(static_cast<const MessageBase&>(msg));
    }

    /// Writes the trace line, see the stream operator of this class.
    std::ostream& print(std::ostream& os) const override;

    /// "GPS".
    std::string getSourceChannel() const override;

    /// Bus BUSID_GPS, channel 0, and mbnr.
    uint64_t getSourceChannelID() const override;

protected:
    /// Splits the held RMC sentence into its fields, every one of which is overwritten.
    /// \return false, with the fields untouched, when no RMC sentence is held
    bool parseRMC();

    /// Splits the held GGA sentence, as parseRMC() does.
    bool parseGGA();

    /// Decimal degrees of a coordinate ddmm.mmm or dddmm.mmm, without sign. The last two digits
    /// before the point and what follows are minutes, the rest degrees, modulo 65536.
    static double coordinateToDouble(const std::string& degree);

private:
    enum : size_t { MO_GPS = MO_BASE_DERIVED, MO2_GPS = MO2_BASE_DERIVED };

    // Reached through MessageBase.
    size_t getSize() const override;
    size_t writeToByteArray(uint8_t*& pdest, size_t maxlen, bool sync) const override;
    std::string toString() const override;

    /// Rebuilds a message from its byte-array form; reached through MessageFactory.
    ///
    /// Takes the lines behind the header, empty ones skipped, up to the end or the first NUL byte.
    /// Time stamp and reserved word come from the header; size and id in it are not looked at. The
    /// fields are split when there are at least two lines.
    ///
    /// \param psrc  first byte of the message; read only, not kept
    /// \param len   bytes readable at \p psrc
    /// \return a new message, owned by the caller; never null
    /// \throws InvalidMessageException (IM_MISC) when no sentence follows the header, also when
    ///         \p len is below 14
    static MessageBase* readFromByteArray(const uint8_t* psrc, size_t len);

    void splitNewSentences();

    friend std::ostream& operator<<(std::ostream& os, const GPSTraceMessage& gps);

    // Maps a code to its sentence. Unlike the map itself, whose sentences are constant, it can be
    // moved to another with every standard library.
    struct Sentences : std::map<std::string, const std::string, std::less<>> {
        Sentences() = default;
        Sentences(const Sentences&) = default;
        Sentences(Sentences&&) noexcept = default;
        ~Sentences() = default;
        Sentences& operator=(const Sentences&) = delete;
        Sentences& operator=(Sentences&& other) noexcept {
            swap(other);
            return *this;
        }
    };

    Sentences gpsStrings;
    gprmc_t gprmc;
    gpgga_t gpgga;
};

inline GPSTraceMessage::numeric_gprmc_t::numeric_gprmc_t() = default;
inline GPSTraceMessage::numeric_gpgga_t::numeric_gpgga_t() = default;

/// Writes the fields as twelve numbered lines such as "1. UTC time = 123519", each flushed. The
/// stream's flags and fill character are restored, except when it throws.
VEXTRACE_EXPORT std::ostream& operator<<(std::ostream& os, const GPSTraceMessage::gprmc_t& g);

/// Writes the fields as fourteen numbered lines, as for RMC.
VEXTRACE_EXPORT std::ostream& operator<<(std::ostream& os, const GPSTraceMessage::gpgga_t& g);

/// Writes the trace line, without line end: the part common to all messages, the column
/// "  GPS         |", then each held sentence in order of the codes, a blank before it, without
/// its line feed and one carriage return before that. Numbers come out in hexadecimal, filled with
/// "0", and grouped where the stream's locale groups digits. The stream's flags and fill character
/// are restored, except when it throws.
VEXTRACE_EXPORT std::ostream& operator<<(std::ostream& os, const GPSTraceMessage& gps);
