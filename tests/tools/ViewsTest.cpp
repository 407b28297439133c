#include "tools/trace/views.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

using namespace vextrace;
using namespace vextrace::tools;
namespace fs = std::filesystem;

namespace {

// What a view writes.
std::string shown(bool isRaw, const std::string& prefix, const std::function<void(Views&)>& show) {
    const std::string path = testing::TempDir() + "ViewsTest." + std::to_string(getpid());
    {
        OutputFile output(path, true, {});
        Views views(output, isRaw);
        views.setPrefix(prefix);
        show(views);
        output.commit();
    }
    std::ifstream file(path, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(file), {});
    fs::remove(path);
    return text;
}

GPSTraceMessage messageOf(const std::vector<std::string>& sentences) {
    GPSTraceMessage gps(0x189ABCDEF0123456, sentences.front());
    for (const std::string& sentence : sentences) {
        gps.addRecord(sentence);
    }
    return gps;
}

std::string line(const GPSTraceMessage& gps, bool isRaw = false, const std::string& prefix = "") {
    return shown(isRaw, prefix, [&](Views& views) { views.showLine(gps); });
}

std::string fix(const std::string& sentence) {
    const GPSTraceMessage gps = messageOf({sentence});
    return shown(false, "", [&](Views& views) { views.showFix(gps, Fix()); });
}

std::string fields(const GPSTraceMessage& gps, bool isRaw = false, const std::string& prefix = "") {
    return shown(isRaw, prefix, [&](Views& views) { views.showFields(gps); });
}

std::string rdb(const GPSTraceMessage& gps) {
    return shown(false, "", [&](Views& views) { views.showRdb(gps); });
}

std::vector<fs::path> logs() {
    std::vector<fs::path> found = {VEXTRACE_SOURCE_DIR "/examples/data/drive.nmea"};
    if (fs::is_directory(VEXTRACE_LOG_DIR)) {
        for (const auto& entry : fs::recursive_directory_iterator(VEXTRACE_LOG_DIR)) {
            if (entry.is_regular_file()) {
                found.push_back(entry.path());
            }
        }
    }
    return found;
}

}  // namespace

TEST(ViewsTest, TheLineIsTheOneOfTheLibrary) {
    std::vector<GPSTraceMessage> messages;
    for (const fs::path& path : logs()) {
        std::ifstream file(path, std::ios::binary);
        for (std::string sentence; std::getline(file, sentence);) {
            if (messages.empty() || messages.back().getSentences().size() == 3) {
                messages.emplace_back(messages.size() << 40, sentence);
            }
            messages.back().addRecord(sentence);
        }
    }
    ASSERT_GT(messages.size(), 3U);
    std::string expected;
    for (const MessageBase& message : messages) {
        expected += message.toString() + "\n";
    }
    const std::string lines = shown(true, "", [&](Views& views) {
        std::for_each(messages.begin(), messages.end(),
                      [&](const GPSTraceMessage& gps) { views.showLine(gps); });
    });
    EXPECT_EQ(lines, expected);
}

TEST(ViewsTest, TheLineLosesOneLineEndOfEachSentence) {
    EXPECT_EQ(line(messageOf({"$G", "$PA\r\n", "$PB\r\r\n", "\n", "$PC"})),
              "189abcdef0123456 00000000  GPS         |  $G $PA $PB\\x0d $PC\n");
}

TEST(ViewsTest, EscapesWhatAReceiverSentButForRaw) {
    const GPSTraceMessage gps = messageOf({"$PA\x1B[2J\xFF\\\xC3\xA4"});
    EXPECT_EQ(line(gps), "189abcdef0123456 00000000  GPS         | $PA\\x1b[2J\\xff\\\\\xC3\xA4\n");
    EXPECT_EQ(line(gps, true),
              "189abcdef0123456 00000000  GPS         | $PA\x1B[2J\xFF\\\xC3\xA4\n");
}

TEST(ViewsTest, EveryLineBearsThePrefix) {
    EXPECT_EQ(line(messageOf({"$PA"}), false, "7 "),
              "7 189abcdef0123456 00000000  GPS         | $PA\n");
    const GPSTraceMessage gps = messageOf({"$GPRMC,1"});
    EXPECT_EQ(fields(gps, false, "7 ").substr(0, 30), "7 RMC\n7 1. UTC time = 1\n7 2. S");
}

