#include <gtest/gtest.h>

#include <cctype>

#include "tests/model/compareMessages.h"
#include "tests/model/differential.h"
#include "tests/model/logs.h"
#include "tests/support/messages.h"
#include "tests/support/rounds.h"

namespace {

std::vector<std::string> allLogs() {
    std::vector<std::string> logs = logsIn(VEXTRACE_LOG_DIR);
    logs.insert(logs.begin(), VEXTRACE_SOURCE_DIR "/examples/data/drive.nmea");
    return logs;
}

std::string nameOf(const testing::TestParamInfo<std::string>& log) {
    std::string name = log.param.substr(log.param.rfind('/') + 1);
    for (char& c : name) {
        if (std::isalnum(static_cast<unsigned char>(c)) == 0) {
            c = '_';
        }
    }
    return name + "_" + std::to_string(log.index);  // names in two folders may be alike
}

GPSTraceMessage messageOf(timeStamp_t timeStamp, const std::vector<std::string>& sentences) {
    GPSTraceMessage message(timeStamp, sentences.front());
    for (size_t i = 1; i < sentences.size(); ++i) {
        message.addRecord(sentences[i]);
    }
    return message;
}

class LogsTest : public testing::TestWithParam<std::string> {
protected:
    LogsTest() : groups(groupedByCode(linesOfLog(GetParam()))) {}

    std::vector<std::vector<std::string>> groups;
};

// Writes, reads and writes again, and compares what came back.
void expectToComeBack(const GPSTraceMessage& message, const GPSModel& model) {
    const Bytes bytes = writtenBytes(message);
    EXPECT_EQ(bytes, bytesOf(model.write()));
    MessagePair again{rebuild(bytes), *GPSModel::read(model.write())};
    ASSERT_NE(again.library, nullptr);
    // Receivers send NUL bytes now and then, which end the payload.
    if (payloadOf(message).find('\0') == std::string::npos) {
        EXPECT_EQ(writtenBytes(*again.library), bytes);
        EXPECT_TRUE(*again.library == message);
        again.model = model;
    }
    Comparison comparison;
    compareAll(comparison, again);
    EXPECT_EQ(comparison.text(), "");
}

TEST_P(LogsTest, YieldsMessages) {
    EXPECT_FALSE(groups.empty());
}

TEST_P(LogsTest, ComesBackByteByByteAndFieldByField) {
    timeStamp_t timeStamp = 0x0102030405060708;
    const size_t step = rounds(10) == 10 ? 1 : 10;
    for (size_t i = 0; i < groups.size(); i += step) {
        const auto& sentences = groups[i];
        SCOPED_TRACE(testing::PrintToString(sentences));
        GPSTraceMessage message = messageOf(timeStamp, sentences);
        GPSModel model = GPSModel::of(timeStamp, sentences);
        model.reserved = static_cast<uint16_t>(timeStamp);
        message.setHeaderReserved(model.reserved);
        expectToComeBack(message, model);
        ++timeStamp;
    }
}

// All messages of the log in one range, as a trace file holds them.
TEST_P(LogsTest, IsWalkedMessageByMessage) {
    Bytes trace;
    for (const auto& sentences : groups) {
        const Bytes bytes = writtenBytes(messageOf(trace.size(), sentences));
        trace.insert(trace.end(), bytes.begin(), bytes.end());
    }
    EXPECT_EQ(differenceInWalk({trace.begin(), trace.end()}), "");
}

INSTANTIATE_TEST_SUITE_P(EveryLog, LogsTest, testing::ValuesIn(allLogs()), nameOf);

}  // namespace
