// Bezier contours moved sideways.
//
// The offset of a cubic is no cubic, and which parts of it remain is a question for the whole contour. So the
// contour is flattened, so finely that its polygon's offset is within a part of the tolerance of the true
// one, and the polygon is moved as polygons are (src/geometry/offset_region.cpp). That decides what remains;
// the polygon itself is then thrown away. Every edge of the result knows the edge of the polygon that it is
// parallel to, and this one knows its segment and its parameters; so a run of edges beside one segment says
// from which parameter to which the segment's offset is part of the result. Cubics are fitted to points of
// the true offset there, B(t) + d n(t), between the run's ends and along the segment's own tangents, which
// are the offset's (Tiller and Hanson, "Offsets of two-dimensional profiles", 1984, describe the approach;
// the fit is Schneider's, src/bezier/fit.h). Runs beside straight segments and mitres are single edges
// already; runs round a corner are arcs about a known centre.
//
// The tolerance is shared out: a quarter for where the polygon's edges meet, half for the fit.
#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>

#include "bezier/fit.h"
#include "bezier/halve.h"
#include "bezier/vector.h"
#include "core/rounding.h"
#include "geometry/offset_solution.h"
#include "tarvex/offset.h"

namespace tarvex {

namespace {

using namespace offsetting;

using NodeArray = CArray<BPOINT, BPOINT>;

constexpr int MOST_HALVINGS = 11;
constexpr double POLYGON_SHARE = 0.125;  // of the tolerance: chord and turn may add up
constexpr double FIT_SHARE = 0.5;
constexpr double FIT_UNITS = 2;  // the deviation at which the fit, whose thresholds suit it, aims
constexpr double FIT_ERROR = FIT_UNITS * FIT_UNITS;
constexpr double SMOOTH_TURN = 1e-3;  // the sine up to which segments meet smoothly

double Cross(DPOINT a, DPOINT b) { return a.x * b.y - a.y * b.x; }

/// A segment of the original.
struct Segment {
    CBezier curve;
    bool isStraight;
};

/// Where an edge of the polygon lies.
struct EdgeOfPolygon {
    int segment;
    double start;
    double end;
};

/// The contours as polygons.
struct Polygons {
    std::vector<Segment> segments;
    std::vector<EdgeOfPolygon> edges;  ///< from the point of the same index to the next one
    std::vector<std::vector<DPOINT>> contours;
};

bool IsStraight(const CBezier& curve) {
    const DPOINT chord = Minus(curve.p3, curve.p0);
    const double length = Length(chord);
    const auto liesAlong = [&](const DPOINT& p) {
        const DPOINT d = Minus(p, curve.p0);
        const double along = Dot(d, chord);
        return std::fabs(Cross(chord, d)) <= POINT_EPSILON * length && along >= -POINT_EPSILON * length &&
               along <= length * (length + POINT_EPSILON);
    };
    return (curve.p1 == curve.p0 && curve.p2 == curve.p3) || (liesAlong(curve.p1) && liesAlong(curve.p2));
}

/// The sum of the turns between the legs of a control polygon.
double TurnOf(const CBezier& c) {
    double turn = 0;
    DPOINT last{};
    bool hasLast = false;
    for (const DPOINT leg : {Minus(c.p1, c.p0), Minus(c.p2, c.p1), Minus(c.p3, c.p2)}) {
        if (leg.x == 0 && leg.y == 0) continue;
        if (hasLast) turn += std::fabs(std::atan2(Cross(last, leg), Dot(last, leg)));
        last = leg;
        hasLast = true;
    }
    return turn;
}

DPOINT DerivativeAt(const CBezier& c, double t) {
    const double s = 1 - t;
    const DPOINT sum = Plus(Plus(Times(Minus(c.p1, c.p0), s * s), Times(Minus(c.p2, c.p1), 2 * s * t)),
                            Times(Minus(c.p3, c.p2), t * t));
    return Times(sum, 3);
}

/// The tangent's direction in which the parameter grows; near a point where the curve stops, that beside it.
DPOINT TangentAt(const CBezier& c, double t) {
    for (const double nudged : {t, t < 0.5 ? t + 1e-4 : t - 1e-4}) {
        const DPOINT d = DerivativeAt(c, nudged);
        const double length = Length(d);
        if (length > 1e-9 * (Distance(c.p0, c.p1) + Distance(c.p1, c.p2) + Distance(c.p2, c.p3)))
            return Times(d, 1 / length);
    }
    return Normalized(Minus(c.p3, c.p0));
}

/// Halves segments until their polygons' offsets are as near to theirs as asked.
class Flattener {
  public:
    Flattener(double distance, double tolerance) : m_sag(tolerance * POLYGON_SHARE) {
        const double part = std::min(1.0, m_sag / std::fabs(distance));
        m_turn = std::max(2 * std::acos(1 - part), std::numbers::pi / 512);
    }

