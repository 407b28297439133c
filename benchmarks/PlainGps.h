#pragma once

#include <map>
#include <string>

#include "libvextrace/GPSTraceMessage.h"

/// The same GPS message written in the plain way, as the measure for the library's: string streams
/// over copies of the sentences, a string for every field, strtol and strtod, and the fields split
/// again behind every line of a payload. Its results are those of GPSTraceMessage.
class PlainGps : public MessageBase {
public:
    using numeric_gprmc_t = GPSTraceMessage::numeric_gprmc_t;
    using numeric_gpgga_t = GPSTraceMessage::numeric_gpgga_t;

    PlainGps(timeStamp_t timeStamp, const std::string& record);

    void addRecord(const std::string& record);
    GPSTraceMessage::gprmc_t getRMC() const { return gprmc; }
    GPSTraceMessage::gpgga_t getGGA() const { return gpgga; }
    bool getGPRMC(numeric_gprmc_t& numericGprmc) const;
    bool getGPGGA(numeric_gpgga_t& numericGpgga) const;
    std::string formatForRDB();

    /// Has an id of its own, so that MessageFactory decodes both kinds of message.
    static bool registerMessage();

    PlainGps* clone() const override;
    size_t writeToByteArray(uint8_t*& pdest, size_t maxlen, bool sync) const override;
    size_t getSize() const override;
    bool operator==(const MessageBase& msg) const override;
    std::ostream& print(std::ostream& os) const override;
    std::string toString() const override;
    std::string getSourceChannel() const override;
    uint64_t getSourceChannelID() const override;

private:
    static MessageBase* readFromByteArray(const uint8_t* psrc, size_t len);

    void storeSentence(const std::string& record);
    const std::string* held(const char* code) const;
    bool parseRMC();
    bool parseGGA();

    std::map<std::string, const std::string> gpsStrings;
    GPSTraceMessage::gprmc_t gprmc;
    GPSTraceMessage::gpgga_t gpgga;
};
