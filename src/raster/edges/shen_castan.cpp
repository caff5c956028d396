// Shen and Castan's detector.
//
// The optimal filter for a step in noise is a symmetric exponential. Unlike a
// Gaussian it runs as two recursions, one down and one up, with two products a
// pixel, however wide it is:
//     forth(i) = b forth(i - 1) + (1 - b)/(1 + b) level(i),
//     back(i)  = b back(i + 1) + b (1 - b)/(1 + b) level(i),   smoothed(i) =
//     forth(i) + back(i + 1).
// Smoothed less plain levels are proportional to the second derivative with the
// finest detail left out, so edges are where that changes its sign between two
// neighbours, and where the smoothed levels rise towards the side on which it
// is negative: the other changes of sign lie where the slope is least. Of the
// two pixels the left or the upper one is taken.
//
// A difference between two neighbours is mostly noise. The strength is
// therefore that of the means of the smoothed levels on both sides, over a
// window in which the sign tells the sides apart, divided by what an ideal step
// of one level gives.
#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <utility>

#include "raster/edges/edge_map.h"
#include "raster/edges/float_lanes.h"

namespace tarvex {
namespace {

constexpr double kSteepness = 0.6;
constexpr double kNarrow = 0.41421356;  ///< tangent of 22.5 degrees: within it a row or a column is nearest
constexpr std::size_t kReach = 3;       ///< of the window on either side
constexpr std::size_t kWindow = 2 * kReach;  ///< what it has beside the pixel itself

/// The filter's decay from pixel to pixel, for a filter of this standard
/// deviation.
double DecayFor(double sigma) {
    // The variance is 2b / (1 - b)^2.
    const double m = 1 + 1 / (sigma * sigma);
    return m - std::sqrt(m * m - 1);
}

struct Plane {
    int width;
    int height;
    std::unique_ptr<float[]> cells;
    Plane(int w, int h)
        : width(w),
          height(h),
          cells(std::make_unique_for_overwrite<float[]>(static_cast<std::size_t>(w) *
                                                        static_cast<std::size_t>(h))) {}
    float* Row(int y) { return cells.get() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width); }
    const float* Row(int y) const {
        return cells.get() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
    }
};

/// The two recursions' factors, and where they start so that the border's
/// levels go on for ever.
struct Exponential {
    float decay;
    float forth;
    float back;
    float forthStart;
    float backStart;
    explicit Exponential(double b)
        : decay(static_cast<float>(b)),
          forth(static_cast<float>((1 - b) / (1 + b))),
          back(static_cast<float>(b * (1 - b) / (1 + b))),
          forthStart(static_cast<float>(1 / (1 + b))),
          backStart(static_cast<float>(b / (1 + b))) {}
};

/// Smooths each column of `in`, all columns of a row at a time.
void SmoothColumns(const Plane& in, const Exponential& e, Plane& out) {
    const int n = in.width;
    std::vector<float> state(in.Row(0), in.Row(0) + n);
    for (float& s : state) s *= e.forthStart;
    for (int y = 0; y < in.height; ++y) {
        const float* const from = in.Row(y);
        float* const to = out.Row(y);
        for (int x = 0; x < n; ++x) {
            const auto i = static_cast<std::size_t>(x);
            state[i] = e.decay * state[i] + e.forth * from[x];
            to[x] = state[i];
        }
    }
    const float* const last = in.Row(in.height - 1);
    for (int x = 0; x < n; ++x) state[static_cast<std::size_t>(x)] = last[x] * e.backStart;
    for (int y = in.height - 1; y >= 0; --y) {
        const float* const from = in.Row(y);
        float* const to = out.Row(y);
        for (int x = 0; x < n; ++x) {
            const auto i = static_cast<std::size_t>(x);
            to[x] += state[i];
            state[i] = e.decay * state[i] + e.back * from[x];
        }
    }
}

/// Smooths `kRows` rows of `plane` in place, from row y on: a recursion waits for its own last value, and
/// several take no longer than one. `back` has room for them all and a pixel more for each.
template <int kRows>
void SmoothSomeRows(Plane& plane, int y, const Exponential& e, std::vector<float>& back) {
    const auto n = static_cast<std::size_t>(plane.width);
    std::array<float*, kRows> rows;
    std::array<float, kRows> state;
    for (std::size_t k = 0; k < kRows; ++k) {
        rows[k] = plane.Row(y + static_cast<int>(k));
        state[k] = rows[k][n - 1] * e.backStart;
        back[n * kRows + k] = state[k];
    }
    for (std::size_t x = n; x-- > 0;) {
        for (std::size_t k = 0; k < kRows; ++k) {
            state[k] = e.decay * state[k] + e.back * rows[k][x];
            back[x * kRows + k] = state[k];
        }
    }
    for (std::size_t k = 0; k < kRows; ++k) state[k] = rows[k][0] * e.forthStart;
    for (std::size_t x = 0; x < n; ++x) {
        for (std::size_t k = 0; k < kRows; ++k) {
            state[k] = e.decay * state[k] + e.forth * rows[k][x];
            rows[k][x] = state[k] + back[(x + 1) * kRows + k];
        }
    }
}

/// Smooths each row of `plane` in place.
void SmoothRows(Plane& plane, const Exponential& e) {
    constexpr int some = 4;
    std::vector<float> back(some * (static_cast<std::size_t>(plane.width) + 1));
    int y = 0;
    for (; y + some <= plane.height; y += some) SmoothSomeRows<some>(plane, y, e, back);
    for (; y < plane.height; ++y) SmoothSomeRows<1>(plane, y, e, back);
}

/// The difference of means that the window sees at an ideal step of 1, just
/// left of it.
float StepDifference(double b) {
    double low = 0;
    double high = 0;
    constexpr int reach = kReach;
    for (int i = 0; i <= reach; ++i) low += std::pow(b, i + 1) / (1 + b) / (reach + 1);
    for (int i = 0; i < reach; ++i) high += (1 - std::pow(b, i + 1) / (1 + b)) / reach;
    return static_cast<float>(high - low);
}

/// The means on both sides of a border, over the window around each pixel of a row.
///
/// Which side a pixel belongs to is anybody's guess, and every third may be asked for where there is noise.
/// So the window's columns are summed for the whole row, both sides at once and without branches, and then
/// seven of those for every pixel.
class SideSums {
  public:
    SideSums(const Plane& smoothed, const Plane& laplacian)
        : m_smoothed(smoothed),
          m_laplacian(laplacian),
          m_bright(static_cast<std::size_t>(smoothed.width) + kWindow),
          m_dark(m_bright.size()),
          m_brightCount(m_bright.size()),
          m_darkCount(m_bright.size()),
          m_all(static_cast<std::size_t>(smoothed.width)) {}

