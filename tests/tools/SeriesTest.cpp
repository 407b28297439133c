#include "tools/report/Series.h"

#include <fmt/core.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

using namespace vextrace;
using namespace vextrace::tools;

namespace {

constexpr timeStamp_t SECOND = 1000000000;
constexpr timeStamp_t GAP = 5 * SECOND;
constexpr timeStamp_t START = 1795264519 * SECOND;

Fix fixAt(timeStamp_t stamp, double speed = 50) {
    Fix fix;
    fix.stamp = stamp;
    fix.valid = true;
    fix.latitude = 48;
    fix.longitude = 11;
    fix.speed = speed;
    fix.altitude = 500;
    fix.satellites = 9;
    fix.quality = 1;
    return fix;
}

MomentPtr momentOf(const Fix& fix) {
    auto message = std::make_unique<GPSTraceMessage>(fix.stamp, "$GPRMC,,A*00");
    return std::make_shared<Moment>(fix, std::move(message), 1, 0);
}

std::vector<timeStamp_t> secondsOf(const std::vector<Series::Drawn>& drawn) {
    std::vector<timeStamp_t> seconds;
    seconds.reserve(drawn.size());
    for (const Series::Drawn& point : drawn) {
        seconds.push_back((point.moment->fix.stamp - START) / SECOND);
    }
    return seconds;
}

bool begins(const Series::Drawn& point, Followed what) {
    return (point.breaks >> static_cast<unsigned>(what) & 1) != 0;
}

using Seconds = std::vector<timeStamp_t>;

// The seconds at which the line of a value begins anew.
Seconds breaksOf(const std::vector<Series::Drawn>& drawn, Followed what) {
    Seconds seconds;
    for (const Series::Drawn& point : drawn) {
        if (begins(point, what)) {
            seconds.push_back((point.moment->fix.stamp - START) / SECOND);
        }
    }
    return seconds;
}

// A week with a fix a second, in which one second is different.
template <class Change>
std::vector<Series::Drawn> weekWithOneOddSecond(Series& series, Change change) {
    constexpr timeStamp_t WEEK = timeStamp_t{7} * 86400;
    constexpr timeStamp_t ODD = 345678;
    for (timeStamp_t second = 0; second < WEEK; ++second) {
        Fix fix = fixAt(START + second * SECOND);
        if (second == ODD) {
            change(fix);
        }
        series.add(momentOf(fix));
    }
    return series.drawn();
}

template <class Condition>
long count(const std::vector<Series::Drawn>& drawn, Condition condition) {
    return std::count_if(drawn.begin(), drawn.end(),
                         [&](const Series::Drawn& point) { return condition(point.moment->fix); });
}

constexpr Series::Limits FEW = {.stretches = 64, .bytes = 1 << 20};

}  // namespace

TEST(SeriesTest, KeepsEveryFixWhileThereIsRoom) {
    Series series(GAP);
    for (timeStamp_t i = 0; i < 1000; ++i) {
        series.add(momentOf(fixAt(START + i * SECOND / 10)));
    }
    const auto drawn = series.drawn();
    ASSERT_EQ(drawn.size(), 1000U);
    for (size_t i = 0; i < drawn.size(); ++i) {
        EXPECT_EQ(drawn[i].moment->fix.stamp, START + i * SECOND / 10);
        EXPECT_EQ(drawn[i].breaks, 0U);
    }
    EXPECT_EQ(series.size(), 1000U);
}

TEST(SeriesTest, KeepsFirstLastLeastAndGreatestOfEachValue) {
    // All of it lies within one stretch of 2^35 ns, some 34 s.
    const timeStamp_t begin = ((START >> 35) + 1) << 35;
    Series series(GAP);
    for (timeStamp_t i = 0; i < 30; ++i) {
        Fix fix = fixAt(begin + i * SECOND, i == 7 ? 12 : i == 11 ? 90 : 50);
        fix.altitude = i == 3 ? 400 : i == 20 ? 600 : 500;
        fix.satellites = i == 5 ? 4 : i == 22 ? 12 : 9;
        fix.quality = i == 9 ? 0 : i == 24 ? 4 : 1;
        series.add(momentOf(fix));
    }
    while (series.stretch() < timeStamp_t{1} << 35) {
        ASSERT_TRUE(series.coarsen());
    }
    Seconds seconds;
    for (const Series::Drawn& point : series.drawn()) {
        seconds.push_back((point.moment->fix.stamp - begin) / SECOND);
    }
    EXPECT_EQ(seconds, (Seconds{0, 3, 5, 7, 9, 11, 20, 22, 24, 29}));
}

