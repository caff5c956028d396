// The index of points against a plain search, and the crossings against those of fine polylines.
#include "support/precompiled.h"

#include "bezier/curves.h"
#include "shaping/crossing_search.h"
#include "shaping/outlines.h"
#include "shaping/point_index.h"
#include "support/property.h"
#include "tarvex/polygons.h"

namespace tarvex::shaping {
namespace {

using namespace testing_support;

TEST(PointIndex, AnswersAsALinearSearchWould) {
    test::ExpectLaw([](unsigned seed) {
        std::mt19937 random(seed);
        const auto coordinate = [&random] {
            static constexpr double bases[] = {0, 1.0 / 65536, -3.0 / 65536, 1e5, 1e12, -1e300};
            return bases[random() % 6] + (static_cast<int>(random() % 7) - 3) * 0.4e-8;
        };
        PointIndex index;
        std::vector<DPOINT> points;
        for (int i = 0; i < 300; ++i) {
            const DPOINT p{coordinate(), coordinate()};
            const auto first = std::find(points.begin(), points.end(), p);
            const int wanted = first == points.end() ? -1 : static_cast<int>(first - points.begin());
            RC_ASSERT(index.Find(p) == wanted);
            if (i % 2 == 0) points.push_back(p);
            if (i % 2 == 0) index.Add(p);
        }
        RC_ASSERT(index.Find({std::numeric_limits<double>::quiet_NaN(), 0}) == -1);
    });
}

/// All places where the first shape's fine polylines cross the second one's, by the plain loops.
std::vector<DPOINT> PlainCrossings(const CPolyPolyBezier& a, const CPolyPolyBezier& b) {
    std::vector<DPOINT> found;
    for (int i = 0; i < a.GetCount(); ++i) {
        CArray<DPOINT, DPOINT> lineA, lineB, hits;
        GetPolyline(a[i], lineA, 2);
        for (int j = 0; j < b.GetCount(); ++j) {
            GetPolyline(b[j], lineB, 2);
            for (int k = 0; k + 1 < lineB.GetSize(); ++k)
                GetPolyLineWithLineSegIntersection(lineA, {lineB[k], lineB[k + 1]}, hits);
        }
        found.insert(found.end(), hits.begin(), hits.end());
    }
    return found;
}

TEST(CrossingSearch, FindsWhatThePlainLoopsFindOnTheCurvesThemselves) {
    test::ExpectLaw(
        [](unsigned seed) {
            test::CurveSource source(seed);
            const auto blob = [&source] {
                std::vector<double> radii;
                for (int n = source.Integer(4, 14); n > 0; --n) radii.push_back(source.Uniform(100, 400));
                return Blob(source.Uniform(-200, 200), source.Uniform(-200, 200), radii);
            };
            const CPolyPolyBezier a = Shape({blob(), blob()}), b = Shape({blob()});
            SegmentList list;
            AppendSegments(a, Operand::A, list);
            AppendSegments(b, Operand::B, list);
            const std::vector<Crossing> crossings = FindMeetings(list, Scope::BetweenShapes).crossings;
            for (const Crossing& c : crossings) {
                RC_ASSERT(Distance(PointAt(list[c.first].curve, c.s), c.point) < 1e-9);
                RC_ASSERT(Distance(PointAt(list[c.second].curve, c.t), c.point) < 1e-9);
            }
            for (const DPOINT& p : PlainCrossings(a, b)) {
                // Polylines at a resolution of 2 are some hundredths off the curves; next to a tangent their
                // crossing can be far along it, or there may be none of the curves.
                const auto isNear = [&p](const Crossing& c) { return Distance(c.point, p) < 3; };
                RC_ASSERT(std::any_of(crossings.begin(), crossings.end(), isNear));
            }
            for (std::size_t i = 1; i < crossings.size(); ++i) {
                const Crossing &c = crossings[i - 1], &d = crossings[i];
                RC_ASSERT(std::tuple(list[c.first].contour, list[c.second].contour, c.second, c.t) <=
                          std::tuple(list[d.first].contour, list[d.second].contour, d.second, d.t));
            }
        },
        25);
}

TEST(CrossingSearch, CuspsLoopsAndSharedStretches) {
    struct Case {
        const char* name;
        Cubic a, b;
        std::size_t count, own;  // of those with each other, and of all
    };
    const Cubic loop{{0, 0}, {900, 600}, {-700, 600}, {200, 0}};
    const Cubic arch{{0, 0}, {0, 400}, {600, 400}, {600, 0}};
    const Cubic cusp{{0, 0}, {300, 300}, {0, 300}, {300, 0}};
    const auto level = [](double from, double to, double y) {
        return Cubic{{from, y}, {from + (to - from) / 3, y}, {to - (to - from) / 3, y}, {to, y}};
    };
    const Case cases[] = {
        {"through both legs of a loop", loop, level(-100, 300, 100), 2, 3},
        {"along an arch", arch, PartOf(arch, 0.25, 0.75), 2, 2},
        {"back along an arch", arch, Reversed(PartOf(arch, 0.25, 0.75)), 2, 2},
        {"at the top, touching or not", arch, level(0, 600, 300), 1, 1},
        {"at a joint of arcs", arch, {{300, -50}, {300, 100}, {300, 200}, {300, 500}}, 1, 1},
        {"through both legs of a cusp", cusp, level(0, 300, 100), 2, 2},
        {"along a line's last bit", level(0, 300, 0), level(294, 594, 0), 2, 2},
    };
    for (const Case& c : cases) {
        SegmentList list;
        const auto add = [&list](const Cubic& curve, Operand operand) {
            list.segments.push_back({curve, static_cast<int>(list.contours.size()), 0, true});
            list.contours.push_back({operand, 0, list.Size() - 1, 1});
        };
        add(c.a, Operand::A);
        add(c.b, Operand::B);
        EXPECT_EQ(FindMeetings(list, Scope::BetweenShapes).crossings.size(), c.count) << c.name;
        EXPECT_EQ(FindMeetings(list, Scope::Everywhere).crossings.size(), c.own) << c.name;
    }
}

}  // namespace
}  // namespace tarvex::shaping
