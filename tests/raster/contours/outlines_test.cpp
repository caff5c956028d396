// Outlines of grey pictures: nothing lost, in the right place, smooth where smooth and sharp where
// sharp.
#include "support/precompiled.h"

#include <array>
#include <set>

#include "raster/contours/level_set.h"
#include "support/grey_picture.h"
#include "support/property.h"
#include "tarvex/bezier.h"
#include "tarvex/contours.h"
#include "tarvex/nodes.h"

namespace tarvex {
namespace {

using test::GreyPicture;
using test::Render;
using test::Stairs;
using Contour = CArray<BPOINT, BPOINT>;

CPolyPolyBezier Trace(const GreyPicture& picture, OutlineOptions options = {}) {
    CPolyPolyBezier out;
    EXPECT_TRUE(TraceOutlines(picture.View(), options, out));
    return out;
}

OutlineOptions Detail(int detail) {
    OutlineOptions options;
    options.detail = detail;
    return options;
}

std::vector<DPOINT> Flatten(const Contour& contour) {
    CArray<DPOINT, DPOINT> points;
    GetPolyline(contour, points, 0.05);
    return {points.GetData(), points.GetData() + points.GetSize()};
}

/// Positive for contours that run clockwise on the screen.
double SignedArea(const Contour& contour) {
    const std::vector<DPOINT> p = Flatten(contour);
    double twice = 0;
    for (std::size_t i = 1; i < p.size(); ++i) twice += p[i - 1].x * p[i].y - p[i].x * p[i - 1].y;
    return twice / 2;
}

double Distance(DPOINT a, DPOINT b) { return std::hypot(a.x - b.x, a.y - b.y); }

bool IsSmooth(const BPOINT& node) {
    const double inX = node.pt.x - node.cp1.x, inY = node.pt.y - node.cp1.y;
    const double outX = node.cp2.x - node.pt.x, outY = node.cp2.y - node.pt.y;
    const double cross = std::fabs(inX * outY - inY * outX);
    const double dot = inX * outX + inY * outY;
    return dot > 0 && cross <= 1e-6 * dot;
}

// ---------------------------------------------------------------------------------------------
// The follower

/// Sides between a shape pixel and a ground pixel, counted one by one.
std::size_t CountCracks(const GreyPicture& picture, int threshold) {
    const auto dark = [&](int x, int y) {
        return x >= 0 && y >= 0 && x < picture.width && y < picture.height && picture.At(x, y) <= threshold;
    };
    std::size_t cracks = 0;
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            if (dark(x, y))
                cracks +=
                    static_cast<std::size_t>(!dark(x - 1, y)) + static_cast<std::size_t>(!dark(x + 1, y)) +
                    static_cast<std::size_t>(!dark(x, y - 1)) + static_cast<std::size_t>(!dark(x, y + 1));
    return cracks;
}

GreyPicture RandomPicture(std::mt19937& random, int levels) {
    GreyPicture picture(1 + static_cast<int>(random() % 140), 1 + static_cast<int>(random() % 20));
    for (std::uint8_t& level : picture.levels)
        level = static_cast<std::uint8_t>(random() % static_cast<unsigned>(levels) * 255 /
                                          static_cast<unsigned>(levels - 1));
    return picture;
}

TEST(OutlineFollower, PutsOnePointOnEverySideBetweenShapeAndGround) {
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        const GreyPicture picture = RandomPicture(random, round % 2 == 0 ? 2 : 256);
        const int threshold = 60 + static_cast<int>(random() % 120);
        contours::OutlineFollower follower(picture.View(), threshold, ShapeSide::dark);
        std::vector<contours::Crossing> points;
        std::set<std::pair<double, double>> cracks;
        std::size_t count = 0;
        while (follower.Next(points)) {
            ASSERT_GE(points.size(), 4u);
            for (std::size_t i = 0; i < points.size(); ++i) {
                const contours::Crossing p = points[i];
                const contours::Crossing next = points[(i + 1) % points.size()];
                // A side's point lies on a line between neighbouring centres, strictly inside.
                const bool horizontal = p.y - 0.5 == std::floor(p.y);
                const double along = (horizontal ? p.x : p.y) - 0.5;
                ASSERT_GT(along, std::floor(along));
                ASSERT_LE(std::max(std::fabs(p.x - next.x), std::fabs(p.y - next.y)), 1.0);
                cracks.emplace(horizontal ? std::floor(along) : p.x,
                               horizontal ? p.y : std::floor(along) + 0.25);
                ++count;
            }
        }
        ASSERT_EQ(count, CountCracks(picture, threshold));
        ASSERT_EQ(cracks.size(), count) << "no side twice";
    }
}

TEST(OutlineFollower, CrossesWhereTheGreyBetweenTwoCentresReachesTheLevel) {
    GreyPicture picture(2, 1);
    picture.At(0, 0) = 50;
    picture.At(1, 0) = 200;
    // A third level, or the picture would be one of two levels and its edges stairs.
    const std::vector<std::uint8_t> levels = {50, 200, 201};
    contours::OutlineFollower follower({levels.data(), 3, 1, 3}, 99, ShapeSide::dark);
    std::vector<contours::Crossing> points;
    ASSERT_TRUE(follower.Next(points));
    ASSERT_EQ(points.size(), 4u);
    EXPECT_DOUBLE_EQ(points[0].x, 0.0) << "the picture's edge";
    EXPECT_DOUBLE_EQ(points[2].x, 0.5 + 49.5 / 150);
}

TEST(OutlineFollower, TheRarerSideHangsTogetherWherePixelsTouchByACorner) {
    const GreyPicture thinDark({"#.....", ".#....", "..#...", "...#..", "....#.", ".....#"});
    GreyPicture thinLight = thinDark;
    for (std::uint8_t& level : thinLight.levels) level = static_cast<std::uint8_t>(255 - level);
    EXPECT_EQ(Trace(thinDark).GetSize(), 1);
    EXPECT_EQ(Trace(thinLight).GetSize(), 2) << "the light line parts the dark square";
}

// ---------------------------------------------------------------------------------------------
// Where outlines run

TEST(Outlines, OfAntiAliasedDiscsAreSmoothAndWithinATenthOfAPixel) {
    for (const double radius : {4.0, 7.3, 20.0, 61.7, 150.0})
        for (const double shift : {0.0, 0.3, 0.5}) {
            const double centre = radius + 5 + shift;
            const int size = static_cast<int>(2 * radius) + 12;
            const CPolyPolyBezier out = Trace(Render(
                size, size, [&](double x, double y) { return std::hypot(x - centre, y - centre) < radius; }));
            ASSERT_EQ(out.GetSize(), 1);
            const Contour& contour = out[0];
            EXPECT_LE(contour.GetSize(), 11);
            EXPECT_GT(SignedArea(contour), 0);
            for (const DPOINT& p : Flatten(contour))
                EXPECT_NEAR(Distance(p, {centre, centre}), radius, radius > 100 ? 0.35 : 0.3) << radius;
            for (int i = 1; i + 1 < contour.GetSize(); ++i) EXPECT_TRUE(IsSmooth(contour[i])) << radius;
        }
}

/// The corner of a contour nearest to a point.
double NearestNode(const Contour& contour, DPOINT p) {
    double nearest = 1e9;
    for (int i = 0; i < contour.GetSize(); ++i) nearest = std::min(nearest, Distance(contour[i].pt, p));
    return nearest;
}

/// One contour of four straight sides, its corners as near to the frame's as allowed.
void ExpectRectangle(const CPolyPolyBezier& out, const DRECT& frame, double allowed) {
    ASSERT_EQ(out.GetSize(), 1);
    ASSERT_EQ(out[0].GetSize(), 5);
    for (const double x : {frame.left, frame.right})
        for (const double y : {frame.top, frame.bottom})
            EXPECT_LE(NearestNode(out[0], {x, y}), allowed) << x << ' ' << y;
    for (const BPOINT& node : out[0]) EXPECT_TRUE(node.cp1 == node.pt && node.cp2 == node.pt);
}

/// A rectangle that is turned about its centre, which is as far from the left as from the top.
struct Bar {
    double centre, degrees, halfLength, halfWidth;