    /// Writes the differences of the means as strengths, `scale` times as high, where `strengths` is 1, and
    /// leaves it 0 where it is.
    void WriteStrengths(int y, float scale, std::uint16_t* strengths) {
        SumColumns(y);
        const std::size_t width = m_all.size();
        ForLanes(0, width, [&](auto lanes, std::size_t x) {
            using Lanes = decltype(lanes);
            const Lanes units =
                Magnitude(Difference<Lanes>(x)) * Lanes(scale) * Lanes(static_cast<float>(kStrengthUnits));
            Lesser(units, Lanes(65535.0F)).StoreWhole(m_all.data() + x);
        });
        for (std::size_t x = 0; x < width; ++x)
            strengths[x] = static_cast<std::uint16_t>(m_all[x] & (0U - strengths[x]));
    }

  private:
    using Row = std::vector<float>;

    void SumColumns(int y) {
        struct Levels {
            const float* laplacian;
            const float* smoothed;
        };
        std::array<Levels, kWindow + 1> rows;
        std::size_t count = 0;
        constexpr int reach = kReach;
        for (int v = std::max(y - reach, 0); v <= std::min(y + reach, m_smoothed.height - 1); ++v)
            rows[count++] = {m_laplacian.Row(v), m_smoothed.Row(v)};
        ForLanes(0, m_all.size(), [&](auto lanes, std::size_t x) {
            using Lanes = decltype(lanes);
            const Lanes none(0.0F);
            const Lanes one(1.0F);
            Lanes bright(none), dark(none), brightCount(none), darkCount(none);
            for (std::size_t k = 0; k < count; ++k) {
                const Lanes sign = Lanes::Load(rows[k].laplacian + x);
                const Lanes value = Lanes::Load(rows[k].smoothed + x);
                const auto isBright = none > sign;
                const auto isDark = sign > none;
                bright = bright + Lanes::Only(isBright, value);
                dark = dark + Lanes::Only(isDark, value);
                brightCount = brightCount + Lanes::Only(isBright, one);
                darkCount = darkCount + Lanes::Only(isDark, one);
            }
            bright.Store(m_bright.data() + kReach + x);
            dark.Store(m_dark.data() + kReach + x);
            brightCount.Store(m_brightCount.data() + kReach + x);
            darkCount.Store(m_darkCount.data() + kReach + x);
        });
    }

