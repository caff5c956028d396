// Junctions: which skeleton lines meet, which of them run straight through, and where the others are cut off.
//
// A junction of the shape is not one cell of the line matrix: thinning leaves clusters of anchors a few cells
// apart. So lines count as meeting at an anchor when their ends lie within a small distance of it, and every
// anchor of a cluster may make its own cut in one sweep; cuts that coincide do no harm.
//
// The anchors are listed once a pass, in scan order, as the matrix does not change between.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <set>

#include "breakup/outline_index.h"
#include "core/rounding.h"
#include "raster/line_tracer.h"
#include "tarvex/breakup.h"
#include "tarvex/lines.h"
#include "tarvex/polygons.h"

namespace tarvex {
namespace {

using Points = std::vector<POINT>;

constexpr int kLeastPoints = 4;  ///< of a line worth keeping

double Distance(POINT a, POINT b) {
    return std::hypot(static_cast<double>(a.x) - b.x, static_cast<double>(a.y) - b.y);
}

int Side(POINT p, POINT from, POINT to) { return GetHalfPlane(p.x, p.y, from.x, from.y, to.x, to.y); }

bool Same(POINT a, POINT b) { return a.x == b.x && a.y == b.y; }

/// Whether one is the other backwards: the same line, seen from both ends.
bool IsReverse(const Points& a, const Points& b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.rbegin(), Same);
}

double LengthOf(const Points& line) {
    double length = 0;
    for (std::size_t i = 1; i < line.size(); ++i) length += Distance(line[i - 1], line[i]);
    return length;
}

struct Pair {
    std::size_t first;
    std::size_t second;
};

/// Among the loops the longest one; none when no line leaves and comes back.
std::optional<Pair> LongestLoop(const std::vector<Points>& branches, double closeDist) {
    std::optional<Pair> longest;
    double length = 0;
    for (std::size_t a = 0; a < branches.size(); ++a) {
        for (std::size_t b = a + 1; b < branches.size(); ++b) {
            if (static_cast<double>(branches[a].size()) <= closeDist) continue;
            if (!IsReverse(branches[a], branches[b])) continue;
            const double candidate = LengthOf(branches[a]);
            if (longest && candidate <= length) continue;
            longest = Pair{a, b};
            length = candidate;
        }
    }
    return longest;
}

/// The two branches whose directions pass nearest to the centre. There are at least two.
Pair StraightestPair(POINT centre, const Points& directions) {
    Pair best{0, 1};
    double nearest = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < directions.size(); ++i) {
        for (std::size_t j = i + 1; j < directions.size(); ++j) {
            const double distance = GetDistanceFromLine(directions[i].x, directions[i].y, directions[j].x,
                                                        directions[j].y, centre.x, centre.y);
            if (!(distance < nearest)) continue;
            nearest = distance;
            best = {i, j};
        }
    }
    return best;
}

/// Sorts branches by the angle from the first direction, and their directions with them.
void SortByAngle(POINT centre, std::vector<Points>& branches, Points& directions) {
    std::vector<double> angles;
    for (const POINT& p : directions) {
        double angle = GetLinesAngle(directions[0].x, directions[0].y, centre.x, centre.y, p.x, p.y);
        while (angle < 0) angle += 2 * std::numbers::pi;
        angles.push_back(angle);
    }
    for (std::size_t i = 0; i < angles.size(); ++i) {
        for (std::size_t j = i + 1; j < angles.size(); ++j) {
            if (!(angles[j] < angles[i])) continue;
            std::swap(angles[i], angles[j]);
            std::swap(branches[i], branches[j]);
            std::swap(directions[i], directions[j]);
        }
    }
}

}  // namespace

void CAutoBreakUp::ListAnchors() {
    m_anchors.clear();
    const CByteMatrix& cells = mat();
    for (int y = 0; y < cells.SizeY(); ++y) {
        int x = -1;
        for (const unsigned char cell : cells.Row(y)) {
            ++x;
            if (cell == IMGPROC_ANCHOR) m_anchors.push_back({{x, y}, CountPointPaths(x, y) != 1});
        }
    }
}

bool CAutoBreakUp::IsFreeEnd(POINT p) const { return CountNeighbours(mat(), p.x, p.y) == 1; }

int CAutoBreakUp::CountCloseAnchors(const CArray<POINT, POINT>& line) const {
    if (line.GetSize() < kLeastPoints) return 1;
    const POINT front = line[0];
    const POINT back = line[line.GetUpperBound()];
    std::optional<POINT> counted;
    for (const Anchor& anchor : m_anchors) {
        if (!anchor.isJunction) continue;
        if (counted && Distance(anchor.at, *counted) < m_closeDist) continue;
        if (Distance(anchor.at, front) > m_closeDist && Distance(anchor.at, back) > m_closeDist) continue;
        if (counted) return 2;
        counted = anchor.at;
    }
    if (!counted) return 0;
    return IsFreeEnd(front) != IsFreeEnd(back) ? 1 : 0;
}

void CAutoBreakUp::FilterSmallLines() {
    ListAnchors();
    std::vector<int> skipped;
    for (int i = 0; i < m_lines.GetCount(); ++i) {
        const auto& line = m_lines[i];
        if (line.GetSize() < kLeastPoints || (line.GetSize() < m_shortLine && CountCloseAnchors(line) == 1))
            skipped.push_back(i);
    }
    DeleteSkippedLines(skipped);
}

