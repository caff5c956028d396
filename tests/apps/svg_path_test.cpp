// Path data and basic shapes as contours.
#include "support/precompiled.h"

#include <numbers>

#include "support/property.h"
#include "tarvex/affine.h"
#include "tarvex/bezier.h"
#include "tarvex/measure.h"
#include "tarvex/nodes.h"
#include "tarvex/svg_path.h"

namespace tarvex::app::test {
namespace {

using tarvex::test::ExpectLaw;

std::string Text(double v) {
    char text[64];
    std::snprintf(text, sizeof text, "%.4g", v);
    return text;
}

std::string Text(const DPOINT& p) { return Text(p.x) + "," + Text(p.y); }

/// Contours as "0,0 L10,0 C...;": every segment with its control points, "z" where the contour is closed.
std::string Text(const std::vector<Contour>& contours) {
    std::string text;
    for (const Contour& nodes : contours) {
        if (!text.empty()) text += "; ";
        text += Text(nodes[0].pt);
        for (std::size_t i = 1; i < nodes.size(); ++i) {
            const bool isLine = nodes[i - 1].cp2 == nodes[i - 1].pt && nodes[i].cp1 == nodes[i].pt;
            text += isLine ? " L" : " C" + Text(nodes[i - 1].cp2) + " " + Text(nodes[i].cp1) + " ";
            text += Text(nodes[i].pt);
        }
        if (nodes.front().pt == nodes.back().pt) text += " z";
    }
    return text;
}

enum class Data { Sound, Damaged };

/// Each path data with the contours that it draws.
void ExpectContours(std::initializer_list<std::pair<const char*, const char*>> cases, Data data) {
    for (const auto& [text, contours] : cases) {
        const PathContours path = ParsePathData(text);
        EXPECT_EQ(path.isSound, data == Data::Sound) << text;
        EXPECT_EQ(Text(path.contours), contours) << text;
    }
}

TEST(SvgPath, EveryCommandDrawsWhatItsAbsoluteFormDraws) {
    ExpectContours(
        {
            {"", ""},
            {"M1 2", ""},
            {"M1 2z", ""},
            {"M 1,2 L 3,4", "1,2 L3,4"},
            {"  M1 2L3 4\n", "1,2 L3,4"},
            {"M1 2 3 4 5 6", "1,2 L3,4 L5,6"},
            {"m1 2 3 4 5 6", "1,2 L4,6 L9,12"},
            {"M1-2.5.5+3", "1,-2.5 L0.5,3"},
            {"M1e1 2E+1L3e-1 4.", "10,20 L0.3,4"},
            {"M0 0H5V6h-1v-2", "0,0 L5,0 L5,6 L4,6 L4,4"},
            {"M0 0h1 2 3", "0,0 L1,0 L3,0 L6,0"},
            {"M0 0C1 2 3 4 5 6", "0,0 C1,2 3,4 5,6"},
            {"M1 1c1 2 3 4 5 6", "1,1 C2,3 4,5 6,7"},
            {"M0 0C1 2 3 4 5 6S7 8 9 9", "0,0 C1,2 3,4 5,6 C7,8 7,8 9,9"},
            {"M0 0c1 2 3 4 5 6s7 8 9 9", "0,0 C1,2 3,4 5,6 C7,8 12,14 14,15"},
            {"M1 1S3 4 5 6", "1,1 C1,1 3,4 5,6"},
            {"M0 0Q3 0 3 3", "0,0 C2,0 3,1 3,3"},
            {"M1 1q3 0 3 3", "1,1 C3,1 4,2 4,4"},
            {"M0 0Q3 0 3 3T6 9", "0,0 C2,0 3,1 3,3 C3,5 4,7 6,9"},
            {"M0 0q3 0 3 3t3 6", "0,0 C2,0 3,1 3,3 C3,5 4,7 6,9"},
            {"M0 0T3 3", "0,0 C0,0 1,1 3,3"},
            {"M0 0Q3 0 3 3C3 3 3 3 4 4T5 5", "0,0 C2,0 3,1 3,3 C3,3 3,3 4,4 C4,4 4.333,4.333 5,5"},
            {"M0 0h4v4z", "0,0 L4,0 L4,4 L0,0 z"},
            {"M0 0h4v4L0 0Z", "0,0 L4,0 L4,4 L0,0 z"},
            {"M1 1h4v4zh2m1 1h3", "1,1 L5,1 L5,5 L1,1 z; 1,1 L3,1; 4,2 L7,2"},
            {"M1 1h4zm1 1h2", "1,1 L5,1 L1,1 z; 2,2 L4,2"},
            {"M0 0A0 5 0 0 1 9 9", "0,0 L9,9"},
            {"M0 0A5 5 0 0 1 0 0h1", "0,0 L1,0"},
        },
        Data::Sound);
}

TEST(SvgPath, DamagedDataDrawsUpToItsFirstError) {
    ExpectContours(
        {
            {"L1 1", ""},
            {"5 5", ""},
            {"M0 0L1 1 L", "0,0 L1,1"},
            {"M0 0L1 1 2", "0,0 L1,1"},
            {"M0 0L1 1,L2 2", "0,0 L1,1"},
            {"M0 0L1,,1", ""},
            {"M0 0L,1 1", ""},
            {"M0 0h1x1", "0,0 L1,0"},
            {"M0 0h1z1", "0,0 L1,0 L0,0 z"},
            {"M0 0h1#", "0,0 L1,0"},
            {"M0 0h1LNaN 1", "0,0 L1,0"},
            {"M0 0h1Linf 1", "0,0 L1,0"},
            {"M0 0h1L0x10 1", "0,0 L1,0"},
            {"M0 0h1a5 5 0 2 0 9 9", "0,0 L1,0"},
            {"M0 0h1c1 2 3 4 5", "0,0 L1,0"},
            {"M0 0h1\xC3\xA9", "0,0 L1,0"},
            {"M0 0h1e", "0,0 L1,0"},
            {"M0 0h.", ""},
        },
        Data::Damaged);
}

std::string ArcData(double rx, double ry, double turn, bool isLarge, bool isPositive, const DPOINT& end) {
    return "M0 0A" + std::to_string(rx) + " " + std::to_string(ry) + " " + std::to_string(turn) + " " +
           (isLarge ? "1" : "0") + (isPositive ? "1" : "0") + std::to_string(end.x) + " " +
           std::to_string(end.y);
}

TEST(SvgPath, LargeAndSmallArcCompleteOneEllipseOfTheirRadii) {
    ExpectLaw([] {
        const double rx = *rc::gen::inRange(1, 500);
        const double ry = *rc::gen::inRange(1, 500);
        const double turn = *rc::gen::inRange(-400, 400);
        const bool isPositive = *rc::gen::arbitrary<bool>();
        const double size = *rc::gen::inRange(1, 199) / 100.0;
        // A chord of `size` times the radius there, so that the ellipse reaches both ends.
        const double direction = *rc::gen::inRange(0, 360);
        const double c = std::cos(turn * std::numbers::pi / 180);
        const double s = std::sin(turn * std::numbers::pi / 180);
        const Affine circle{c * rx, s * rx, -s * ry, c * ry, 0, 0};
        const DPOINT end = circle({size * std::cos(direction), size * std::sin(direction)});
        const std::string large = ArcData(rx, ry, turn, true, isPositive, end);
        const std::string small = ArcData(rx, ry, turn, false, !isPositive, end);
        const auto whole = ParsePathData(large + small.substr(small.find('A')));
        const auto one = ParsePathData(large);
        const auto other = ParsePathData(small);
        RC_ASSERT(one.contours.size() == 1u);
        RC_ASSERT(other.contours.size() == 1u);
        RC_ASSERT(one.contours[0].back().pt ==
                  (DPOINT{std::stod(std::to_string(end.x)), std::stod(std::to_string(end.y))}));
        const double larger = std::fabs(GetBezierArea(one.contours[0]));
        const double smaller = std::fabs(GetBezierArea(other.contours[0]));
        RC_ASSERT(larger >= smaller * (1 - 1e-4));
        RC_ASSERT((GetBezierArea(one.contours[0]) > 0) == isPositive);
        // The printed end point is rounded to six decimals, against radii from 1.
        const double area = std::numbers::pi * rx * ry;
        RC_ASSERT(std::fabs(larger + smaller - area) < area * 5e-5);
    });
}

TEST(SvgPath, ArcsAndEllipsesKeepTheStatedDeviation) {
    const double r = 1000;
    for (const auto& contours :
         {EllipseContours({0, 0}, r, r), ParsePathData("M1000 0A1000 1000 0 1 1 0-1000").contours,
          RectContours({-r, -r, 2 * r, 2 * r, r, r})}) {
        ASSERT_EQ(contours.size(), 1u);
        double worst = 0;
        for (std::size_t i = 0; i + 1 < contours[0].size(); ++i) {
            const CBezier curve(contours[0][i], contours[0][i + 1]);
            for (int k = 0; k <= 100; ++k) {
                const DPOINT p = curve.GetCurvePoint(k / 100.0);
                worst = std::max(worst, std::fabs(std::hypot(p.x, p.y) - r));
            }
        }
        EXPECT_LT(worst, 4.3e-6 * r);
    }
}

TEST(SvgPath, RadiiTooSmallForTheirChordGrowToAHalfEllipse) {
    const auto path = ParsePathData("M0 0A1 2 0 0 1 10 0");
    const auto frame = FrameOf(path.contours.at(0));
    EXPECT_NEAR(frame->top, -10, 1e-4);  // radii 5 and 10
    EXPECT_NEAR(GetBezierArea(path.contours[0]), std::numbers::pi * 25, 1e-3);
}

TEST(SvgPath, BasicShapesWithoutAnAreaHaveNoContour) {
    EXPECT_EQ(Text(RectContours({1, 2, 3, 4, 0, 9})), "1,2 L4,2 L4,6 L1,6 L1,2 z");
    EXPECT_EQ(RectContours({0, 0, 0, 5}).size(), 0u);
    EXPECT_EQ(RectContours({0, 0, -1, 5}).size(), 0u);
    EXPECT_EQ(RectContours({0, 0, std::nan(""), 5}).size(), 0u);
    EXPECT_EQ(RectContours({0, 0, 10, 4, 9, 9}).at(0).size(), 9u) << "corners without sides";
    EXPECT_EQ(EllipseContours({0, 0}, 0, 1).size(), 0u);
    EXPECT_EQ(EllipseContours({0, 0}, 1, std::nan("")).size(), 0u);
    EXPECT_EQ(PolylineContours({{1, 1}}, true).size(), 0u);
    EXPECT_EQ(Text(PolylineContours({{1, 1}, {2, 2}}, true)), "1,1 L2,2 L1,1 z");
    EXPECT_EQ(Text(PolylineContours({{1, 1}, {2, 2}}, false)), "1,1 L2,2");
}

}  // namespace
}  // namespace tarvex::app::test
