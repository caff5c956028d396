// The raster path of shaping: areas worked by hand, membership against plain geometry, what failure leaves.
#include "support/precompiled.h"

#include "shaping/raster_frame.h"
#include "support/property.h"
#include "support/records.h"
#include "tarvex/bezier.h"
#include "tarvex/polygons.h"
#include "tarvex/shaping.h"

namespace tarvex::test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr int kMin = std::numeric_limits<int>::min();
constexpr int kMax = std::numeric_limits<int>::max();

using Polygon = std::vector<DPOINT>;

/// A shape of closed straight-sided contours.
CPolyPolyBezier Shape(const std::vector<Polygon>& polygons) {
    CPolyPolyBezier shape;
    for (const Polygon& polygon : polygons) {
        auto nodes = std::make_unique<CArray<BPOINT, BPOINT>>();
        for (const DPOINT& p : polygon) nodes->Add({p, p, p});
        if (!polygon.empty()) nodes->Add({polygon[0], polygon[0], polygon[0]});
        shape.Add(std::move(nodes));
    }
    return shape;
}

Polygon Box(double left, double top, double right, double bottom) {
    return {{left, top}, {right, top}, {right, bottom}, {left, bottom}};
}

std::vector<BPOINT> NodesOf(const CPolyPolyBezier& shape) {
    std::vector<BPOINT> nodes;
    for (int i = 0; i < shape.GetSize(); ++i) nodes.insert(nodes.end(), shape[i].begin(), shape[i].end());
    return nodes;
}

CPolyPolyDPoint Flattened(const CPolyPolyBezier& shape) {
    CPolyPolyDPoint lines;
    for (int i = 0; i < shape.GetSize(); ++i) {
        auto line = std::make_unique<CArray<DPOINT, DPOINT>>();
        GetPolyline(shape[i], *line, 1.0);
        lines.Add(std::move(line));
    }
    return lines;
}

/// Outer contours and holes run opposite ways, so the sum counts holes off.
double Area(const CPolyPolyBezier& shape) {
    const CPolyPolyDPoint lines = Flattened(shape);
    double twice = 0;
    for (int i = 0; i < lines.GetSize(); ++i) {
        const auto& p = lines[i];
        for (int k = 0; k + 1 < p.GetSize(); ++k) twice += p[k].x * p[k + 1].y - p[k + 1].x * p[k].y;
    }
    return std::fabs(twice) / 2;
}

TEST(RasterShaping, GivesTheAreasWorkedByHand) {
    const std::vector<Polygon> left = {Box(0, 0, 1000, 1000)}, right = {Box(500, 0, 1500, 1000)};
    const std::vector<Polygon> ring = {Box(0, 0, 900, 900), Box(300, 300, 600, 600)};
    const std::vector<Polygon> none;
    const std::vector<Polygon> apart = {Box(-2000, 0, -1500, 500)};
    struct Row {
        int op;
        const std::vector<Polygon>&a, &b;
        int fillA;
        double area;
        int contours;
    };
    for (const Row& row : {
             Row{SHAPING_DIFFERENCE, left, right, 1, 500e3, 1},
             Row{SHAPING_INTERSECTION, left, right, 1, 500e3, 1},
             Row{SHAPING_XOR, left, right, 1, 1500e3, 1},  // a union
             Row{SHAPING_UNION, left, right, 1, 1500e3, 1},
             Row{-7, left, right, 1, 1500e3, 1},
             Row{SHAPING_UNION, ring, none, 1, 720e3, 2},  // nested contours: a hole
             Row{SHAPING_UNION, ring, none, 5, 720e3, 2},
             Row{SHAPING_UNION, ring, none, 2, 810e3, 1},  // filled solid
             Row{SHAPING_DIFFERENCE, ring, left, 2, 0, 0},
             Row{SHAPING_UNION, none, apart, 1, 250e3, 1},
             Row{SHAPING_UNION, left, apart, 1, 1250e3, 2},
             Row{SHAPING_INTERSECTION, left, apart, 1, 0, 0},
             Row{SHAPING_DIFFERENCE, left, apart, 1, 1000e3, 1},
         }) {
        CPolyPolyBezier a = Shape(row.a), b = Shape(row.b);
        const auto before = NodesOf(a), beforeB = NodesOf(b);
        EXPECT_EQ(PolyPolyBezierBmpShaping(row.op, a, b, row.fillA, 1), row.contours > 0) << row.op;
        EXPECT_EQ(NodesOf(b), beforeB);
        if (row.contours == 0) {
            EXPECT_EQ(NodesOf(a), before) << "failure leaves a";
            continue;
        }
        EXPECT_EQ(a.GetSize(), row.contours) << row.op;
        // A pixel of 1.0 to 1.8 units all along the outline is below one percent.
        EXPECT_NEAR(Area(a), row.area, 0.01 * row.area) << row.op;
        for (int i = 0; i < a.GetSize(); ++i) EXPECT_EQ(a[i][0].pt, a[i][a[i].GetUpperBound()].pt);
    }
}