TEST(ViewsTest, FieldsHoldNoLineEnds) {
    EXPECT_EQ(
        fields(messageOf({"$GPRMC,1,V,,,,,,,010203,003.1,W*6A\r\n", "$GPGGA,2\x1B,3\r4\r\r\n"})),
        "RMC\n"
        "1. UTC time = 1\n"
        "2. Status = V\n"
        "3. Latitude = \n"
        "4. Latitude hemisphere = \n"
        "5. Longitude = \n"
        "6. Longitude hemisphere = \n"
        "7. Speed = \n"
        "8. Course = \n"
        "9. UTC date = 010203\n"
        "10. Magnetic = 003.1\n"
        "11. Magnetic direction = W*6A\n"
        "12. Mode indicator = \n"
        "GGA\n"
        "1. UTC time = 2\\x1b\n"
        "2. Latitude = 3\\x0d4\n"
        "3. Latitude hemisphere = \n"
        "4. Longitude = \n"
        "5. Longitude hemisphere = \n"
        "6. GPS quality indicator = \n"
        "7. Number of satellites = \n"
        "8. Horizontal delution = \n"
        "9. Altitude = \n"
        "10. Altitude unit = \n"
        "11. Geodial separation = \n"
        "12. Geodial unit = \n"
        "13. Age GPS data = \n"
        "14. Reference id = \n");
}

TEST(ViewsTest, FieldsOfAMessageThatWasNotSplitAreThere) {
    EXPECT_NE(fields(GPSTraceMessage(0, "$GPRMC,123,A\n")).find("1. UTC time = 123\n"),
              std::string::npos);
}

TEST(ViewsTest, ThereAreNoFieldsWithoutRmcAndGga) {
    EXPECT_EQ(fields(messageOf({"$GPGLL,1"})), "");
    EXPECT_EQ(fix("$GPGLL,1"), "");
    EXPECT_EQ(rdb(messageOf({"$GPGLL,1"})), "");
}

TEST(ViewsTest, NumbersOfRmc) {
    EXPECT_EQ(fix("$GNRMC,123519.125,A,4807.038,N,01131.000,W,022.4,084.4,230394,003.1,W,A*6A\r\n"),
              "RMC: time 123519.125, date 230394, valid, latitude 48.1173000000 deg, "
              "longitude -11.5166666667 deg, speed 41.484800 km/h, course 84.4000 deg\n");
    EXPECT_EQ(fix("$GPRMC,000000,V,0000.000,N,00000.000,E,0,0,010180,,,"),
              "RMC: time 000000, date 010180, not valid, latitude 0.0000000000 deg, "
              "longitude 0.0000000000 deg, speed 0.000000 km/h, course 0.0000 deg\n");
}

TEST(ViewsTest, NumbersOfGga) {
    EXPECT_EQ(fix("$GPGGA,123519.00,4807.038,S,01131.000,E,1,08,0.9,-545.4,M,46.9,M,,*47"),
              "GGA: time 123519.00, quality 1, latitude -48.1173000000 deg, "
              "longitude 11.5166666667 deg, 8 satellites, altitude -545.4000 m\n");
    EXPECT_EQ(fix("$GPGGA,123519,4807.038,N,01131.000,E,0,01,,0,M"),
              "GGA: time 123519, quality 0, latitude 48.1173000000 deg, "
              "longitude 11.5166666667 deg, 1 satellite, altitude 0.0000 m\n");
}

TEST(ViewsTest, AWrongChecksumIsTold) {
    const GPSTraceMessage gps = messageOf({"$GPRMC,1,V", "$GPGGA,2"});
    Fix fix;
    fix.rmcChecksum = Checksum::WRONG;
    fix.ggaChecksum = Checksum::NONE;
    const std::string wrong = shown(false, "", [&](Views& views) { views.showFix(gps, fix); });
    EXPECT_EQ(wrong.substr(0, 49), "RMC: wrong checksum, time 1, date missing, not va");
    EXPECT_NE(wrong.find("\nGGA: time 2, quality missing"), std::string::npos);
    fix.rmcChecksum = Checksum::RIGHT;
    fix.ggaChecksum = Checksum::WRONG;
    const std::string other = shown(false, "", [&](Views& views) { views.showFix(gps, fix); });
    EXPECT_EQ(other.substr(0, 11), "RMC: time 1");
    EXPECT_NE(other.find("\nGGA: wrong checksum, time 2"), std::string::npos);
}

TEST(ViewsTest, WhatIsMissingIsNotZero) {
    const std::string rmc =
        "RMC: time missing, date missing, status missing, position missing, speed missing, "
        "course missing\n";
    EXPECT_EQ(fix("$GPRMC,,,,,,,,,,,,*4B\r\n"), rmc);
    EXPECT_EQ(fix("$GPRMC"), rmc);
    EXPECT_EQ(fix("$GPRMC*4B\r\n"), rmc);
    const std::string gga =
        "GGA: time missing, quality missing, position missing, satellites missing, "
        "altitude missing\n";
    EXPECT_EQ(fix("$GPGGA,,,,,,,,,,,,,,*56\r\n"), gga);
    EXPECT_EQ(fix("$GPGGA\r\n"), gga);
    EXPECT_EQ(fix("$GPGGA,000002,4807.038,N,,E\r\n"),
              "GGA: time 000002, quality missing, position missing, satellites missing, "
              "altitude missing\n");
}

