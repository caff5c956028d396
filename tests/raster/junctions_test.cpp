// What mended junctions say of a skeleton's lines, in tangles where one decision meets another.
#include "support/precompiled.h"

#include "raster/centerline/junctions.h"
#include "raster/skeleton/thinning.h"

namespace tarvex::centerline {
namespace {

using skeleton::BitPlane;

constexpr int kSide = 160;

/// Chains of strokes in all directions, of which many meet in corners near a crossing.
BitPlane Tangle(unsigned seed) {
    std::mt19937 random(seed);
    const auto between = [&random](double least, double most) {
        return least + (most - least) * static_cast<double>(random()) / 4294967295.0;
    };
    BitPlane plane(kSide, kSide);
    const double radius = between(1.5, 3.5);
    for (int chain = 0; chain < 4; ++chain) {
        DPOINT from{between(20, 140), between(20, 140)};
        for (int i = 0; i < 3; ++i) {
            const double angle = between(0, 6.28), length = between(4, 60);
            const DPOINT to{std::clamp(from.x + length * std::cos(angle), 10.0, 150.0),
                            std::clamp(from.y + length * std::sin(angle), 10.0, 150.0)};
            for (double t = 0; t <= 1; t += 0.005) {
                const double x = from.x + t * (to.x - from.x), y = from.y + t * (to.y - from.y);
                for (int v = static_cast<int>(y - radius); v <= y + radius; ++v) {
                    for (int u = static_cast<int>(x - radius); u <= x + radius; ++u) {
                        if (std::hypot(u - x, v - y) <= radius) plane.Set(plane.At(u, v));
                    }
                }
            }
            from = to;
        }
    }
    return plane;
}

/// Drops the tips of corners, which leaves junctions of two arms.
void DropTips(ArmGraph& graph) {
    for (int node = 0; node < graph.NodeCount(); ++node) {
        if (graph.ArmsAt(node).size() != 1) continue;
        const int line = graph.ArmsAt(node).front().line;
        if (graph.LengthOf(line) < 10) graph.Drop(line);
    }
}

TEST(MendedJunctions, EndsArePartnersOfEachOtherAndOfLinesThatStay) {
    int partners = 0;
    for (unsigned seed = 1; seed <= 150; ++seed) {
        const BitPlane shape = Tangle(seed);
        BitPlane lines = shape;
        skeleton::DistanceMap distances(shape);
        Thin(lines, distances);
        const skeleton::LineGraph found = FindLines(lines, shape, distances);
        ArmGraph graph(found);
        DropTips(graph);
        MendJunctions(graph, shape);
        for (int i = 0; i < graph.LineCount(); ++i) {
            for (const bool atEnd : {false, true}) {
                const LineEnd& end = graph.EndAt(i, atEnd);
                if (graph.IsDropped(i) || end.partner < 0) continue;
                ++partners;
                EXPECT_FALSE(graph.IsDropped(end.partner)) << "tangle " << seed << ", line " << i;
                const LineEnd& back = graph.EndAt(end.partner, end.partnerAtEnd);
                EXPECT_TRUE(back.partner == i && back.partnerAtEnd == atEnd)
                    << "tangle " << seed << ", line " << i;
            }
        }
    }
    EXPECT_GT(partners, 500);
}

}  // namespace
}  // namespace tarvex::centerline
