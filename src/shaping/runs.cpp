// Every edge of a clipped contour lies on an edge of an input polyline, and that edge belongs to a piece of a
// curve. Nearly always the contour follows a piece from end to end and goes on with another that starts
// there, because the curves were cut at all their crossings before. What remains are places where
// polylines did something else than their curves: ran into each other along a common tangent, or crossed
// where two curves come too close to be told apart. There a run of edges stops somewhere on its piece and
// another starts somewhere on its own. The curves are known to meet only at ends of pieces, so the
// junction is moved to such an end if one is near; a run that this leaves without length goes. Else a
// crossing of the curves is looked for after all. If there is none, both runs end at their curves' points
// next to the place, and a straight line joins them.
#include "shaping/runs.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <optional>
#include <unordered_set>

#include "shaping/box_tree.h"
#include "shaping/curve_crossings.h"

namespace tarvex::shaping {

namespace {

constexpr double ON_EDGE = POINT_EPSILON;

double DistanceFromEdge(DPOINT p, DPOINT a, DPOINT b) {
    const DPOINT along = Minus(b, a);
    const double squared = SquaredLength(along);
    const double t = squared > 0 ? std::clamp(Dot(Minus(p, a), along) / squared, 0.0, 1.0) : 0;
    return Distance(p, Mix(a, b, t));
}

/// Part of a clipped contour on one edge of an input polyline.
struct Step {
    int ring;
    int edge;
    bool isForward;
    bool startsAtVertex;
    bool endsAtVertex;
    DPOINT from;
    DPOINT to;
};

using Steps = std::vector<Step>;

Step Backwards(const Step& s) {
    return {s.ring, s.edge, !s.isForward, s.endsAtVertex, s.startsAtVertex, s.to, s.from};
}

/// Consecutive steps on one piece.
struct Run {
    int piece;
    bool isForward;
    DPOINT from;
    DPOINT to;
    /// Parameters along the piece in the run's direction; none until the junction there is settled.
    std::optional<double> start;
    std::optional<double> end;
};

}  // namespace

// ---------------------------------------------------------------------------------------------
// Edges

class RunFinder::EdgeFinder {
  public:
    EdgeFinder(const PieceList& pieces, const VertexTable& table) : m_pieces(pieces), m_table(table) {}

    /// Appends the steps from one vertex of a contour to the next; nothing if they are not found.
    void Append(DPOINT from, DPOINT to, Steps& steps) {
        const Place u{from, m_table.points.Find(from)};
        const Place v{to, m_table.points.Find(to)};
        if (!steps.empty() && steps.back().endsAtVertex) {
            const Step& last = steps.back();
            const int vertex = last.isForward ? After(last.ring, last.edge) : last.edge;
            if (VertexPoint(last.ring, vertex) == u.point &&
                Walk({last.ring, vertex}, last.isForward, v, Wanted::Vertex, steps))
                return;
        }
        for (const Wanted wanted : {Wanted::Vertex, Wanted::Any}) {
            if (FromVertex(u, v, wanted, steps)) return;
        }
        Steps back;
        if (FromVertex(v, u, Wanted::Any, back)) {
            for (auto step = back.rbegin(); step != back.rend(); ++step) steps.push_back(Backwards(*step));
            return;
        }
        Anywhere(from, to, steps);
    }

    std::vector<Run> RunsOf(const Steps& steps) const {
        std::vector<Run> runs;
        for (const Step& step : steps) {
            const Run run = RunOf(step);
            if (!runs.empty() && IsContinued(runs.back(), run)) {
                runs.back().to = run.to;
                runs.back().end = run.end;
            } else {
                runs.push_back(run);
            }
        }
        if (runs.size() > 1 && IsContinued(runs.back(), runs.front())) {
            runs.front().from = runs.back().from;
            runs.front().start = runs.back().start;
            runs.pop_back();
        }
        return runs;
    }

    /// The longest edge of a curve's polyline; 0 for a line.
    double LongestEdge(int piece) const {
        const int course = m_pieces.pieces[static_cast<std::size_t>(piece)].course;
        if (course < 0) return 0;
        const auto& points = m_pieces.courses[static_cast<std::size_t>(course)].points;
        double longest = 0;
        for (std::size_t i = 1; points.size() > 2 && i < points.size(); ++i)
            longest = std::max(longest, Distance(points[i - 1], points[i]));
        return longest;
    }

  private:
    struct Place {
        DPOINT at;
        int point;  ///< -1: none of the input's
    };
    enum class Wanted { Vertex, Any };