    template <class Lanes>
    Lanes Difference(std::size_t x) const {
        const Lanes none(0.0F);
        Lanes bright(none), dark(none), brightCount(none), darkCount(none);
        for (std::size_t u = x; u <= x + kWindow; ++u) {
            bright = bright + Lanes::Load(m_bright.data() + u);
            dark = dark + Lanes::Load(m_dark.data() + u);
            brightCount = brightCount + Lanes::Load(m_brightCount.data() + u);
            darkCount = darkCount + Lanes::Load(m_darkCount.data() + u);
        }
        const auto hasBoth = Lanes::Both(brightCount > none, darkCount > none);
        return Lanes::Only(hasBoth, bright / brightCount - dark / darkCount);
    }

    const Plane& m_smoothed;
    const Plane& m_laplacian;
    Row m_bright, m_dark, m_brightCount, m_darkCount;  // with nothing in `kReach` columns on either side
    std::vector<std::uint16_t> m_all;
};

/// The gradients of a row, as differences over two pixels, the border's levels going on outside.
struct SlopeRow {
    std::vector<float> dx, dy, square;
    explicit SlopeRow(int width) : dx(static_cast<std::size_t>(width)), dy(dx.size()), square(dx.size()) {}

    void Compute(const Plane& levels, int y) {
        const float* const above = levels.Row(std::max(y - 1, 0));
        const float* const level = levels.Row(y);
        const float* const below = levels.Row(std::min(y + 1, levels.height - 1));
        const std::size_t last = dx.size() - 1;
        for (const std::size_t x : {std::size_t{0}, last})
            dx[x] = level[std::min(x + 1, last)] - level[x > 0 ? x - 1 : 0];
        ForLanes(1, last, [&](auto lanes, std::size_t x) {
            using Lanes = decltype(lanes);
            (Lanes::Load(level + x + 1) - Lanes::Load(level + x - 1)).Store(dx.data() + x);
        });
        ForLanes(0, dx.size(), [&](auto lanes, std::size_t x) {
            using Lanes = decltype(lanes);
            const Lanes across = Lanes::Load(dx.data() + x);
            const Lanes down = Lanes::Load(below + x) - Lanes::Load(above + x);
            down.Store(dy.data() + x);
            (across * across + down * down).Store(square.data() + x);
        });
    }
};

class Detector {
  public:
    Detector(const LevelRows& picture, double sigma)
        : m_decay(DecayFor(sigma)),
          m_smoothed(picture.Width(), picture.Height()),
          m_laplacian(picture.Width(), picture.Height()) {
        for (int y = 0; y < m_laplacian.height; ++y) picture.Read(y, m_laplacian.Row(y));
        const Exponential filter(m_decay);
        SmoothColumns(m_laplacian, filter, m_smoothed);
        SmoothRows(m_smoothed, filter);
        for (int y = 0; y < m_laplacian.height; ++y) {
            const float* const smoothed = m_smoothed.Row(y);
            float* const levels = m_laplacian.Row(y);
            ForLanes(0, static_cast<std::size_t>(m_laplacian.width), [&](auto lanes, std::size_t x) {
                using Lanes = decltype(lanes);
                (Lanes::Load(smoothed + x) - Lanes::Load(levels + x)).Store(levels + x);
            });
        }
    }

