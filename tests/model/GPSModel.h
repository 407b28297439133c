#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// The rules of GPSTraceMessage a second time, written in the ordinary way, as plainly as they can
/// be said: string streams over copies of the sentences, std::getline, strtok, strtol and strtod, a
/// copy of every field, and the fields split again by every addition. Shares no code with the
/// library, so that the two hardly make the same mistake: tests and fuzzers compare with it. The
/// benchmarks take it for their measure, so nothing in it is slower than the ordinary way is.
/// Everything is public, as only they use it.
struct GPSModel {
    using Texts = std::vector<std::string>;

    struct Rmc {
        std::string timeUTC;
        std::string status;
        std::string latitude;
        std::string latitudeHemisphere;
        std::string longitude;
        std::string longitudeHemisphere;
        std::string speed;
        std::string course;
        std::string dateUTC;
        std::string variation;
        std::string variationDirection;
        std::string mode;

        /// The fields in the order of the sentence.
        Texts texts() const;
    };

    struct Gga {
        std::string timeUTC;
        std::string latitude;
        std::string latitudeHemisphere;
        std::string longitude;
        std::string longitudeHemisphere;
        std::string quality;
        std::string satellites;
        std::string dilution;
        std::string altitude;
        std::string altitudeUnit;
        std::string separation;
        std::string separationUnit;
        std::string age;
        std::string station;

        /// The fields in the order of the sentence.
        Texts texts() const;
    };

    struct RmcNumbers {
        uint64_t timeUTC;
        bool status;
        double latitude;
        double longitude;
        double speed;
        double course;
        uint64_t dateUTC;
    };

    struct GgaNumbers {
        uint64_t timeUTC;
        bool status;
        double latitude;
        double longitude;
        uint16_t numberSatellites;
        double antennaAltitude;
    };

    GPSModel() = default;
    GPSModel(uint64_t timeStamp, const std::string& record);

    /// \throws std::logic_error when \p data is null and \p dataSize is not 0
    GPSModel(uint64_t timeStamp, const uint8_t* data, size_t dataSize);

    void addRecord(const std::string& record);
    std::string getString() const;
    bool holds(const std::string& code) const;

    bool getGPRMC(RmcNumbers& numbers) const;
    bool getGPGGA(GgaNumbers& numbers) const;
    std::string formatForRDB();

    size_t getSize() const;

    /// Writes the serialised message, getSize() + 2 bytes, whether or not the size field can hold
    /// the size; \p pdest moves behind it.
    void write(uint8_t*& pdest) const;

    /// All bytes of the serialised message.
    std::string write() const;

    /// Makes this new message the one of these bytes.
    /// \return false when they hold no sentence
    bool readFrom(const uint8_t* psrc, size_t len);

    /// The message of these bytes; nothing when they hold no sentence.
    static std::optional<GPSModel> read(const std::string& bytes);

    /// The message built from the first sentence, with the others added.
    static GPSModel of(uint64_t timeStamp, const std::vector<std::string>& sentences);

    /// What equality of messages means: the sentences alone.
    bool equals(const GPSModel& other) const;

    uint64_t getSourceChannelID() const;

    void print(std::ostream& os) const;
    static void dumpRmc(std::ostream& os, const Rmc& fields);
    static void dumpGga(std::ostream& os, const Gga& fields);

    std::map<std::string, std::string> sentences;
    Rmc rmc;
    Gga gga;
    uint16_t id = 22;
    uint64_t stamp = 0;
    uint16_t reserved = 0;
    uint32_t mbnr = 0;

private:
    void store(const std::string& record);
    bool parseRMC();
    bool parseGGA();
};
