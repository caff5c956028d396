// The vector path of shaping: curves to polygons, polygons through the clipper, and back to curves.
//
// Clippers know polygons. What makes curves of their result again is that every vertex handed to them is
// on record: which curve it was made from, and where on it. That is enough wherever the result follows
// vertices of the input; the only vertices without a record are those that the clipper makes itself, where
// edges cross. So the curves are made to meet in common nodes first: all crossings of curves of one shape
// with those of the other become nodes of both, at one point, before either is flattened; crossings
// within a shape split its curves, too, without a node that anyone sees. Then polylines cross at vertices
// only, up to accidents between polylines whose curves nearly touch (see pieces.cpp), and an outline of the
// result is a chain of whole pieces of curves.
//
// Steps: crossings between the shapes (crossing_search.cpp); nodes inserted, both shapes turned clockwise;
// all remaining crossings; pieces and their polylines (pieces.cpp); polygons and the record of their
// vertices (polygons.cpp); the clipper; its contours as stretches of segments (runs.cpp); nodes of those
// (rebuild.cpp). Everything happens on copies. `b` takes over its part before the clipper runs, `a` at the
// end.
#include <algorithm>
#include <cmath>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "shaping/box_tree.h"
#include "shaping/crossing_search.h"
#include "shaping/polygons.h"
#include "shaping/rebuild.h"
#include "shaping/runs.h"
#include "tarvex/shaping.h"

