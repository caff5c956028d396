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
            CurveSource source(seed);
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
        std::size_t count;
    };
    const Cubic loop{{0, 0}, {900, 600}, {-700, 600}, {200, 0}};
    const Cubic arch{{0, 0}, {0, 400}, {600, 400}, {600, 0}};
    const Cubic cases[][2] = {
        {loop, {{-100, 100}, {0, 100}, {200, 100}, {300, 100}}},   // through both legs
        {arch, PartOf(arch, 0.25, 0.75)},                          // along it: only the ends
        {arch, Reversed(PartOf(arch, 0.25, 0.75))},                //
        {arch, {{0, 300}, {200, 300}, {400, 300}, {600, 300}}},    // at the top, touching or not
        {arch, {{300, -50}, {300, 100}, {300, 200}, {300, 500}}},  // at a joint of arcs
        {{{0, 0}, {300, 300}, {0, 300}, {300, 0}}, {{0, 100}, {100, 100}, {200, 100}, {300, 100}}},  // a cusp
    };
    const std::size_t counts[] = {2, 2, 2, 1, 1, 2};
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        SegmentList list;
        const auto add = [&list](const Cubic& c, Operand operand) {
            list.segments.push_back({c, static_cast<int>(list.contours.size()), 0, true});
            list.contours.push_back({operand, 0, list.Size() - 1, 1});
        };
        add(cases[i][0], Operand::A);
        add(cases[i][1], Operand::B);
        const auto found = FindMeetings(list, Scope::BetweenShapes).crossings;
        EXPECT_EQ(found.size(), counts[i]) << i;
        const auto own = FindMeetings(list, Scope::Everywhere).crossings;
        EXPECT_EQ(own.size(), counts[i] + (i == 0)) << i;  // the loop crosses itself
    }
}

}  // namespace
}  // namespace tarvex::shaping
