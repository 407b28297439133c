#include "tests/model/compareMessages.h"

#include <algorithm>
#include <optional>
#include <sstream>
#include <vector>

#include "libvextrace/MessageFactory.h"
#include "tests/support/fieldTexts.h"

namespace {

constexpr size_t SIZE_FIELD_MAX = 65535;
constexpr size_t SIZE_FIELD_LENGTH = 2;
constexpr uint8_t UNWRITTEN = 0xA5;

struct WriteResult {
    std::vector<uint8_t> room;  // all of it, written or not
    size_t advanced = 0;
    size_t returned = 0;
    std::optional<InvalidMessageException> refusal;
};

WriteResult writeLibrary(const MessageBase& message, size_t maxlen, bool sync) {
    WriteResult result;
    result.room.assign(maxlen, UNWRITTEN);
    uint8_t* pdest = result.room.data();
    try {
        result.returned = message.writeToByteArray(pdest, maxlen, sync);
    } catch (const InvalidMessageException& error) {
        result.refusal = error;
    }
    result.advanced = static_cast<size_t>(pdest - result.room.data());
    return result;
}

void compareRefusal(Comparison& comparison, const WriteResult& result, size_t value) {
    comparison.holds("writing is refused", result.refusal.has_value());
    if (result.refusal) {
        comparison.equal("cause of the refusal", result.refusal->getCause(), IM_INVALID_LEN);
        comparison.equal("value of the refusal", result.refusal->getInvalidValue(), value);
    }
    comparison.equal("advance of the refused writing", result.advanced, 0);
    comparison.holds("nothing is written by the refused writing",
                     result.room == std::vector<uint8_t>(result.room.size(), UNWRITTEN));
}

std::string textOf(const std::vector<uint8_t>& bytes) {
    return {bytes.begin(), bytes.end()};
}

void compareFieldTexts(Comparison& comparison, const char* sentence, const Texts& library,
                       const Texts& model) {
    comparison.equal("number of fields", library.size(), model.size());
    for (size_t i = 0; i < model.size(); ++i) {
        const std::string what = std::string(sentence) + " field " + std::to_string(i + 1);
        comparison.equal(what.c_str(), library.at(i), model[i]);
    }
}

// What the structures hold before shows whether every member, or none, is written.
constexpr uint64_t BEFORE = 0x0123456789ABCDEF;
constexpr uint16_t BEFORE_SHORT = 0xABCD;
constexpr double BEFORE_REAL = -12345.678;

void compareRmcNumbers(Comparison& comparison, const MessagePair& pair, bool statusBefore) {
    GPSTraceMessage::numeric_gprmc_t rmc;
    rmc.timeUTC = rmc.dateUTC = BEFORE;
    rmc.status = statusBefore;
    rmc.latitude = rmc.longitude = rmc.speed = rmc.course = BEFORE_REAL;
    GPSModel::RmcNumbers model{BEFORE,      statusBefore, BEFORE_REAL, BEFORE_REAL,
                               BEFORE_REAL, BEFORE_REAL,  BEFORE};
    comparison.equalAnswers("getGPRMC", pair.library->getGPRMC(rmc), pair.model.getGPRMC(model));
    comparison.equal("RMC timeUTC", rmc.timeUTC, model.timeUTC);
    comparison.equalAnswers("RMC status", rmc.status, model.status);
    comparison.equalResults("RMC latitude", rmc.latitude, model.latitude);
    comparison.equalResults("RMC longitude", rmc.longitude, model.longitude);
    comparison.equalResults("RMC speed", rmc.speed, model.speed);
    comparison.equalBits("RMC course", rmc.course, model.course);
    comparison.equal("RMC dateUTC", rmc.dateUTC, model.dateUTC);
}

void compareGgaNumbers(Comparison& comparison, const MessagePair& pair, bool statusBefore) {
    GPSTraceMessage::numeric_gpgga_t gga;
    gga.timeUTC = BEFORE;
    gga.status = statusBefore;
    gga.latitude = gga.longitude = gga.antennaAltitude = BEFORE_REAL;
    gga.numberSatellites = BEFORE_SHORT;
    GPSModel::GgaNumbers model{BEFORE,      statusBefore, BEFORE_REAL,
                               BEFORE_REAL, BEFORE_SHORT, BEFORE_REAL};
    comparison.equalAnswers("getGPGGA", pair.library->getGPGGA(gga), pair.model.getGPGGA(model));
    comparison.equal("GGA timeUTC", gga.timeUTC, model.timeUTC);
    comparison.equalAnswers("GGA status", gga.status, model.status);
    comparison.equalResults("GGA latitude", gga.latitude, model.latitude);
    comparison.equalResults("GGA longitude", gga.longitude, model.longitude);
    comparison.equal("GGA satellites", gga.numberSatellites, model.numberSatellites);
    comparison.equalBits("GGA altitude", gga.antennaAltitude, model.antennaAltitude);
}

// Sets both streams alike, writes with one function each, and compares the texts and what is left
// of the streams' states.
template <class Library, class Model>
void compareText(Comparison& comparison, const char* what, const StreamState& state,
                 const Library& library, const Model& model) {
    std::ostringstream libraryStream;
    std::ostringstream modelStream;
    for (std::ostringstream* os : {&libraryStream, &modelStream}) {
        os->flags(state.flags);
        os->fill(state.fill);
        os->width(state.width);
        os->precision(state.precision);
    }
    comparison.holds("the operator returns its stream",
                     &library(static_cast<std::ostream&>(libraryStream)) == &libraryStream);
    model(static_cast<std::ostream&>(modelStream));
    comparison.equal(what, libraryStream.str(), modelStream.str());
    comparison.holds("flags are restored", libraryStream.flags() == state.flags);
    comparison.holds("fill is restored", libraryStream.fill() == state.fill);
    comparison.holds("widths left are equal", libraryStream.width() == modelStream.width());
    comparison.holds("precision is kept", libraryStream.precision() == state.precision);
}

// Whether a written message must come back as it was.
bool comesBackWhole(const GPSModel& model) {
    return std::all_of(model.sentences.begin(), model.sentences.end(), [](const auto& entry) {
        const std::string& sentence = entry.second;
        return sentence.size() > 1 && sentence.find('\0') == std::string::npos &&
               sentence.find('\n') == sentence.size() - 1;
    });
}

StreamState oddState() {
    StreamState state;
    state.flags = std::ios_base::oct | std::ios_base::left | std::ios_base::showbase |
                  std::ios_base::uppercase | std::ios_base::scientific;
    state.fill = '*';
    state.width = 27;
    state.precision = 1;
    return state;
}

}  // namespace

