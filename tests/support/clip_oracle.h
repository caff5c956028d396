// What a clip must give, found the slow and obvious way: the plane is cut into slabs at every vertex and
// every crossing, so that in a slab no two edges cross, and the edges across each slab are sorted. In
// fractions for small whole coordinates, where nothing rounds; in long doubles for everything else,
// where a wrong order could only be one of edges that are next to nothing apart.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <utility>
#include <vector>

#include "tarvex/records.h"

namespace tarvex::test {

using ContourSet = std::vector<std::vector<DPOINT>>;

/// An exact number; 64 bits are enough for slabs between coordinates up to 16.
struct Fraction {
    std::int64_t over = 0;
    std::int64_t under = 1;

    Fraction() = default;
    Fraction(std::int64_t n, std::int64_t d = 1) : over(d < 0 ? -n : n), under(d < 0 ? -d : d) {
        const std::int64_t common = std::gcd(over, under);
        if (common > 1) over /= common, under /= common;
    }
    friend Fraction operator+(Fraction a, Fraction b) {
        return {a.over * b.under + b.over * a.under, a.under * b.under};
    }
    friend Fraction operator-(Fraction a, Fraction b) {
        return {a.over * b.under - b.over * a.under, a.under * b.under};
    }
    friend Fraction operator*(Fraction a, Fraction b) { return {a.over * b.over, a.under * b.under}; }
    friend Fraction operator/(Fraction a, Fraction b) { return {a.over * b.under, a.under * b.over}; }
    friend bool operator<(Fraction a, Fraction b) { return a.over * b.under < b.over * a.under; }
    friend bool operator==(Fraction a, Fraction b) { return a.over == b.over && a.under == b.under; }
    explicit operator double() const { return static_cast<double>(over) / static_cast<double>(under); }
};

inline bool CombinedInside(int op, bool inSubject, bool inClip) {
    const bool results[] = {inSubject && !inClip, inSubject && inClip, inSubject != inClip,
                            inSubject || inClip};
    return results[op];
}

template <class Number>
class SlabOracle {
  public:
    SlabOracle(const ContourSet& subject, const ContourSet& clip) {
        Add(subject, 1);
        Add(clip, 2);
        for (std::size_t i = 0; i < m_edges.size(); ++i)
            for (std::size_t j = i + 1; j < m_edges.size(); ++j) AddCrossing(m_edges[i], m_edges[j]);
        std::sort(m_heights.begin(), m_heights.end());
        m_heights.erase(std::unique(m_heights.begin(), m_heights.end()), m_heights.end());
    }

    double Area(int op) const {
        double area = 0;
        for (std::size_t i = 0; i + 1 < m_heights.size(); ++i)
            area += SlabArea(op, m_heights[i], m_heights[i + 1]);
        return area;
    }

  private:
    struct Edge {
        Number ax, ay, bx, by;  // ay < by
        int bit;
    };

    static Number Convert(double v) {
        if constexpr (std::is_same_v<Number, Fraction>)
            return Fraction(static_cast<std::int64_t>(v));
        else
            return static_cast<Number>(v);
    }

    void Add(const ContourSet& set, int bit) {
        for (const auto& contour : set) {
            for (std::size_t i = 0; i < contour.size(); ++i) {
                DPOINT a = contour[i];
                DPOINT b = contour[(i + 1) % contour.size()];
                if (b.y < a.y) std::swap(a, b);
                m_heights.push_back(Convert(a.y));
                m_heights.push_back(Convert(b.y));
                if (a.y != b.y)
                    m_edges.push_back({Convert(a.x), Convert(a.y), Convert(b.x), Convert(b.y), bit});
            }
        }
    }

    void AddCrossing(const Edge& e, const Edge& f) {
        const Number ex = e.bx - e.ax, ey = e.by - e.ay, fx = f.bx - f.ax, fy = f.by - f.ay;
        const Number turn = ex * fy - ey * fx;
        if (turn == Number(0)) return;
        const Number height = e.ay + ey * (((f.ax - e.ax) * fy - (f.ay - e.ay) * fx) / turn);
        if (std::max(e.ay, f.ay) < height && height < std::min(e.by, f.by)) m_heights.push_back(height);
    }

    double SlabArea(int op, Number low, Number high) const {
        const Number middle = (low + high) / Number(2);
        std::vector<std::pair<Number, int>> across;
        for (const Edge& e : m_edges) {
            if (!(low < e.ay) && !(e.by < high))
                across.emplace_back(e.ax + (middle - e.ay) * ((e.bx - e.ax) / (e.by - e.ay)), e.bit);
        }
        std::sort(across.begin(), across.end(),
                  [](const auto& a, const auto& b) { return a.first < b.first; });
        double width = 0;
        int inside = 0;
        for (std::size_t i = 0; i + 1 < across.size(); ++i) {
            inside ^= across[i].second;
            if (CombinedInside(op, (inside & 1) != 0, (inside & 2) != 0))
                width += static_cast<double>(across[i + 1].first - across[i].first);
        }
        return width * static_cast<double>(high - low);
    }

    std::vector<Edge> m_edges;
    std::vector<Number> m_heights;
};

/// The even-odd rule by a ray to the right.
inline bool IsInside(const ContourSet& set, const DPOINT& p) {
    bool inside = false;
    for (const auto& contour : set) {
        for (std::size_t i = 0; i < contour.size(); ++i) {
            const DPOINT& a = contour[i];
            const DPOINT& b = contour[(i + 1) % contour.size()];
            if ((a.y <= p.y) != (b.y <= p.y) && p.x < a.x + (p.y - a.y) / (b.y - a.y) * (b.x - a.x))
                inside = !inside;
        }
    }
    return inside;
}

}  // namespace tarvex::test
