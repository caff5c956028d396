// Envelope distortion: its presets, its inverse, what happens beside the frame, and when arcs are built.
#include "support/precompiled.h"

#include "support/contours.h"
#include "support/property.h"
#include "support/records.h"
#include "tarvex/containers.h"
#include "tarvex/envelope.h"
#include "tarvex/lines.h"
#include "tarvex/view.h"

namespace tarvex {
namespace {

using namespace test;
using testing::ElementsAre;

constexpr ENVELOP kSquare{0, 0, 100, 100, 0, 0, 0, 0, 0, 0};

std::array<double, 6> Offsets(const ENVELOP& e) {
    return {e.topLeft, e.topMiddle, e.topRight, e.bottomLeft, e.bottomMiddle, e.bottomRight};
}

/// An envelope of moderate offsets on a frame of some size, for laws.
ENVELOP Generated(const std::array<std::int16_t, 10>& n) {
    const auto unit = [&](std::size_t i) { return n[i] / 32768.0; };
    const double left = unit(0) * 500, top = unit(1) * 500;
    const double width = 20 + 480 * std::fabs(unit(2)), height = 20 + 480 * std::fabs(unit(3));
    const auto offset = [&](std::size_t i) { return unit(i) * height * 0.4; };
    return {left,      top,       left + width, top + height, offset(4),
            offset(5), offset(6), offset(7),    offset(8),    offset(9)};
}

TEST(Envelope, WithoutOffsetsChangesNothing) {
    CEnvelop envelope;
    EXPECT_TRUE(envelope.arcTop().IsEmpty() && envelope.arcBot().IsEmpty());
    ENVELOP fields{1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
    envelope.GetEnvelop(fields);
    EXPECT_THAT(Offsets(fields), testing::Each(0));
    EXPECT_EQ(
        std::fabs(fields.left) + std::fabs(fields.top) + std::fabs(fields.right) + std::fabs(fields.bottom),
        0);
    envelope.SetEnvelop(kSquare);
    for (double x : {-50.0, 0.0, 33.0, 100.0, 150.0}) {
        for (double y : {-10.0, 0.0, 12.5, 100.0, 130.0}) {
            EXPECT_EQ(envelope.envelop(x, y), y) << x;
            EXPECT_EQ(envelope.envelop_return(x, y), y) << x;
        }
    }
    EXPECT_EQ(ListOf(envelope.arcTop()), (Points{{0, 0}, {100, 0}}));
    EXPECT_EQ(ListOf(envelope.arcBot()), (Points{{0, 100}, {100, 100}}));
}

TEST(Envelope, PresetsSetTheirOffsetsAndKeepTheOthers) {
    struct Case {
        int type;
        std::array<double, 6> offsets;  // top left, middle, right, bottom left, middle, right
    };
    const double d = 10;
    for (const auto& [type, offsets] : {Case{1, {1, d, 3, 4, 5, 6}},
                                        {2, {1, 2, 3, 4, -d, 6}},
                                        {3, {1, d, 3, 4, -d, 6}},
                                        {4, {1, -d, 3, 4, 5, 6}},
                                        {5, {1, 2, 3, 4, d, 6}},
                                        {6, {1, -d, 3, 4, d, 6}},
                                        {7, {1, d, 3, 4, d, 6}},
                                        {8, {1, -d, 3, 4, -d, 6}},
                                        {9, {d, d / 2, 3, -d, -d / 2, 6}},
                                        {10, {1, d / 2, d, 4, -d / 2, -d}},
                                        {0, {1, 2, 3, 4, 5, 6}},
                                        {11, {1, 2, 3, 4, 5, 6}},
                                        {-1, {1, 2, 3, 4, 5, 6}}}) {
        CEnvelop envelope;
        envelope.SetEnvelop({0, 0, 100, 100, 1, 2, 3, 4, 5, 6});
        envelope.SetType(type, d);
        EXPECT_EQ(Offsets(envelope.env()), offsets) << "type " << type;
        EXPECT_FALSE(envelope.arcTop().IsEmpty()) << "arcs that were due are built";
    }
}

TEST(Envelope, WaistNarrowsTheMiddleOnly) {
    CEnvelop envelope;
    envelope.SetEnvelop(kSquare);
    envelope.SetType(3, 10);
    // A circle through three points 50 apart with a rise of 10 has the radius 130: a chord of its
    // polyline of 360 steps is nowhere more than 0.005 from it.
    constexpr double chord = 0.005;
    EXPECT_NEAR(envelope.envelop(50, 0), 10, chord);
    EXPECT_NEAR(envelope.envelop(50, 100), 90, chord);
    EXPECT_NEAR(envelope.envelop(50, 50), 50, 1e-12);
    for (double x : {0.0, 100.0, -30.0, 130.0}) {
        EXPECT_NEAR(envelope.envelop(x, 0), 0, 1e-12) << x;
        EXPECT_NEAR(envelope.envelop(x, 100), 100, 1e-12) << x;
    }
}

TEST(Envelope, MapsTheFrameLinearlyBetweenArcsThatEndAtItAndReturnUndoesIt) {
    test::ExpectLaw(
        [](const std::array<std::int16_t, 10>& n, std::uint16_t across, std::int8_t part) {
            const ENVELOP e = Generated(n);
            CEnvelop envelope;
            envelope.SetEnvelop(e);
            const double x = e.left + (e.right - e.left) * (across / 65535.0);
            const double t = envelope.envelop(x, e.top), b = envelope.envelop(x, e.bottom);
            const double share = part / 50.0, y = e.top + (e.bottom - e.top) * share;
            const double bent = envelope.envelop(x, y);
            RC_ASSERT(std::fabs(bent - (t + (b - t) * share)) < 1e-9);
            const Points top = ListOf(envelope.arcTop()), bottom = ListOf(envelope.arcBot());
            RC_ASSERT(SameBits(top.front(), {e.left, e.top + e.topLeft}));
            RC_ASSERT(SameBits(top.back(), {e.right, e.top + e.topRight}));
            RC_ASSERT(SameBits(bottom.front(), {e.left, e.bottom + e.bottomLeft}));
            RC_ASSERT(SameBits(bottom.back(), {e.right, e.bottom + e.bottomRight}));
            RC_PRE(std::fabs(b - t) > 1);  // where the arcs meet there is no way back
            RC_ASSERT(std::fabs(envelope.envelop_return(x, bent) - y) < 1e-8);
            RC_ASSERT(std::fabs(envelope.envelop(x, envelope.envelop_return(x, y)) - y) < 1e-8);
        },
        300);
}

/// The y of an arc by its definition, every segment intersected.
double ArcPointByDefinition(const CEnvelop& e, const CArray<DPOINT, DPOINT>& arc, double x, double y) {
    if (x < e.left) return arc[0].y;
    if (x > e.right) return arc[arc.GetUpperBound()].y;
    for (int i = 0; i + 1 < arc.GetCount(); ++i) {
        double hitX, hitY;
        if (GetLinesIntersection(arc[i].x, arc[i].y, arc[i + 1].x, arc[i + 1].y, x, e.top, x, e.top + 100,
                                 &hitX, &hitY) &&
            IsPointInLineRange(arc[i].x, arc[i].y, arc[i + 1].x, arc[i + 1].y, hitX, hitY))
            return hitY;
    }
    return y;
}

TEST(Envelope, PassingOverSegmentsElsewhereNeverChangesTheAnswer) {
    test::ExpectLaw(
        [](const std::array<std::int16_t, 10>& n, std::uint8_t shift, std::int8_t bulge) {
            ENVELOP e = Generated(n);
            e.topMiddle *= bulge / 8.0;  // also arcs of more than half a circle, which double back
            const double away = std::exp2(shift % 40);
            e.left += away;
            e.right += away;
            CEnvelop envelope;
            envelope.SetEnvelop(e);
            envelope.CalcEnvelop();
            const auto& arc = envelope.arcTop();
            const auto check = [&](double x) {
                RC_ASSERT(envelope.CalcArcPoint(arc, x, 7) == ArcPointByDefinition(envelope, arc, x, 7));
            };
            for (int k = -2; k <= 66; ++k) check(e.left + (e.right - e.left) * k / 64);
            for (const DPOINT& vertex : arc) {
                for (double beside : {0.0, 1e-8, -1e-8, 1.01e-8, -1.01e-8, 3e-8, -3e-8})
                    check(vertex.x + beside);
                check(std::nextafter(vertex.x, kInfinity));
                check(std::nextafter(vertex.x, -kInfinity));
            }
        },
        60);
}

TEST(Envelope, BesideTheFrameArcsGoOnLevelButTheWayBackIsStraight) {
    CEnvelop envelope;
    envelope.SetEnvelop({0, 0, 100, 100, 20, 0, 40, 0, 0, 0});
    EXPECT_EQ(envelope.envelop(-50, 0), 20);
    EXPECT_EQ(envelope.envelop(150, 0), 40);
    EXPECT_EQ(envelope.envelop(150, 100), 100);
    for (double x : {-50.0, std::nextafter(0.0, -1.0), std::nextafter(100.0, 101.0), 150.0}) {
        EXPECT_EQ(envelope.envelop_return(x, 33), 33) << x;
    }
    EXPECT_NEAR(envelope.envelop_return(0, 20), 0, 1e-12) << "the edges are inside";
    EXPECT_NEAR(envelope.envelop_return(100, 40), 0, 1e-12);
}

TEST(Envelope, ArcPointOfShortArcs) {
    CEnvelop envelope;
    envelope.SetEnvelop(kSquare);
    struct Case {
        Points arc;
        double x, y;
    };
    for (const Case& c : {Case{{}, -5, 7},
                          {{}, 50, 7},
                          {{}, 500, 7},
                          {{{3, 4}}, -5, 3},  // its x, not its y
                          {{{3, 4}}, 50, 3},
                          {{{3, 4}}, 500, 3},
                          {{{3, 4}, {30, 31}}, -5, 4},
                          {{{3, 4}, {30, 31}}, 10, 11},
                          {{{3, 4}, {30, 31}}, 1, 7},  // in the frame, but no segment is there
                          {{{3, 4}, {30, 31}}, 500, 31}})
        EXPECT_NEAR(envelope.CalcArcPoint(Polyline(c.arc), c.x, 7), c.y, 1e-12)
            << c.arc.size() << " at " << c.x;
}

TEST(Envelope, ArcsAreBuiltWhenDueAndNotBefore) {
    CEnvelop envelope;
    envelope.SetEnvelop(kSquare);
    EXPECT_TRUE(envelope.arcTop().IsEmpty()) << "setting the fields only makes them due";
    envelope.envelop_return(500, 0);
    EXPECT_EQ(envelope.arcTop().GetCount(), 2) << "built, though the answer does not need them";

    envelope.env().topLeft = envelope.env().topMiddle = envelope.env().topRight = 10;
    EXPECT_EQ(envelope.envelop(50, 0), 0) << "writing a field leaves the arcs";
    envelope.SetType(11, 5);
    EXPECT_EQ(envelope.envelop(50, 0), 0) << "an unknown preset too";
    envelope.CalcEnvelop();
    EXPECT_EQ(envelope.envelop(50, 0), 10);

    envelope.SetEnvelop(kSquare);
    EXPECT_EQ(envelope.arcTop()[0].y, 10);
    EXPECT_EQ(envelope.envelop(50, 0), 0);
    envelope.SetType(1, 30);
    EXPECT_GT(envelope.arcTop().GetCount(), 2) << "a preset builds at once";
}

TEST(Envelope, FramesWithoutHeightGiveHugeOrUndefinedValuesNotErrors) {
    CEnvelop envelope;
    envelope.SetEnvelop({0, 50, 100, 50 + 1e-12, 0, 0, 0, 10, 10, 10});
    EXPECT_NEAR(envelope.envelop(50, 51), 55 + 10 * 1 / 1e-8, 1e3) << "the height counts as the tolerance";
    envelope.SetEnvelop({0, 50, 100, 50, 0, 0, 0, 10, 10, 10});
    EXPECT_EQ(envelope.envelop(50, 51), kInfinity);
    EXPECT_TRUE(std::isnan(envelope.envelop(50, 50)));
    envelope.SetEnvelop({0, 0, 100, 100, 50, 50, 50, -50, -50, -50});
    EXPECT_EQ(envelope.envelop(50, 30), 50) << "arcs that coincide flatten everything";
    EXPECT_EQ(envelope.envelop_return(50, 60), kInfinity);
    envelope.SetEnvelop({70, 0, 70, 100, 10, 20, 30, 0, 0, 0});
    EXPECT_EQ(envelope.envelop(70, 33), 33) << "arcs above each other cross no vertical line";
}

TEST(Envelope, TakesAnyNumbers) {
    const double odd[] = {0, 1, -1, 1e-9, 1e9, 1e155, -1e308, 1e308, kInfinity, -kInfinity, kNaN, 5e-324};
    test::ExpectLaw(
        [&](const std::array<std::uint8_t, 12>& n) {
            std::array<double, 12> v;
            for (std::size_t i = 0; i < 12; ++i) v[i] = odd[n[i] % std::size(odd)];
            CEnvelop envelope;
            envelope.SetEnvelop({v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7], v[8], v[9]});
            envelope.envelop(v[10], v[11]);
            envelope.envelop_return(v[10], v[11]);
            RC_ASSERT(envelope.arcTop().GetCount() >= 2);
            RC_ASSERT(envelope.arcTop().GetCount() <= 362);
        },
        500);
}

// --- Shapes bent and transformed -----------------------------------------------------------------

CPolyPolyBezier Shape() {
    CPolyPolyBezier shape;
    AddTo(shape, MakeNodes({{{1, 2}, {30, 40}, {50, 0}, 7}, {{50, 100}, {70, 80}, {90, 95}, 8}}));
    shape.Add(static_cast<Nodes*>(nullptr));
    return shape;
}

template <class Apply, class Map>
void ExpectEveryPointMapped(Apply apply, Map map) {
    const CPolyPolyBezier original = Shape();
    std::vector<BPOINT> nodes;
    for (const BPOINT& node : original[0])
        nodes.push_back({map(node.cp1), map(node.pt), map(node.cp2), node.flags});

    CPolyPolyBezier shape = Shape();
    apply(shape);
    EXPECT_EQ(ListOf(shape[0]), nodes);

    COutlines group;
    group.Add(static_cast<CPolyPolyBezier*>(nullptr));
    for (int i = 0; i < 2; ++i) AddTo(group, Shape());
    apply(group);
    EXPECT_EQ(ListOf(group[1][0]), nodes);
    EXPECT_EQ(ListOf(group[2][0]), nodes);

    CPolyPolyDPoint lines;
    lines.Add(static_cast<DPoints*>(nullptr));
    AddTo(lines, Polyline({{1, 2}, {50, 100}}));
    apply(lines);
    EXPECT_EQ(ListOf(lines[1]), (Points{map({1, 2}), map({50, 100})}));
}

TEST(Shapes, TransformingMapsEveryAnchorAndHandle) {
    CView3D view;
    view.Translate(1, 2, 3);
    view.Rotate(0.1, 0.2, 0.3);
    const auto map = [&](const DPOINT& p) {
        view.Transfer(p.x, p.y, 0);
        return DPOINT{view.x(), view.y()};
    };
    ExpectEveryPointMapped([&](auto& list) { list.ApplyTransformation(view); }, map);

    CPolyPolyBezier shape = Shape();
    shape.ApplyTransformation(view);
    EXPECT_EQ((DPOINT{view.x(), view.y()}), shape[0][1].cp2) << "the view is left with the last handle";
}

TEST(Shapes, TransformingIsTheViewsTransferBitForBit) {
    constexpr double odd[] = {0, -0.0, 1, -1, 1e-320, 1e308, kInfinity, kNaN};
    test::ExpectLaw([&](const std::array<std::int16_t, 16>& entries, const std::array<std::int16_t, 6>& n) {
        const auto number = [&](std::int16_t v) { return v % 8 == 0 ? odd[v / 8 & 7] : v / 7.0; };
        double m[4][4];
        for (std::size_t i = 0; i < 16; ++i) m[i / 4][i % 4] = number(entries[i]);
        CView3D view;
        view.SetMat(m);
        CPolyPolyDPoint lines;
        AddTo(lines, Polyline({{number(n[0]), number(n[1])}, {number(n[2]), number(n[3])}}));
        const std::vector<DPOINT> given = ListOf(lines[0]);
        lines.ApplyTransformation(view);
        const double left = view.z();
        for (std::size_t i = 0; i < given.size(); ++i) {
            view.Transfer(given[i].x, given[i].y, 0);
            RC_ASSERT(SameBits(lines[0][static_cast<int>(i)], {view.x(), view.y()}));
        }
        RC_ASSERT(SameBits(left, view.z()));
    });
}

TEST(Shapes, BendingMapsEveryAnchorAndHandle) {
    CEnvelop envelope;
    envelope.SetEnvelop(kSquare);
    envelope.SetType(9, 20);
    const auto map = [&](const DPOINT& p) { return DPOINT{p.x, envelope.envelop(p.x, p.y)}; };
    ExpectEveryPointMapped([&](auto& list) { list.ApplyEnvelop(envelope); }, map);
}

}  // namespace
}  // namespace tarvex