void compareFields(Comparison& comparison, const MessagePair& pair) {
    compareFieldTexts(comparison, "RMC", fieldTexts(pair.library->getRMC()),
                      pair.model.rmc.texts());
    compareFieldTexts(comparison, "GGA", fieldTexts(pair.library->getGGA()),
                      pair.model.gga.texts());
}

void compareNumbers(Comparison& comparison, const MessagePair& pair) {
    for (const bool status : {false, true}) {
        compareRmcNumbers(comparison, pair, status);
        compareGgaNumbers(comparison, pair, status);
    }
}

void compareHeader(Comparison& comparison, const MessagePair& pair) {
    const MessageBase& base = *pair.library;
    comparison.equal("message id", base.getMsgID(), 22);
    comparison.equal("time stamp", base.getTimeStamp(), pair.model.stamp);
    comparison.equal("reserved word", base.getHeaderReserved(), pair.model.reserved);
    comparison.equal("mbnr", base.getMbnr(), pair.model.mbnr);
    comparison.equal("source channel", base.getSourceChannel(), "GPS");
    comparison.equal("source channel id", base.getSourceChannelID(),
                     pair.model.getSourceChannelID());
    comparison.equal("getString", pair.library->getString(), pair.model.getString());
    comparison.equalAnswers("holds RMC",
                            pair.library->hasNmeaDataType(GPSTraceMessage::NMEA_DATA_GPRMC),
                            pair.model.holds("$GPRMC"));
    comparison.equalAnswers("holds GGA",
                            pair.library->hasNmeaDataType(GPSTraceMessage::NMEA_DATA_GPGGA),
                            pair.model.holds("$GPGGA"));
}