    /// Counts half differences over two pixels, as heights of steps, if asked to.
    EdgeMap Edges(MagnitudeHistogram* histogram) const {
        EdgeMap map(m_smoothed.width, m_smoothed.height);
        FindCrossings(map, histogram);
        const float scale = 1 / StepDifference(m_decay);
        SideSums sums(m_smoothed, m_laplacian);
        for (int y = 0; y < map.height; ++y) {
            std::uint16_t* const row = map.Row(y);
            if (std::any_of(row, row + map.width, [](std::uint16_t is) { return is != 0; }))
                sums.WriteStrengths(y, scale, row);
        }
        return map;
    }

  private:
    /// What floats can say about a pixel's slope, 0 for a gentle one.
    static constexpr float kSteep = 1;
    static constexpr float kDoubtful = 2;  // too near to the limit: doubles must say

    /// Marks the pixels of crossings that are steep. Both are found for whole rows, without branches, and as
    /// floats; the few pixels where that is not sure are looked at one by one.
    void FindCrossings(EdgeMap& map, MagnitudeHistogram* histogram) const {
        const int height = map.height;
        const auto width = static_cast<std::size_t>(map.width);
        std::vector<SlopeRow> slopes(3, SlopeRow(map.width));
        const auto slopeRow = [&](int y) -> SlopeRow& {
            return slopes[static_cast<std::size_t>(std::clamp(y, 0, height - 1)) % slopes.size()];
        };
        std::vector<float> fromAbove(width);  // 1 where a crossing with the row above is this row's
        std::vector<float> marks(width);
        std::vector<float> steepness(width);
        slopeRow(0).Compute(m_smoothed, 0);
        for (int y = 0; y < height; ++y) {
            if (y + 1 < height) slopeRow(y + 1).Compute(m_smoothed, y + 1);
            const SlopeRow& slope = slopeRow(y);
            if (histogram != nullptr) AddTo(*histogram, slope, steepness);
            marks.swap(fromAbove);
            MarkBelow(y, marks, fromAbove);
            MarkBeside(y, marks);
            JudgeSlopes(slopeRow(y - 1), slope, slopeRow(y + 1), steepness);
            std::uint16_t* const out = map.Row(y);
            ForLanes(0, width, [&](auto lanes, std::size_t x) {
                using Lanes = decltype(lanes);
                (Lanes::Load(marks.data() + x) * Lanes::Load(steepness.data() + x)).StoreWhole(out + x);
            });
            for (int x = 0; x < map.width; ++x) {
                if (out[x] > 1) out[x] = IsSteep(x, y) ? 1 : 0;
            }
        }
    }

    void AddTo(MagnitudeHistogram& histogram, const SlopeRow& slope, std::vector<float>& magnitudes) const {
        const auto scale = static_cast<float>(1 / (1 - m_decay));
        ForLanes(0, magnitudes.size(), [&](auto lanes, std::size_t x) {
            using Lanes = decltype(lanes);
            const Lanes length = SquareRoot(Lanes::Load(slope.square.data() + x));
            (length * Lanes(scale)).Store(magnitudes.data() + x);
        });
        histogram.Add(magnitudes);
    }

    template <class Lanes>
    struct Pixels {
        Lanes laplacian;
        Lanes level;
    };