    double Angle() const { return degrees * 3.141592653589793 / 180; }
    /// How far a point is along the bar and across it from the centre.
    DPOINT Of(double x, double y) const {
        const double c = std::cos(Angle()), s = std::sin(Angle());
        return {(x - centre) * c + (y - centre) * s, (y - centre) * c - (x - centre) * s};
    }
    bool operator()(double x, double y) const {
        const DPOINT p = Of(x, y);
        return std::fabs(p.x) < halfLength && std::fabs(p.y) < halfWidth;
    }
};

TEST(Outlines, OfRectanglesHaveFourStraightSidesAndSharpCorners) {
    const std::pair<DRECT, double> cases[] = {
        {{5, 25, 5, 15}, 0.01},          // on the grid
        {{5.5, 25.5, 5.5, 15.5}, 0.05},  // in the middle of pixels
        {{4.8, 31.1, 6.3, 22.6}, 0.15}, {{3, 9, 3, 40}, 0.01},
        {{0, 20, 0, 10}, 0.01},  // against the picture's edge
    };
    for (const auto& [r, allowed] : cases) {
        SCOPED_TRACE(r.left);
        const GreyPicture picture = Render(48, 48, [&r = r](double x, double y) {
            return x > r.left && x < r.right && y > r.top && y < r.bottom;
        });
        ExpectRectangle(Trace(picture), r, allowed);
    }
}

TEST(Outlines, OfASquareAreTheSameFourSidesAtEveryDetail) {
    for (int detail = 1; detail <= 16; ++detail) {
        SCOPED_TRACE(detail);
        ExpectRectangle(Trace(Render(40, 40, Bar{20, 0, 15, 15}), Detail(detail)), {5, 35, 5, 35}, 0.1);
        ExpectRectangle(Trace(GreyPicture(30, 30, 0), Detail(detail)), {0, 30, 0, 30}, 0.1);
    }
}

TEST(Outlines, OfATurnedSquareKeepItsCornersAtEveryAngle) {
    for (const bool stairs : {false, true})
        for (int degrees = 3; degrees < 90; degrees += 7) {
            const Bar square{50, degrees * 1.0, 30, 30};
            const GreyPicture soft = Render(100, 100, square);
            const CPolyPolyBezier out = Trace(stairs ? Stairs(soft) : soft);
            ASSERT_EQ(out.GetSize(), 1);
            EXPECT_LE(out[0].GetSize(), stairs ? 9 : 6) << degrees;
            for (int k = 0; k < 4; ++k) {
                const double a = square.Angle() + (k + 0.5) * 3.141592653589793 / 2;
                const DPOINT corner{50 + 30 * std::sqrt(2) * std::cos(a),
                                    50 + 30 * std::sqrt(2) * std::sin(a)};
                EXPECT_LE(NearestNode(out[0], corner), stairs ? 1.0 : 0.4)
                    << degrees << (stairs ? " stairs" : "");
            }
        }
}

TEST(Outlines, OfThinBarsAreRectanglesOfTheirArea) {
    for (const int length : {8, 10, 20, 40, 90})
        for (const int thickness : {1, 2})
            for (const int detail : {1, 2, 3, 8})
                for (const bool upright : {false, true}) {
                    const int w = upright ? thickness : length;
                    const int h = upright ? length : thickness;
                    const CPolyPolyBezier out = Trace(
                        Render(w + 6, h + 6,
                               [&](double x, double y) { return x > 3 && x < w + 3 && y > 3 && y < h + 3; }),
                        Detail(detail));
                    ASSERT_EQ(out.GetSize(), 1);
                    EXPECT_EQ(out[0].GetSize(), 5) << w << 'x' << h << " detail " << detail;
                    // What is one pixel wide gets a little wider where it is enlarged.
                    EXPECT_NEAR(SignedArea(out[0]) / (w * h), 1, thickness == 1 ? 0.15 : 0.05)
                        << w << 'x' << h << " detail " << detail;
                }
}

TEST(Outlines, OfTurnedBarsKeepTheirAreaAndLength) {
    for (const double thickness : {2.0, 3.0})
        for (int degrees = 0; degrees < 180; degrees += 9) {
            SCOPED_TRACE(testing::Message() << thickness << " at " << degrees);
            const Bar bar{30, degrees * 1.0, 25, thickness / 2};
            const CPolyPolyBezier out = Trace(Render(60, 60, bar));
            ASSERT_EQ(out.GetSize(), 1);
            EXPECT_NEAR(SignedArea(out[0]) / (50 * thickness), 1, 0.1);
            double from = 0, to = 0;
            for (const DPOINT& p : Flatten(out[0])) {
                from = std::min(from, bar.Of(p.x, p.y).x);
                to = std::max(to, bar.Of(p.x, p.y).x);
            }
            EXPECT_NEAR(from, -25, 0.8);
            EXPECT_NEAR(to, 25, 0.8);
        }
}

TEST(Outlines, OfARingAreAShapeAndAHole) {
    const CPolyPolyBezier out = Trace(Render(60, 60, [](double x, double y) {
        const double r = std::hypot(x - 30, y - 30);
        return r < 25 && r > 24;  // a wall one pixel thick
    }));
    ASSERT_EQ(out.GetSize(), 2);
    EXPECT_NEAR(SignedArea(out[0]), 3.14159265 * 25 * 25, 25);
    EXPECT_NEAR(SignedArea(out[1]), -3.14159265 * 24 * 24, 25);
}

TEST(Outlines, OfAPictureThatIsAllShapeAreItsEdge) {
    for (const auto& [w, h] : {std::pair{1, 1}, {2, 1}, {1, 3}, {7, 5}, {64, 64}, {300, 2}}) {
        OutlineOptions options;
        options.minPoints = 0;
        const CPolyPolyBezier out = Trace(GreyPicture(w, h, 0), options);
        ASSERT_EQ(out.GetSize(), 1);
        EXPECT_GT(SignedArea(out[0]), 0.4 * w * h);
        for (const DPOINT& p : Flatten(out[0])) {
            EXPECT_TRUE(p.x >= -0.3 && p.x <= w + 0.3 && p.y >= -0.3 && p.y <= h + 0.3) << w << 'x' << h;
        }
    }
}

// ---------------------------------------------------------------------------------------------
// Nothing lost

/// Even-odd count of the flattened contours at a point.
bool Covers(const std::vector<std::vector<DPOINT>>& polygons, DPOINT at) {
    bool inside = false;
    for (const auto& p : polygons)
        for (std::size_t i = 1; i < p.size(); ++i)
            if ((p[i - 1].y > at.y) != (p[i].y > at.y) &&
                at.x < p[i - 1].x + (at.y - p[i - 1].y) / (p[i].y - p[i - 1].y) * (p[i].x - p[i - 1].x))
                inside = !inside;
    return inside;
}

double Agreement(const GreyPicture& picture, const CPolyPolyBezier& out, int threshold) {
    std::vector<std::vector<DPOINT>> polygons;
    for (int i = 0; i < out.GetSize(); ++i) polygons.push_back(Flatten(out[i]));
    int both = 0;
    int either = 0;
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x) {
            const bool dark = picture.At(x, y) <= threshold;
            const bool covered = Covers(polygons, {x + 0.5, y + 0.5});
            both += dark && covered ? 1 : 0;
            either += dark || covered ? 1 : 0;
        }
    return either == 0 ? 1 : static_cast<double>(both) / either;
}

