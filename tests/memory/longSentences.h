#pragma once

#include <string>

/// A number whose text takes an allocation in every standard library: behind its point it is
/// longer than what a string keeps inside itself.
inline std::string longNumber(const std::string& beginning) {
    return beginning + std::string(32, '0');
}

/// Sentences of such fields, and others of the same codes.
inline const std::string LONG_RMC = "$GNRMC," + longNumber("123519.") + ",A," +
                                    longNumber("4807.038") + ",N," + longNumber("01131.0") +
                                    ",E,022.4,084.4,230394," + longNumber("003.1") + ",W,A*00\r\n";
inline const std::string LONG_GGA = "$GNGGA," + longNumber("123519.") + "," +
                                    longNumber("4807.038") + ",N," + longNumber("01131.0") +
                                    ",E,1,08,0.9," + longNumber("545.4") + ",M,46.9,M,,*00\r\n";
inline const std::string OTHER_RMC = "$GPRMC," + longNumber("999999.") + ",V," +
                                     longNumber("1234.5") + ",S," + longNumber("02345.6") + ",W," +
                                     longNumber("7.8") + ",9.1,311299,2.3,E,N*00\r\n";
inline const std::string OTHER_GGA = "$GPGGA," + longNumber("888888.") + "," +
                                     longNumber("4321.5") + ",S," + longNumber("03456.7") +
                                     ",W,2," + longNumber("12.") + ",1.1,2.2,F,3.3,F,4,0001*00\r\n";
inline const std::string LONG_OTHER = "$PXYZE,1,2,3,4,5,6,7,8,9,10,11,12*00\r\n";