    /// One where `IsCrossing` holds between two pixels, else 0.
    template <class Lanes>
    static Lanes Crossing(const Pixels<Lanes>& a, const Pixels<Lanes>& b) {
        const Lanes none(0.0F);
        const Lanes rise = b.level - a.level;
        const auto rises = Lanes::Both(Lanes::Both(a.laplacian > none, none > b.laplacian), rise > none);
        const auto falls = Lanes::Both(Lanes::Both(none > a.laplacian, b.laplacian > none), none > rise);
        return Lanes::Only(Lanes::Either(rises, falls), Lanes(1.0F));
    }
    /// Of two pixels with a crossing between them it is the one's that is nearer to zero, of equals the
    /// first.
    template <class Lanes>
    static Lanes OfFirst(const Pixels<Lanes>& a, const Pixels<Lanes>& b) {
        return Lanes::Only(Magnitude(b.laplacian) >= Magnitude(a.laplacian), Crossing(a, b));
    }
    template <class Lanes>
    static Lanes OfSecond(const Pixels<Lanes>& a, const Pixels<Lanes>& b) {
        return Lanes::Only(Magnitude(a.laplacian) > Magnitude(b.laplacian), Crossing(a, b));
    }

    /// Adds the crossings between a row and the one below to the marks of those two.
    void MarkBelow(int y, std::vector<float>& marks, std::vector<float>& marksBelow) const {
        if (y + 1 == m_smoothed.height) return;
        ForLanes(0, marks.size(), [&](auto lanes, std::size_t x) {
            using Lanes = decltype(lanes);
            const Pixels<Lanes> here = Load<Lanes>(y, x);
            const Pixels<Lanes> there = Load<Lanes>(y + 1, x);
            Greater(OfFirst(here, there), Lanes::Load(marks.data() + x)).Store(marks.data() + x);
            OfSecond(here, there).Store(marksBelow.data() + x);
        });
    }

    /// The same for the crossings between neighbours in a row, and for pixels on zero themselves.
    void MarkBeside(int y, std::vector<float>& marks) const {
        const std::size_t last = marks.size() - 1;
        const auto add = [&](auto more, std::size_t x) {
            using Lanes = decltype(more);
            Greater(more, Lanes::Load(marks.data() + x)).Store(marks.data() + x);
        };
        if (last > 0) {
            add(OfFirst(Load<OneFloat>(y, 0), Load<OneFloat>(y, 1)), 0);
            add(OfSecond(Load<OneFloat>(y, last - 1), Load<OneFloat>(y, last)), last);
        }
        ForLanes(1, last, [&](auto lanes, std::size_t x) {
            using Lanes = decltype(lanes);
            const Pixels<Lanes> here = Load<Lanes>(y, x);
            add(Greater(OfFirst(here, Load<Lanes>(y, x + 1)), OfSecond(Load<Lanes>(y, x - 1), here)), x);
        });
        const float* const laplacian = m_laplacian.Row(y);
        for (std::size_t i = 0; i <= last; ++i) {
            if (laplacian[i] != 0) continue;
            const int x = static_cast<int>(i);
            if (IsCrossing(x - 1, y, x + 1, y) || IsCrossing(x, y - 1, x, y + 1)) marks[i] = 1;
        }
    }