TEST(Outlines, FilledCoverThePixelsOfTheShape) {
    // Blobs with holes and necks: a sum of waves, cut at its mean.
    std::mt19937 random(3);
    std::uniform_real_distribution<double> uniform(0, 1);
    for (int round = 0; round < 3; ++round) {
        double kx[5], ky[5], phase[5];
        for (int k = 0; k < 5; ++k) {
            kx[k] = 0.5 * (uniform(random) - 0.5);
            ky[k] = 0.5 * (uniform(random) - 0.5);
            phase[k] = 6.28 * uniform(random);
        }
        const GreyPicture picture = Render(70, 60, [&](double x, double y) {
            double sum = 0;
            for (int k = 0; k < 5; ++k) sum += std::sin(kx[k] * x + ky[k] * y + phase[k]);
            return sum > 0;
        });
        EXPECT_GT(Agreement(picture, Trace(picture), 127), 0.98);
        EXPECT_GT(Agreement(picture, Trace(Stairs(picture)), 127), 0.97);
        EXPECT_GT(Agreement(picture, Trace(picture, Detail(3)), 127), 0.98);
    }
}

TEST(Outlines, OfAnyPictureAreClosedFiniteInsideItAndHaveArea) {
    std::mt19937 random(11);
    for (int round = 0; round < 60; ++round) {
        const GreyPicture picture = RandomPicture(random, round % 3 == 0 ? 2 : 256);
        OutlineOptions options = Detail(1 + round % 4);
        options.minPoints = round % 2 == 0 ? 0 : 6;
        options.tolerance = std::array{0.0, 3.0, 0.0, 1e9, 0.0}[static_cast<std::size_t>(round % 5)];
        options.side = round % 7 < 3 ? ShapeSide::dark : ShapeSide::light;
        const CPolyPolyBezier out = Trace(picture, options);
        for (int c = 0; c < out.GetSize(); ++c) {
            const Contour& contour = out[c];
            ASSERT_GE(contour.GetSize(), 2);
            EXPECT_TRUE(contour[0].pt == contour[contour.GetSize() - 1].pt);
            EXPECT_GT(
                std::fabs(GetBezierArea({contour.GetData(), static_cast<std::size_t>(contour.GetSize())})),
                1e-6)
                << "round " << round;
            for (int i = 0; i < contour.GetSize(); ++i) {
                const DPOINT p = contour[i].pt;
                ASSERT_TRUE(p.x > -1.5 && p.x < picture.width + 1.5 && p.y > -1.5 &&
                            p.y < picture.height + 1.5);
                ASSERT_TRUE(
                    std::isfinite(contour[i].cp1.x + contour[i].cp1.y + contour[i].cp2.x + contour[i].cp2.y));
                ASSERT_EQ(contour[i].flags, 0);
            }
        }
    }
}

