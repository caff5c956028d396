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
#include <cmath>
#include <utility>

#include "raster/edges/edge_map.h"
#include "raster/edges/float_lanes.h"

namespace tarvex {
namespace {

constexpr double kSteepness = 0.6;
constexpr int kReach = 3;  ///< of the window on either side

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
    std::vector<float> cells;
    Plane(int w, int h)
        : width(w), height(h), cells(static_cast<std::size_t>(w) * static_cast<std::size_t>(h)) {}
    float* Row(int y) { return cells.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width); }
    const float* Row(int y) const {
        return cells.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
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

/// Smooths each row of `plane` in place.
void SmoothRows(Plane& plane, const Exponential& e) {
    std::vector<float> back(static_cast<std::size_t>(plane.width) + 1);
    for (int y = 0; y < plane.height; ++y) {
        float* const row = plane.Row(y);
        const auto n = static_cast<std::size_t>(plane.width);
        back[n] = row[n - 1] * e.backStart;
        for (std::size_t x = n; x-- > 0;) back[x] = e.decay * back[x + 1] + e.back * row[x];
        float forth = row[0] * e.forthStart;
        for (std::size_t x = 0; x < n; ++x) {
            forth = e.decay * forth + e.forth * row[x];
            row[x] = forth + back[x + 1];
        }
    }
}

/// The difference of means that the window sees at an ideal step of 1, just
/// left of it.
float StepDifference(double b) {
    double low = 0;
    double high = 0;
    for (int i = 0; i <= kReach; ++i) low += std::pow(b, i + 1) / (1 + b) / (kReach + 1);
    for (int i = 0; i < kReach; ++i) high += (1 - std::pow(b, i + 1) / (1 + b)) / kReach;
    return static_cast<float>(high - low);
}

/// The means on both sides of a border, over the window around each pixel of a row.
///
/// Which side a pixel belongs to is anybody's guess, and every fifth may be asked for where there is noise.
/// So the window's columns are summed for the whole row, both sides at once and without branches, and a pixel
/// adds up seven of those.
class SideSums {
  public:
    SideSums(const Plane& smoothed, const Plane& laplacian)
        : m_smoothed(smoothed),
          m_laplacian(laplacian),
          m_bright(static_cast<std::size_t>(smoothed.width)),
          m_dark(m_bright.size()),
          m_brightCount(m_bright.size()),
          m_darkCount(m_bright.size()) {}

    void MoveTo(int y) {
        for (Row* sums : {&m_bright, &m_dark, &m_brightCount, &m_darkCount})
            std::fill(sums->begin(), sums->end(), 0.0F);
        for (int v = std::max(y - kReach, 0); v <= std::min(y + kReach, m_smoothed.height - 1); ++v) {
            const float* const level = m_smoothed.Row(v);
            const float* const laplacian = m_laplacian.Row(v);
            ForLanes(0, m_bright.size(), [&](auto lanes, std::size_t x) {
                using Lanes = decltype(lanes);
                const Lanes none(0.0F);
                const Lanes one(1.0F);
                const Lanes sign = Lanes::Load(laplacian + x);
                const Lanes value = Lanes::Load(level + x);
                Add(m_bright, x, Lanes::Choose(none > sign, value, none));
                Add(m_dark, x, Lanes::Choose(sign > none, value, none));
                Add(m_brightCount, x, Lanes::Choose(none > sign, one, none));
                Add(m_darkCount, x, Lanes::Choose(sign > none, one, none));
            });
        }
    }

    float Difference(int x) const {
        float bright = 0;
        float dark = 0;
        float brightCount = 0;
        float darkCount = 0;
        const auto end = static_cast<std::size_t>(std::min(x + kReach + 1, m_smoothed.width));
        for (auto u = static_cast<std::size_t>(std::max(x - kReach, 0)); u < end; ++u) {
            bright += m_bright[u];
            dark += m_dark[u];
            brightCount += m_brightCount[u];
            darkCount += m_darkCount[u];
        }
        return brightCount > 0 && darkCount > 0 ? bright / brightCount - dark / darkCount : 0.0F;
    }

  private:
    using Row = std::vector<float>;

    template <class Lanes>
    static void Add(Row& sums, std::size_t x, Lanes more) {
        (Lanes::Load(sums.data() + x) + more).Store(sums.data() + x);
    }

    const Plane& m_smoothed;
    const Plane& m_laplacian;
    Row m_bright, m_dark, m_brightCount, m_darkCount;
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
        for (std::size_t i = 0; i < m_laplacian.cells.size(); ++i)
            m_laplacian.cells[i] = m_smoothed.cells[i] - m_laplacian.cells[i];
    }

    /// Half differences over two pixels, as heights of steps.
    void Count(MagnitudeHistogram& histogram) const {
        const int w = m_smoothed.width;
        std::vector<float> magnitudes(static_cast<std::size_t>(w));
        const auto scale = static_cast<float>(1 / (1 - m_decay));
        for (int y = 0; y < m_smoothed.height; ++y) {
            const float* const level = m_smoothed.Row(y);
            const float* const above = m_smoothed.Row(std::max(y - 1, 0));
            const float* const below = m_smoothed.Row(std::min(y + 1, m_smoothed.height - 1));
            for (int x = 0; x < w; ++x) {
                const float dx = level[std::min(x + 1, w - 1)] - level[std::max(x - 1, 0)];
                const float dy = below[x] - above[x];
                magnitudes[static_cast<std::size_t>(x)] = std::sqrt(dx * dx + dy * dy) * scale;
            }
            histogram.Add(magnitudes);
        }
    }

    EdgeMap Edges() const {
        EdgeMap map(m_smoothed.width, m_smoothed.height);
        FindCrossings(map);
        const float scale = 1 / StepDifference(m_decay);
        SideSums sums(m_smoothed, m_laplacian);
        for (int y = 0; y < map.height; ++y) {
            std::uint16_t* const strengths = map.Row(y);
            sums.MoveTo(y);
            for (int x = 0; x < map.width; ++x) {
                if (strengths[x] != 0) strengths[x] = ToStrength(std::fabs(sums.Difference(x)) * scale);
            }
        }
        return map;
    }

  private:
    /// Marks the pixels of crossings that are steep.
    void FindCrossings(EdgeMap& map) const {
        const auto mark = [&](int x, int y) {
            std::uint16_t& strength = map.Row(y)[x];
            if (strength == 0 && IsSteep(x, y)) strength = 1;
        };
        const auto width = static_cast<std::size_t>(map.width);
        std::vector<float> toRight(width);
        std::vector<float> toBelow(width);
        for (int y = 0; y < map.height; ++y) {
            const int below = y + 1 < map.height ? y + 1 : y;  // with itself there is no crossing
            const float* const laplacian = m_laplacian.Row(y);
            const float* const level = m_smoothed.Row(y);
            FlagCrossings(laplacian, laplacian + 1, level, level + 1, width - 1, toRight.data());
            FlagCrossings(laplacian, m_laplacian.Row(below), level, m_smoothed.Row(below), width,
                          toBelow.data());
            for (std::size_t i = 0; i < width; ++i) {
                const int x = static_cast<int>(i);
                if (laplacian[i] == 0) {
                    if (IsCrossing(x - 1, y, x + 1, y) || IsCrossing(x, y - 1, x, y + 1)) mark(x, y);
                    continue;
                }
                if (toRight[i] + toBelow[i] == 0) continue;
                const float own = std::fabs(laplacian[i]);
                if (toRight[i] != 0) mark(own <= std::fabs(laplacian[i + 1]) ? x : x + 1, y);
                if (toBelow[i] != 0) mark(x, own <= std::fabs(m_laplacian.Row(below)[i]) ? y : below);
            }
        }
    }

    /// Writes 1 where IsCrossing holds between the pixels of two rows or of a row and the next ones, else 0.
    static void FlagCrossings(const float* here, const float* there, const float* level,
                              const float* otherLevel, std::size_t count, float* flags) {
        ForLanes(0, count, [&](auto lanes, std::size_t i) {
            using Lanes = decltype(lanes);
            const Lanes none(0.0F);
            const Lanes one(1.0F);
            const Lanes a = Lanes::Load(here + i);
            const Lanes b = Lanes::Load(there + i);
            const Lanes rise = Lanes::Load(otherLevel + i) - Lanes::Load(level + i);
            const auto rises = Lanes::Both(Lanes::Both(a > none, none > b), rise > none);
            const auto falls = Lanes::Both(Lanes::Both(none > a, b > none), none > rise);
            Lanes::Choose(rises, one, Lanes::Choose(falls, one, none)).Store(flags + i);
        });
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
        // To the nearest of the eight neighbours: towards it both parts are more than tan(22.5 degrees)
        // apart.
        constexpr double narrow = 0.41421356;
        const int dx = std::fabs(g.x) <= narrow * std::fabs(g.y) ? 0 : g.x > 0 ? 1 : -1;
        const int dy = std::fabs(g.y) <= narrow * std::fabs(g.x) ? 0 : g.y > 0 ? 1 : -1;
        const double most = std::max(square(Gradient(x + dx, y + dy)), square(Gradient(x - dx, y - dy)));
        return square(g) >= kSteepness * kSteepness * most;
    }

    double m_decay;
    Plane m_smoothed;
    Plane m_laplacian;
};

}  // namespace

EdgeMap FindShenCastanEdges(const LevelRows& picture, double sigma, MagnitudeHistogram* histogram) {
    const Detector detector(picture, sigma);
    if (histogram != nullptr) detector.Count(*histogram);
    return detector.Edges();
}

}  // namespace tarvex
