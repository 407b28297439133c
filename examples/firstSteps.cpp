#include <iostream>

#include "libvextrace/GPSTraceMessage.h"
#include "libvextrace/serialise.h"

int main() {
    // Build: two sentences that a receiver sent, stamped with the time of their arrival.
    GPSTraceMessage fix(258,
                        "$GNRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,,,A*62\r\n");
    fix.addRecord("$GNGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*59\r\n");

    // Serialise, as a writer of traces does.
    const std::vector<uint8_t> bytes = vextrace::serialise(fix);

    // Rebuild, as a reader of traces does.
    GPSTraceMessage::registerMessage();
    const DecodedMessage decoded = MessageFactory::decode(bytes.data(), bytes.size());
    if (decoded.error) {
        std::cerr << decoded.error->what() << '\n';
        return 1;
    }
    auto* gps = dynamic_cast<GPSTraceMessage*>(decoded.message.get());
    if (gps == nullptr) {
        return 1;  // a message of another type
    }

    // Print: the trace line, the RDB text, a field, numbers.
    GPSTraceMessage::numeric_gprmc_t rmc;
    gps->getGPRMC(rmc);
    std::cout << *gps << '\n'
              << gps->formatForRDB() << '\n'
              << gps->getGGA().numberSatellites << " satellites\n"
              << rmc.latitude << " degrees, " << rmc.speed << " km/h\n"
              << (fix == *gps ? "equal" : "different") << ", " << bytes.size() << " bytes\n";
}