    /// What `IsSteep` says, where floats can tell.
    static void JudgeSlopes(const SlopeRow& above, const SlopeRow& row, const SlopeRow& below,
                            std::vector<float>& steepness) {
        const std::size_t last = steepness.size() - 1;
        steepness.front() = steepness.back() = kDoubtful;
        const float* const up = above.square.data();
        const float* const here = row.square.data();
        const float* const down = below.square.data();
        ForLanes(1, last, [&](auto lanes, std::size_t x) {
            using Lanes = decltype(lanes);
            const auto pair = [](const float* one, const float* other) {
                return Greater(Lanes::Load(one), Lanes::Load(other));
            };
            const Lanes none(0.0F);
            const Lanes dx = Lanes::Load(row.dx.data() + x);
            const Lanes dy = Lanes::Load(row.dy.data() + x);
            const Lanes overUpright = Lanes(static_cast<float>(kNarrow)) * Magnitude(dy) - Magnitude(dx);
            const Lanes overFlat = Lanes(static_cast<float>(kNarrow)) * Magnitude(dx) - Magnitude(dy);
            const auto isFalling = Lanes::Choose(dx > none, dy, none - dy) > none;
            const Lanes aslant =
                Lanes::Choose(isFalling, pair(down + x + 1, up + x - 1), pair(up + x + 1, down + x - 1));
            const Lanes most =
                Lanes::Choose(overUpright > none, pair(up + x, down + x),
                              Lanes::Choose(overFlat > none, pair(here + x - 1, here + x + 1), aslant));
            const Lanes over =
                Lanes::Load(here + x) - Lanes(static_cast<float>(kSteepness * kSteepness)) * most;
            // Far more than the roundings' part, and than what vanishes in squares.
            const Lanes part(1e-5F);
            const Lanes least(1e-30F);
            const Lanes spread = part * (Magnitude(dx) + Magnitude(dy)) + least;
            const auto isSure =
                Lanes::Both(Lanes::Both(Magnitude(overUpright) > spread, Magnitude(overFlat) > spread),
                            Magnitude(over) > part * most + least);
            const Lanes judged = Lanes::Only(over > none, Lanes(kSteep));
            Lanes::Choose(isSure, judged, Lanes(kDoubtful)).Store(steepness.data() + x);
        });
    }

    template <class Lanes>
    Pixels<Lanes> Load(int y, std::size_t x) const {
        return {Lanes::Load(m_laplacian.Row(y) + x), Lanes::Load(m_smoothed.Row(y) + x)};
    }

    bool Inside(int x, int y) const {
        return x >= 0 && x < m_smoothed.width && y >= 0 && y < m_smoothed.height;
    }

    /// Whether the picture rises from one pixel to the other the steeper the nearer to their middle.
    bool IsCrossing(int x, int y, int u, int v) const {
        if (!Inside(x, y) || !Inside(u, v)) return false;
        const float here = m_laplacian.Row(y)[x];
        const float there = m_laplacian.Row(v)[u];
        const float rise = m_smoothed.Row(v)[u] - m_smoothed.Row(y)[x];
        return (here > 0 && there < 0 && rise > 0) || (here < 0 && there > 0 && rise < 0);
    }

    DPOINT Gradient(int x, int y) const {
        const int w = m_smoothed.width - 1;
        const int h = m_smoothed.height - 1;
        x = std::clamp(x, 0, w);
        y = std::clamp(y, 0, h);
        const float* const row = m_smoothed.Row(y);
        return {row[std::min(x + 1, w)] - row[std::max(x - 1, 0)],
                m_smoothed.Row(std::min(y + 1, h))[x] - m_smoothed.Row(std::max(y - 1, 0))[x]};
    }

    /// Whether the slope is not much less than a pixel further along it. Beside a strong edge noise changes
    /// the sign too, on the edge's flanks.
    bool IsSteep(int x, int y) const {
        const DPOINT g = Gradient(x, y);
        const auto square = [](const DPOINT& v) { return v.x * v.x + v.y * v.y; };
        const int dx = std::fabs(g.x) <= kNarrow * std::fabs(g.y) ? 0 : g.x > 0 ? 1 : -1;
        const int dy = std::fabs(g.y) <= kNarrow * std::fabs(g.x) ? 0 : g.y > 0 ? 1 : -1;
        const double most = std::max(square(Gradient(x + dx, y + dy)), square(Gradient(x - dx, y - dy)));
        return square(g) >= kSteepness * kSteepness * most;
    }

    double m_decay;
    Plane m_smoothed;
    Plane m_laplacian;
};

}  // namespace

EdgeMap FindShenCastanEdges(const LevelRows& picture, double sigma, MagnitudeHistogram* histogram) {
    return Detector(picture, sigma).Edges(histogram);
}

}  // namespace tarvex
