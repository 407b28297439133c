#include "tools/io/Progress.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "tools/io/TerminalLine.h"
#include "tools/io/standardStreams.h"

using namespace vextrace;
using namespace vextrace::tools;
using namespace std::chrono_literals;

namespace progressTest {

Progress::Clock::time_point testTime;

// A progress line on a pipe, at a time that the test sets.
class ProgressTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(pipe(ends), 0);
        testTime = Progress::Clock::time_point(100h);
    }
    void TearDown() override {
        close(ends[0]);
        close(ends[1]);
    }

    static Progress::Clock::time_point now() { return testTime; }
    static void wait(std::chrono::milliseconds time) { testTime += time; }

    // What was written since the last call.
    std::string written() {
        EXPECT_EQ(write(ends[1], "|", 1), 1);
        std::string text(1000, '\0');
        text.resize(static_cast<size_t>(read(ends[0], text.data(), text.size())));
        text.pop_back();
        return text;
    }

    int ends[2] = {-1, -1};
};

constexpr uint64_t MEGABYTE = 1'000'000;

TEST_F(ProgressTest, IsQuietForASecond) {
    Progress progress(100 * MEGABYTE, ends[1], now);
    progress.update(0);
    wait(1000ms);
    progress.update(50 * MEGABYTE);
    EXPECT_EQ(written(), "");
    wait(1ms);
    progress.update(60 * MEGABYTE);
    EXPECT_NE(written(), "");
}

TEST_F(ProgressTest, TellsPerCentSpeedAndTimeLeft) {
    Progress progress(100 * MEGABYTE, ends[1], now);
    wait(2000ms);
    progress.update(50 * MEGABYTE);
    EXPECT_EQ(written(), "\r50 %, 25.0 MB/s, 0:02 left");
}

TEST_F(ProgressTest, WritesOverTheLineBeforeFiveTimesASecond) {
    Progress progress(10000 * MEGABYTE, ends[1], now);
    wait(2000ms);
    progress.update(10 * MEGABYTE);
    EXPECT_EQ(written(), "\r0 %, 5.0 MB/s, 33:18 left");
    wait(199ms);
    progress.update(20 * MEGABYTE);
    EXPECT_EQ(written(), "");
    wait(1ms);
    progress.update(9999 * MEGABYTE);
    EXPECT_EQ(written(), "\r99 %, 4545.0 MB/s, 0:00 left");
    wait(97800ms);
    progress.update(10000 * MEGABYTE);
    EXPECT_EQ(written(), "\r100 %, 100.0 MB/s, 0:00 left");
    progress.update(10001 * MEGABYTE);
    wait(1000ms);
    progress.update(10002 * MEGABYTE);
    EXPECT_EQ(written(), "\r100 %, 99.0 MB/s, 0:00 left ");
}

TEST_F(ProgressTest, LooksAtTheClockOnlyNowAndThen) {
    Progress progress(MEGABYTE, ends[1], now);
    progress.update(0);
    wait(2000ms);
    progress.update(1);
    EXPECT_EQ(written(), "");
    progress.update(size_t{64} * 1024);
    EXPECT_NE(written(), "");
}

TEST_F(ProgressTest, IsErasedAtTheEnd) {
    {
        Progress progress(std::nullopt, ends[1], now);
        wait(2000ms);
        progress.update(50 * MEGABYTE);
        EXPECT_EQ(written(), "\r50 MB, 25.0 MB/s");
    }
    EXPECT_EQ(written(), "\r                \r");
}

TEST_F(ProgressTest, ErasesNothingWhereNothingStands) {
    { Progress progress(MEGABYTE, ends[1], now); }
    TerminalLine::erase();
    EXPECT_EQ(written(), "");
}

TEST_F(ProgressTest, MakesRoomForALineToPeople) {
    Progress progress(std::nullopt, ends[1], now);
    wait(2000ms);
    progress.update(50 * MEGABYTE);
    written();
    testing::internal::CaptureStderr();
    tell("a line");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "vextrace: a line\n");
    EXPECT_EQ(written(), "\r                \r");
    TerminalLine::erase();
    EXPECT_EQ(written(), "");
    wait(200ms);
    progress.update(60 * MEGABYTE);
    EXPECT_EQ(written(), "\r60 MB, 27.3 MB/s");
}

TEST_F(ProgressTest, SaysNothingWithoutATerminal) {
    Progress progress(MEGABYTE, -1, now);
    wait(2000ms);
    testing::internal::CaptureStderr();
    progress.update(MEGABYTE);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(ProgressTest, ManagesWithoutAnythingDone) {
    EXPECT_EQ(progressText(0, 100, 2), "0 MB, 0.0 MB/s");
    EXPECT_EQ(progressText(0, 0, 2), "0 MB, 0.0 MB/s");
    EXPECT_EQ(progressText(5 * MEGABYTE, 0, 2), "5 MB, 2.5 MB/s");
    EXPECT_EQ(progressText(200, 100, 2), "100 %, 0.0 MB/s, 0:00 left");
    EXPECT_EQ(progressText(1 * MEGABYTE, 7201 * MEGABYTE, 1), "0 %, 1.0 MB/s, 120:00 left");
}

}  // namespace progressTest