    void Append(const NodeArray& nodes, Polygons& out) const {
        std::vector<DPOINT> points{nodes[0].pt};
        const int count = nodes.GetSize() - 1;
        const bool isClosed = nodes[0].pt == nodes[count].pt;
        for (int i = 0; i < count; ++i) {
            const CBezier curve(nodes[i], nodes[i + 1]);
            if (IsStraight(curve)) {
                AppendStraight(curve.p0, curve.p3, points, out);
                continue;
            }
            const auto isCornerAt = [&](int node) {
                if (!isClosed && (node == 0 || node == count)) return true;
                const int before = node == 0 ? count - 1 : node - 1;
                const int after = node == count ? 0 : node;
                return IsCorner(CBezier(nodes[before], nodes[before + 1]),
                                CBezier(nodes[after], nodes[after + 1]));
            };
            AppendCurve(curve, isCornerAt(i), isCornerAt(i + 1), points, out);
        }
        out.edges.push_back({0, 0, 0});  // none starts at the last point
        out.contours.push_back(std::move(points));
    }

    /// The length of the pieces at corners that count as straight.
    double Stub() const { return m_sag / 2; }
    /// The largest turn from one edge of the polygon to the next inside a segment.
    double Turn() const { return m_turn; }

  private:
    static void AppendStraight(DPOINT from, DPOINT to, std::vector<DPOINT>& points, Polygons& out) {
        out.edges.push_back({static_cast<int>(out.segments.size()), 0, 1});
        out.segments.push_back({CBezier(from, from, to, to), true});
        points.push_back(to);
    }

    static bool IsCorner(const CBezier& before, const CBezier& after) {
        const DPOINT in = TangentAt(before, 1);
        const DPOINT out = TangentAt(after, 0);
        return Dot(in, out) < 0 || std::fabs(Cross(in, out)) > SMOOTH_TURN;
    }

    /// A curve's chords turn away from its tangents, so at its corners the polygon starts and ends with
    /// pieces too short to turn: joins there are those of the curve, and mitres go on along its tangents.
    void AppendCurve(const CBezier& curve, bool isCornerAtStart, bool isCornerAtEnd,
                     std::vector<DPOINT>& points, Polygons& out) const {
        const auto stubAt = [&](DPOINT leg) {
            return std::clamp(Stub() / (3 * std::max(Length(leg), Stub())), 1e-9, 1.0 / 64);
        };
        const double start = isCornerAtStart ? stubAt(Minus(curve.p1, curve.p0)) : 0;
        const double end = isCornerAtEnd ? 1 - stubAt(Minus(curve.p3, curve.p2)) : 1;
        if (start > 0) AppendStraight(curve.p0, curve.GetCurvePoint(start), points, out);
        const int segment = static_cast<int>(out.segments.size());
        out.segments.push_back({curve, false});
        AppendHalved(PartOf(curve, start, end), start, end, 0, segment, points, out.edges);
        if (end < 1) AppendStraight(curve.GetCurvePoint(end), curve.p3, points, out);
    }

    /// The part of the curve between two parameters, by its value and derivative there.
    static CBezier PartOf(const CBezier& c, double start, double end) {
        const DPOINT a = c.GetCurvePoint(start);
        const DPOINT b = c.GetCurvePoint(end);
        const double third = (end - start) / 3;
        return {a, Plus(a, Times(DerivativeAt(c, start), third)),
                Minus(b, Times(DerivativeAt(c, end), third)), b};
    }

    void AppendHalved(const CBezier& c, double start, double end, int depth, int segment,
                      std::vector<DPOINT>& points, std::vector<EdgeOfPolygon>& edges) const {
        if (depth >= MOST_HALVINGS || (depth > 0 && IsFlat(c))) {
            points.push_back(c.p3);
            edges.push_back({segment, start, end});
            return;
        }
        const CubicHalves h = Halve(c.p0, c.p1, c.p2, c.p3);
        const double half = (start + end) / 2;
        AppendHalved({c.p0, h.p01, h.p012, h.middle}, start, half, depth + 1, segment, points, edges);
        AppendHalved({h.middle, h.p123, h.p23, c.p3}, half, end, depth + 1, segment, points, edges);
    }