    int RingSize(int ring) const {
        return static_cast<int>(m_table.rings[static_cast<std::size_t>(ring)].vertices.size());
    }
    const Vertex& VertexAt(int ring, int i) const {
        return m_table.rings[static_cast<std::size_t>(ring)].vertices[static_cast<std::size_t>(i)];
    }
    int VertexPoint(int ring, int i) const { return VertexAt(ring, i).point; }
    const DPOINT& PointOf(int ring, int i) const { return m_table.points[VertexPoint(ring, i)]; }
    int After(int ring, int i) const { return i + 1 < RingSize(ring) ? i + 1 : 0; }
    int Before(int ring, int i) const { return i > 0 ? i - 1 : RingSize(ring) - 1; }

    /// Follows a ring along the straight way from a vertex to a place. With `Wanted::Any` it may also end
    /// inside an edge.
    bool Walk(VertexTable::Occurrence at, bool isForward, const Place& to, Wanted wanted,
              Steps& steps) const {
        const std::size_t before = steps.size();
        const DPOINT start = PointOf(at.ring, at.vertex);
        for (int count = 0, n = RingSize(at.ring); count < n; ++count) {
            const int next = isForward ? After(at.ring, at.vertex) : Before(at.ring, at.vertex);
            const int edge = isForward ? at.vertex : next;
            const DPOINT p = PointOf(at.ring, at.vertex);
            const DPOINT q = PointOf(at.ring, next);
            steps.push_back({at.ring, edge, isForward, true, true, p, q});
            if (to.point >= 0 && VertexPoint(at.ring, next) == to.point) return true;
            if (wanted == Wanted::Any && DistanceFromEdge(to.at, p, q) < ON_EDGE) {
                steps.back().to = to.at;
                steps.back().endsAtVertex = false;
                return true;
            }
            if (!(DistanceFromEdge(q, start, to.at) < ON_EDGE)) break;
            at.vertex = next;
        }
        steps.resize(before);
        return false;
    }

    bool FromVertex(const Place& from, const Place& to, Wanted wanted, Steps& steps) const {
        if (from.point < 0) return false;
        for (const VertexTable::Occurrence& at : m_table.OccurrencesOf(from.point)) {
            for (const bool isForward : {true, false}) {
                if (Walk(at, isForward, to, wanted, steps)) return true;
            }
        }
        return false;
    }

    /// Both ends inside one edge: found by its box.
    void Anywhere(DPOINT from, DPOINT to, Steps& steps) {
        if (m_tree == nullptr) BuildTree();
        const Box box = Grown(BoxOf(Cubic{from, from, to, to}), ON_EDGE);
        int best = -1;
        m_tree->ForMeeting(box, [&](int i) {
            const auto [ring, edge] = m_edgeOf[static_cast<std::size_t>(i)];
            const DPOINT p = PointOf(ring, edge);
            const DPOINT q = PointOf(ring, After(ring, edge));
            const bool isOn = DistanceFromEdge(from, p, q) < ON_EDGE && DistanceFromEdge(to, p, q) < ON_EDGE;
            if (isOn && (best < 0 || i < best)) best = i;
        });
        if (best < 0) return;
        const auto [ring, edge] = m_edgeOf[static_cast<std::size_t>(best)];
        const DPOINT along = Minus(PointOf(ring, After(ring, edge)), PointOf(ring, edge));
        steps.push_back({ring, edge, Dot(Minus(to, from), along) >= 0, false, false, from, to});
    }

    void BuildTree() {
        for (int ring = 0; ring < static_cast<int>(m_table.rings.size()); ++ring) {
            for (int edge = 0; edge < RingSize(ring); ++edge) {
                const DPOINT p = PointOf(ring, edge);
                const DPOINT q = PointOf(ring, After(ring, edge));
                m_edgeOf.push_back({ring, edge});
                m_boxes.push_back(BoxOf(Cubic{p, p, q, q}));
            }
        }
        m_tree = std::make_unique<BoxTree>(m_boxes);
    }

    Run RunOf(const Step& step) const {
        const Vertex& vertex = VertexAt(step.ring, step.edge);
        const bool isFirst = vertex.isStart;
        const bool isLast = VertexAt(step.ring, After(step.ring, step.edge)).isStart;
        Run run{vertex.piece, step.isForward, step.from, step.to, std::nullopt, std::nullopt};
        if (step.startsAtVertex && (step.isForward ? isFirst : isLast)) run.start = 0;
        if (step.endsAtVertex && (step.isForward ? isLast : isFirst)) run.end = 1;
        return run;
    }