TEST(RasterShaping, DrawsIntoAtMost2000PixelsWithAMargin) {
    struct Row {
        tagRECT whole;
        int width, height;
        double scale;
    };
    for (const Row& row :
         {Row{{0, 0, 4000, 1000}, 2000, 500, 495 / 1000.0},
          Row{{-500, 0, 500, 4000}, 500, 2000, 495 / 1000.0},
          Row{{0, 0, 2000, 2000}, 2000, 2000, 1995 / 2000.0},
          Row{{0, 0, 2001, 2001}, 2000, 2000, 1995 / 2001.0},
          Row{{0, 0, 3000, 1001}, 2000, 667, 662 / 1001.0}, Row{{0, 0, 4000, 1}, 2000, 1, 0},
          Row{{0, 0, 1, 1}, 1, 1, 0}, Row{{kMin, kMin, kMax, kMax}, 2000, 2000, 1995 / 4294967295.0}}) {
        const auto frame = FrameRaster(row.whole);
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame->width, row.width);
        EXPECT_EQ(frame->height, row.height);
        if (row.scale > 0) {
            EXPECT_EQ(frame->view.GetScale(), row.scale);
        }
        const double middle = (static_cast<double>(row.whole.left) + row.whole.right) / 2;
        EXPECT_LE(std::abs(frame->view.x2s(middle) - row.width / 2), 1);
    }
    for (const tagRECT& none : {tagRECT{0, 0, 0, 10}, {0, 0, 10, 0}, {5, 5, 1, 1}, {0, 0, 4001, 1}})
        EXPECT_FALSE(FrameRaster(none));
}

TEST(RasterShaping, HoldsThePointsThatTheOperationHolds) {
    // Points nearer to an outline than the fit's and the raster's tolerance are not judged. What has others
    // is wide enough for a seed of the tracer.
    constexpr double nearOutline = 8;
    ExpectLaw(
        [](std::array<std::uint8_t, 9> radii, std::array<std::uint8_t, 9> others, std::int8_t dx,
           std::int8_t dy, std::uint8_t code) {
            const auto star = [](const std::array<std::uint8_t, 9>& r, double x, double y) {
                Polygon polygon;
                for (std::size_t i = 0; i < r.size(); ++i) {
                    const double angle = static_cast<double>(i) * 2 * 3.14159265358979 / 9,
                                 radius = 150 + r[i];
                    polygon.push_back({x + radius * std::cos(angle), y + radius * std::sin(angle)});
                }
                return polygon;
            };
            CPolyPolyBezier a = Shape({star(radii, 0, 0)}), b = Shape({star(others, 3.0 * dx, 3.0 * dy)});
            const CPolyPolyDPoint linesA = Flattened(a), linesB = Flattened(b);
            const int op = code % 4;
            if (!PolyPolyBezierBmpShaping(op, a, b, 1, 2)) return;
            const CPolyPolyDPoint result = Flattened(a);
            for (double x = -399; x < 400; x += 61) {
                for (double y = -399; y < 400; y += 61) {
                    const DPOINT p{x, y};
                    if (IsPointOnPolyline(linesA[0], p, nearOutline) ||
                        IsPointOnPolyline(linesB[0], p, nearOutline))
                        continue;
                    const bool inA = IsPointInPolygon(linesA, p) != 0, inB = IsPointInPolygon(linesB, p) != 0;
                    const bool inside = op == 0 ? inA && !inB : op == 1 ? inA && inB : inA || inB;
                    RC_ASSERT(IsPointInPolygon(result, p) == inside);
                }
            }
        },
        15);
}

TEST(RasterShaping, SurvivesDegenerateShapes) {
    const std::vector<Polygon> square = {Box(0, 0, 100, 100)};
    const std::vector<std::vector<Polygon>> cases = {
        {},
        {{}},
        {{{5, 5}}},
        {Box(0, 0, 0, 0)},
        {Box(0, 0, 50, 0)},
        {Box(0, 0, 1, 1)},
        {Box(3, 3, 6, 8)},
        {Box(-1e300, 0, 1e300, 10)},
        {Box(-3e9, -3e9, 3e9, 3e9)},
        {{{kNaN, 0}, {10, kNaN}, {10, 10}}},
        {{{-kInf, 0}, {kInf, 10}, {10, kInf}}},
    };
    for (const auto& one : cases) {
        for (const auto& other : {one, square}) {
            for (int op = 0; op < 4; ++op) {
                CPolyPolyBezier a = Shape(one), b = Shape(other);
                a.Add(static_cast<CArray<BPOINT, BPOINT>*>(nullptr));
                PolyPolyBezierBmpShaping(op, a, b, op, 3 - op);
                PolyPolyBezierBmpShaping(op, b, a, 2, 1);
            }
        }
    }
    CPolyPolyBezier huge = Shape({Box(0, 0, 4e6, 4e6)}), none;
    EXPECT_TRUE(PolyPolyBezierBmpShaping(SHAPING_UNION, huge, none, 1, 1));
    EXPECT_NEAR(Area(huge), 16e12, 0.01 * 16e12) << "larger than the view's usual smallest scale allows";
}

}  // namespace
}  // namespace tarvex::test
