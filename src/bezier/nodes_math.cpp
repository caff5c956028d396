// A contour asked by arc length: its segments are cut into stretches of known length, which a binary search
// finds by length or by place.
#include <algorithm>
#include <cmath>
#include <limits>

#include "bezier/arc_length.h"
#include "bezier/nodes_tangents.h"
#include "tarvex/nodes.h"

namespace tarvex {

namespace {

Cubic SegmentAt(const std::vector<BPOINT>& nodes, int segment) {
    const auto i = static_cast<std::size_t>(segment);
    return SegmentOf(nodes[i], nodes[i + 1]);
}

/// A piece of a contour, and the flags of the node at its start.
struct Piece {
    Cubic cubic;
    std::uint16_t flags;
};

void Join(std::span<const Piece> pieces, std::uint16_t lastFlags, CArray<BPOINT, BPOINT>& nodes) {
    nodes.SetSize(static_cast<int>(pieces.size()) + 1);
    DPOINT in = pieces[0].cubic.p0;
    int i = 0;
    for (const auto& [c, flags] : pieces) {
        nodes[i++] = {in, c.p0, c.p1, flags};
        in = c.p2;
    }
    const DPOINT end = pieces.back().cubic.p3;
    nodes[i] = {in, end, end, lastFlags};
}

}  // namespace

CBPointArrayMath::CBPointArrayMath(std::span<const BPOINT> nodes) : m_nodes(nodes.begin(), nodes.end()) {
    double length = 0;
    std::vector<ArcPiece> pieces;
    for (int i = 0; i < SegmentCount(); ++i) {
        pieces.clear();
        AppendArcPieces(SegmentAt(m_nodes, i), pieces);
        for (const ArcPiece& s : pieces) {
            m_stretches.push_back({i, s.from, s.to, s.length, length});
            length += s.length;
        }
        m_ends.push_back(length);
    }
    if (!std::isfinite(length)) m_stretches.clear();
}

bool CBPointArrayMath::IsClosed() const { return IsClosedContour(m_nodes); }

double CBPointArrayMath::GetLength() const {
    if (!m_stretches.empty()) return m_ends.back();
    return m_ends.empty() ? 0 : std::numeric_limits<double>::quiet_NaN();
}

double CBPointArrayMath::Wrapped(double length) const {
    const double whole = m_ends.back();
    if (!(whole > 0) || std::isnan(length)) return 0;
    if (length >= 0 && length <= whole) return length;
    if (!IsClosed() || std::isinf(length)) return length < 0 ? 0 : whole;
    const double rest = std::fmod(length, whole);
    return rest < 0 ? rest + whole : rest;
}

BPOINTPLACE CBPointArrayMath::GetPlace(double length) const {
    if (m_stretches.empty()) return {};
    const double along = Wrapped(length);
    if (along >= m_ends.back() && along > 0) return {SegmentCount() - 1, 1};  // exactly, not by differences
    auto found = std::upper_bound(m_stretches.begin(), m_stretches.end(), along,
                                  [](double v, const Stretch& s) { return v < s.before; });
    if (found != m_stretches.begin()) --found;
    const ArcPiece piece = {found->from, found->to, found->length};
    return {found->segment, ParameterAt(SegmentAt(m_nodes, found->segment), piece, along - found->before)};
}

const CBPointArrayMath::Stretch& CBPointArrayMath::StretchOf(const BPOINTPLACE& place) const {
    const auto isAfter = [](const BPOINTPLACE& p, const Stretch& s) {
        return p.segment < s.segment || (p.segment == s.segment && p.t < s.from);
    };
    auto found = std::upper_bound(m_stretches.begin(), m_stretches.end(), place, isAfter);
    if (found != m_stretches.begin()) --found;
    return *found;
}

double CBPointArrayMath::GetLengthAt(const BPOINTPLACE& place) const {
    if (m_stretches.empty() || place.segment < 0 || place.segment >= SegmentCount() || std::isnan(place.t))
        return std::numeric_limits<double>::quiet_NaN();
    const double t = std::clamp(place.t, 0.0, 1.0);
    const Stretch& stretch = StretchOf({place.segment, t});
    const Cubic c = SegmentAt(m_nodes, stretch.segment);
    return stretch.before + (t < stretch.to ? ArcPieceLength(c, stretch.from, t) : stretch.length);
}

DPOINT CBPointArrayMath::GetPoint(const BPOINTPLACE& place) const {
    if (std::isnan(GetLengthAt(place))) return {0, 0};
    return PlacedPoint(SegmentAt(m_nodes, place.segment), std::clamp(place.t, 0.0, 1.0));
}

DPOINT CBPointArrayMath::GetTangent(const BPOINTPLACE& place) const {
    if (std::isnan(GetLengthAt(place))) return {0, 0};
    const bool isAtEnd = place.t >= 1;
    if (isAtEnd || place.t <= 0) {
        const auto [in, out] = TangentsAt(m_nodes, place.segment + (isAtEnd ? 1 : 0));
        return out.x != 0 || out.y != 0 ? out : in;
    }
    const Cubic c = SegmentAt(m_nodes, place.segment);
    const DPOINT along = HasNoHandles(c) ? Minus(c.p3, c.p0) : DerivativeAt(c, place.t);
    if (Length(along) >= GEOMETRY_EPSILON) return Unit(along);
    // A cusp: what is left of the segment heads for its first control point that is elsewhere.
    const Cubic rest = PlacedPart(c, place.t, 1);
    for (const DPOINT& p : {rest.p1, rest.p2, rest.p3}) {
        if (!(p == rest.p0)) return Unit(Minus(p, rest.p0));
    }
    const auto [in, out] = TangentsAt(m_nodes, place.segment + 1);
    return out.x != 0 || out.y != 0 ? out : in;
}

BPOINTPLACE CBPointArrayMath::GetNearest(const DPOINT& p) const {
    if (m_stretches.empty()) return {};
    const Place place = NearestPlace(m_nodes, p);
    return {place.segment, place.t};
}

bool CBPointArrayMath::GetPart(double from, double to, CArray<BPOINT, BPOINT>& part) const {
    part.RemoveAll();
    if (m_stretches.empty()) return false;
    const double whole = m_ends.back();
    if (IsClosed()) {
        to = from + std::min(to - from, whole);
    } else {
        from = std::clamp(from, 0.0, whole);
        to = std::clamp(to, 0.0, whole);
    }
    if (!(to - from >= GEOMETRY_EPSILON)) return false;

    const double start = Wrapped(from);
    double left = to - from;
    BPOINTPLACE at = GetPlace(start);
    double segmentLeft = m_ends[static_cast<std::size_t>(at.segment)] - start;
    std::vector<Piece> pieces;
    std::uint16_t lastFlags = 0;
    while (left >= GEOMETRY_EPSILON && static_cast<int>(pieces.size()) <= SegmentCount()) {
        const auto i = static_cast<std::size_t>(at.segment);
        const Cubic c = SegmentAt(m_nodes, at.segment);
        const bool isWhole = segmentLeft - left < GEOMETRY_EPSILON;
        if (segmentLeft >= GEOMETRY_EPSILON) {
            const BPOINTPLACE end = GetPlace(m_ends[i] - segmentLeft + left);
            const double endT = isWhole || end.segment != at.segment ? 1 : end.t;
            pieces.push_back({PlacedPart(c, at.t, endT), at.t == 0 ? m_nodes[i].flags : std::uint16_t{0}});
            lastFlags = isWhole ? m_nodes[i + 1].flags : std::uint16_t{0};
        }
        if (!isWhole) break;
        left -= segmentLeft;
        at = {at.segment + 1 < SegmentCount() ? at.segment + 1 : 0, 0};
        const auto next = static_cast<std::size_t>(at.segment);
        segmentLeft = m_ends[next] - (next == 0 ? 0 : m_ends[next - 1]);
    }
    if (pieces.empty()) return false;
    Join(pieces, lastFlags, part);
    return true;
}

void CBPointArrayMath::GetEvenPoints(int count, CArray<DPOINT, DPOINT>& points) const {
    points.RemoveAll();
    if (m_stretches.empty() || count < 1) return;
    points.SetSize(count);
    const double steps = IsClosed() ? count : std::max(count - 1, 1);
    for (int i = 0; i < count; ++i) {
        // The last step may round to below the end, which is to be exact.
        const bool isEnd = !IsClosed() && i > 0 && i == count - 1;
        points[i] = isEnd ? m_nodes.back().pt : GetPoint(m_ends.back() * (i / steps));
    }
}

}  // namespace tarvex