namespace tarvex {

namespace {

using namespace shaping;

using Nodes = CArray<BPOINT, BPOINT>;

/// A millimetre; of shapes larger than 10 metres a ten-thousandth, so that no shape becomes points without
/// end.
constexpr double RESOLUTION = 10.0;
constexpr double RESOLUTION_OF_FRAME = 1e-4;
/// What is thinner is no area.
constexpr double THINNEST = 1e-7;

bool IsFiniteShape(const CPolyPolyBezier& shape) {
    for (int k = 0; k < shape.GetCount(); ++k) {
        const Nodes* nodes = shape.GetAt(k);
        if (nodes == nullptr) continue;
        const bool isFinite = std::all_of(nodes->begin(), nodes->end(), [](const BPOINT& node) {
            return IsFinite(node.cp1) && IsFinite(node.pt) && IsFinite(node.cp2);
        });
        if (!isFinite) return false;
    }
    return true;
}

/// A copy with all slots, null ones included, and its contours closed.
CPolyPolyBezier ClosedCopy(const CPolyPolyBezier& shape) {
    CPolyPolyBezier copy;
    copy.SetSize(shape.GetCount());
    for (int k = 0; k < shape.GetCount(); ++k) {
        if (shape.GetAt(k) == nullptr) continue;
        auto nodes = std::make_unique<Nodes>();
        nodes->Copy(*shape.GetAt(k));
        copy.SetAt(k, nodes.release());
    }
    copy.EnsureClosed();
    return copy;
}

SegmentList SegmentsOf(const CPolyPolyBezier& a, const CPolyPolyBezier& b) {
    SegmentList list;
    AppendSegments(a, Operand::A, list);
    AppendSegments(b, Operand::B, list);
    return list;
}

/// Splits at all crossings, at points that are the same wherever curves meet; anchors come before others.
std::vector<Split> SplitsAt(const SegmentList& list, const Meetings& meetings) {
    PointIndex points;
    for (const Segment& segment : list.segments) points.FindOrAdd(segment.curve.p0);
    std::vector<Split> splits;
    splits.reserve(2 * meetings.crossings.size());
    for (const Crossing& crossing : meetings.crossings) {
        const DPOINT p = points[points.FindOrAdd(crossing.point)];
        splits.push_back({crossing.first, crossing.s, p});
        splits.push_back({crossing.second, crossing.t, p});
    }
    SettleSplits(list, splits);
    ShareSplits(list, meetings.stretches, splits);
    return splits;
}

void InsertCrossings(CPolyPolyBezier& a, CPolyPolyBezier& b) {
    const SegmentList list = SegmentsOf(a, b);
    const std::vector<Split> splits = SplitsAt(list, FindMeetings(list, Scope::BetweenShapes));
    InsertNodes(list, Operand::A, splits, a);
    InsertNodes(list, Operand::B, splits, b);
}

double ResolutionFor(const SegmentList& list) {
    if (list.segments.empty()) return RESOLUTION;
    Box frame = BoxOf(list.segments.front().curve);
    for (const Segment& segment : list.segments) frame = Union(frame, BoxOf(segment.curve));
    const double size = std::max(frame.right - frame.left, frame.bottom - frame.top);
    return std::max(RESOLUTION, RESOLUTION_OF_FRAME * size);
}

/// Whether a contour has no more area than its length allows for noise.
bool IsThin(const Nodes& contour) {
    const DPOINT origin = contour[0].pt;
    double area = 0;
    double length = 0;
    for (int i = 0; i + 1 < contour.GetSize(); ++i) {
        const Cubic c = SegmentOf(contour[i], contour[i + 1]);
        const auto cross = [&origin](DPOINT p, DPOINT q) {
            return (p.x - origin.x) * (q.y - origin.y) - (p.y - origin.y) * (q.x - origin.x);
        };
        area += (6 * cross(c.p0, c.p1) + 3 * cross(c.p0, c.p2) + cross(c.p0, c.p3) + 3 * cross(c.p1, c.p2) +
                 3 * cross(c.p1, c.p3) + 6 * cross(c.p2, c.p3)) /
                20;
        length += Distance(c.p0, c.p1) + Distance(c.p1, c.p2) + Distance(c.p2, c.p3);
    }
    return !(std::fabs(area) > THINNEST / 2 * length);
}

/// The result, empty when there is none.
CPolyPolyBezier Combine(int op, const CPolyPolyBezier& a, const CPolyPolyBezier& b) {
    const SegmentList list = SegmentsOf(a, b);
    const auto has = [&list](Operand operand) {
        return std::any_of(list.contours.begin(), list.contours.end(),
                           [operand](const SegmentContour& contour) { return contour.operand == operand; });
    };
    if (!has(Operand::A) || !has(Operand::B)) return {};
    PieceList pieces = CutIntoPieces(list, SplitsAt(list, FindMeetings(list, Scope::Everywhere)));
    FlattenCourses(pieces, ResolutionFor(list));
    const VertexTable table = BuildVertexTable(list, pieces);
    CPolyPolyBezier out;
    ClipSet subject;
    ClipSet clip;
    ClipSet clipped;
    FillClipSet(list, table, Operand::A, *subject);
    FillClipSet(list, table, Operand::B, *clip);
    ClipPolygons(op, *subject, *clip, *clipped);
    RunFinder runs(list, pieces, table);
    const ContourBuilder builder(list, pieces, {a, b});
    std::vector<std::unique_ptr<Nodes>> contours;
    for (int k = 0; k < (*clipped).contourCount; ++k) {
        const ClipContour& contour = (*clipped).contours[k];
        if (contour.vertexCount < 3) continue;
        const std::span<const DPOINT> vertices(contour.vertices,
                                               static_cast<std::size_t>(contour.vertexCount));
        for (const std::vector<Stretch>& loop : runs.LoopsOf(vertices)) {
            auto nodes = builder.Build(loop);
            if (nodes != nullptr && !IsThin(*nodes)) contours.push_back(std::move(nodes));
        }
    }
    out.SetSize(static_cast<int>(contours.size()));
    for (std::size_t k = 0; k < contours.size(); ++k) out.SetAt(static_cast<int>(k), contours[k].release());
    return out;
}

}  // namespace

bool PolyPolyBezierShaping(int op, CPolyPolyBezier& a, CPolyPolyBezier& b) {
    if (op < SHAPING_DIFFERENCE || op > SHAPING_UNION || !IsFiniteShape(a) || !IsFiniteShape(b)) return false;
    CPolyPolyBezier workA = ClosedCopy(a);
    CPolyPolyBezier workB = ClosedCopy(b);
    InsertCrossings(workA, workB);
    workA.SetOrientation(true);
    workB.SetOrientation(true);
    if (&a != &b) {
        for (int k = 0; k < b.GetCount(); ++k) {
            if (b.GetAt(k) != nullptr) b[k].Copy(workB[k]);
        }
    }
    CPolyPolyBezier result = Combine(op, workA, workB);
    if (result.IsEmpty()) return false;
    result.SetOrientation(true);
    a = std::move(result);
    return true;
}

}  // namespace tarvex
