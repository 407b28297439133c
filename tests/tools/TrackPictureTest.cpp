#include "tools/report/TrackPicture.h"

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "drawnDrives.h"

using namespace vextrace;
using namespace vextrace::tools;

namespace trackPictureTest {
namespace {

using Fixes = std::vector<Fix>;

Fix at(double latitude, double longitude, std::optional<double> speed = std::nullopt) {
    return placeAt(latitude, longitude, speed);
}

// Each gap is longer than the one that is allowed.
Fixes withGaps(Fixes fixes, const std::vector<size_t>& behindGaps) {
    for (const size_t first : behindGaps) {
        for (size_t i = first; i < fixes.size(); ++i) {
            fixes[i].stamp += 10'000'000'000;
        }
    }
    return fixes;
}

bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

std::string found(const std::string& text, const std::string& pattern) {
    std::smatch match;
    return std::regex_search(text, match, std::regex(pattern)) ? match[1].str() : "";
}

std::string svgOf(const std::vector<Fixes>& drives, const std::string& description = "") {
    const auto all = drawn(drives);
    std::vector<uint64_t> counts;
    for (const Fixes& fixes : drives) {
        counts.push_back(fixes.size());
    }
    return TrackPicture(all, neighbourhoods(all, counts)).svg(description);
}

std::string legendOf(const Fixes& fixes) {
    const auto all = drawn({fixes});
    return TrackPicture(all, {0}).speedLegend();
}

}  // namespace

TEST(TrackPictureTest, FitsTheTrackIntoThePicture) {
    for (const Fixes& fixes : {Fixes{at(48, 11), at(48.5, 11.01)}, Fixes{at(48, 11), at(48.01, 12)},
                               Fixes{at(-89.9, 0), at(89.9, 40)}, Fixes{at(48, 11)}}) {
        const std::string svg = svgOf({fixes});
        for (const std::string end : {"start0", "end0"}) {
            const std::string place = "id=\"" + end + "\"[^>]*translate\\(";
            const int x = std::stoi(found(svg, place + "(-?\\d+) "));
            const int y = std::stoi(found(svg, place + R"(-?\d+ (-?\d+)\))"));
            EXPECT_GE(x, 600);
            EXPECT_LE(x, TrackPicture::WIDTH - 600);
            EXPECT_GE(y, 600);
            EXPECT_LE(y, TrackPicture::HEIGHT - 1200);
        }
    }
}

TEST(TrackPictureTest, DrawsLinesGapsAndSinglePoints) {
    const std::string svg = svgOf({withGaps(
        {at(0, 11), at(0, 11.001), at(0.001, 11.001), at(0, 11.002), at(0, 11.003), at(0, 11.004)},
        {3, 4})});
    // Four thousandths of a degree are 10,000 units; north is up.
    EXPECT_EQ(found(svg, "id=\"line0-1\" d=\"([^\"]*)\""),
              "M0 2500l2500 0 0-2500M5000 2500l0 0M7500 2500l2500 0");
    EXPECT_EQ(found(svg, "class=\"stroke gap\" d=\"([^\"]*)\""),
              "M2500 0L5000 2500M5000 2500L7500 2500");
    EXPECT_TRUE(holds(svg, "class=\"unknown\""));
    EXPECT_EQ(legendOf({at(48, 11)}), "");
}

TEST(TrackPictureTest, ColoursAPieceByItsFasterEnd) {
    const Fixes fixes = {at(0, 11, 10), at(0, 11.001, 130), at(0, 11.002, 10), at(0, 11.004, 10)};
    const std::string svg = svgOf({fixes});
    EXPECT_EQ(found(svg, "id=\"line0-6\" d=\"M(\\d+) "), "0");
    EXPECT_EQ(found(svg, "id=\"line0-0\" d=\"M(\\d+) "), "5000");
    EXPECT_TRUE(holds(svg, "<use href=\"#line0-0\" class=\"s0\"/>"));
    EXPECT_TRUE(holds(svg, "<use href=\"#line0-6\" class=\"s7\"/>"));
    EXPECT_TRUE(holds(legendOf(fixes), "s7\"></span>120 to 140</li>"));
}

TEST(TrackPictureTest, GivesEachOfSeveralDrivesAColourAndANumber) {
    const std::string svg = svgOf({{at(48, 11, 10), at(48, 11.01, 130)}, {at(48, 11.02)}});
    EXPECT_TRUE(holds(svg, "<use href=\"#line0-0\" class=\"d0 p0\"/>"));
    EXPECT_TRUE(holds(svg, "<use href=\"#line1-1\" class=\"d1 p0\"/>"));
    EXPECT_EQ(found(svg, "id=\"start1\".*>(.*)</text>"), "2");
    EXPECT_FALSE(holds(svg, "Start"));
    EXPECT_FALSE(holds(svg, "stroke gap"));
    EXPECT_EQ(driveColour(9), "d1 p1");
    EXPECT_EQ(driveColour(24), "d0 p0");
}

TEST(TrackPictureTest, TellsWhetherThereAreGaps) {
    const auto hasGaps = [](const Fixes& fixes) {
        const auto all = drawn({fixes});
        return TrackPicture(all, {0}).hasGaps();
    };
    const Fixes line = {at(48, 11, 10), at(48, 11.001, 20)};
    EXPECT_FALSE(hasGaps(line));
    EXPECT_TRUE(hasGaps(withGaps(line, {1})));
}

TEST(TrackPictureTest, HasAScaleBarOfRoundLength) {
    const auto bar = [](double degrees) {
        return found(svgOf({{at(0, 0), at(0, degrees)}}), "id=\"scale-length\">([^<]*)<");
    };
    EXPECT_EQ(bar(0), "5 m");
    EXPECT_EQ(bar(0.01), "200 m");
    EXPECT_EQ(bar(0.1), "2 km");
    EXPECT_EQ(bar(90), "2000 km");
}

TEST(TrackPictureTest, DescribesItself) {
    EXPECT_TRUE(holds(svgOf({{at(48, 11)}}, "\"A\" drive"), "aria-label=\"&quot;A&quot; drive\""));
}

TEST(TrackPictureTest, ShowsNeighboursTogether) {
    const Fixes town = {at(48, 11), at(48.01, 11.01)};
    const Fixes road = {at(48.1, 11.1), at(48.2, 11.1), at(48.2, 11.2)};
    const Fixes overseas = {at(-33, 151), at(-33, 151.01)};
    const Fixes also = {at(-33.01, 151)};
    const Fixes none = {Fix()};
    const auto groups = [](const std::vector<Fixes>& drives, const std::vector<uint64_t>& counts) {
        return neighbourhoods(drawn(drives), counts);
    };
    using Groups = std::vector<size_t>;
    EXPECT_EQ(groups({town, overseas, road, also}, {9, 8, 7, 6}), (Groups{0, 1, 0, 1}));
    EXPECT_EQ(groups({town, overseas, road, also}, {7, 8, 6, 9}), (Groups{1, 0, 1, 0}));
    EXPECT_EQ(groups({none, town}, {5, 5}), (Groups{0, 0}));
    EXPECT_EQ(groups({{at(-17, 179.999)}, {at(-17, -179.999)}}, {1, 1}), (Groups{0, 0}));
}

TEST(TrackPictureTest, BeginsWithTheFirstNeighbourhood) {
    const Fixes town = {at(48, 11), at(48.01, 11)};
    const Fixes overseas = {at(-33, 151), at(-33.01, 151)};
    const auto all = drawn({town, overseas});
    const std::string svg = TrackPicture(all, {1, 0}).svg("");
    EXPECT_EQ(found(svg, "id=\"start1\"[^>]*translate\\(\\d+ (\\d+)\\)"), "700");
    EXPECT_EQ(found(svg, "id=\"end1\"[^>]*translate\\(\\d+ (\\d+)\\)"), "6300");
}

TEST(TrackPictureTest, DividesSpeedsByRoundSteps) {
    const auto steps = [](double fastest) {
        const SpeedScale scale(fastest);
        return std::pair(scale.step(), scale.steps());
    };
    EXPECT_EQ(steps(0), std::pair(1.0, size_t{1}));
    EXPECT_EQ(steps(8), std::pair(1.0, size_t{8}));
    EXPECT_EQ(steps(8.1), std::pair(2.0, size_t{5}));
    EXPECT_EQ(steps(17), std::pair(5.0, size_t{4}));
    EXPECT_EQ(steps(118), std::pair(20.0, size_t{6}));
    EXPECT_EQ(steps(900), std::pair(200.0, size_t{5}));

    const SpeedScale scale(118);
    EXPECT_EQ(scale.index(-1), 0U);
    EXPECT_EQ(scale.index(19.9), 0U);
    EXPECT_EQ(scale.index(20), 1U);
    EXPECT_EQ(scale.index(118), 5U);
    EXPECT_EQ(scale.index(1e9), 5U);
    EXPECT_EQ(scale.colour(0), "s0");
    EXPECT_EQ(scale.colour(5), "s7");
}

}  // namespace trackPictureTest