TEST(SeriesTest, KeepsAPeakOfOneSecondInAWeek) {
    Series series(GAP, FEW);
    const auto drawn = weekWithOneOddSecond(series, [](Fix& fix) { fix.speed = 130; });
    EXPECT_EQ(count(drawn, [](const Fix& fix) { return fix.speed == 130; }), 1);
    EXPECT_LT(drawn.size(), 64U * 36);
}

TEST(SeriesTest, KeepsALowOfOneSecondInAWeek) {
    Series series(GAP, FEW);
    const auto drawn = weekWithOneOddSecond(series, [](Fix& fix) { fix.speed = 0; });
    EXPECT_EQ(count(drawn, [](const Fix& fix) { return fix.speed == 0; }), 1);
}

TEST(SeriesTest, KeepsASecondWithoutSatellites) {
    Series series(GAP, FEW);
    const auto drawn = weekWithOneOddSecond(series, [](Fix& fix) { fix.satellites = 0; });
    EXPECT_EQ(count(drawn, [](const Fix& fix) { return fix.satellites == 0U; }), 1);
}

TEST(SeriesTest, LeavesSpeedAndAltitudeOfInvalidFixesOut) {
    Fix fix = fixAt(START);
    EXPECT_EQ(valueOf(fix, Followed::SPEED), 50.0);
    EXPECT_EQ(valueOf(fix, Followed::ALTITUDE), 500.0);
    fix.valid = false;
    EXPECT_FALSE(valueOf(fix, Followed::POSITION));
    EXPECT_FALSE(valueOf(fix, Followed::SPEED));
    EXPECT_FALSE(valueOf(fix, Followed::ALTITUDE));
    EXPECT_EQ(valueOf(fix, Followed::SATELLITES), 9.0);
    EXPECT_EQ(valueOf(fix, Followed::QUALITY), 1.0);
    EXPECT_EQ(valueOf(fix, Followed::FIX), 0.0);
}

TEST(SeriesTest, OpensTheLinesAtAGap) {
    Series series(GAP);
    for (const timeStamp_t second : Seconds{0, 1, 6, 12, 13}) {
        series.add(momentOf(fixAt(START + second * SECOND)));
    }
    const auto drawn = series.drawn();
    for (const Followed what : {Followed::FIX, Followed::POSITION, Followed::SPEED,
                                Followed::ALTITUDE, Followed::SATELLITES, Followed::QUALITY}) {
        EXPECT_EQ(breaksOf(drawn, what), Seconds{12}) << static_cast<int>(what);
    }
}

TEST(SeriesTest, OpensTheLineOfAValueThatIsMissing) {
    Series series(GAP);
    for (timeStamp_t second = 0; second < 20; ++second) {
        Fix fix = fixAt(START + second * SECOND);
        if (second % 2 == 1 || (second > 4 && second < 14)) {
            fix.altitude.reset();
        }
        series.add(momentOf(fix));
    }
    const auto drawn = series.drawn();
    EXPECT_EQ(breaksOf(drawn, Followed::ALTITUDE), Seconds{14});
    EXPECT_EQ(breaksOf(drawn, Followed::SPEED), Seconds{});
}

TEST(SeriesTest, KeepsTheLongestGapOfAStretch) {
    Series series(GAP, {.stretches = 1, .bytes = 1 << 20});
    timeStamp_t second = 0;
    const auto drive = [&](timeStamp_t seconds) {
        for (const timeStamp_t end = second + seconds; second < end; ++second) {
            series.add(momentOf(fixAt(START + second * SECOND)));
        }
    };
    drive(100);
    second += 20;
    drive(100);
    second += 200;
    drive(100);
    second += 30;
    drive(100);
    while (series.coarsen()) {
    }
    const auto drawn = series.drawn();
    EXPECT_EQ(breaksOf(drawn, Followed::SPEED), Seconds{420});
    EXPECT_EQ(secondsOf(drawn), (Seconds{0, 219, 420, 649}));
}

TEST(SeriesTest, TakesWhatIsLeftOutForNoGap) {
    Series series(GAP, FEW);
    for (timeStamp_t i = 0; i < 100000; ++i) {
        series.add(momentOf(fixAt(START + i * SECOND, static_cast<double>(i % 97))));
    }
    ASSERT_GT(series.stretch(), GAP);
    const auto drawn = series.drawn();
    EXPECT_LT(drawn.size(), 1000U);
    EXPECT_EQ(breaksOf(drawn, Followed::SPEED), Seconds{});
}

