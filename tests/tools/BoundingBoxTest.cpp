#include "tools/trace/BoundingBox.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace vextrace;
using namespace vextrace::tools;

namespace {

struct Position {
    double latitude;
    double longitude;
};

std::vector<double> boxOf(const std::vector<Position>& positions) {
    BoundingBox bounds;
    for (const Position& position : positions) {
        bounds.add(position.latitude, position.longitude);
    }
    const std::optional<Box> box = bounds.box();
    return box ? std::vector<double>{box->south, box->west, box->north, box->east}
               : std::vector<double>{};
}

using Numbers = std::vector<double>;

}  // namespace

TEST(BoundingBoxTest, HoldsEveryPosition) {
    EXPECT_EQ(boxOf({{48.5, 11.25}}), (Numbers{48.5, 11.25, 48.5, 11.25}));
    EXPECT_EQ(boxOf({{48.5, 11.25}, {-3.5, 12.75}, {47, -5.5}}),
              (Numbers{-3.5, -5.5, 48.5, 12.75}));
}

TEST(BoundingBoxTest, IsNoneWithoutPositions) {
    EXPECT_EQ(boxOf({}), Numbers());
}

TEST(BoundingBoxTest, LiesAcrossThe180thMeridianWhereThatIsSmaller) {
    EXPECT_EQ(boxOf({{1, 179.5}, {2, -179.75}}), (Numbers{1, 179.5, 2, -179.75}));
    EXPECT_EQ(boxOf({{1, 170}, {2, -160}, {3, 175}, {0, -178}}), (Numbers{0, 170, 3, -160}));
    EXPECT_EQ(boxOf({{1, -90.5}, {2, 89}}), (Numbers{1, -90.5, 2, 89}));
    EXPECT_EQ(boxOf({{1, -90.5}, {2, 90}}), (Numbers{1, 90, 2, -90.5}));
}

TEST(BoundingBoxTest, EndsAtTheLastPositionOfItsLastDegree) {
    EXPECT_EQ(boxOf({{0, 170}, {0, -178.8}, {0, -178.2}}), (Numbers{0, 170, 0, -178.2}));
}

TEST(BoundingBoxTest, BothSidesOfThe180thMeridianAreTheSame) {
    EXPECT_EQ(boxOf({{0, 180}, {0, -180}}), (Numbers{0, 180, 0, -180}));
    EXPECT_EQ(boxOf({{90, 180}}), (Numbers{90, 180, 90, 180}));
    EXPECT_EQ(boxOf({{-90, -180}}), (Numbers{-90, -180, -90, -180}));
}

TEST(BoundingBoxTest, DoesNotDependOnTheOrder) {
    std::vector<Position> positions = {{1, 10},   {2, 20},    {3, 120},
                                       {4, -170}, {5, 119.5}, {6, 10.25}};
    do {
        ASSERT_EQ(boxOf(positions), (Numbers{1, 10, 6, -170}));
    } while (std::next_permutation(
        positions.begin(), positions.end(),
        [](const Position& a, const Position& b) { return a.latitude < b.latitude; }));
}

TEST(BoundingBoxTest, TheWholeWorldHasABox) {
    std::vector<Position> positions;
    for (int longitude = -180; longitude < 180; ++longitude) {
        positions.push_back({0, longitude + 0.5});
    }
    EXPECT_EQ(boxOf(positions), (Numbers{0, -179.5, 0, 179.5}));
}
