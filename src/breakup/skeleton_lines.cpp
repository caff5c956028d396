// After the last pass: joining skeleton lines that the cuts or the tracing broke apart, and finding in each
// line the pixel from which its region is traced.
#include <cmath>
#include <cstdint>

#include "core/append.h"
#include "core/rounding.h"
#include "tarvex/breakup.h"
#include "tarvex/polygons.h"

namespace tarvex {
namespace {

using Line = CArray<POINT, POINT>;

double Distance(POINT a, POINT b) {
    return std::hypot(static_cast<double>(a.x) - b.x, static_cast<double>(a.y) - b.y);
}

POINT EndOf(const Line& line, bool atFront) { return line[atFront ? 0 : line.GetUpperBound()]; }

/// Appends the line, backwards if asked for.
void Append(Line& to, const Line& line, bool backwards) {
    const int old = to.GetSize();
    AppendAll(to, {line.GetData(), static_cast<std::size_t>(line.GetSize())});
    if (backwards) std::reverse(to.begin() + old, to.end());
}

}  // namespace

void CAutoBreakUp::FilterSkelLines() {
    for (bool joined = true; joined;) {
        const bool atBacks = JoinFrom(false);
        const bool atFronts = JoinFrom(true);
        joined = atBacks || atFronts;
    }
}

/// One sweep that compares one end of every line with both ends of all later ones.
bool CAutoBreakUp::JoinFrom(bool atFront) {
    bool joined = false;
    for (int i = 0; i + 1 < m_lines.GetCount();) {
        std::vector<LineEnd> group;
        if (!m_lines[i].IsEmpty()) {
            const POINT end = EndOf(m_lines[i], atFront);
            for (int j = i + 1; j < m_lines.GetCount(); ++j) {
                if (m_lines[j].IsEmpty()) continue;
                for (const bool other : {false, true}) {
                    const POINT p = EndOf(m_lines[j], other);
                    if (Distance(end, p) > m_closeDist || !IsBridged(end, p)) continue;
                    group.push_back({j, other});
                    break;
                }
            }
        }
        if (group.empty()) {
            ++i;
            continue;
        }
        group.insert(group.begin(), {i, atFront});
        ReduceSkelLines(group);  // leaves fewer lines, so this ends
        joined = true;
    }
    return joined;
}

/// Whether the straight way lies on the shape: sampled twice a pixel, the last sample left out.
bool CAutoBreakUp::IsBridged(POINT a, POINT b) const {
    BITMAP work{};
    if (GetObject(m_hWorkBitmap, static_cast<int>(sizeof work), &work) == 0) return false;
    const double steps = 2 * Distance(a, b);
    if (steps <= 1) return true;
    for (double t = 0; t < steps; ++t) {
        const int x = RoundToInt(a.x + t * (b.x - a.x) / steps);
        const int y = RoundToInt(a.y + t * (b.y - a.y) / steps);
        if (!GetPixel(work, x, y)) return false;
    }
    return true;
}

bool CAutoBreakUp::ReduceSkelLines(const std::vector<LineEnd>& group) {
    if (group.size() < 2) return false;
    const auto lengthOf = [this](const LineEnd& end) { return GetPolylineLength(m_lines[end.line]); };
    std::size_t longest = 0;
    for (std::size_t k = 1; k < group.size(); ++k) {
        if (lengthOf(group[k]) > lengthOf(group[longest])) longest = k;
    }
    std::size_t second = longest == 0 ? 1 : 0;
    for (std::size_t k = second + 1; k < group.size(); ++k) {
        if (k != longest && lengthOf(group[k]) > lengthOf(group[second])) second = k;
    }
    auto joined = std::make_unique<Line>();
    Append(*joined, m_lines[group[longest].line], group[longest].atFront);
    Append(*joined, m_lines[group[second].line], !group[second].atFront);
    const int place = group[longest].line;
    for (const LineEnd& end : group) m_lines[end.line].RemoveAll();
    m_lines.SetAt(place, joined.release());
    for (int i = m_lines.GetUpperBound(); i >= 0; --i) {
        if (m_lines[i].IsEmpty()) m_lines.RemoveAt(i);
    }
    return true;
}

std::pair<bool, POINT> CAutoBreakUp::MakeAutoTracePoint(const CArray<POINT, POINT>& line) const {
    if (line.IsEmpty()) return {false, POINT{0, 0}};
    BITMAP work{};
    GetObject(m_hWorkBitmap, static_cast<int>(sizeof work), &work);
    const auto isWhollySet = [&work](const POINT& p) {
        for (int dy = -1; dy <= 1; ++dy) {
            for (int dx = -1; dx <= 1; ++dx) {
                if (!GetPixel(work, p.x + dx, p.y + dy)) return false;
            }
        }
        return true;
    };
    for (const POINT& p : line) {
        if (isWhollySet(p)) return {true, p};
    }
    return {false, line[0]};
}

}  // namespace tarvex
