#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// The rules of GPSTraceMessage a second time, written as plainly as they can be said: string
/// streams, std::getline, strtok, strtol and strtod on copies. Shares no code with the library, so
/// that the two hardly make the same mistake; everything public, as only tests use it.
struct GPSModel {
    /// Field texts by the field's number in the sentence; field 0 is the code and is not kept.
    using Fields = std::map<int, std::string>;

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

    GPSModel();
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

    /// All bytes of the serialised message, whether or not the size field can hold the size.
    std::string write() const;

    /// The message of these bytes; nothing when they hold no sentence.
    static std::optional<GPSModel> read(const std::string& bytes);

    /// The message built from the first sentence, with the others added.
    static GPSModel of(uint64_t timeStamp, const std::vector<std::string>& sentences);

    /// What equality of messages means: the sentences alone.
    bool equals(const GPSModel& other) const;

    uint64_t getSourceChannelID() const;

    void print(std::ostream& os) const;
    static void dumpRmc(std::ostream& os, const Fields& fields);
    static void dumpGga(std::ostream& os, const Fields& fields);

    std::map<std::string, std::string> sentences;
    Fields rmc;  ///< fields 1 to 12
    Fields gga;  ///< fields 1 to 14
    uint64_t stamp = 0;
    uint16_t reserved = 0;
    uint32_t mbnr = 0;

private:
    void store(const std::string& record);
    bool parseRMC();
    bool parseGGA();
};