    static bool IsContinued(const Run& run, const Run& next) {
        return run.piece == next.piece && run.isForward == next.isForward && !run.end && !next.start;
    }

    const PieceList& m_pieces;
    const VertexTable& m_table;
    std::vector<VertexTable::Occurrence> m_edgeOf;
    std::vector<Box> m_boxes;
    std::unique_ptr<BoxTree> m_tree;
};

// ---------------------------------------------------------------------------------------------
// Junctions

class RunFinder::Junctions {
  public:
    Junctions(const SegmentList& list, const PieceList& pieces, const EdgeFinder& edges,
              std::vector<Run> runs)
        : m_list(list), m_pieces(pieces), m_edges(edges), m_runs(std::move(runs)) {}

    std::vector<Run> Settle() {
        const std::size_t most = 4 * m_runs.size() + 16;
        std::size_t unchanged = 0;
        std::size_t at = 0;
        for (std::size_t count = 0; count < most && unchanged < m_runs.size(); ++count) {
            at %= m_runs.size();
            const std::size_t next = (at + 1) % m_runs.size();
            if (m_runs[at].end && m_runs[next].start) {
                ++unchanged;
                ++at;
                continue;
            }
            unchanged = 0;
            SettleOne(at, next);
            if (m_runs.empty()) break;
            at = at == 0 ? m_runs.size() - 1 : at - 1;  // what is before may have changed, too
        }
        for (Run& run : m_runs) {
            if (!run.start) run.start = NearestParameter(CurveOf(run), run.from);
            if (!run.end) run.end = NearestParameter(CurveOf(run), run.to);
        }
        std::erase_if(m_runs, [](const Run& run) { return !(*run.start < *run.end); });
        return std::move(m_runs);
    }

  private:
    const Piece& PieceOfRun(const Run& run) const {
        return m_pieces.pieces[static_cast<std::size_t>(run.piece)];
    }
    int StartOf(const Run& run) const { return run.isForward ? PieceOfRun(run).start : PieceOfRun(run).end; }
    int EndOf(const Run& run) const { return run.isForward ? PieceOfRun(run).end : PieceOfRun(run).start; }

    Cubic CurveOf(const Run& run) const {
        const Piece& piece = PieceOfRun(run);
        const Segment& segment = m_list[piece.segment];
        const Cubic c = PartOf(segment.curve, piece.from, piece.to);
        return run.isForward ? c : Reversed(c);
    }

    void SettleOne(std::size_t at, std::size_t next) {
        Run& run = m_runs[at];
        Run& then = m_runs[next];
        const double reach =
            std::max({4 * m_edges.LongestEdge(run.piece), 4 * m_edges.LongestEdge(then.piece), 1e-6});
        if (MoveToEnd(at, next, reach) || MoveToCrossing(run, then, reach)) return;
        if (!run.end) run.end = NearestParameter(CurveOf(run), run.to);
        if (!then.start) then.start = NearestParameter(CurveOf(then), then.from);
    }

    /// A loop's start and end are one point; which of them a place is next to, the way along the curve tells.
    bool CanBeNearStart(const Run& run, DPOINT place) const {
        return StartOf(run) != EndOf(run) || NearestParameter(CurveOf(run), place) < 0.5;
    }

    /// Moves the junction to an end that both pieces have.
    bool MoveToEnd(std::size_t at, std::size_t next, double reach) {
        Run& run = m_runs[at];
        Run& then = m_runs[next];
        const DPOINT place = run.to;
        enum class Choice { None, Both, DropRun, DropThen, DropBoth } choice = Choice::None;
        double nearest = reach;
        const bool canBeStart = CanBeNearStart(run, place);
        const bool canBeEnd = !canBeStart || StartOf(run) != EndOf(run);
        const bool canStart = CanBeNearStart(then, place);
        const bool canEnd = !canStart || StartOf(then) != EndOf(then);
        const auto consider = [&](bool isPossible, int end, int other, Choice what) {
            const double distance = Distance(m_pieces.ends[end], place);
            if (!isPossible || end != other || !(distance < nearest)) return;
            nearest = distance;
            choice = what;
        };
        consider(canBeEnd && canStart, EndOf(run), StartOf(then), Choice::Both);
        if (at != next) {
            const bool dropsRun = !run.end && canBeStart;
            const bool dropsThen = !then.start && canEnd;
            consider(dropsRun && canStart, StartOf(run), StartOf(then), Choice::DropRun);
            consider(dropsThen && canBeEnd, EndOf(run), EndOf(then), Choice::DropThen);
            consider(dropsRun && dropsThen, StartOf(run), EndOf(then), Choice::DropBoth);
        }
        if (choice == Choice::Both) {
            run.end = 1;
            run.to = m_pieces.ends[EndOf(run)];
            then.start = 0;
            then.from = run.to;
        } else if (choice == Choice::DropRun) {
            Drop(at);
        } else if (choice == Choice::DropThen) {
            Drop(next);
        } else if (choice == Choice::DropBoth) {
            Drop(std::max(at, next));
            Drop(std::min(at, next));
        }
        return choice != Choice::None;
    }

