// Polygon sets of the kinds that break clippers, made from a seed.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "support/clip_oracle.h"

namespace tarvex::test {

struct ClipCase {
    ContourSet subject;
    ContourSet clip;
};

class ClipCases {
  public:
    explicit ClipCases(std::uint32_t seed) : m_random(seed) {}

    /// Whole coordinates from 0 to 16: everything meets everything.
    ClipCase OnGrid() {
        const int size = Between(2, 16);
        return {Random(size), Random(size)};
    }

    /// Any kind.
    ClipCase Any() {
        ClipCase made{OneKind(), OneKind()};
        switch (Between(0, 7)) {
            case 0:
                made.clip = made.subject;
                [[fallthrough]];
            case 1:
                Jitter(made.clip);
                break;
            case 2:
                made.clip = Turned(made.subject, Uniform() * 6.3);
                break;
            case 3:
                Jitter(made.subject);
                made.clip = Turned(made.subject, 1e-15 * Between(1, 9));
                break;
            case 4:
                MoveAll(made, Turned, 0.3);
                break;
            case 5:
                MoveAll(made, Scaled, std::ldexp(Uniform(), Between(-60, 60)));
                break;
            default:
                break;
        }
        return made;
    }

    int Between(int least, int most) {
        return least + static_cast<int>(m_random() % static_cast<unsigned>(most - least + 1));
    }
    double Uniform() { return static_cast<double>(m_random()) / 4294967296.0; }

  private:
    ContourSet OneKind() {
        switch (Between(0, 9)) {
            case 0:
                return Random(Between(2, 16));
            case 1:
                return Scaled(Random(Between(2, 16)), 0.1);
            case 2:
                return Free();
            case 3:
                return {Comb()};
            case 4:
                return {Star(Between(3, 24), Between(1, 11))};
            case 5:
                return Spirals();
            case 6:
                return Slivers();
            case 7:
                return BowTies();
            case 8:
                return MixedScales();
            default:
                return Nested();
        }
    }

    ContourSet Random(int size) {
        ContourSet set(static_cast<std::size_t>(Between(1, 3)));
        for (auto& contour : set) {
            contour.resize(static_cast<std::size_t>(Between(3, 9)));
            for (DPOINT& p : contour) p = {double(Between(0, size)), double(Between(0, size))};
        }
        return set;
    }
    ContourSet Free() {
        ContourSet set = Random(10);
        for (auto& contour : set)
            for (DPOINT& p : contour) p = {10 * Uniform(), 10 * Uniform()};
        return set;
    }
    std::vector<DPOINT> Comb() {
        std::vector<DPOINT> comb{{16, -1}, {0, -1}};
        for (int i = 0; i < 16; i += 2) {
            comb.push_back({double(i), double(Between(4, 12))});
            comb.push_back({double(i + 1), double(Between(0, 4))});
        }
        if (Between(0, 1) == 1)
            for (DPOINT& p : comb) std::swap(p.x, p.y);
        return comb;
    }
    /// Every edge of an even star with the widest step passes through the centre.
    std::vector<DPOINT> Star(int corners, int step) {
        std::vector<DPOINT> star;
        for (int i = 0; i < corners; ++i) {
            const double angle = 2 * std::acos(-1.0) * i * step / corners;
            star.push_back({8 + 8 * std::cos(angle), 8 + 8 * std::sin(angle)});
        }
        return star;
    }
    /// Two arms that share their edges from end to end.
    ContourSet Spirals() {
        std::vector<DPOINT> inner, middle, outer;
        const int steps = Between(4, 20);
        for (int i = 0; i < steps; ++i) {
            const double angle = 0.7 * i;
            const double radius = 1 + 0.3 * i;
            inner.push_back({radius * std::cos(angle), radius * std::sin(angle)});
            middle.push_back({(radius + 1) * std::cos(angle), (radius + 1) * std::sin(angle)});
            outer.push_back({(radius + 2) * std::cos(angle), (radius + 2) * std::sin(angle)});
        }
        const auto band = [](std::vector<DPOINT> there, const std::vector<DPOINT>& back) {
            there.insert(there.end(), back.rbegin(), back.rend());
            return there;
        };
        return {band(inner, middle), band(middle, outer)};
    }
    ContourSet Slivers() {
        ContourSet set;
        for (int i = Between(1, 6); i > 0; --i) {
            const DPOINT a{10 * Uniform(), 10 * Uniform()};
            const DPOINT b{10 * Uniform(), 10 * Uniform()};
            const double width = std::ldexp(1.0, -Between(10, 52));
            set.push_back({a, b, {a.x + width * (b.y - a.y), a.y - width * (b.x - a.x)}});
        }
        return set;
    }
    ContourSet BowTies() {
        ContourSet set;
        for (int i = Between(1, 4); i > 0; --i) {
            const double x = Between(0, 8), y = Between(0, 8), w = Between(1, 8), h = Between(1, 8);
            set.push_back({{x, y}, {x + w, y + h}, {x + w, y}, {x, y + h}});
        }
        return set;
    }
    ContourSet MixedScales() {
        ContourSet set = Random(12);
        for (auto& contour : set)
            for (DPOINT& p : contour)
                p = {p.x * (Between(0, 2) == 0 ? 1e12 : 1e-9), p.y * (Between(0, 2) == 0 ? 1e12 : 1e-9)};
        return set;
    }
    ContourSet Nested() {
        ContourSet set;
        for (int i = Between(1, 6); i > 0; --i) {
            const double s = Between(1, 8);
            set.push_back({{8 - s, 8 - s}, {8 + s, 8 - s}, {8 + s, 8 + s}, {8 - s, 8 + s}});
        }
        return set;
    }

