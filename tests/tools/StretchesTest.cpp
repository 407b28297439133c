#include "tools/report/Stretches.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <vector>

#include "drawnDrives.h"

using namespace vextrace;
using namespace vextrace::tools;

namespace stretchesTest {
namespace {

constexpr timeStamp_t SECOND = 1000000000;
constexpr timeStamp_t GAP = 5 * SECOND;
constexpr timeStamp_t START = 1795264519 * SECOND;

using Seconds = std::vector<timeStamp_t>;

Seconds secondsOf(const std::vector<Moment>& moments) {
    Seconds seconds;
    for (const Moment& moment : moments) {
        seconds.push_back((moment.fix.stamp - START) / SECOND);
    }
    return seconds;
}

bool begins(const Moment& moment, Followed what) {
    return (moment.breaks >> static_cast<unsigned>(what) & 1) != 0;
}

// The seconds at which the line of a value begins anew.
Seconds breaksOf(const std::vector<Moment>& moments, Followed what) {
    std::vector<Moment> found;
    std::copy_if(moments.begin(), moments.end(), std::back_inserter(found),
                 [&](const Moment& moment) { return begins(moment, what); });
    return secondsOf(found);
}

// What is kept of the fixes, so many in each stretch.
std::vector<Moment> keptOf(const std::vector<Fix>& fixes, uint64_t ofStretch = 1) {
    Stretches stretches(GAP);
    uint64_t number = 0;
    for (const Fix& fix : fixes) {
        Moment moment;
        moment.fix = fix;
        moment.number = ++number;
        stretches.add(moment, messageAt(fix.stamp), number / ofStretch);
    }
    return stretches.finish();
}

std::vector<Moment> keptOf(const Seconds& seconds, uint64_t ofStretch = 1) {
    std::vector<Fix> fixes;
    for (const timeStamp_t second : seconds) {
        fixes.push_back(fixAt(START + second * SECOND));
    }
    return keptOf(fixes, ofStretch);
}

constexpr uint64_t ONE_STRETCH = 1000000;

}  // namespace

TEST(StretchesTest, KeepsEveryFixThatHasAStretchOfItsOwn) {
    std::vector<Fix> fixes;
    for (timeStamp_t i = 0; i < 1000; ++i) {
        fixes.push_back(fixAt(START + i * SECOND / 10));
    }
    const auto kept = keptOf(fixes);
    ASSERT_EQ(kept.size(), 1000U);
    for (size_t i = 0; i < kept.size(); ++i) {
        EXPECT_EQ(kept[i].fix.stamp, START + i * SECOND / 10);
        EXPECT_EQ(kept[i].breaks, 0U);
        EXPECT_EQ(kept[i].number, i + 1);
        EXPECT_EQ(kept[i].texts.traceLine.substr(41), "$GPRMC,,A*00");
    }
}

TEST(StretchesTest, KeepsFirstLastLeastAndGreatestOfEachValue) {
    std::vector<Fix> fixes;
    for (timeStamp_t i = 0; i < 30; ++i) {
        fixes.push_back(fixAt(START + i * SECOND, i == 7 ? 12 : i == 11 ? 90 : 50));
        fixes.back().altitude = i == 3 ? 400 : i == 20 ? 600 : 500;
        fixes.back().satellites = i == 5 ? 4 : i == 22 ? 12 : 9;
        fixes.back().quality = i == 9 ? 0 : i == 24 ? 4 : 1;
    }
    EXPECT_EQ(secondsOf(keptOf(fixes, ONE_STRETCH)), (Seconds{0, 3, 5, 7, 9, 11, 20, 22, 24, 29}));
}

TEST(StretchesTest, LeavesSpeedAndAltitudeOfInvalidFixesOut) {
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

TEST(StretchesTest, OpensTheLinesAtAGap) {
    const auto kept = keptOf(Seconds{0, 1, 6, 12, 13});
    for (const Followed what : {Followed::FIX, Followed::POSITION, Followed::SPEED,
                                Followed::ALTITUDE, Followed::SATELLITES, Followed::QUALITY}) {
        EXPECT_EQ(breaksOf(kept, what), Seconds{12}) << static_cast<int>(what);
    }
}

TEST(StretchesTest, OpensTheLineOfAValueThatIsMissing) {
    std::vector<Fix> fixes;
    for (timeStamp_t second = 0; second < 20; ++second) {
        fixes.push_back(fixAt(START + second * SECOND));
        if (second % 2 == 1 || (second > 4 && second < 14)) {
            fixes.back().altitude.reset();
        }
    }
    EXPECT_EQ(breaksOf(keptOf(fixes), Followed::ALTITUDE), Seconds{14});
    EXPECT_EQ(breaksOf(keptOf(fixes), Followed::SPEED), Seconds{});
}

TEST(StretchesTest, KeepsTheLongestGapOfAStretch) {
    Seconds seconds;
    for (timeStamp_t second = 0; second < 650; ++second) {
        const bool isMissing = (second >= 100 && second < 120) || (second >= 220 && second < 420) ||
                               (second >= 520 && second < 550);
        if (!isMissing) {
            seconds.push_back(second);
        }
    }
    const auto kept = keptOf(seconds, ONE_STRETCH);
    EXPECT_EQ(secondsOf(kept), (Seconds{0, 219, 420, 649}));
    EXPECT_EQ(breaksOf(kept, Followed::SPEED), Seconds{420});
}

TEST(StretchesTest, TakesWhatIsLeftOutForNoGap) {
    std::vector<Fix> fixes;
    for (timeStamp_t i = 0; i < 10000; ++i) {
        fixes.push_back(fixAt(START + i * SECOND, static_cast<double>(i % 97)));
    }
    const auto kept = keptOf(fixes, 1000);
    EXPECT_LT(kept.size(), 100U);
    EXPECT_EQ(breaksOf(kept, Followed::SPEED), Seconds{});
}

// As of stretches that were as long from the beginning.
TEST(StretchesTest, PutsStretchesTogether) {
    std::mt19937 random(20261122);
    std::vector<Fix> fixes;
    timeStamp_t stamp = START;
    for (size_t i = 0; i < 6000; ++i) {
        stamp += i % 400 == 399 ? (10 + i) * SECOND : SECOND;
        fixes.push_back(fixAt(stamp, static_cast<double>(random() % 1000)));
        fixes.back().altitude = static_cast<double>(random() % 1000);
    }
    std::vector<Moment> moments = keptOf(fixes, 100);
    const size_t number = moments.size();
    for (const uint64_t ofStretch : {200U, 400U, 800U}) {
        moments = Stretches::thinned(std::move(moments), 0.5, GAP);
        const std::vector<Moment> kept = keptOf(fixes, ofStretch);
        EXPECT_EQ(secondsOf(moments), secondsOf(kept));
        EXPECT_EQ(breaksOf(moments, Followed::SPEED), breaksOf(kept, Followed::SPEED));
        EXPECT_EQ(moments[1].texts.traceLine, kept[1].texts.traceLine);
    }
    EXPECT_LT(moments.size(), number / 4);
}

TEST(StretchesTest, PutsStretchesTogetherWhereTimeGoesBack) {
    const auto moments = Stretches::thinned(keptOf(Seconds{10, 11, 12, 0, 1, 2}), 0.01, GAP);
    EXPECT_EQ(secondsOf(moments), (Seconds{2, 10}));
    EXPECT_EQ(breaksOf(moments, Followed::SPEED), Seconds{10});
}

TEST(StretchesTest, PutsFixesInOrderOfTime) {
    const auto kept = keptOf(Seconds{10, 11, 12, 0, 1, 2});
    EXPECT_EQ(secondsOf(kept), (Seconds{0, 1, 2, 10, 11, 12}));
    EXPECT_EQ(breaksOf(kept, Followed::SPEED), Seconds{10});
}

TEST(StretchesTest, DrawsALineOverASmallStepBack) {
    const auto kept = keptOf(Seconds{0, 2, 1, 3, 4});
    EXPECT_EQ(secondsOf(kept), (Seconds{0, 1, 2, 3, 4}));
    EXPECT_EQ(breaksOf(kept, Followed::SPEED), Seconds{});
}

TEST(StretchesTest, ClosesAGapThatALaterFixFills) {
    EXPECT_EQ(breaksOf(keptOf(Seconds{0, 8, 4}, ONE_STRETCH), Followed::SPEED), Seconds{});
}

// What is kept agrees with all fixes: the extremes of each stretch, the only gap of one.
TEST(StretchesTest, AgreesWithAllFixesOfRandomDrives) {
    std::mt19937 random(20261121);
    for (int drive = 0; drive < 50; ++drive) {
        const size_t ofStretch = 20 + random() % 200;
        std::vector<Fix> fixes;
        std::map<size_t, std::vector<timeStamp_t>> gaps;  // of a stretch: the ends
        timeStamp_t stamp = START;
        for (size_t i = 0; i < 3000; ++i) {
            const bool isGap = random() % 300 == 0 && i > 0;
            stamp += SECOND * (isGap ? 10 + random() % 3000 : 1 + random() % 3);
            fixes.push_back(fixAt(stamp, static_cast<double>(random() % 1000)));
            if (isGap) {
                gaps[(i + 1) / ofStretch].push_back(stamp);
            }
        }
        std::map<size_t, std::pair<double, double>> all;
        std::map<size_t, std::pair<double, double>> kept;
        const auto collect = [&](auto& ranges, const Fix& fix, uint64_t number) {
            const auto [range, isNew] =
                ranges.try_emplace(number / ofStretch, *fix.speed, *fix.speed);
            range->second.first = std::min(range->second.first, *fix.speed);
            range->second.second = std::max(range->second.second, *fix.speed);
        };
        for (size_t i = 0; i < fixes.size(); ++i) {
            collect(all, fixes[i], i + 1);
        }
        std::map<timeStamp_t, bool> shown;
        for (const Moment& moment : keptOf(fixes, ofStretch)) {
            collect(kept, moment.fix, moment.number);
            shown[moment.fix.stamp] = begins(moment, Followed::SPEED);
        }
        EXPECT_EQ(all, kept);
        std::set<timeStamp_t> ends;
        for (const auto& [stretch, found] : gaps) {
            ends.insert(found.begin(), found.end());
            if (found.size() == 1) {
                EXPECT_TRUE(shown.contains(found[0]) && shown[found[0]]) << drive;
            }
        }
        for (const auto& [at, isBreak] : shown) {
            EXPECT_TRUE(!isBreak || ends.contains(at)) << drive;
        }
    }
}

}  // namespace stretchesTest