    bool IsFlat(const CBezier& c) const {
        const DPOINT chord = Minus(c.p3, c.p0);
        const double length = Length(chord);
        const double off =
            std::max(std::fabs(Cross(chord, Minus(c.p1, c.p0))), std::fabs(Cross(chord, Minus(c.p2, c.p0))));
        if (length > 0 ? off > m_sag * length : Distance(c.p0, c.p1) + Distance(c.p2, c.p3) > m_sag)
            return false;
        return TurnOf(c) <= m_turn;
    }

    double m_sag;
    double m_turn;
};

/// Where the offset of a line starts and ends.
struct Ends {
    DPOINT first;
    DPOINT last;
};

Ends EndsOf(const NodeArray& nodes, double distance) {
    const int count = nodes.GetSize();
    const auto beside = [&](const CBezier& c, double t) {
        const DPOINT along = TangentAt(c, t);
        return Plus(c.GetCurvePoint(t), Times({-along.y, along.x}, distance));
    };
    return {beside(CBezier(nodes[0], nodes[1]), 0), beside(CBezier(nodes[count - 2], nodes[count - 1]), 1)};
}

/// Turns one strand of the result into nodes.
class Rebuilder {
  public:
    Rebuilder(const Polygons& polygons, const Solution& solution, double tolerance, double shortest)
        : m_polygons(polygons), m_solution(solution), m_tolerance(tolerance), m_shortest(shortest) {}

    /// Tells the true ends of a line's offset; points within `reach` of them stand for them.
    void SetEnds(const Ends& ends, double reach) {
        m_ends = ends;
        m_reach = reach;
    }

    std::unique_ptr<NodeArray> Nodes(const Strand& original) {
        m_strand = &original;
        Strand turned;
        const std::size_t seam = FirstSeam();
        if (seam > 0) {
            turned = Turned(original, seam);
            m_strand = &turned;
        }
        m_pieces.clear();
        const std::size_t n = m_strand->tags.size();
        for (std::size_t first = 0; first < n;) {
            std::size_t last = first + 1;
            while (last < n && GoesOn(last - 1, last)) ++last;
            // Pieces as short as the stubs at corners are left to their neighbours.
            if (Distance(PointAt(first), PointAt(last)) > m_shortest) AppendRun(first, last);
            first = last;
        }
        if (m_pieces.empty()) return nullptr;
        if (m_strand->points.front() == m_strand->points.back()) Close();
        return ToNodes();
    }

  private:
    const RawEdge& EdgeAt(std::size_t i) const {
        return m_solution.edges[static_cast<std::size_t>(m_strand->tags[i])];
    }
    /// A point of the strand; at the ends of a line the true offset's end, if that is what it stands for: the
    /// polygon's first and last sides are turned a little.
    DPOINT PointAt(std::size_t i) const {
        const DPOINT p = m_solution.grid.FromGrid(m_strand->points[i]);
        if (m_ends && i == 0 && Distance(p, m_ends->first) <= m_reach) return m_ends->first;
        if (m_ends && i == m_strand->tags.size() && Distance(p, m_ends->last) <= m_reach) return m_ends->last;
        return p;
    }
    const EdgeOfPolygon& PlaceAt(std::size_t i) const {
        return m_polygons.edges[static_cast<std::size_t>(EdgeAt(i).source)];
    }
    const Segment& SegmentAt(std::size_t i) const {
        return m_polygons.segments[static_cast<std::size_t>(PlaceAt(i).segment)];
    }

    /// Whether two edges that follow one another belong to one piece of the true offset.
    bool GoesOn(std::size_t before, std::size_t at) const {
        const RawEdge& a = EdgeAt(before);
        const RawEdge& b = EdgeAt(at);
        if (a.kind != b.kind) return false;
        switch (a.kind) {
            case RawEdge::Kind::arc:
                return a.centre == b.centre;
            case RawEdge::Kind::parallel:
                return PlaceAt(before).segment == PlaceAt(at).segment && std::abs(a.source - b.source) <= 1;
            case RawEdge::Kind::straight:
                return false;
        }
        return false;
    }

    /// For a closed strand, an edge at which a run begins; 0 if there is none, or it is open.
    std::size_t FirstSeam() const {
        const std::size_t n = m_strand->tags.size();
        if (!(m_strand->points.front() == m_strand->points.back()) || !GoesOn(n - 1, 0)) return 0;
        std::size_t i = 1;
        while (i < n && GoesOn(i - 1, i)) ++i;
        return i < n ? i : 0;
    }