void CAutoBreakUp::DeleteSkippedLines(std::vector<int>& skipped) {
    std::set<int> chosen(skipped.begin(), skipped.end());
    skipped.clear();
    if (chosen.empty()) return;
    const int count = m_lines.GetCount();
    if (chosen.size() == static_cast<std::size_t>(count)) {
        if (count == 1) return;
        chosen.erase(chosen.begin());
    }
    CPolyPolyPoint kept;
    kept.SetSize(count);
    int used = 0;
    for (int i = 0; i < count; ++i) {
        if (chosen.contains(i)) continue;
        auto line = std::make_unique<CArray<POINT, POINT>>(std::move(m_lines[i]));
        kept.SetAt(used++, line.release());
    }
    kept.SetSize(used);
    m_lines = std::move(kept);
}

bool CAutoBreakUp::ReduceCrossLines() {
    m_cutOk = true;
    int cuts = 0;
    ListAnchors();
    std::vector<int> skipped;
    for (const Anchor& anchor : m_anchors) {
        const std::vector<Points> branches = GatherBranches(anchor.at, skipped);
        if (branches.size() > 2) {
            if (!CutOneLine(branches)) {
                m_cutOk = false;
                return false;
            }
            ++cuts;
            if (m_oneCutPerPass) return true;
        }
        DeleteSkippedLines(skipped);
    }
    return cuts > 0;
}

/// The lines that leave a junction, each from there outwards, a loop twice. Notes the lines to drop: spurs
/// that stay near the junction, and those of a single point.
std::vector<Points> CAutoBreakUp::GatherBranches(POINT junction, std::vector<int>& skipped) const {
    std::vector<Points> branches;
    for (int i = 0; i < m_lines.GetCount(); ++i) {
        const auto& line = m_lines[i];
        if (line.GetSize() < 2) {
            skipped.push_back(i);
            continue;
        }
        const bool staysNear = std::all_of(
            line.begin(), line.end(), [&](const POINT& p) { return Distance(p, junction) <= m_shortLine; });
        if (staysNear && CountCloseAnchors(line) == 1) {
            skipped.push_back(i);
            continue;
        }
        if (Distance(line[0], junction) <= m_closeDist) branches.emplace_back(line.begin(), line.end());
        if (Distance(line[line.GetUpperBound()], junction) <= m_closeDist) {
            branches.emplace_back(line.begin(), line.end());
            std::reverse(branches.back().begin(), branches.back().end());
        }
    }
    return branches;
}

bool CAutoBreakUp::CutOneLine(const std::vector<Points>& branches) {
    double sumX = 0, sumY = 0;
    int count = 0;
    Points directions;
    std::vector<Points> kept;
    for (const Points& branch : branches) {
        if (branch.empty()) continue;
        sumX += branch.front().x;
        sumY += branch.front().y;
        ++count;
        const auto ahead = std::min(static_cast<std::size_t>(m_lookAhead), branch.size() - 1);
        directions.push_back(branch[ahead]);
        kept.push_back(branch);
    }
    if (count == 0) return false;
    const POINT centre{RoundToInt(sumX / count), RoundToInt(sumY / count)};
    return ReduceCrossPoint(std::move(kept), centre, std::move(directions));
}

bool CAutoBreakUp::ReduceCrossPoint(std::vector<Points> branches, POINT centre,
                                    std::vector<POINT> directions) {
    if (branches.size() < 3) return false;
    SortByAngle(centre, branches, directions);
    const auto loop = LongestLoop(branches, m_closeDist);
    const Pair through = loop ? *loop : StraightestPair(centre, directions);
    std::size_t cut = 0;
    while (cut == through.first || cut == through.second) ++cut;
    return CutBranch(centre, directions, static_cast<int>(cut));
}

bool CAutoBreakUp::CutBranch(POINT centre, const std::vector<POINT>& directions, int branch) {
    const int count = static_cast<int>(directions.size());
    const auto direction = [&directions, count](int i) {
        return directions[static_cast<std::size_t>((i + count) % count)];
    };
    const POINT at = direction(branch);
    const POINT before = direction(branch - 1);
    const POINT after = direction(branch + 1);
    const auto first =
        FindClosestPoint(centre, before, Side(at, centre, before), at, Side(before, centre, at));
    const auto second = FindClosestPoint(centre, at, Side(after, centre, at), after, Side(at, centre, after));
    if (!first || !second) return false;
    m_cutLines.push_back(
        {RoundToInt(first->x), RoundToInt(first->y), RoundToInt(second->x), RoundToInt(second->y)});
    return true;
}

std::optional<DPOINT> CAutoBreakUp::FindClosestPoint(POINT centre, POINT a, int sideA, POINT b,
                                                     int sideB) const {
    if (!m_index) return std::nullopt;
    return m_index->Nearest(centre, [&](const DPOINT& p) {
        return GetHalfPlane(p.x, p.y, centre.x, centre.y, a.x, a.y) == sideA &&
               GetHalfPlane(p.x, p.y, centre.x, centre.y, b.x, b.y) == sideB;
    });
}

}  // namespace tarvex