void compareWriting(Comparison& comparison, const MessagePair& pair, bool sync) {
    const MessageBase& base = *pair.library;
    const size_t size = pair.model.getSize();
    comparison.equal("getSize", base.getSize(), size);
    if (comparison.failed()) {
        return;
    }
    const WriteResult result = writeLibrary(base, size + SIZE_FIELD_LENGTH, sync);
    if (size > SIZE_FIELD_MAX) {
        compareRefusal(comparison, result, SIZE_FIELD_MAX);
        return;
    }
    comparison.holds("writing is not refused", !result.refusal);
    comparison.equal("result of writing", result.returned, size);
    comparison.equal("advance of writing", result.advanced, size + SIZE_FIELD_LENGTH);
    comparison.equal("written bytes", textOf(result.room), pair.model.write());
}

void compareWritingShortBy(Comparison& comparison, const MessagePair& pair, size_t missing) {
    const size_t needed = pair.model.getSize() + SIZE_FIELD_LENGTH;
    if (missing == 0 || needed > SIZE_FIELD_MAX + SIZE_FIELD_LENGTH) {
        compareWriting(comparison, pair, true);
        return;
    }
    const size_t maxlen = needed - std::min(missing, needed);
    compareRefusal(comparison, writeLibrary(*pair.library, maxlen, true),
                   std::min(maxlen, SIZE_FIELD_MAX));
}

void compareTraceLine(Comparison& comparison, const MessagePair& pair, const StreamState& state) {
    const GPSModel& model = pair.model;
    const auto printModel = [&model](std::ostream& os) { model.print(os); };
    compareText(
        comparison, "trace line by operator", state,
        [&pair](std::ostream& os) -> std::ostream& { return os << *pair.library; }, printModel);
    const MessageBase& base = *pair.library;
    compareText(
        comparison, "trace line by print", state,
        [&base](std::ostream& os) -> std::ostream& { return base.print(os); }, printModel);
}

void compareDumps(Comparison& comparison, const MessagePair& pair, const StreamState& state) {
    const GPSModel& model = pair.model;
    compareText(
        comparison, "RMC dump", state,
        [&pair](std::ostream& os) -> std::ostream& { return os << pair.library->getRMC(); },
        [&model](std::ostream& os) { GPSModel::dumpRmc(os, model.rmc); });
    compareText(
        comparison, "GGA dump", state,
        [&pair](std::ostream& os) -> std::ostream& { return os << pair.library->getGGA(); },
        [&model](std::ostream& os) { GPSModel::dumpGga(os, model.gga); });
}

void compareSplits(Comparison& comparison, const MessagePair& pair) {
    const Comparison::Place place(comparison, "split");
    GPSModel split = pair.model;
    split.rmc = {};
    split.gga = {};
    split.addRecord("");  // splits what is held
    compareFieldTexts(comparison, "RMC", fieldTexts(pair.library->splitRMC()), split.rmc.texts());
    compareFieldTexts(comparison, "GGA", fieldTexts(pair.library->splitGGA()), split.gga.texts());
    comparison.equal("RDB text", pair.library->rdbText(), split.formatForRDB());
    compareFields(comparison, pair);
}

void compareRdb(Comparison& comparison, MessagePair& pair) {
    const Comparison::Place place(comparison, "RDB");
    comparison.equal("RDB text", pair.library->formatForRDB(), pair.model.formatForRDB());
    compareFields(comparison, pair);
}