    static Strand Turned(const Strand& strand, std::size_t start) {
        Strand turned = strand;
        const auto offset = static_cast<std::ptrdiff_t>(start);
        std::rotate(turned.tags.begin(), turned.tags.begin() + offset, turned.tags.end());
        std::rotate(turned.points.begin(), turned.points.begin() + offset, turned.points.end() - 1);
        turned.points.back() = turned.points.front();
        return turned;
    }

    void AppendRun(std::size_t first, std::size_t last) {
        const DPOINT from = m_pieces.empty() ? PointAt(first) : m_pieces.back().p3;
        const DPOINT to = PointAt(last);
        const RawEdge& edge = EdgeAt(first);
        if (edge.kind == RawEdge::Kind::arc) {
            AppendArc(m_solution.grid.FromGrid(edge.centre), from, to);
        } else if (edge.kind == RawEdge::Kind::parallel && !SegmentAt(first).isStraight) {
            AppendOffset(first, last, from, to);
        } else {
            AppendLine(from, to);
        }
    }

    void AppendLine(DPOINT from, DPOINT to) {
        BEZIER line;
        line.p0 = line.p1 = from;
        line.p2 = line.p3 = to;
        m_pieces.push_back(line);
    }

    /// Arcs of at most a quarter turn. Arcs around corners turn less than half round.
    void AppendArc(DPOINT centre, DPOINT from, DPOINT to) {
        const DPOINT a = Minus(from, centre);
        const DPOINT b = Minus(to, centre);
        const double sweep = std::atan2(Cross(a, b), Dot(a, b));
        const int count =
            std::max(1, SaturatingInt(std::ceil(std::fabs(sweep) / (std::numbers::pi / 2) - 1e-9)));
        const double step = sweep / count;
        const double handle = 4.0 / 3 * std::tan(step / 4);
        const auto turned = [&](double angle) {
            const double c = std::cos(angle);
            const double s = std::sin(angle);
            return DPOINT{a.x * c - a.y * s, a.x * s + a.y * c};
        };
        DPOINT start = from;
        for (int k = 0; k < count; ++k) {
            const DPOINT u = turned(step * k);
            const DPOINT v = turned(step * (k + 1));
            BEZIER arc;
            arc.p0 = start;
            arc.p3 = k + 1 < count ? Plus(centre, v) : to;
            arc.p1 = Plus(arc.p0, Times({-u.y, u.x}, handle));
            arc.p2 = Minus(arc.p3, Times({-v.y, v.x}, handle));
            m_pieces.push_back(arc);
            start = arc.p3;
        }
    }

    /// The parameter of the segment beside a point of the strand on one of its edges.
    double ParameterAt(std::size_t edge, const DPOINT& p) const {
        const EdgeOfPolygon& place = PlaceAt(edge);
        const CBezier& c = SegmentAt(edge).curve;
        const DPOINT a = c.GetCurvePoint(place.start);
        const DPOINT along = Minus(c.GetCurvePoint(place.end), a);
        const double square = SquaredLength(along);
        const double part = square > 0 ? std::clamp(Dot(Minus(p, a), along) / square, 0.0, 1.0) : 0.5;
        return place.start + (place.end - place.start) * part;
    }

    void AppendOffset(std::size_t first, std::size_t last, DPOINT from, DPOINT to) {
        const CBezier& c = SegmentAt(first).curve;
        const double start = ParameterAt(first, from);
        const double end = ParameterAt(last - 1, to);
        const double sense = end < start ? -1 : 1;
        // The middles of the strand's edges are points of the true offset; unlike points at parameters in
        // between they are never in a part that is hidden.
        const double scale = FIT_UNITS / (m_tolerance * FIT_SHARE);
        std::vector<DPOINT> samples{{0, 0}};
        for (std::size_t i = first; i < last; ++i) {
            const DPOINT middle = Midpoint(i == first ? from : PointAt(i), PointAt(i + 1));
            samples.push_back(Times(Minus(middle, from), scale));
        }
        samples.push_back(Times(Minus(to, from), scale));
        m_fit.clear();
        FitRun(samples, Times(TangentAt(c, start), sense), Times(TangentAt(c, end), -sense), FIT_ERROR,
               m_fit);
        if (m_fit.empty()) {
            AppendLine(from, to);
            return;
        }
        for (BEZIER& piece : m_fit) {
            for (DPOINT* p : {&piece.p0, &piece.p1, &piece.p2, &piece.p3})
                *p = Plus(from, Times(*p, 1 / scale));
        }
        m_fit.front().p0 = from;
        m_fit.back().p3 = to;
        m_pieces.insert(m_pieces.end(), m_fit.begin(), m_fit.end());
    }