TEST(Outlines, OfTheLightSideAreThoseOfTheDarkSideOfTheNegative) {
    std::mt19937 random(5);
    for (int round = 0; round < 20; ++round) {
        const GreyPicture picture = RandomPicture(random, 200);
        GreyPicture negative = picture;
        for (std::uint8_t& level : negative.levels) level = static_cast<std::uint8_t>(255 - level);
        OutlineOptions dark;
        dark.threshold = 100;
        OutlineOptions light;
        light.threshold = 255 - 100 - 1;
        light.side = ShapeSide::light;
        const CPolyPolyBezier a = Trace(picture, dark);
        const CPolyPolyBezier b = Trace(negative, light);
        ASSERT_EQ(a.GetSize(), b.GetSize());
        for (int c = 0; c < a.GetSize(); ++c) {
            ASSERT_EQ(a[c].GetSize(), b[c].GetSize());
            for (int i = 0; i < a[c].GetSize(); ++i) EXPECT_TRUE(a[c][i].pt == b[c][i].pt);
        }
    }
}

// ---------------------------------------------------------------------------------------------
// Options and refusals

TEST(Outlines, OfAsManyPointsAsTheLeastAreDropped) {
    const GreyPicture picture({"........", ".#..##..", "........", ".###....", "........"});
    for (const auto& [minPoints, contours] :
         {std::pair(-5, 3), {3, 3}, {4, 2}, {5, 2}, {6, 1}, {7, 1}, {8, 0}}) {
        OutlineOptions options;
        options.minPoints = minPoints;
        EXPECT_EQ(Trace(picture, options).GetSize(), contours) << minPoints;
    }
}

