#include <iostream>

#include "libvextrace/GPSTraceMessage.h"
#include "libvexutil/datablock.h"

int main() {
    GPSTraceMessage message(0, "$GNRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,,,A*00");
    std::cout << message.formatForRDB() << '\n';
}