    void Close() {
        BEZIER& last = m_pieces.back();
        const bool isStraight = last.p2 == last.p3;
        last.p3 = m_pieces.front().p0;
        if (isStraight) last.p2 = last.p3;
    }

    std::unique_ptr<NodeArray> ToNodes() const {
        auto nodes = std::make_unique<NodeArray>();
        nodes->SetSize(static_cast<int>(m_pieces.size()) + 1);
        BPOINT* node = nodes->GetData();
        node->cp1 = node->pt = m_pieces.front().p0;
        for (const BEZIER& piece : m_pieces) {
            node->cp2 = piece.p1;
            ++node;
            node->cp1 = piece.p2;
            node->pt = node->cp2 = piece.p3;
        }
        return nodes;
    }

    const Polygons& m_polygons;
    const Solution& m_solution;
    const double m_tolerance;
    const double m_shortest;
    std::optional<Ends> m_ends;
    double m_reach = 0;
    const Strand* m_strand = nullptr;
    std::vector<BEZIER> m_pieces;
    std::vector<BEZIER> m_fit;
};

bool IsFinite(const NodeArray& nodes) {
    return std::all_of(nodes.begin(), nodes.end(), [](const BPOINT& node) {
        return std::isfinite(node.cp1.x + node.cp1.y + node.pt.x + node.pt.y + node.cp2.x + node.cp2.y);
    });
}

/// The tolerance as it is used: not below what makes sense beside the distance.
double UsableTolerance(double distance, double tolerance) {
    const double finest = 1e-6 * std::fabs(distance);
    return tolerance >= finest ? std::min(tolerance, std::max(std::fabs(distance), finest)) : finest;
}

CPolyPolyBezier Rebuilt(Rebuilder& rebuilder, const Solution& solution) {
    CPolyPolyBezier result;
    for (const Strand& strand : solution.strands) {
        if (std::unique_ptr<NodeArray> nodes = rebuilder.Nodes(strand)) result.Add(std::move(nodes));
    }
    return result;
}

void AddCopy(const NodeArray& nodes, CPolyPolyBezier& result) {
    auto copy = std::make_unique<NodeArray>();
    copy->Copy(nodes);
    result.Add(std::move(copy));
}

}  // namespace

CPolyPolyBezier ShrinkBezier(const CArray<BPOINT, BPOINT>& contour, double distance,
                             const OffsetOptions& options) {
    CPolyPolyBezier result;
    if (contour.GetSize() < 2 || !IsFinite(contour) || !std::isfinite(distance)) return result;
    if (distance == 0) {
        AddCopy(contour, result);
        return result;
    }
    OffsetOptions used = options;
    used.tolerance = UsableTolerance(distance, options.tolerance);
    const Flattener flattener(distance, used.tolerance);
    Polygons polygons;
    flattener.Append(contour, polygons);
    const double tolerance = used.tolerance;
    used.tolerance *= POLYGON_SHARE;
    const std::optional<Solution> solution = SolveContour(polygons.contours.front(), distance, used);
    if (!solution) return result;
    Rebuilder rebuilder(polygons, *solution, tolerance, 2 * flattener.Stub());
    if (!IsClosed(polygons.contours.front()))
        rebuilder.SetEnds(EndsOf(contour, distance), flattener.Turn() * std::fabs(distance));
    return Rebuilt(rebuilder, *solution);
}

CPolyPolyBezier ShrinkBezier(const CPolyPolyBezier& shape, double distance, const OffsetOptions& options) {
    CPolyPolyBezier result;
    if (!std::isfinite(distance)) return result;
    OffsetOptions used = options;
    used.tolerance = UsableTolerance(distance, options.tolerance);
    const Flattener flattener(distance, used.tolerance);
    Polygons polygons;
    for (int i = 0; i < shape.GetSize(); ++i) {
        const NodeArray* contour = shape.GetAt(i);
        if (contour == nullptr || contour->GetSize() < 2) continue;
        if (!IsFinite(*contour)) return result;
        if (distance == 0) {
            AddCopy(*contour, result);
        } else {
            flattener.Append(*contour, polygons);
        }
    }
    if (distance == 0) return result;
    const std::vector<std::span<const DPOINT>> contours(polygons.contours.begin(), polygons.contours.end());
    const double tolerance = used.tolerance;
    used.tolerance *= POLYGON_SHARE;
    const std::optional<Solution> solution = SolveShape(contours, distance, used);
    if (!solution) return result;
    Rebuilder rebuilder(polygons, *solution, tolerance, 2 * flattener.Stub());
    return Rebuilt(rebuilder, *solution);
}

}  // namespace tarvex