TEST(Outlines, OfAnUnlimitedToleranceHaveAsFewNodesAsOfALargeOne) {
    const GreyPicture disc =
        Render(60, 60, [](double x, double y) { return std::hypot(x - 30, y - 30) < 25; });
    const auto nodes = [&disc](double tolerance) {
        OutlineOptions options;
        options.tolerance = tolerance;
        const CPolyPolyBezier out = Trace(disc, options);
        return out.GetSize() == 1 ? out[0].GetSize() : -1;
    };
    EXPECT_GT(nodes(1e6), 0);
    EXPECT_EQ(nodes(std::numeric_limits<double>::infinity()), nodes(1e6));
}

TEST(Outlines, AreRefusedForNoPixelsAndForDetailOutOfRange) {
    const GreyPicture picture(4, 4, 0);
    const std::uint8_t* const levels = picture.levels.data();
    const std::tuple<const char*, GreyView, int> cases[] = {
        {"no picture", {}, 1},
        {"no column", {levels, 0, 4, 4}, 1},
        {"less than no row", {levels, 4, -1, 4}, 1},
        {"no detail", picture.View(), 0},
        {"too much of it", picture.View(), 17},
        {"too wide when enlarged", {levels, INT32_MAX / 2, 1, 0}, 4},
        {"too wide as it is", {levels, INT32_MAX - 3, 1, 0}, 1},
        {"too high as it is", {levels, 1, INT32_MAX, 0}, 1},
    };
    for (const auto& [what, view, detail] : cases) {
        CPolyPolyBezier out;
        out.Add(std::make_unique<Contour>());
        EXPECT_FALSE(TraceOutlines(view, Detail(detail), out)) << what;
        EXPECT_TRUE(out.IsEmpty()) << what;
    }
}

TEST(Outlines, StopWhenProgressSaysSo) {
    GreyPicture picture(700, 700);
    for (int y = 0; y < 700; y += 2)
        for (int x = 0; x < 700; x += 3) picture.At(x, y) = 0;
    OutlineOptions options;
    double last = 0;
    int calls = 0;
    options.progress = [&](double part) {
        EXPECT_GE(part, last);
        EXPECT_LE(part, 1);
        last = part;
        return ++calls < 3;
    };
    CPolyPolyBezier out;
    EXPECT_FALSE(TraceOutlines(picture.View(), options, out));
    EXPECT_TRUE(out.IsEmpty());
    EXPECT_EQ(calls, 3);
}

}  // namespace
}  // namespace tarvex
