// The vector path: areas and contours of the result against values worked out by hand and against a scan of
// both operands, and the promise that curves come back as the curves they were.
#include "support/precompiled.h"

#include "bezier/nodes_cubic.h"
#include "shaping/clip/clip.h"
#include "shaping/curve_crossings.h"
#include "shaping/outlines.h"
#include "support/property.h"
#include "support/records.h"
#include "tarvex/polygons.h"
#include "tarvex/shaping.h"

namespace tarvex {
namespace {

using namespace testing_support;

constexpr const char* NAMES[] = {"difference", "intersection", "xor", "union"};

struct Outcome {
    bool isThere;
    CPolyPolyBezier a;
    CPolyPolyBezier b;
    double area;
    int contours;
};

Outcome Shaped(int op, const std::vector<Nodes>& a, const std::vector<Nodes>& b) {
    Outcome out{false, Shape(a), Shape(b), 0, 0};
    out.isThere = PolyPolyBezierShaping(op, out.a, out.b);
    if (out.isThere) out.area = ResultArea(out.a);
    if (out.isThere) out.contours = out.a.GetCount();
    return out;
}

bool SameNode(const BPOINT& a, const BPOINT& b) {
    return std::memcmp(&a.cp1, &b.cp1, 3 * sizeof(DPOINT)) == 0 && a.flags == b.flags;
}

testing::AssertionResult SameShape(const CPolyPolyBezier& found, const std::vector<Nodes>& wanted) {
    if (found.GetCount() != static_cast<int>(wanted.size()))
        return testing::AssertionFailure() << found.GetCount() << " contours";
    for (int k = 0; k < found.GetCount(); ++k) {
        const Nodes& nodes = wanted[static_cast<std::size_t>(k)];
        if (!std::equal(found[k].begin(), found[k].end(), nodes.begin(), nodes.end(), SameNode))
            return testing::AssertionFailure() << "contour " << k << " differs";
    }
    return testing::AssertionSuccess();
}

/// Parameters at which a cubic passes a point.
std::vector<double> ParametersAt(const Cubic& c, DPOINT p) {
    std::vector<double> found{0, 1};
    for (const shaping::Arc& arc : shaping::ArcsOf(c)) {
        const double t = shaping::NearestParameter(arc.curve, p);
        if (Distance(PointAt(arc.curve, t), p) < 1e-6) found.push_back(arc.from + (arc.to - arc.from) * t);
    }
    return found;
}

/// How far the segment's control points are from those of the best piece of a segment of the sources.
double DistanceFromPieces(const Cubic& c, const std::vector<Nodes>& sources) {
    double best = 1e300;
    for (const Nodes& nodes : sources) {
        for (std::size_t i = 0; i + 1 < nodes.size(); ++i) {
            const Cubic whole = SegmentOf(nodes[i], nodes[i + 1]);
            if (HasNoHandles(whole)) {
                if (!HasNoHandles(c)) continue;
                const auto off = [&](DPOINT p) {
                    const double t = CBezier(whole.p0, Mix(whole.p0, whole.p3, 1 / 3.0),
                                             Mix(whole.p0, whole.p3, 2 / 3.0), whole.p3)
                                         .GetNearestCurvePointT(p);
                    return Distance(Mix(whole.p0, whole.p3, t), p);
                };
                best = std::min(best, std::max(off(c.p0), off(c.p3)));
                continue;
            }
            for (const double from : ParametersAt(whole, c.p0)) {
                for (const double to : ParametersAt(whole, c.p3)) {
                    const Cubic piece = PartOf(whole, from, to);
                    best = std::min(best, std::max({Distance(piece.p0, c.p0), Distance(piece.p1, c.p1),
                                                    Distance(piece.p2, c.p2), Distance(piece.p3, c.p3)}));
                }
            }
        }
    }
    return best;
}

double WorstPiece(const CPolyPolyBezier& shape, std::vector<Nodes> a, const std::vector<Nodes>& b) {
    a.insert(a.end(), b.begin(), b.end());
    double worst = 0;
    for (int k = 0; k < shape.GetCount(); ++k) {
        for (int i = 0; i + 1 < shape[k].GetSize(); ++i)
            worst = std::max(worst, DistanceFromPieces(SegmentOf(shape[k][i], shape[k][i + 1]), a));
    }
    return worst;
}

// ---------------------------------------------------------------------------------------------

const double DISC = CircleArea(500);
const double HALF_DISC = CircleArea(250);

const Nodes FIGURE_EIGHT = Polygon({{0, 0}, {100, 100}, {100, 0}, {0, 100}});  // two triangles of 2500
/// A cusp at (0, 300): both handles there reach down. Its area is that of its two cubics.
const Nodes CUSP = {{{0, 300}, {0, 300}, {0, 100}},
                    {{100, 0}, {300, 0}, {0, -200}},
                    {{0, -200}, {-300, 0}, {-100, 0}},
                    {{0, 100}, {0, 300}, {0, 300}}};
const Nodes TEARDROP = {{{0, 0}, {0, 0}, {600, 600}}, {{-600, 600}, {0, 0}, {0, 0}}};  // one segment
/// Area 0.3 · 600 · 600 by the formula of the enclosed area.
constexpr double TEARDROP_AREA = 108000;

/// Expected areas and numbers of contours, in the order of the operations; no contours: no result.
struct BatteryCase {
    const char* name;
    std::vector<Nodes> a;
    std::vector<Nodes> b;
    double areas[4];
    int contours[4];
};

TEST(VectorShaping, DegeneratePairsGiveTheAreasAndContoursWorkedOutByHand) {
    const Nodes square = Rect(0, 0, 100, 100);
    const Nodes disc = Circle(0, 0, 500);
    const BatteryCase cases[] = {
        {"overlap", {square}, {Rect(50, 50, 150, 150)}, {7500, 2500, 15000, 17500}, {1, 1, 2, 1}},
        {"apart", {square}, {Rect(200, 0, 300, 100)}, {10000, 0, 20000, 20000}, {1, 0, 2, 2}},
        {"itself", {square}, {square}, {0, 10000, 0, 10000}, {0, 1, 0, 1}},
        {"disc itself", {disc}, {disc}, {0, DISC, 0, DISC}, {0, 1, 0, 1}},
        {"itself reversed", {disc}, {Backwards(disc)}, {0, DISC, 0, DISC}, {0, 1, 0, 1}},
        {"itself 1e-12 apart", {disc}, {Moved(disc, 1e-12, -1e-12)}, {0, DISC, 0, DISC}, {0, 1, 0, 1}},
        {"shared edge", {square}, {Rect(100, 0, 200, 100)}, {10000, 0, 20000, 20000}, {1, 0, 1, 1}},
        {"shared edge reversed",
         {square},
         {Backwards(Rect(100, 0, 200, 100))},
         {10000, 0, 20000, 20000},
         {1, 0, 1, 1}},
        {"partly shared edge", {square}, {Rect(100, 20, 200, 70)}, {10000, 0, 15000, 15000}, {1, 0, 1, 1}},
        {"shared corner", {square}, {Rect(100, 100, 200, 200)}, {10000, 0, 20000, 20000}, {1, 0, 2, 2}},
        {"inside, sharing two edges",
         {square},
         {Rect(0, 0, 50, 50)},
         {7500, 2500, 7500, 10000},
         {1, 1, 1, 1}},
        {"discs that touch", {disc}, {Circle(1000, 0, 500)}, {DISC, 0, 2 * DISC, 2 * DISC}, {1, 0, 2, 2}},
        {"disc that touches inside",
         {disc},
         {Circle(250, 0, 250)},
         {DISC - HALF_DISC, HALF_DISC, DISC - HALF_DISC, DISC},
         {2, 1, 2, 1}},
        {"hole and what fills it",
         {Rect(0, 0, 300, 300), Rect(100, 100, 200, 200)},
         {Rect(100, 100, 200, 200)},
         {80000, 0, 90000, 90000},
         {1 + 1, 0, 1, 1}},
        {"nested holes",
         {Rect(0, 0, 500, 500), Rect(100, 100, 400, 400), Rect(200, 200, 300, 300)},
         {Rect(-50, 250, 550, 600)},
         {85000, 85000, 85000 + 210000 - 85000, 85000 + 210000},
         {2, 2, 4, 2}},
        {"figure eight", {FIGURE_EIGHT}, {Rect(200, 0, 300, 100)}, {5000, 0, 15000, 15000}, {2, 0, 3, 3}},
        {"figure eight cut", {FIGURE_EIGHT}, {Rect(0, 0, 100, 50)}, {2500, 2500, 5000, 7500}, {2, 2, 3, 1}},
        {"cusp", {CUSP}, {Rect(1000, 0, 1100, 100)}, {0, 0, 0, 0}, {1, 0, 2, 2}},
        {"one segment",
         {TEARDROP},
         {Rect(1000, 0, 1100, 100)},
         {TEARDROP_AREA, 0, TEARDROP_AREA + 10000, TEARDROP_AREA + 10000},
         {1, 0, 2, 2}},
        {"open", {{square[0], square[1], square[2]}}, {square}, {0, 5000, 5000, 10000}, {0, 1, 1, 1}},
    };
    for (const BatteryCase& c : cases) {
        for (int op = 0; op < 4; ++op) {
            SCOPED_TRACE(std::string(c.name) + ", " + NAMES[op]);
            const Outcome out = Shaped(op, c.a, c.b);
            EXPECT_EQ(out.isThere, c.contours[op] > 0);
            EXPECT_EQ(out.contours, c.contours[op]);
            double area = c.areas[op];
            if (c.a.front().size() == CUSP.size() && c.name == std::string("cusp"))
                area = op == 1 ? 0 : std::fabs(SignedArea(CUSP)) + (op == 0 ? 0 : 10000);
            EXPECT_NEAR(out.area, area, 1e-6);
            for (int k = 0; k < out.contours; ++k) {
                EXPECT_TRUE(IsClockwise(out.a[k]));
                EXPECT_EQ(out.a[k][0].pt, out.a[k][out.a[k].GetUpperBound()].pt);
            }
        }
    }
}

/// Smooth outlines, corners and lines; some contours cross themselves and each other.
std::vector<Nodes> RandomShape(std::mt19937& random, int kind) {
    const auto integer = [&](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    std::vector<Nodes> contours;
    for (int count = integer(1, 2); count > 0; --count) {
        const int n = integer(kind == 0 ? 4 : 2, kind == 0 ? 10 : 5);
        if (kind == 0) {
            std::vector<double> radii;
            for (int i = 0; i < n; ++i) radii.push_back(integer(200, 1000) + 0.37);
            contours.push_back(Blob(integer(-500, 500), integer(-500, 500), radii));
            continue;
        }
        // Few places, turned, so that everything coincides and nothing is exact.
        const auto place = [&] {
            const double x = integer(0, 4) * 100, y = integer(0, 4) * 100;
            return DPOINT{x * std::cos(0.7) - y * std::sin(0.7), x * std::sin(0.7) + y * std::cos(0.7)};
        };
        Nodes nodes;
        for (int i = 0; i < n; ++i) {
            nodes.push_back({place(), place(), place()});
            if (kind == 2 || integer(0, 2) == 0) nodes.back().cp1 = nodes.back().pt;
            if (kind == 2 || integer(0, 2) == 0) nodes.back().cp2 = nodes.back().pt;
        }
        nodes.push_back(nodes.front());
        contours.push_back(nodes);
    }
    return contours;
}

TEST(VectorShaping, AreasObeyTheLawsOfSetsAndPiecesAreThoseOfTheOperands) {
    for (const int kind : {0, 1, 2}) {
        test::ExpectLaw(
            [kind](unsigned seed) {
                std::mt19937 random(seed);
                const auto a = RandomShape(random, kind), b = RandomShape(random, kind);
                double areas[4];
                for (int op = 0; op < 4; ++op) {
                    const Outcome out = Shaped(op, a, b);
                    areas[op] = out.area;
                    const double scanned = ScannedArea(op, Shape(a), Shape(b), 300);
                    RC_ASSERT(std::fabs(areas[op] - scanned) < 4000);  // of a million
                    if (kind != 1) RC_ASSERT(WorstPiece(out.a, a, b) < 2e-6);
                }
                RC_ASSERT(std::fabs(areas[2] - (areas[3] - areas[1])) < 1e-6);
                const double alone = Shaped(SHAPING_UNION, a, a).area,
                             other = Shaped(SHAPING_UNION, b, b).area;
                RC_ASSERT(std::fabs(areas[3] + areas[1] - alone - other) < 1e-6);
                RC_ASSERT(std::fabs(areas[0] - (alone - areas[1])) < 1e-6);
            },
            5);
    }
}

/// The area of a op b on polylines of that many edges a segment.
double FineArea(int op, const CPolyPolyBezier& a, const CPolyPolyBezier& b, int steps) {
    const auto linesA = Polylines(a, steps), linesB = Polylines(b, steps);
    const std::vector<std::span<const DPOINT>> subject(linesA.begin(), linesA.end()),
        other(linesB.begin(), linesB.end());
    double area = 0;
    for (const clip::Contour& contour : clip::Clip(static_cast<clip::Operation>(op), subject, other)) {
        const auto& v = contour.vertices;
        for (std::size_t i = 0; i < v.size(); ++i) {
            const DPOINT &p = v[i], &q = v[(i + 1) % v.size()];
            area += (p.x * q.y - q.x * p.y) / 2;
        }
    }
    return area;
}

/// The same without the error of polylines, as far as it is quadratic in their edges' length.
double FineArea(int op, const CPolyPolyBezier& a, const CPolyPolyBezier& b) {
    return (4 * FineArea(op, a, b, 200) - FineArea(op, a, b, 100)) / 3;
}

TEST(VectorShaping, CuspsThatShareNodesDirectionsAndWholeCurvesHaveTheirArea) {
    // Found among many random ones of kind 1: curves that leave a node in one direction, loops of one node,
    // control points on other outlines, and all of that against itself.
    for (const unsigned seed : {16U, 245U, 273U, 362U, 783U, 1213U, 1375U}) {
        std::mt19937 random(seed);
        const auto a = RandomShape(random, 1), b = RandomShape(random, 1);
        for (const auto& [first, second] : {std::pair(a, b), std::pair(a, a), std::pair(b, b)}) {
            for (int op = 0; op < 4; ++op) {
                CPolyPolyBezier result = Shape(first), other = Shape(second);
                const double wanted = FineArea(op, result, other);
                const bool isThere = PolyPolyBezierShaping(op, result, other);
                // What the polylines' crossings are off leaves some hundredths.
                EXPECT_NEAR(isThere ? FineArea(SHAPING_UNION, result, {}) : 0, wanted, 0.1)
                    << "seed " << seed << ' ' << NAMES[op];
            }
        }
    }
}

TEST(VectorShaping, OutlinesThatAreNearlyTheSameAreToldApart) {
    // A disc and its like turned or moved by little cross at tiny angles; the areas between are thin.
    const std::vector<Nodes> disc{Circle(0, 0, 500)};
    for (const Nodes& other : {Circle(0, 0, 500, 0.3), Moved(disc[0], 1e-3, 0), Moved(disc[0], 1e-5, 2e-5)}) {
        const double both = Shaped(SHAPING_INTERSECTION, disc, {other}).area;
        const double either = Shaped(SHAPING_UNION, disc, {other}).area;
        EXPECT_NEAR(Shaped(SHAPING_XOR, disc, {other}).area, either - both, 1e-5);
        EXPECT_NEAR(either + both, 2 * DISC, 1e-5);
        EXPECT_GT(either, both);
    }
}

TEST(VectorShaping, UntouchedContoursComeBackBitForBit) {
    Nodes far = Circle(5000, 5000, 300);
    far[1].flags = 7;
    far[0].cp1 = far[0].pt;  // the outer handles of a seam are anybody's
    const Nodes island = Polygon({{9000, 0}, {9000, 100}, {8900, 50}});
    const Nodes clockwise = IsClockwise(Shape({far})[0]) ? far : Backwards(far);
    const Nodes cut = Rect(-100, -100, 100, 100);
    Outcome out = Shaped(SHAPING_DIFFERENCE, {Circle(0, 0, 500), clockwise, Backwards(island)}, {cut});
    ASSERT_EQ(out.contours, 4);
    const Nodes wanted = IsClockwise(Shape({island})[0]) ? island : Backwards(island);
    int found = 0;
    for (int k = 0; k < out.contours; ++k) {
        const auto is = [&](const Nodes& nodes) {
            return std::equal(out.a[k].begin(), out.a[k].end(), nodes.begin(), nodes.end(), SameNode);
        };
        found += is(clockwise) + is(wanted);
    }
    EXPECT_EQ(found, 2);
}

TEST(VectorShaping, AStarMinusADiscKeepsTheDiscsArcs) {
    std::vector<DPOINT> tips;
    for (int i = 0; i < 10; ++i) {
        const double r = i % 2 == 0 ? 1000 : 400;
        tips.push_back({r * std::cos(i * std::numbers::pi / 5), r * std::sin(i * std::numbers::pi / 5)});
    }
    const Nodes star = Polygon(tips), disc = Circle(0, 0, 600);
    const Outcome out = Shaped(SHAPING_DIFFERENCE, {star}, {disc});
    ASSERT_EQ(out.contours, 5);  // the tips
    int curved = 0, straight = 0;
    for (int k = 0; k < 5; ++k) {
        for (int i = 0; i + 1 < out.a[k].GetSize(); ++i) {
            const Cubic c = SegmentOf(out.a[k][i], out.a[k][i + 1]);
            ++(HasNoHandles(c) ? straight : curved);
            EXPECT_LT(DistanceFromPieces(c, {star, disc}), 1e-9 * 1000);
        }
    }
    EXPECT_EQ(straight, 10);
    // One arc a tip, and two where a node of the disc lies within the tip, as one of the five.
    EXPECT_EQ(curved, 6);
    EXPECT_NEAR(out.area, ScannedArea(0, Shape({star}), Shape({disc})), 100);
}

TEST(VectorShaping, BothOperandsGetTheSameNodesWhereTheyCross) {
    const Nodes disc = Circle(0, 0, 500), square = Rect(-300, 100, 300, 900);
    for (const int op : {SHAPING_UNION, SHAPING_INTERSECTION}) {
        Outcome out = Shaped(op, {disc}, {Backwards(square)});
        ASSERT_TRUE(out.isThere);
        ASSERT_EQ(out.b.GetCount(), 1);
        EXPECT_EQ(out.b[0].GetSize(), 7);
        EXPECT_TRUE(IsClockwise(out.b[0]));
        int shared = 0;
        for (const BPOINT& node : out.b[0]) {
            for (int k = 0; k < out.a.GetCount(); ++k) {
                for (int i = 0; i + 1 < out.a[k].GetSize(); ++i) {
                    const bool isSame = std::memcmp(&out.a[k][i].pt, &node.pt, sizeof(DPOINT)) == 0;
                    shared += isSame && std::fabs(std::fabs(node.pt.x) - 300) < 1e-9 && node.pt.y > 200 &&
                              node.pt.y < 600;
                }
            }
        }
        EXPECT_EQ(shared, 2);
    }
}

TEST(VectorShaping, FailureLeavesTheFirstOperandAndKeepsTheSecondsNodes) {
    const std::vector<Nodes> a{Circle(0, 0, 500, 0.1)};
    const Nodes touching = Backwards(Rect(700, -100, 900, 100));
    Outcome out = Shaped(SHAPING_INTERSECTION, a, {touching});
    EXPECT_FALSE(out.isThere);
    EXPECT_TRUE(SameShape(out.a, a));
    EXPECT_TRUE(IsClockwise(out.b[0]));
    // Covered entirely: nothing is left, but b has been given the crossings.
    const Nodes cover =
        Polygon({{-600, -600}, {600, -600}, {600, 600}, {-600, 600}, {-600, 500 * std::sin(0.1)}});
    out = Shaped(SHAPING_DIFFERENCE, {Rect(-600, -100, 0, 100)}, {cover});
    EXPECT_FALSE(out.isThere);
    EXPECT_EQ(out.b[0].GetSize(), 8);

    const double nan = std::numeric_limits<double>::quiet_NaN();
    Nodes damaged = Rect(0, 0, 10, 10);
    damaged[1].cp2.x = nan;
    const Nodes fine = Backwards(Rect(5, 5, 20, 20));
    for (const int op : {-1, 0, 3, 4}) {
        const bool isCode = op >= 0 && op <= 3;
        out = Shaped(op, {isCode ? damaged : fine}, {fine});
        EXPECT_FALSE(out.isThere);
        EXPECT_TRUE(SameShape(out.b, {fine}));
    }
    EXPECT_FALSE(Shaped(SHAPING_UNION, {}, {fine}).isThere);
    EXPECT_FALSE(Shaped(SHAPING_UNION, {fine}, {}).isThere);
    EXPECT_FALSE(Shaped(SHAPING_UNION, {{fine[0]}}, {fine}).isThere);
}

TEST(VectorShaping, ShapesMayBeOneObjectAndHaveNullContours) {
    CPolyPolyBezier a = Shape({Circle(0, 0, 500)});
    a.SetAtGrow(2, nullptr);
    EXPECT_TRUE(PolyPolyBezierShaping(SHAPING_UNION, a, a));
    EXPECT_NEAR(ResultArea(a), DISC, 1e-6);
    EXPECT_FALSE(PolyPolyBezierShaping(SHAPING_DIFFERENCE, a, a));
}

}  // namespace
}  // namespace tarvex
