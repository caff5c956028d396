// Satin inclinations, nesting of contours, spirals.
#include "support/precompiled.h"

#include "bezier/contours.h"
#include "bezier/vector.h"
#include "support/property.h"
#include "support/records.h"
#include "tarvex/stitch.h"

namespace tarvex {
namespace {

using namespace testing_support;

using Lines = CArray<DLINE, DLINE>;

Nodes Polyline(const std::vector<DPOINT>& points) {
    Nodes nodes;
    for (const DPOINT& p : points) nodes.Add({p, p, p});
    return nodes;
}

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
    const Nodes outer = Polyline({{0, 0}, {100, 0}, {100, 100}}),
                inner = Polyline({{0, 20}, {80, 20}, {80, 100}});
    Lines lines;
    EXPECT_TRUE(GetDefaultSatinInclinations(outer, inner, 0, lines));
    using P = std::pair<DPOINT, DPOINT>;
    EXPECT_THAT(Pairs(lines),
                testing::ElementsAre(P{{0, 0}, {0, 20}}, P{{100, 0}, {80, 20}}, P{{100, 100}, {80, 100}}));
    const Lines few = std::move(lines);
    EXPECT_TRUE(GetDefaultSatinInclinations(outer, Polyline({{80, 100}, {80, 20}, {0, 20}}), kNaN, lines));
    EXPECT_EQ(Pairs(lines), Pairs(few)) << "the other rail's direction does not matter";

    EXPECT_TRUE(GetDefaultSatinInclinations(outer, inner, 50, lines));
    EXPECT_THAT(Pairs(lines),
                testing::ElementsAre(P{{0, 0}, {0, 20}}, P{{50, 0}, {40, 20}}, P{{100, 0}, {80, 20}},
                                     P{{100, 50}, {80, 60}}, P{{100, 100}, {80, 100}}));

    // A corner of one rail alone is paired with the closest point of the other.
    EXPECT_TRUE(GetDefaultSatinInclinations(Polyline({{0, 0}, {30, -9}, {100, 0}}),
                                            Polyline({{0, 20}, {100, 20}}), 0, lines));
    EXPECT_THAT(Pairs(lines),
                testing::ElementsAre(P{{0, 0}, {0, 20}}, P{{30, -9}, {30, 20}}, P{{100, 0}, {100, 20}}));