void compareEquality(Comparison& comparison, const MessagePair& a, const MessagePair& b) {
    const MessageBase& base = *b.library;
    comparison.equalAnswers("equality", *a.library == base, a.model.equals(b.model));
    comparison.equalAnswers("equality the other way", *b.library == *a.library,
                            a.model.equals(b.model));
}

MessagePair cloned(const MessagePair& pair) {
    return {std::unique_ptr<GPSTraceMessage>(pair.library->clone()), pair.model};
}

void compareAll(Comparison& comparison, const MessagePair& pair) {
    compareHeader(comparison, pair);
    compareFields(comparison, pair);
    compareNumbers(comparison, pair);
    compareWriting(comparison, pair);
    compareTraceLine(comparison, pair, StreamState());
    compareTraceLine(comparison, pair, oddState());
    compareDumps(comparison, pair, StreamState());
    compareDumps(comparison, pair, oddState());

    std::ostringstream line;
    pair.model.print(line);
    const MessageBase& base = *pair.library;
    comparison.equal("toString", base.toString(), line.str());
    compareSplits(comparison, pair);

    const Comparison::Place place(comparison, "clone");
    MessagePair copy = cloned(pair);
    compareHeader(comparison, copy);
    compareFields(comparison, copy);
    compareWriting(comparison, copy);
    compareEquality(comparison, pair, copy);
    compareRdb(comparison, copy);
}

bool fitsSizeField(const std::string& bytes) {
    return bytes.size() >= MessageBase::MO_BASE_DERIVED &&
           bytes.size() <= SIZE_FIELD_MAX + SIZE_FIELD_LENGTH;
}

bool readBoth(Comparison& comparison, std::string bytes, MessagePair& pair) {
    const size_t size = bytes.size() - SIZE_FIELD_LENGTH;
    bytes[0] = static_cast<char>(static_cast<unsigned char>(size / 256));
    bytes[1] = static_cast<char>(static_cast<unsigned char>(size % 256));
    bytes[2] = 0;
    bytes[3] = 22;
    const std::vector<uint8_t> exact(bytes.begin(), bytes.end());
    comparison.holds("the type is registered", GPSTraceMessage::registerMessage());
    DecodedMessage decoded = MessageFactory::decode(exact.data(), exact.size());
    const std::optional<GPSModel> model = GPSModel::read(bytes);
    comparison.equal("bytes taken", decoded.bytesTaken, bytes.size());
    comparison.equalAnswers("decoding succeeds", !decoded.error.has_value(), model.has_value());
    if (decoded.error) {
        comparison.equal("cause", decoded.error->getCause(), IM_MISC);
        comparison.equal("reason", decoded.error->what(), "GPSTraceMessage: No NMEA code found.");
        comparison.equal("value", decoded.error->getInvalidValue(), 0);
        return false;
    }
    auto* gps = dynamic_cast<GPSTraceMessage*>(decoded.message.get());
    comparison.holds("a GPS message is decoded", gps != nullptr);
    if (comparison.failed()) {
        return false;
    }
    static_cast<void>(decoded.message.release());
    pair.library.reset(gps);
    pair.model = *model;
    return true;
}

void compareRoundTrip(Comparison& comparison, const MessagePair& pair) {
    const std::string bytes = pair.model.write();
    if (comparison.failed() || !fitsSizeField(bytes)) {
        return;
    }
    const Comparison::Place place(comparison, "written and read again");
    MessagePair again;
    if (readBoth(comparison, bytes, again)) {
        compareAll(comparison, again);
        compareEquality(comparison, pair, again);
        if (comesBackWhole(pair.model)) {
            comparison.holds("what is read again equals what was written",
                             *pair.library == *again.library);
            comparison.equal("bytes written again", again.model.write(), bytes);
        }
    }
}