    void Drop(std::size_t at) { m_runs.erase(m_runs.begin() + static_cast<std::ptrdiff_t>(at)); }

    bool MoveToCrossing(Run& run, Run& then, double reach) const {
        if (run.end || then.start) return false;
        const Cubic a = CurveOf(run);
        const Cubic b = CurveOf(then);
        std::vector<CurveHit> hits;
        for (const Arc& arcA : ArcsOf(a)) {
            for (const Arc& arcB : ArcsOf(b)) AppendArcHits(a, arcA, b, arcB, hits);
        }
        double nearest = reach;
        for (const CurveHit& hit : hits) {
            const double distance = Distance(hit.point, run.to);
            if (!(distance < nearest)) continue;
            nearest = distance;
            run.end = hit.s;
            then.start = hit.t;
        }
        return run.end.has_value();
    }

    const SegmentList& m_list;
    const PieceList& m_pieces;
    const EdgeFinder& m_edges;
    std::vector<Run> m_runs;
};

// ---------------------------------------------------------------------------------------------

RunFinder::RunFinder(const SegmentList& list, const PieceList& pieces, const VertexTable& table)
    : m_list(list), m_pieces(pieces), m_edges(std::make_unique<EdgeFinder>(pieces, table)) {}

RunFinder::~RunFinder() = default;

std::vector<Stretch> RunFinder::StretchesOf(std::span<const DPOINT> contour) {
    Steps steps;
    for (std::size_t i = 0; i < contour.size(); ++i)
        m_edges->Append(contour[i], contour[i + 1 < contour.size() ? i + 1 : 0], steps);
    const std::vector<Run> runs = Junctions(m_list, m_pieces, *m_edges, m_edges->RunsOf(steps)).Settle();
    std::vector<Stretch> stretches;
    for (const Run& run : runs) {
        const Piece& piece = m_pieces.pieces[static_cast<std::size_t>(run.piece)];
        const auto parameter = [&piece](double along) {
            if (along == 0) return piece.from;
            return along == 1 ? piece.to : piece.from + (piece.to - piece.from) * along;
        };
        const double from = parameter(run.isForward ? *run.start : 1 - *run.start);
        const double to = parameter(run.isForward ? *run.end : 1 - *run.end);
        const bool isJoined = !stretches.empty() && stretches.back().segment == piece.segment &&
                              stretches.back().to == from &&
                              (stretches.back().from < stretches.back().to) == run.isForward;
        if (isJoined) {
            stretches.back().to = to;
        } else {
            stretches.push_back({piece.segment, from, to});
        }
    }
    if (stretches.size() > 1) {
        Stretch& first = stretches.front();
        const Stretch& last = stretches.back();
        if (last.segment == first.segment && last.to == first.from &&
            (last.from < last.to) == (first.from < first.to)) {
            first.from = last.from;
            stretches.pop_back();
        }
    }
    return stretches;
}

std::vector<std::vector<Stretch>> RunFinder::LoopsOf(std::span<const DPOINT> contour) {
    std::vector<std::vector<Stretch>> loops;
    std::vector<Stretch> path;
    std::vector<int> starts;  // the numbers of their points
    std::unordered_set<int> passed;
    for (const Stretch& stretch : StretchesOf(contour)) {
        const int start = m_pieces.ends.Find(PointAt(m_list[stretch.segment].curve, stretch.from));
        if (start >= 0 && !passed.insert(start).second) {
            const auto again = std::find(starts.begin(), starts.end(), start);
            const auto from = path.begin() + (again - starts.begin());
            loops.emplace_back(from, path.end());
            for (auto other = again + 1; other != starts.end(); ++other) passed.erase(*other);
            path.erase(from, path.end());
            starts.erase(again, starts.end());
        }
        path.push_back(stretch);
        starts.push_back(start);
    }
    if (!path.empty()) loops.push_back(std::move(path));
    return loops;
}

}  // namespace tarvex::shaping