    EXPECT_FALSE(GetDefaultSatinInclinations(outer, Polyline({{5, 5}}), 1, lines));
    EXPECT_TRUE(lines.IsEmpty());
    EXPECT_FALSE(GetDefaultSatinInclinations(Polyline({{5, 5}, {kNaN, 0}}), inner, 1, lines));
    EXPECT_TRUE(GetDefaultSatinInclinations(outer, inner, 1e-9, lines)) << "far too fine: widened";
    EXPECT_GT(lines.GetSize(), MAX_SATIN_INCLINATIONS * 9 / 10);
    EXPECT_LE(lines.GetSize(), MAX_SATIN_INCLINATIONS);
}

TEST(Satin, LinesClosedRailsAllTheWayRound) {
    const Nodes outer = Polyline({{0, 0}, {90, 0}, {90, 90}, {0, 90}, {0, 0}});
    const Nodes inner = Polyline({{30, 30}, {60, 30}, {60, 60}, {30, 60}, {30, 30}});
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

/// Boxes in boxes, which share edges and corners with each other and with what surrounds them.
class Boxes {
  public:
    explicit Boxes(unsigned seed) : m_source(seed) { Fill(0, 0, 512, 512, -1, 0); }

    /// In random order, each as a rectangle or as an ellipse inscribed in one that holds nothing.
    CPolyPolyBezier Shape(std::vector<BEZIERHOLEINFO>& expected) {
        std::vector<int> order(m_boxes.size()), place(m_boxes.size());
        std::iota(order.begin(), order.end(), 0);
        for (std::size_t i = order.size(); i > 1; --i)
            std::swap(order[i - 1],
                      order[static_cast<std::size_t>(m_source.Integer(0, static_cast<int>(i) - 1))]);
        for (std::size_t i = 0; i < order.size(); ++i)
            place[static_cast<std::size_t>(order[i])] = static_cast<int>(i);
        CPolyPolyBezier shape;
        for (const int i : order) {
            const Box& box = m_boxes[static_cast<std::size_t>(i)];
            const int parent = box.parent < 0 ? -1 : place[static_cast<std::size_t>(box.parent)];
            expected.push_back({box.depth, parent, box.depth % 2 == 1});
            shape.Add(std::make_unique<Nodes>(Contour(box)));
        }
        return shape;
    }

  private:
    struct Box {
        double left, top, right, bottom;
        int parent, depth;
        bool isLeaf;
    };

    void Fill(double left, double top, double right, double bottom, int parent, int depth) {
        const int self = static_cast<int>(m_boxes.size());
        m_boxes.push_back({left, top, right, bottom, parent, depth, true});
        const double width = (right - left) / 2, height = (bottom - top) / 2;
        if (depth == 4) return;
        for (int k = 0; k < 4; ++k) {
            if (m_source.Integer(0, 2) > 0) continue;
            m_boxes[static_cast<std::size_t>(self)].isLeaf = false;
            const double x = left + k % 2 * width, y = top + (k > 1 ? height : 0);
            Fill(x, y, x + width, y + height, self, depth + 1);
        }
    }

    Nodes Contour(const Box& box) {
        Nodes nodes;
        const double x = (box.left + box.right) / 2, y = (box.top + box.bottom) / 2;
        if (box.isLeaf && m_source.Integer(0, 1) == 0) {
            const double a = (box.right - box.left) / 2, b = (box.bottom - box.top) / 2,
                         k = 0.5522847498307936;
            nodes = MakeNodes({{{x + a, y - k * b}, {x + a, y}, {x + a, y + k * b}},
                               {{x + k * a, y + b}, {x, y + b}, {x - k * a, y + b}},
                               {{x - a, y + k * b}, {x - a, y}, {x - a, y - k * b}},
                               {{x - k * a, y - b}, {x, y - b}, {x + k * a, y - b}},
                               {{x + a, y - k * b}, {x + a, y}, {x + a, y + k * b}}});
        } else {
            nodes = Polyline(
                {{box.left, box.top}, {box.right, box.top}, {box.right, box.bottom}, {box.left, box.bottom}});
            if (m_source.Integer(0, 1) == 0) nodes.Add(nodes[0]);  // an open one counts as closed
        }
        if (m_source.Integer(0, 1) == 0) SwapPoints(nodes);
        return nodes;
    }

    CurveSource m_source;
    std::vector<Box> m_boxes;
};

TEST(HoleInfo, FindsTheNestingOfContoursThatTouch) {
    test::ExpectLaw(
        [](unsigned seed) {
            std::vector<BEZIERHOLEINFO> expected;
            const CPolyPolyBezier shape = Boxes(seed).Shape(expected);
            CArray<BEZIERHOLEINFO, BEZIERHOLEINFO> info;
            GetBezierHoleInfo(shape, info);
            RC_ASSERT(info.GetSize() == shape.GetSize());
            for (int i = 0; i < info.GetSize(); ++i) {
                const BEZIERHOLEINFO& wanted = expected[static_cast<std::size_t>(i)];
                RC_ASSERT(info[i].depth == wanted.depth);
                RC_ASSERT(info[i].parent == wanted.parent);
                RC_ASSERT(info[i].isHole == wanted.isHole);
            }
        },
        60);
}

TEST(HoleInfo, TakesTheFirstOfEqualContoursForTheOuterAndPassesOverTheRest) {
    CPolyPolyBezier shape;
    const auto add = [&shape](Nodes nodes) { shape.Add(std::make_unique<Nodes>(std::move(nodes))); };
    add(Polyline({{0, 0}, {9, 0}, {9, 9}}));
    shape.Add(static_cast<Nodes*>(nullptr));
    add(Polyline({{0, 0}, {9, 0}, {9, 9}}));
    add(Polyline({{4, 1}}));
    add(Polyline({{4, 1}, {6, 2}, {4, 1}}));
    add(Polyline({{4, 1}, {kNaN, 2}, {5, 2}}));
    // A figure of eight without signed area, and something in one of its halves.
    add(Polyline({{20, 0}, {40, 20}, {40, 0}, {20, 20}}));
    add(Polyline({{36, 9}, {38, 9}, {38, 11}, {36, 11}}));
    add(Polyline({{29, 1}, {31, 1}, {30, 2}}));  // between the halves: outside
    CArray<BEZIERHOLEINFO, BEZIERHOLEINFO> info;
    GetBezierHoleInfo(shape, info);
    ASSERT_EQ(info.GetSize(), 9);
    const std::array<std::pair<int, int>, 9> expected = {
        {{0, -1}, {0, -1}, {1, 0}, {0, -1}, {0, -1}, {0, -1}, {0, -1}, {1, 6}, {0, -1}}};
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(std::pair(info[i].depth, info[i].parent), expected[static_cast<std::size_t>(i)]) << i;
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

TEST(Stitch, SurvivesHostileContours) {
    CurveSource source(11);
    Lines lines;
    CArray<BEZIERHOLEINFO, BEZIERHOLEINFO> info;
    for (int round = 0; round < 120; ++round) {
        CPolyPolyBezier shape;
        for (int c = 0; c < 4; ++c) {
            auto nodes = std::make_unique<Nodes>();
            for (int i = source.Integer(0, 4); i > 0; --i) {
                const CBezier curve = round % 2 == 0 ? source.Any() : source.Degenerate();
                nodes->Add({curve.p0, curve.p1, curve.p2});
            }
            shape.Add(std::move(nodes));
        }
        GetBezierHoleInfo(shape, info);
        for (int i = 0; i < info.GetSize(); ++i) {
            EXPECT_EQ(info[i].parent < 0, info[i].depth == 0);
            int steps = 0;
            for (int k = i; k >= 0 && steps <= info.GetSize(); k = info[k].parent) ++steps;
            EXPECT_LE(steps, info.GetSize()) << "parents in a circle";
        }
        static constexpr double spacings[] = {40, kNaN, kInfinity, -1, 0};
        const double spacing = spacings[round % 5];
        const bool isDone = GetDefaultSatinInclinations(shape[0], shape[1], spacing, lines);
        EXPECT_EQ(isDone, !lines.IsEmpty());
        EXPECT_LE(lines.GetSize(), MAX_SATIN_INCLINATIONS);
    }
}

}  // namespace
}  // namespace tarvex
