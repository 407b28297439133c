#pragma once

#include <string>

#include "libvextrace/MessageBase.h"
#include "tests/model/GPSModel.h"

/// The plain implementation behind the virtual interface of messages, as the measure for
/// GPSTraceMessage. The header is the model's, so mbnr stays 0.
class PlainGps : public MessageBase {
public:
    using numeric_gprmc_t = GPSModel::RmcNumbers;
    using numeric_gpgga_t = GPSModel::GgaNumbers;

    PlainGps(timeStamp_t timeStamp, const std::string& record);

    void addRecord(const std::string& record) { model.addRecord(record); }
    bool getGPRMC(numeric_gprmc_t& numericGprmc) const { return model.getGPRMC(numericGprmc); }
    bool getGPGGA(numeric_gpgga_t& numericGpgga) const { return model.getGPGGA(numericGpgga); }
    std::string formatForRDB() { return model.formatForRDB(); }
    const GPSModel& getModel() const { return model; }

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
    PlainGps();

    static MessageBase* readFromByteArray(const uint8_t* psrc, size_t len);

    GPSModel model;
};
