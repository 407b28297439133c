// docs/format.md is true: its dump is what the library writes, its positions are those in the
// headers.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/messages.h"

namespace {

std::string document() {
    std::ifstream file(VEXTRACE_SOURCE_DIR "/docs/format.md");
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

struct DumpLine {
    size_t offset = 0;
    Bytes bytes;
    std::string note;  // begins with the bytes as text, in quotes, where they are text
};

// "000e  24 47  note"
DumpLine dumpLine(const std::string& text) {
    constexpr size_t BYTES_BEGIN = 6;
    const size_t bytesEnd = text.find("  ", BYTES_BEGIN);
    DumpLine line;
    line.offset = std::stoul(text.substr(0, 4), nullptr, 16);
    std::istringstream bytes(text.substr(BYTES_BEGIN, bytesEnd - BYTES_BEGIN));
    for (std::string byte; bytes >> byte;) {
        line.bytes.push_back(static_cast<uint8_t>(std::stoul(byte, nullptr, 16)));
    }
    line.note = text.substr(std::min(text.find_first_not_of(' ', bytesEnd), text.size()));
    return line;
}

std::vector<DumpLine> dump() {
    std::istringstream text(document());
    std::vector<DumpLine> lines;
    std::string line;
    while (std::getline(text, line) && line != "```text") {
    }
    while (std::getline(text, line) && line != "```") {
        lines.push_back(dumpLine(line));
    }
    return lines;
}

Bytes dumpedBytes() {
    Bytes all;
    for (const DumpLine& line : dump()) {
        all.insert(all.end(), line.bytes.begin(), line.bytes.end());
    }
    return all;
}

std::string quoted(const Bytes& bytes) {
    std::string text = "\"";
    for (const uint8_t byte : bytes) {
        text += byte == '\r'   ? "\\r"
                : byte == '\n' ? "\\n"
                               : std::string(1, static_cast<char>(byte));
    }
    return text + "\"";
}

GPSTraceMessage documentedMessage() {
    GPSTraceMessage message(764426119000000000,
                            "$GNRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,,,A*62\r\n");
    message.addRecord("$GNGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*59\r\n");
    message.setHeaderReserved(1);
    return message;
}

const std::vector<std::pair<std::string, size_t>> POSITIONS = {
    {"MO_MSGSIZE", MessageBase::MO_MSGSIZE},
    {"MO_MSGID", MessageBase::MO_MSGID},
    {"MO_HDRRESERVED", MessageBase::MO_HDRRESERVED},
    {"MO_TIMESTAMP", MessageBase::MO_TIMESTAMP},
    {"MO_BASE_DERIVED", MessageBase::MO_BASE_DERIVED},
    {"MO2_MSGID", MessageBase::MO2_MSGID},
    {"MO2_MSGSIZE", MessageBase::MO2_MSGSIZE},
    {"MO2_TIMESTAMP", MessageBase::MO2_TIMESTAMP},
    {"MO2_BASE_DERIVED", MessageBase::MO2_BASE_DERIVED}};

}  // namespace

TEST(FormatDocumentTest, DumpIsWhatTheLibraryWrites) {
    EXPECT_EQ(dumpedBytes(), writtenBytes(documentedMessage()));
}

TEST(FormatDocumentTest, DumpIsReadBackAsTheMessage) {
    const std::unique_ptr<GPSTraceMessage> message = rebuild(dumpedBytes());
    ASSERT_NE(message, nullptr);
    EXPECT_TRUE(*message == documentedMessage());
    EXPECT_EQ(message->getTimeStamp(), 764426119000000000U);
    EXPECT_EQ(message->getHeaderReserved(), 1);
}

TEST(FormatDocumentTest, OffsetsOfTheDumpFollowOneAnother) {
    size_t offset = 0;
    for (const DumpLine& line : dump()) {
        EXPECT_EQ(line.offset, offset) << line.note;
        offset += line.bytes.size();
    }
    EXPECT_EQ(offset, 147U);
}

TEST(FormatDocumentTest, NotesOfThePayloadQuoteTheirBytes) {
    for (const DumpLine& line : dump()) {
        if (line.offset >= MessageBase::MO_BASE_DERIVED) {
            EXPECT_EQ(line.note.rfind(quoted(line.bytes), 0), 0U) << line.note;
        }
    }
}

TEST(FormatDocumentTest, PositionsAreThoseOfTheHeaders) {
    const std::string text = document();
    for (const auto& [name, value] : POSITIONS) {
        const std::string row = "| `" + name + "` | " + std::to_string(value) + " |";
        EXPECT_NE(text.find(row), std::string::npos) << row;
    }
}