TEST(ViewsTest, WhatMakesNoSenseIsInvalid) {
    EXPECT_EQ(fix("$GPRMC,12:35,A,9900.000,N,01131.000,E,fast,0x10,today,,,"),
              "RMC: time invalid, date invalid, valid, position invalid, speed invalid, "
              "course invalid\n");
    EXPECT_EQ(fix("$GPGGA,1 2,4807.038,N,18100.000,E,x,0x8,0.9,nan,M"),
              "GGA: time invalid, quality invalid, position invalid, satellites invalid, "
              "altitude invalid\n");
    for (const char* position :
         {"4807.038,N,01131.000,", "4807.038,X,01131.000,E", "4807.038,NN,01131.000,E",
          "inf,N,01131.000,E", "1e3,N,01131.000,E", "48.07.038,N,01131.000,E", "-,N,01131.000,E",
          ".,N,01131.000,E"}) {
        EXPECT_NE(fix(std::string("$GPRMC,1,A,") + position).find(", position invalid,"),
                  std::string::npos)
            << position;
    }
}

TEST(ViewsTest, TakesNumbersUpToTheirEnds) {
    EXPECT_NE(fix("$GPRMC,1,A,9000.000,S,18000.000,W")
                  .find(", latitude -90.0000000000 deg, longitude -180.0000000000 deg,"),
              std::string::npos);
    EXPECT_NE(fix("$GPRMC,1,A,9000.000,N,18000.001,E").find(", position invalid,"),
              std::string::npos);
    EXPECT_EQ(fix("$GPRMC,-123519,A").substr(0, 19), "RMC: time invalid, ");
    EXPECT_NE(fix("$GPRMC,1,A,,,,,,,230394*5D\r\n").find(", date 230394,"), std::string::npos);
    EXPECT_NE(fix("$GPGGA,1,,,,,1,08,0.9,+545.4,M").find(", altitude 545.4000 m\n"),
              std::string::npos);
}

TEST(ViewsTest, AltitudesAreInMetres) {
    const auto altitude = [](const std::string& fields) {
        const std::string line = fix("$GPGGA,1,4807.038,N,01131.000,E,1,08,0.9," + fields);
        return line.substr(line.rfind(", "));
    };
    for (const char* inMetres : {"545.4,M,46.9,M,,", "545.4,,,,,", "545.4"}) {
        EXPECT_EQ(altitude(inMetres), ", altitude 545.4000 m\n") << inMetres;
    }
    for (const char* other : {"545.4,F,,,,", "545.4,m,,,,", "545.4,7,,,,"}) {
        EXPECT_EQ(altitude(other), ", altitude invalid\n") << other;
    }
    for (const char* missing : {",M,,,,", ",F,,,,"}) {
        EXPECT_EQ(altitude(missing), ", altitude missing\n") << missing;
    }
}

TEST(ViewsTest, TheRdbTextIsThatOfTheLibrary) {
    EXPECT_EQ(rdb(messageOf({"$GPGGA,1,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47"})),
              "48\xC2\xB0"
              "7.038 N, 11\xC2\xB0"
              "31.000 E, 545.4M\n");
    EXPECT_EQ(rdb(messageOf({"$GPGGA,1,4807.038,N,01131.000,E,1,08,0.9,545.4\x1B\r\n"})),
              "48\xC2\xB0"
              "7.038 N, 11\xC2\xB0"
              "31.000 E, 545.4\\x1b\n");
}

TEST(ViewsTest, BytesStandInRowsOfSixteen) {
    std::vector<uint8_t> bytes(0x10012, '.');
    for (size_t i = 0; i < 35; ++i) {
        bytes[i] = static_cast<uint8_t>(i * 7 + 0x11);
    }
    const std::string text = shown(false, "> ", [&](Views& views) { views.showBytes(bytes); });
    EXPECT_EQ(text.substr(0, text.find("> 0030")),
              "> 0000  11 18 1f 26 2d 34 3b 42 49 50 57 5e 65 6c 73 7a  ...&-4;BIPW^elsz\n"
              "> 0010  81 88 8f 96 9d a4 ab b2 b9 c0 c7 ce d5 dc e3 ea  ................\n"
              "> 0020  f1 f8 ff 2e 2e 2e 2e 2e 2e 2e 2e 2e 2e 2e 2e 2e  ................\n");
    EXPECT_EQ(text.substr(text.find("> 10010")),
              "> 10010  2e 2e                                            ..\n");
    EXPECT_EQ(shown(false, "", [&](Views& views) { views.showBytes({}); }), "");
    const std::vector<uint8_t> control = {'~', 0x7F, 0x80, 0x1F, ' '};
    EXPECT_EQ(shown(false, "", [&](Views& views) { views.showBytes(control); }),
              "0000  7e 7f 80 1f 20                                   ~... \n");
}
