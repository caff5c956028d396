// Satin inclinations, nesting of contours, spirals.
#include "support/precompiled.h"

#include "bezier/curves.h"
#include "bezier/vector.h"
#include "support/property.h"
#include "support/records.h"
#include "tarvex/nodes.h"
#include "tarvex/stitch.h"

namespace tarvex {
namespace {

using namespace test;

using Lines = CArray<DLINE, DLINE>;

double Turn(const DPOINT& a, const DPOINT& b, const DPOINT& c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

/// Whether the lines pass through each other by more than rounding.
bool Cross(const DLINE& a, const DLINE& b) {
    constexpr double slack = 1e-6;
    const double u = Turn(a.p1, a.p2, b.p1), v = Turn(a.p1, a.p2, b.p2);
    const double w = Turn(b.p1, b.p2, a.p1), x = Turn(b.p1, b.p2, a.p2);
    return std::min(u, v) < -slack && std::max(u, v) > slack && std::min(w, x) < -slack &&
           std::max(w, x) > slack;
}

std::vector<std::pair<DPOINT, DPOINT>> Pairs(const Lines& lines) {
    std::vector<std::pair<DPOINT, DPOINT>> pairs;
    for (const DLINE& line : lines) pairs.emplace_back(line.p1, line.p2);
    return pairs;
}

TEST(Satin, PairsEndsThenCornersThenFillsEvenly) {
    const Nodes outer = Corners({{0, 0}, {100, 0}, {100, 100}}),
                inner = Corners({{0, 20}, {80, 20}, {80, 100}});
    Lines lines;
    EXPECT_TRUE(GetDefaultSatinInclinations(outer, inner, 0, lines));
    using P = std::pair<DPOINT, DPOINT>;
    EXPECT_THAT(Pairs(lines),
                testing::ElementsAre(P{{0, 0}, {0, 20}}, P{{100, 0}, {80, 20}}, P{{100, 100}, {80, 100}}));
    const Lines few = std::move(lines);
    EXPECT_TRUE(GetDefaultSatinInclinations(outer, Corners({{80, 100}, {80, 20}, {0, 20}}), kNaN, lines));
    EXPECT_EQ(Pairs(lines), Pairs(few)) << "the other rail's direction does not matter";

    EXPECT_TRUE(GetDefaultSatinInclinations(outer, inner, 50, lines));
    EXPECT_THAT(Pairs(lines),
                testing::ElementsAre(P{{0, 0}, {0, 20}}, P{{50, 0}, {40, 20}}, P{{100, 0}, {80, 20}},
                                     P{{100, 50}, {80, 60}}, P{{100, 100}, {80, 100}}));

    // A corner of one rail alone is paired with the closest point of the other.
    EXPECT_TRUE(GetDefaultSatinInclinations(Corners({{0, 0}, {30, -9}, {100, 0}}),
                                            Corners({{0, 20}, {100, 20}}), 0, lines));
    EXPECT_THAT(Pairs(lines),
                testing::ElementsAre(P{{0, 0}, {0, 20}}, P{{30, -9}, {30, 20}}, P{{100, 0}, {100, 20}}));

    EXPECT_FALSE(GetDefaultSatinInclinations(outer, Corners({{5, 5}}), 1, lines));
    EXPECT_TRUE(lines.IsEmpty());
    EXPECT_FALSE(GetDefaultSatinInclinations(Corners({{5, 5}, {kNaN, 0}}), inner, 1, lines));
    EXPECT_TRUE(GetDefaultSatinInclinations(outer, inner, 1e-9, lines)) << "far too fine: widened";
    EXPECT_GT(lines.GetSize(), MAX_SATIN_INCLINATIONS * 9 / 10);
    EXPECT_LE(lines.GetSize(), MAX_SATIN_INCLINATIONS);
}

TEST(Satin, LinesClosedRailsAllTheWayRound) {
    const Nodes outer = Corners({{0, 0}, {90, 0}, {90, 90}, {0, 90}, {0, 0}});
    const Nodes inner = Corners({{30, 30}, {60, 30}, {60, 60}, {30, 60}, {30, 30}});
    Lines lines;
    EXPECT_TRUE(GetDefaultSatinInclinations(outer, inner, 45, lines));
    EXPECT_EQ(lines.GetSize(), 9) << "corners and the middles between them, the first again at the end";
    EXPECT_EQ(Pairs(lines)[0], Pairs(lines)[8]);
}

TEST(Satin, NeverCrossesNorGoesBack) {
    test::ExpectLaw(
        [](unsigned seed, bool isClosed) {
            CurveSource source(seed);
            const Nodes rail1 = RandomContour(source, false), rail2 = RandomContour(source, isClosed);
            Lines lines;
            RC_ASSERT(GetDefaultSatinInclinations(rail1, rail2, 40, lines));
            for (int i = 0; i < lines.GetSize(); ++i)
                for (int k = 0; k < i; ++k) RC_ASSERT(!Cross(lines[i], lines[k]));
            const DPOINT start = rail2[0].pt, end = rail2[rail2.GetUpperBound()].pt,
                         last = lines[lines.GetUpperBound()].p2;
            RC_ASSERT(lines[0].p1 == rail1[0].pt);
            RC_ASSERT((lines[0].p2 == start && last == end) || (lines[0].p2 == end && last == start));
        },
        60);
}

TEST(Satin, KeepsNeighboursWithinTheSpacingOnRailsSideBySide) {
    test::ExpectLaw(
        [](unsigned seed) {
            CurveSource source(seed);
            // A gentle wave and the same a little wider, below it.
            Nodes rail1, rail2;
            for (int i = 0; i < 6; ++i) {
                const double x = 100 * i, y = source.Uniform(-15, 15), width = source.Uniform(20, 60);
                rail1.Add({{x - 30, y}, {x, y}, {x + 30, y}});
                rail2.Add({{x - 30, y + width}, {x, y + width}, {x + 30, y + width}});
            }
            Lines lines;
            RC_ASSERT(GetDefaultSatinInclinations(rail1, rail2, 7, lines));
            for (int i = 1; i < lines.GetSize(); ++i) {
                RC_ASSERT(Distance(lines[i].p1, lines[i - 1].p1) <= 7 + 1e-9);
                RC_ASSERT(Distance(lines[i].p2, lines[i - 1].p2) <= 7 + 1e-9);
                RC_ASSERT(lines[i].p1.x > lines[i - 1].p1.x && lines[i].p2.x > lines[i - 1].p2.x);
            }
        },
        20);
}

/// Squares in squares, quarters of each other, which share edges and corners.
struct Square {
    double left, top, size;
    bool IsIn(const Square& other) const {
        return size < other.size && left >= other.left && top >= other.top &&
               left + size <= other.left + other.size && top + size <= other.top + other.size;
    }
};

void Fill(CurveSource& source, const Square& square, std::vector<Square>& all) {
    all.push_back(square);
    const double half = square.size / 2;
    for (int k = 0; k < 4 && half > 16; ++k) {
        const Square quarter{square.left + k % 2 * half, square.top + (k > 1 ? half : 0), half};
        if (source.Integer(0, 2) == 0) Fill(source, quarter, all);
    }
}

/// Closed or open, which counts as closed, and either way round; what holds nothing may be a circle instead.
Nodes Outline(CurveSource& source, const Square& square, bool isEmpty) {
    const double right = square.left + square.size, bottom = square.top + square.size;
    Nodes nodes;
    if (isEmpty && source.Integer(0, 1) == 0) {
        const double r = square.size / 2, k = 0.5522847498307936 * r, x = square.left + r, y = square.top + r;
        nodes = MakeNodes({{{right, y - k}, {right, y}, {right, y + k}},
                           {{x + k, bottom}, {x, bottom}, {x - k, bottom}},
                           {{x - r, y + k}, {x - r, y}, {x - r, y - k}},
                           {{x - k, y - r}, {x, y - r}, {x + k, y - r}},
                           {{right, y - k}, {right, y}, {right, y + k}}});
    } else {
        nodes = Corners(Box(square.left, square.top, right, bottom));
        if (source.Integer(0, 1) == 0) nodes.RemoveAt(4);
    }
    if (source.Integer(0, 1) == 0) SwapPoints(nodes);
    return nodes;
}

TEST(HoleInfo, FindsTheNestingOfContoursThatTouch) {
    test::ExpectLaw(
        [](unsigned seed) {
            CurveSource source(seed);
            std::vector<Square> squares;
            Fill(source, {0, 0, 512}, squares);
            std::shuffle(squares.begin(), squares.end(), std::mt19937(seed));
            CPolyPolyBezier shape;
            for (const Square& square : squares) {
                const bool isEmpty = std::none_of(squares.begin(), squares.end(),
                                                  [&](const Square& other) { return other.IsIn(square); });
                AddTo(shape, Outline(source, square, isEmpty));
            }
            CArray<BEZIERHOLEINFO, BEZIERHOLEINFO> info;
            GetBezierHoleInfo(shape, info);
            RC_ASSERT(info.GetSize() == shape.GetSize());
            for (std::size_t i = 0; i < squares.size(); ++i) {
                const Square* parent = nullptr;
                int depth = 0;
                for (const Square& other : squares) {
                    if (!squares[i].IsIn(other)) continue;
                    ++depth;
                    if (parent == nullptr || other.size < parent->size) parent = &other;
                }
                const BEZIERHOLEINFO& found = info[static_cast<int>(i)];
                RC_ASSERT(found.depth == depth && found.isHole == (depth % 2 == 1));
                RC_ASSERT(found.parent ==
                          (parent == nullptr ? -1 : static_cast<int>(parent - squares.data())));
            }
        },
        60);
}

TEST(HoleInfo, TakesTheFirstOfEqualContoursForTheOuterAndPassesOverTheRest) {
    struct Row {
        Points contour;
        int depth, parent;
    };
    const Row rows[] = {
        {{{0, 0}, {9, 0}, {9, 9}}, 0, -1},
        {{}, 0, -1},  // a null contour
        {{{0, 0}, {9, 0}, {9, 9}}, 1, 0},
        {{{4, 1}}, 0, -1},
        {{{4, 1}, {6, 2}, {4, 1}}, 0, -1},
        {{{4, 1}, {kNaN, 2}, {5, 2}}, 0, -1},
        // A figure of eight without signed area, something in one of its halves, and something between them.
        {{{20, 0}, {40, 20}, {40, 0}, {20, 20}}, 0, -1},
        {{{36, 9}, {38, 9}, {38, 11}, {36, 11}}, 1, 6},
        {{{29, 1}, {31, 1}, {30, 2}}, 0, -1},
    };
    CPolyPolyBezier shape;
    for (const Row& row : rows)
        shape.Add(row.contour.empty() ? nullptr : std::make_unique<Nodes>(Corners(row.contour)));
    CArray<BEZIERHOLEINFO, BEZIERHOLEINFO> info;
    GetBezierHoleInfo(shape, info);
    ASSERT_EQ(info.GetSize(), 9);
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(info[i].depth, rows[i].depth) << i;
        EXPECT_EQ(info[i].parent, rows[i].parent) << i;
    }
    GetBezierHoleInfo(CPolyPolyBezier(), info);
    EXPECT_TRUE(info.IsEmpty());
}

TEST(Spiral, StaysWithinTheStatedDeviationAndIsSmoothAndMirrored) {
    test::ExpectLaw(
        [](std::uint8_t r0, std::uint8_t r1, std::uint8_t turns, std::uint16_t angle, std::uint8_t fine,
           bool clockwise) {
            const double a0 = angle / 1000.0;
            SPIRAL shape{{7, -3}, r0 / 4.0, r1 / 4.0, (turns + 1) / 50.0, a0, clockwise};
            if (r0 == 0 && r1 == 0) shape.endRadius = 1;
            const double deviation =
                std::max(shape.startRadius, shape.endRadius) * std::pow(10, -1.0 - fine % 5);
            Nodes spiral, twin;
            RC_ASSERT(GetSymmetricalSpiralBPoints(shape, deviation, spiral, twin));
            const double whole = 2 * std::acos(-1.0) * shape.turns;
            const auto onSpiral = [&](double f) {
                const double r = shape.startRadius + (shape.endRadius - shape.startRadius) * f;
                const double at = a0 + (clockwise ? whole : -whole) * f;
                return DPOINT{7 + r * std::cos(at), -3 + r * std::sin(at)};
            };
            const int segments = spiral.GetUpperBound();
            RC_ASSERT(Distance(spiral[0].pt, onSpiral(0)) < 1e-9 &&
                      Distance(spiral[segments].pt, onSpiral(1)) < 1e-9);
            for (int i = 0; i < segments; ++i) {
                RC_ASSERT(i == 0 || IsSmooth(spiral, i) == 1);
                for (double t = 0.05; t < 1; t += 0.09) {
                    // The nearest of many points of the spiral around the one at the same fraction.
                    const DPOINT p = SegmentOfNodes(spiral, i).GetCurvePoint(t);
                    double nearest = 1e9;
                    for (int k = -300; k <= 300; ++k)
                        nearest = std::min(nearest, Distance(p, onSpiral((i + t + k / 1000.0) / segments)));
                    const double stepLength =
                        whole * std::max(shape.startRadius, shape.endRadius) / segments / 1000 +
                        std::fabs(shape.endRadius - shape.startRadius) / segments / 1000;
                    RC_ASSERT(nearest <= deviation + stepLength);
                }
            }
            for (int i = 0; i <= segments; ++i) {
                const DPOINT p = spiral[i].cp2, q = twin[i].cp2;
                const double c = std::cos(2 * a0), s = std::sin(2 * a0), x = p.x - 7, y = p.y + 3;
                RC_ASSERT(Distance(q, {7 + x * c + y * s, -3 + x * s - y * c}) < 1e-9);
            }
        },
        60);
    Nodes spiral, twin;
    EXPECT_TRUE(GetSymmetricalSpiralBPoints({{0, 0}, 100, 100, 1, 0, true}, 0.03, spiral, twin));
    EXPECT_EQ(spiral.GetSize(), 5) << "a circle of four arcs";
    EXPECT_TRUE(GetSymmetricalSpiralBPoints({{0, 0}, 50, 100, 3, 0, true}, 0.01, spiral, twin));
    EXPECT_EQ(spiral.GetSize(), 25) << "eight nodes a turn";
    for (const SPIRAL& bad : {SPIRAL{{0, 0}, 0, 0, 1, 0, true},
                              {{0, 0}, -1, 5, 1, 0, true},
                              {{0, 0}, 1, 5, 0, 0, true},
                              {{0, 0}, 1, 5, kNaN, 0, true},
                              {{kInfinity, 0}, 1, 5, 1, 0, true},
                              {{0, 0}, 1, 5, 1e9, 0, true}})
        EXPECT_FALSE(GetSymmetricalSpiralBPoints(bad, 0.1, spiral, twin));
    EXPECT_FALSE(GetSymmetricalSpiralBPoints({{0, 0}, 1, 5, 1, 0, true}, 0, spiral, twin));
    EXPECT_FALSE(GetSymmetricalSpiralBPoints({{0, 0}, 1, 5, 1, 0, true}, 1e-300, spiral, twin));
    EXPECT_TRUE(spiral.IsEmpty() && twin.IsEmpty());
}

}  // namespace
}  // namespace tarvex
