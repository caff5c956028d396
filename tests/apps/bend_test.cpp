// Bent outlines follow the envelope everywhere, not just at their nodes.
#include "support/precompiled.h"

#include "tarvex/bend.h"
#include "tarvex/bezier.h"
#include "tarvex/svg_path.h"

namespace tarvex::app::test {
namespace {

CPolyPolyBezier Shape(const std::vector<Contour>& contours) {
    CPolyPolyBezier shape;
    for (const Contour& contour : contours) {
        auto nodes = std::make_unique<CArray<BPOINT, BPOINT>>();
        for (const BPOINT& node : contour) nodes->Add(node);
        shape.Add(std::move(nodes));
    }
    return shape;
}

std::vector<DPOINT> Sampled(const CArray<BPOINT, BPOINT>& nodes, int count) {
    std::vector<DPOINT> points;
    for (int i = 0; i + 1 < nodes.GetSize(); ++i) {
        const CBezier curve(nodes[i], nodes[i + 1]);
        for (int k = 0; k < count; ++k) points.push_back(curve.GetCurvePoint(k / double(count)));
    }
    return points;
}

double Nearest(const DPOINT& p, const std::vector<DPOINT>& points) {
    double nearest = HUGE_VAL;
    for (const DPOINT& q : points) nearest = std::min(nearest, std::hypot(p.x - q.x, p.y - q.y));
    return nearest;
}

TEST(Bender, EveryPresetBendsLinesAndCurvesWithinTheTolerance) {
    const auto contours = ParsePathData("M0 0H100V40H0zM10 20A10 15 0 0 1 60 20Q80 0 90 30").contours;
    const DRECT frame{0, 100, 0, 40};
    for (int type = 1; type <= 10; ++type) {
        for (const double amount : {15.0, -9.0, 0.5}) {
            SCOPED_TRACE(testing::Message() << "type " << type << " amount " << amount);
            const CPolyPolyBezier original = Shape(contours);
            CPolyPolyBezier bent = Shape(contours);
            Bender bend(frame, type, amount);
            bend.Bend(bent);
            for (int i = 0; i < bent.GetSize(); ++i) {
                const std::vector<DPOINT> points = Sampled(bent[i], 400);
                double worst = 0;
                for (const DPOINT& p : Sampled(original[i], 150))
                    worst = std::max(worst, Nearest(bend(p), points));
                EXPECT_LT(worst, 100 * 2 * BEND_TOLERANCE + 0.15) << "0.15: half the distance of the samples";
            }
        }
    }
}

struct EdgeCase {
    int type;
    double top[3];  // how far the frame's top and bottom edges move down at the left, middle and right
    double bottom[3];
};

TEST(Bender, EveryPresetMovesTheEdgesAsItsPictureShows) {
    const EdgeCase cases[] = {
        {1, {0, 1, 0}, {0, 0, 0}},        {2, {0, 0, 0}, {0, -1, 0}},  {3, {0, 1, 0}, {0, -1, 0}},
        {4, {0, -1, 0}, {0, 0, 0}},       {5, {0, 0, 0}, {0, 1, 0}},   {6, {0, -1, 0}, {0, 1, 0}},
        {7, {0, 1, 0}, {0, 1, 0}},        {8, {0, -1, 0}, {0, -1, 0}}, {9, {1, 0.5, 0}, {-1, -0.5, 0}},
        {10, {0, 0.5, 1}, {0, -0.5, -1}},
    };
    for (const EdgeCase& c : cases) {
        SCOPED_TRACE(c.type);
        Bender bend({10, 210, 5, 65}, c.type, 20);
        for (int i = 0; i < 3; ++i) {
            const double x = 10 + 100 * i;
            EXPECT_NEAR(bend({x, 5}).y, 5 + 20 * c.top[i], 0.02);
            EXPECT_NEAR(bend({x, 65}).y, 65 + 20 * c.bottom[i], 0.02);
            EXPECT_EQ(bend({x, 33}).x, x);
        }
    }
}

TEST(Bender, LinesThatStayStraightStayLinesAndContoursStayClosed) {
    CPolyPolyBezier shape = Shape(RectContours({0, 0, 100, 40}));
    Bender(DRECT{0, 100, 0, 40}, 4, 10).Bend(shape);
    const auto& nodes = shape[0];
    EXPECT_EQ(nodes[0].pt.x, nodes[nodes.GetUpperBound()].pt.x);
    EXPECT_EQ(nodes[0].pt.y, nodes[nodes.GetUpperBound()].pt.y);
    int lines = 0;
    for (int i = 0; i + 1 < nodes.GetSize(); ++i) {
        if (nodes[i].cp2 == nodes[i].pt && nodes[i + 1].cp1 == nodes[i + 1].pt) ++lines;
    }
    EXPECT_EQ(lines, 3) << "all but the top";
    EXPECT_LE(nodes.GetSize(), 9);
}

TEST(Bender, FramesWithoutAWidthOrHeightGiveFinitePoints) {
    const std::pair<DRECT, const char*> cases[] = {
        {{0, 100, 5, 5}, "M0 5H100"}, {{5, 5, 0, 100}, "M5 0V100"}, {{5, 5, 5, 5}, "M5 5L5 5"}};
    for (const auto& [frame, data] : cases) {
        for (int type = 1; type <= 10; ++type) {
            CPolyPolyBezier shape = Shape(ParsePathData(data).contours);
            Bender(frame, type, 10).Bend(shape);
            for (const BPOINT& node : shape[0]) {
                for (const DPOINT& p : {node.cp1, node.pt, node.cp2}) {
                    EXPECT_TRUE(std::isfinite(p.x) && std::fabs(p.y) < 300)
                        << data << " " << type << " " << p.y;
                }
            }
        }
    }
}

}  // namespace
}  // namespace tarvex::app::test
