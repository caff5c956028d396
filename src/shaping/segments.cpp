// Lines without handles are drawn slowly at both ends (their cubic's speed is 0 there), which spoils every
// method that looks for parameters; as long as only the course matters they are given even handles.
#include "shaping/segments.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "shaping/curve_crossings.h"

namespace tarvex::shaping {

namespace {

Cubic EvenLine(DPOINT a, DPOINT b) { return {a, Mix(a, b, 1.0 / 3), Mix(a, b, 2.0 / 3), b}; }

using Nodes = CArray<BPOINT, BPOINT>;

/// The nodes of one contour with those of its splits between them.
std::vector<BPOINT> WithSplits(const Nodes& nodes, const SegmentList& list, const SegmentContour& contour,
                               std::span<const Split> splits) {
    std::vector<BPOINT> out{nodes[0]};
    out.reserve(static_cast<std::size_t>(nodes.GetSize()) + splits.size());
    auto split = splits.begin();
    for (int i = 0; i < contour.count; ++i) {
        const Segment& segment = list[contour.first + i];
        BPOINT end = nodes[i + 1];
        double from = 0;
        DPOINT start = segment.curve.p0;
        for (; split != splits.end() && split->segment == contour.first + i; ++split) {
            const Cubic piece = PieceOf(segment, from, split->t, start, split->point);
            const Cubic rest = PieceOf(segment, split->t, 1, split->point, segment.curve.p3);
            if (segment.hasHandles) out.back().cp2 = piece.p1;
            out.push_back({piece.p2, split->point, rest.p1});
            if (segment.hasHandles) end.cp1 = rest.p2;
            from = split->t;
            start = split->point;
        }
        out.push_back(end);
    }
    return out;
}

}  // namespace

void AppendSegments(const CPolyPolyBezier& shape, Operand operand, SegmentList& list) {
    for (int k = 0; k < shape.GetCount(); ++k) {
        const Nodes* nodes = shape.GetAt(k);
        if (nodes == nullptr || nodes->GetSize() < 2) continue;
        const int contour = static_cast<int>(list.contours.size());
        const int first = list.Size();
        for (int i = 0; i + 1 < nodes->GetSize(); ++i) {
            const Cubic c = SegmentOf(nodes->GetAt(i), nodes->GetAt(i + 1));
            const bool isLine = HasNoHandles(c);
            list.segments.push_back({isLine ? EvenLine(c.p0, c.p3) : c, contour, i, !isLine});
        }
        list.contours.push_back({operand, k, first, list.Size() - first});
    }
}

void SettleSplits(const SegmentList& list, std::vector<Split>& splits) {
    std::sort(splits.begin(), splits.end(), [](const Split& a, const Split& b) {
        return std::tie(a.segment, a.t, a.point.x, a.point.y) <
               std::tie(b.segment, b.t, b.point.x, b.point.y);
    });
    std::vector<Split> kept;
    kept.reserve(splits.size());
    for (const Split& split : splits) {
        const Cubic& c = list[split.segment].curve;
        const bool isNext = !kept.empty() && kept.back().segment == split.segment;
        if (split.t <= 0 || split.t >= 1 || (isNext && split.t <= kept.back().t)) continue;
        // A loop may come back to where it was; only what is near along the curve, too, is the same place.
        const auto isPlace = [&](double t, DPOINT p) {
            return split.point == p && PointAt(c, (t + split.t) / 2) == p;
        };
        if (isPlace(0, c.p0) || isPlace(1, c.p3)) continue;
        if (isNext && isPlace(kept.back().t, kept.back().point)) continue;
        kept.push_back(split);
    }
    splits = std::move(kept);
}

void ShareSplits(const SegmentList& list, std::span<const CommonStretch> stretches,
                 std::vector<Split>& splits) {
    constexpr int mostRounds = 8;  // from one segment to the next, where each runs along another
    for (int round = 0; round < mostRounds && !stretches.empty(); ++round) {
        const std::size_t before = splits.size();
        std::vector<Split> all = splits;
        const auto share = [&](int from, double s0, double s1, int to, double t0, double t1) {
            const auto [low, high] = std::minmax(s0, s1);
            const auto isBefore = [](const Split& split, const std::pair<int, double>& place) {
                return std::pair(split.segment, split.t) < place;
            };
            auto split = std::lower_bound(splits.begin(), splits.end(), std::pair(from, low), isBefore);
            for (; split != splits.end() && split->segment == from && split->t <= high; ++split) {
                const Cubic& other = list[to].curve;
                double t = t0 + (t1 - t0) * ((split->t - s0) / (s1 - s0));
                if (!(PointAt(other, t) == split->point))
                    t = NearestParameter(other, split->point);  // a line
                all.push_back({to, t, split->point});
            }
        };
        for (const CommonStretch& common : stretches) {
            share(common.first, common.s0, common.s1, common.second, common.t0, common.t1);
            share(common.second, common.t0, common.t1, common.first, common.s0, common.s1);
        }
        SettleSplits(list, all);
        splits = std::move(all);
        if (splits.size() == before) return;
    }
}

Cubic PieceOf(const Segment& segment, double from, double to, DPOINT start, DPOINT end) {
    if (!segment.hasHandles) return {start, start, end, end};
    Cubic piece = PartOf(segment.curve, from, to);
    piece.p1 = Plus(piece.p1, Minus(start, piece.p0));
    piece.p2 = Plus(piece.p2, Minus(end, piece.p3));
    piece.p0 = start;
    piece.p3 = end;
    return piece;
}

void InsertNodes(const SegmentList& list, Operand operand, std::span<const Split> splits,
                 CPolyPolyBezier& shape) {
    for (const SegmentContour& contour : list.contours) {
        const auto begins = std::partition_point(
            splits.begin(), splits.end(), [&](const Split& split) { return split.segment < contour.first; });
        const auto ends = std::partition_point(begins, splits.end(), [&](const Split& split) {
            return split.segment < contour.first + contour.count;
        });
        if (contour.operand != operand || begins == ends) continue;
        Nodes& nodes = shape[contour.position];
        const std::vector<BPOINT> all = WithSplits(nodes, list, contour, {begins, ends});
        nodes.SetSize(static_cast<int>(all.size()));
        std::copy(all.begin(), all.end(), nodes.begin());
    }
}

}  // namespace tarvex::shaping
