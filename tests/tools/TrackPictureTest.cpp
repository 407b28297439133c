#include "tools/report/TrackPicture.h"

#include <fmt/core.h>
#include <gtest/gtest.h>

#include <cmath>
#include <regex>
#include <string>

using namespace vextrace;
using namespace vextrace::tools;

namespace {

using Points = std::vector<TrackPoint>;

TrackPoint at(double latitude, double longitude, std::optional<double> speed = std::nullopt) {
    return {latitude, longitude, speed, false};
}

TrackPoint behindGap(double latitude, double longitude) {
    return {latitude, longitude, std::nullopt, true};
}

bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

std::string found(const std::string& text, const std::string& pattern) {
    std::smatch match;
    return std::regex_search(text, match, std::regex(pattern)) ? match[1].str() : "";
}

// The lengths of a kilometre to the north and to the east, in units of the picture.
void expectEqualScales(double latitude, double longitude) {
    constexpr double METRES_OF_DEGREE = 111195;
    const double north = 1000 / METRES_OF_DEGREE;
    const double east = north / std::cos(latitude * 3.14159265358979 / 180);
    const Points points = {at(latitude, longitude), at(latitude + north, longitude + east)};
    const TrackPicture picture(points);
    const auto [x0, y0] = picture.spot(latitude, longitude);
    const auto [x1, y1] = picture.spot(latitude + north, longitude + east);
    EXPECT_NEAR(x1 - x0, y0 - y1, (x1 - x0) * 0.002);
    EXPECT_GT(x1, x0);
    EXPECT_LT(y1, y0);
    EXPECT_NEAR((x1 - x0) * picture.metresPerUnit(), 1000, 10);
}

}  // namespace

TEST(TrackPictureTest, HasTheSameScaleInBothDirections) {
    expectEqualScales(0, 0);
    expectEqualScales(48, 11);
    expectEqualScales(-33, 151);
    expectEqualScales(69, -179.99);
}

TEST(TrackPictureTest, FitsTheTrackIntoThePicture) {
    for (const Points& points :
         {Points{at(48, 11), at(48.5, 11.01)}, Points{at(48, 11), at(48.01, 12)},
          Points{at(-89.9, 0), at(89.9, 400)}, Points{at(48, 11)}}) {
        const TrackPicture picture(points);
        for (const TrackPoint& point : points) {
            const auto [x, y] = picture.spot(point.latitude, point.longitude);
            EXPECT_GE(x, 600);
            EXPECT_LE(x, TrackPicture::WIDTH - 600);
            EXPECT_GE(y, 600);
            EXPECT_LE(y, TrackPicture::HEIGHT - 1200);
        }
    }
}

TEST(TrackPictureTest, CrossesThe180thMeridianWithoutAJump) {
    const Points points = {at(-17, 179.999), at(-17, continued(-179.999, 179.999))};
    const TrackPicture picture(points);
    EXPECT_NEAR(
        (picture.spot(-17, 180.001).x - picture.spot(-17, 179.999).x) * picture.metresPerUnit(),
        213, 1);
}

TEST(TrackPictureTest, DrawsLinesGapsAndSinglePoints) {
    const Points points = {at(48, 11),
                           at(48, 11.001),
                           at(48.001, 11.001),
                           behindGap(48, 11.002),
                           behindGap(48, 11.003),
                           at(48, 11.004)};
    const TrackPicture picture(points);
    const auto spot = [&](size_t i) {
        return picture.spot(points[i].latitude, points[i].longitude);
    };
    const auto text = [&](size_t i) { return fmt::format("{} {}", spot(i).x, spot(i).y); };
    const auto right = [&](size_t i) { return spot(i).x - spot(i - 1).x; };
    const std::string svg = picture.svg("");
    EXPECT_EQ(found(svg, "id=\"line1\" d=\"([^\"]*)\""),
              fmt::format("M{}l{} 0 0{}M{}l0 0M{}l{} 0", text(0), right(1), spot(2).y - spot(1).y,
                          text(3), text(4), right(5)));
    EXPECT_EQ(found(svg, "class=\"stroke gap\" d=\"([^\"]*)\""),
              fmt::format("M{}L{}M{}L{}", text(2), text(3), text(3), text(4)));
    EXPECT_TRUE(holds(svg, "class=\"unknown\""));
    EXPECT_EQ(picture.legend(), "");
}

TEST(TrackPictureTest, ColoursAPieceByItsFasterEnd) {
    const Points points = {at(48, 11, 10), at(48, 11.001, 130), at(48, 11.002, 10),
                           at(48, 11.003, 10)};
    const TrackPicture picture(points);
    const std::string svg = picture.svg("");
    const auto x = [&](size_t i) { return picture.spot(48, points[i].longitude).x; };
    EXPECT_EQ(found(svg, "id=\"line6\" d=\"M(\\d+) "), std::to_string(x(0)));
    EXPECT_EQ(found(svg, "id=\"line0\" d=\"M(\\d+) "), std::to_string(x(2)));
    EXPECT_TRUE(holds(svg, "<use href=\"#line0\" class=\"s0\"/>"));
    EXPECT_TRUE(holds(svg, "<use href=\"#line6\" class=\"s7\"/>"));
    EXPECT_TRUE(holds(picture.legend(), "s7\"></span>120 to 140</li>"));
}

TEST(TrackPictureTest, ExplainsDashedLinesWhereThereAreSome) {
    const Points line = {at(48, 11, 10), at(48, 11.001, 20)};
    EXPECT_FALSE(holds(TrackPicture(line).legend(), "dashed"));
    Points withGap = line;
    withGap[1].followsGap = true;
    EXPECT_TRUE(holds(TrackPicture(withGap).legend(), "dashed\"></span>no fix</li>"));
}

TEST(TrackPictureTest, HasAScaleBarOfRoundLength) {
    const auto bar = [](double degrees) {
        const Points points = {at(0, 0), at(0, degrees)};
        return found(TrackPicture(points).svg(""), "id=\"scale-length\">([^<]*)<");
    };
    EXPECT_EQ(bar(0), "5 m");
    EXPECT_EQ(bar(0.01), "200 m");
    EXPECT_EQ(bar(0.1), "2 km");
    EXPECT_EQ(bar(90), "2000 km");
}

TEST(TrackPictureTest, DescribesItself) {
    const Points points = {at(48, 11)};
    EXPECT_TRUE(
        holds(TrackPicture(points).svg("\"A\" drive"), "aria-label=\"&quot;A&quot; drive\""));
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