    void Jitter(ContourSet& set) {
        for (auto& contour : set) {
            for (DPOINT& p : contour) {
                if (Between(0, 3) == 0) p.x = std::nextafter(p.x, Between(0, 1) == 0 ? -1e300 : 1e300);
                if (Between(0, 3) == 0) p.y = std::nextafter(p.y, Between(0, 1) == 0 ? -1e300 : 1e300);
            }
        }
    }
    static ContourSet Turned(ContourSet set, double angle) {
        for (auto& contour : set)
            for (DPOINT& p : contour)
                p = {p.x * std::cos(angle) - p.y * std::sin(angle),
                     p.x * std::sin(angle) + p.y * std::cos(angle)};
        return set;
    }
    static ContourSet Scaled(ContourSet set, double factor) {
        for (auto& contour : set)
            for (DPOINT& p : contour) p = {p.x * factor, p.y * factor};
        return set;
    }
    template <class Move>
    static void MoveAll(ClipCase& made, Move&& move, double by) {
        made.subject = move(std::move(made.subject), by);
        made.clip = move(std::move(made.clip), by);
    }

    std::mt19937 m_random;
};

/// The area about which a result may be wrong: a billionth of the largest contour's box, and what the
/// rounding of coordinates does along the boxes' sides.
inline double AreaSlack(const ClipCase& clipCase) {
    double slack = 0;
    for (const ContourSet* set : {&clipCase.subject, &clipCase.clip}) {
        for (const auto& contour : *set) {
            double left = INFINITY, right = -INFINITY, bottom = INFINITY, top = -INFINITY, far = 0;
            for (const DPOINT& p : contour) {
                left = std::min(left, p.x), right = std::max(right, p.x);
                bottom = std::min(bottom, p.y), top = std::max(top, p.y);
                far = std::max({far, std::fabs(p.x), std::fabs(p.y)});
            }
            const double rounding =
                100 * std::numeric_limits<double>::epsilon() * far * (right - left + top - bottom);
            slack = std::max(slack, 1e-9 * (right - left) * (top - bottom) + rounding);
        }
    }
    return slack;
}

}  // namespace tarvex::test