TEST(SeriesTest, PutsFixesInOrderOfTime) {
    Series series(GAP);
    for (const timeStamp_t second : Seconds{10, 11, 12, 0, 1, 2}) {
        series.add(momentOf(fixAt(START + second * SECOND)));
    }
    const auto drawn = series.drawn();
    EXPECT_EQ(secondsOf(drawn), (Seconds{0, 1, 2, 10, 11, 12}));
    EXPECT_EQ(breaksOf(drawn, Followed::SPEED), Seconds{10});
}

TEST(SeriesTest, ClosesAGapThatALaterFixFills) {
    Series series(GAP, {.stretches = 1, .bytes = 1 << 20});
    for (const timeStamp_t second : Seconds{0, 8, 4}) {
        series.add(momentOf(fixAt(START + second * SECOND)));
    }
    while (series.coarsen()) {
    }
    EXPECT_EQ(breaksOf(series.drawn(), Followed::SPEED), Seconds{});
}

TEST(SeriesTest, CoarsensUntilAllTimeIsOneStretch) {
    Series series(GAP);
    for (timeStamp_t second = 0; second < 1000; ++second) {
        series.add(momentOf(fixAt(START + second * SECOND)));
    }
    size_t before = series.drawn().size();
    while (series.coarsen()) {
        const size_t after = series.drawn().size();
        EXPECT_LT(after, before);
        before = after;
    }
    EXPECT_EQ(secondsOf(series.drawn()), (Seconds{0, 999}));
}

TEST(SeriesTest, KeepsWithinItsBytes) {
    constexpr size_t BYTES = 200000;
    Series series(GAP, {.stretches = 100000, .bytes = BYTES});
    const std::string sentence = fmt::format("$GPRMC,,A,{}*00\r\n", std::string(1000, '1'));
    for (timeStamp_t second = 0; second < 20000; ++second) {
        const Fix fix = fixAt(START + second * SECOND, static_cast<double>(second % 7));
        series.add(std::make_shared<Moment>(
            fix, std::make_unique<GPSTraceMessage>(fix.stamp, sentence), second, 0));
    }
    size_t bytes = 0;
    for (const Series::Drawn& point : series.drawn()) {
        bytes += point.moment->footprint();
    }
    // What is open is added when it is closed.
    EXPECT_LT(bytes, BYTES + size_t{36} * 3000);
    EXPECT_GT(bytes, BYTES / 4);
}

// What is drawn agrees with all fixes: extremes of each stretch, gaps wider than two.
TEST(SeriesTest, AgreesWithAllFixesOfRandomDrives) {
    std::mt19937 random(20261121);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same everywhere
    for (int drive = 0; drive < 50; ++drive) {
        Series series(GAP, {.stretches = 1 + random() % 200, .bytes = 1 << 22});
        std::vector<Fix> fixes;
        timeStamp_t stamp = START;
        for (int i = 0; i < 3000; ++i) {
            stamp += SECOND * (random() % 300 == 0 ? 10 + random() % 3000 : 1 + random() % 3);
            fixes.push_back(fixAt(stamp, static_cast<double>(random() % 1000)));
            series.add(momentOf(fixes.back()));
        }
        const auto drawn = series.drawn();

        std::map<timeStamp_t, std::pair<double, double>> all;
        std::map<timeStamp_t, std::pair<double, double>> kept;
        const auto collect = [&](auto& ranges, const Fix& fix) {
            const auto [range, isNew] =
                ranges.try_emplace(fix.stamp / series.stretch(), *fix.speed, *fix.speed);
            range->second.first = std::min(range->second.first, *fix.speed);
            range->second.second = std::max(range->second.second, *fix.speed);
        };
        for (const Fix& fix : fixes) {
            collect(all, fix);
        }
        std::map<timeStamp_t, bool> shown;
        for (const Series::Drawn& point : drawn) {
            collect(kept, point.moment->fix);
            shown[point.moment->fix.stamp] = begins(point, Followed::SPEED);
        }
        EXPECT_EQ(all, kept);

        std::set<timeStamp_t> gaps;
        for (size_t i = 1; i < fixes.size(); ++i) {
            const timeStamp_t length = fixes[i].stamp - fixes[i - 1].stamp;
            if (length > GAP) {
                gaps.insert(fixes[i].stamp);
            }
            if (length > GAP && length > 2 * series.stretch()) {
                EXPECT_TRUE(shown.contains(fixes[i - 1].stamp)) << drive;
                EXPECT_TRUE(shown.contains(fixes[i].stamp) && shown[fixes[i].stamp]) << drive;
            }
        }
        for (const auto& [at, isBreak] : shown) {
            EXPECT_TRUE(!isBreak || gaps.contains(at)) << drive;
        }
    }
}
