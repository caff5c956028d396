// The exact Euclidean distance to the ground, and the medial axis, in time proportional to the pixels.
//
// The distance is that of A. Meijster, J. Roerdink and W. Hesselink, "A general algorithm for computing
// distance transforms in linear time" (2000): first along each column, then each row takes the lower envelope
// of the parabolas that its columns' distances stand for. A run of shape pixels in a row has ground at both
// ends, so nothing beyond those ends can be nearest and every run is a problem of its own: ground costs
// nothing, 64 pixels at a time.
//
// The envelope knows more than the distance: which ground pixel is the nearest. Where two neighbours look
// to ground in different directions, the medial axis passes between them (W. Hesselink and J. Roerdink,
// "Euclidean skeletons of digital image and volume data in linear time by the integer medial axis transform",
// 2008). As the measure of difference ours takes the angle between the two directions as seen from the point
// between the neighbours: along a stroke they are opposite, into a corner they are as far apart as the corner
// is blunt, and along a straight edge of stairs they differ by a few pixels, which is a small angle from
// afar. So one angle tells what is a stroke at every width, where a length would have to grow with it. Of the
// two pixels the one nearer to the line between their ground pixels' middles is on the axis.
//
// Often several ground pixels are equally near, and which of them the envelope meets first depends on how the
// picture lies. So it tells the extreme ones of them, and what is on the axis must be so by each choice.
#include "raster/skeleton/distance_map.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <vector>

namespace tarvex::skeleton {
namespace {

/// The square of the cosine of the least angle between the directions to ground on both sides of the axis.
constexpr double kLeastCosineSquare = 0.117;  // 110 degrees

/// Calls `visit(first, last)` for each run of set pixels of a row.
template <class Visit>
void ForEachRun(const std::uint64_t* row, int words, Visit visit) {
    int start = -1;
    for (int i = 0; i < words; ++i) {
        std::uint64_t word = row[i];
        int x = i * 64;
        if (start < 0 && word == 0) continue;
        if (start >= 0 && word == ~std::uint64_t{0}) continue;
        const int end = x + 64;
        while (x < end) {
            if (start < 0) {
                if (word == 0) break;
                const int skip = std::countr_zero(word);
                x += skip;
                word >>= skip;
                start = x;
            }
            const int ones = std::min(std::countr_one(word), end - x);
            x += ones;
            if (x == end) break;
            word >>= ones;
            visit(start, x - 1);
            start = -1;
        }
    }
    if (start >= 0) visit(start, words * 64 - 1);
}

/// From a pixel to its nearest ground pixel.
struct Offset {
    std::int32_t x;
    std::int32_t y;
};

/// Ground pixels that are equally near: of those in the leftmost such column and of those in the rightmost
/// one the upper and the lower one. Where there is one nearest pixel it is the first choice, and the others
/// are not set.
struct Nearest {
    static constexpr std::size_t kChoices = 4;

    std::array<Offset, kChoices> choices;
    bool isOne;
};

/// Distances to the ground below, for the shape's pixels, at most 65535. More is never the nearest ground in
/// a picture whose pixels can be counted in 32 bits.
class GroundBelow {
  public:
    explicit GroundBelow(const BitPlane& shape)
        : m_width(static_cast<std::size_t>(shape.Words()) * 64),
          m_steps(std::make_unique_for_overwrite<std::uint16_t[]>(m_width *
                                                                  static_cast<std::size_t>(shape.Height()))) {
        std::vector<std::uint16_t> below(m_width);
        for (int y = shape.Height() - 1; y >= 0; --y) {
            std::uint16_t* out = m_steps.get() + static_cast<std::size_t>(y) * m_width;
            StepRow(shape.Row(y), shape.Words(), below.data());
            for (std::size_t i = 0; i < m_width / 64; ++i) {
                if (shape.Row(y)[i] != 0) std::copy_n(below.data() + i * 64, 64, out + i * 64);
            }
        }
    }

    const std::uint16_t* Row(int y) const { return m_steps.get() + static_cast<std::size_t>(y) * m_width; }

    /// From the steps to ground seen from one row to those seen from the next one, `row`.
    static void StepRow(const std::uint64_t* row, int words, std::uint16_t* steps) {
        for (int i = 0; i < words; ++i, steps += 64) {
            const std::uint64_t word = row[i];
            if (word == 0) {
                std::fill_n(steps, 64, std::uint16_t{0});
            } else if (word == ~std::uint64_t{0}) {
                for (int k = 0; k < 64; ++k) steps[k] = Next(steps[k]);
            } else {
                for (int k = 0; k < 64; ++k) {
                    const auto mask = static_cast<std::uint16_t>(0 - (word >> k & 1));
                    steps[k] = static_cast<std::uint16_t>(Next(steps[k]) & mask);
                }
            }
        }
    }

  private:
    static std::uint16_t Next(std::uint16_t steps) {
        return static_cast<std::uint16_t>(steps + (steps < 65535 ? 1 : 0));
    }

    std::size_t m_width;
    std::unique_ptr<std::uint16_t[]> m_steps;
};

/// The nearest ground of all pixels of a run, from the columns' distances.
class RowEnvelope {
  public:
    explicit RowEnvelope(std::size_t width) : m_site(width + 2), m_from(width + 2), m_square(width + 2) {}

    /// `up` and `down` are the steps to the ground above and below, of the whole row.
    void Measure(int first, int last, const std::uint16_t* up, const std::uint16_t* down, std::uint32_t* out,
                 Nearest* nearest) {
        std::size_t top = 0;
        m_site[0] = first - 1;
        m_from[0] = first;
        m_square[0] = 0;
        for (int x = first; x <= last + 1; ++x) {
            const std::int64_t steps = x > last ? 0 : std::min(up[x], down[x]);
            Add(x, steps * steps, first, last, top);
        }
        for (int x = last; x >= first; --x) {
            const int right = m_site[top];
            out[x] = static_cast<std::uint32_t>(ValueAt(x, top));
            while (top > 0 && m_from[top] == x && ValueAt(x, top - 1) == out[x]) --top;
            const int left = m_site[top];
            const auto isInside = [&](int site) { return site >= first && site <= last; };
            const auto isTie = [&](int site) { return isInside(site) && up[site] == down[site]; };
            const auto upper = [&](int site) {
                return Offset{site - x, !isInside(site)          ? 0
                                        : up[site] <= down[site] ? -up[site]
                                                                 : down[site]};
            };
            Nearest& here = nearest[x];
            here.choices[0] = upper(left);
            here.isOne = left == right && !isTie(left);
            if (!here.isOne) {
                const auto lower = [&](int site) {
                    const Offset o = upper(site);
                    return isTie(site) ? Offset{o.x, -o.y} : o;
                };
                here.choices[1] = lower(left);
                here.choices[2] = upper(right);
                here.choices[3] = lower(right);
            }
            while (top > 0 && m_from[top] == x) --top;
        }
    }

  private:
    std::int64_t ValueAt(int x, std::size_t i) const {
        const std::int64_t dx = m_site[i] - x;
        return dx * dx + m_square[i];
    }

    void Add(int x, std::int64_t square, int first, int last, std::size_t& top) {
        const auto at = [](std::int64_t from, std::int64_t site, std::int64_t siteSquare) {
            return (from - site) * (from - site) + siteSquare;
        };
        for (;;) {
            if (at(m_from[top], m_site[top], m_square[top]) <= at(m_from[top], x, square)) break;
            if (top == 0) {
                m_site[0] = x;
                m_from[0] = first;
                m_square[0] = square;
                return;
            }
            --top;
        }
        // Quotients of such integers round to the right side of every whole number.
        const std::int64_t apart = std::int64_t{x} - m_site[top];
        const std::int64_t rise = apart * (std::int64_t{x} + m_site[top]) + square - m_square[top];
        const double from = std::ceil(static_cast<double>(rise) / static_cast<double>(2 * apart));
        if (from > last) return;
        ++top;
        m_site[top] = x;
        m_from[top] = static_cast<int>(from);
        m_square[top] = square;
    }

    std::vector<int> m_site;  // columns of the parabolas in the envelope
    std::vector<int> m_from;  // where each one becomes the lowest, or as low as the one before
    std::vector<std::int64_t> m_square;
};

/// Whether the axis passes between two neighbours, `step` being from the second to the first.
bool Separate(Offset a, Offset b, Offset step) {
    const std::int64_t ax = 2 * std::int64_t{a.x} + step.x;
    const std::int64_t ay = 2 * std::int64_t{a.y} + step.y;
    const std::int64_t bx = 2 * std::int64_t{b.x} - step.x;
    const std::int64_t by = 2 * std::int64_t{b.y} - step.y;
    const std::int64_t dot = ax * bx + ay * by;
    if (dot >= 0) return false;
    const auto square = [](std::int64_t x, std::int64_t y) { return static_cast<double>(x * x + y * y); };
    const auto cosine = static_cast<double>(dot);
    return cosine * cosine >= kLeastCosineSquare * square(ax, ay) * square(bx, by);
}

/// By how much a pixel is nearer to its own ground pixel than to its neighbour's.
std::int64_t Preference(Offset own, Offset others) {
    const auto square = [](Offset o) { return std::int64_t{o.x} * o.x + std::int64_t{o.y} * o.y; };
    return square(others) - square(own);
}

/// Marks pixels that the axis passes beside. Where the nearest ground is not one pixel, whichever happens to
/// be chosen decides, and a mirrored shape has another one chosen; so only that counts which holds for every
/// choice, the same throughout the shape.
class AxisMarks {
  public:
    AxisMarks(const BitPlane& shape, BitPlane& middle)
        : m_middle(middle), m_doubtful(Nearest::kChoices, BitPlane(shape.Width(), shape.Height())) {}

    void Mark(Position a, Position b, const Nearest& ofA, const Nearest& ofB, Offset step) {
        if (ofA.isOne && ofB.isOne) {
            Mark(a, b, ofA.choices[0], ofB.choices[0], step, m_middle);
            return;
        }
        for (std::size_t i = 0; i < Nearest::kChoices; ++i) {
            Mark(a, b, ofA.choices[ofA.isOne ? 0 : i], ofB.choices[ofB.isOne ? 0 : i], step, m_doubtful[i]);
        }
    }

    /// Decides the doubtful ones.
    void Settle() {
        for (int y = 0; y < m_middle.Height(); ++y) {
            for (int i = 0; i < m_middle.Words(); ++i) {
                std::uint64_t agreed = ~std::uint64_t{0};
                for (const BitPlane& plane : m_doubtful) agreed &= plane.Row(y)[i];
                m_middle.Row(y)[i] |= agreed;
            }
        }
    }

  private:
    static void Mark(Position a, Position b, Offset ofA, Offset ofB, Offset step, BitPlane& plane) {
        if (!Separate(ofA, ofB, step)) return;
        const std::int64_t forA = Preference(ofA, {ofB.x - step.x, ofB.y - step.y});
        const std::int64_t forB = Preference(ofB, {ofA.x + step.x, ofA.y + step.y});
        plane.Set(forA < forB ? a : b);
    }

    BitPlane& m_middle;
    std::vector<BitPlane> m_doubtful;  // by each choice
};

/// Takes pixels off the middle beside which the shape widens as fast as it does beside an edge: at distances
/// of a pixel or two a stair of an edge looks like the end of a thin line.
class SlopeFilter {
  public:
    SlopeFilter(const BitPlane& shape, const DistanceMap& distances)
        : m_shape(shape), m_distances(distances) {}

    void Apply(BitPlane& middle) const {
        std::vector<Position> foreign;
        for (int y = 0; y < middle.Height(); ++y) {
            for (int i = 0; i < middle.Words(); ++i) {
                for (std::uint64_t word = middle.Row(y)[i]; word != 0; word &= word - 1) {
                    const int x = i * 64 + std::countr_zero(word);
                    if (IsOnSlope(x, y)) foreign.push_back(middle.At(x, y));
                }
            }
        }
        for (const Position p : foreign) middle.Clear(p);
    }

  private:
    bool IsOnSlope(int x, int y) const {
        const double distance = std::sqrt(static_cast<double>(m_distances.At(m_shape.At(x, y))));
        for (int dy = -2; dy <= 2; ++dy) {
            const int row = y + dy;
            if (row < 0 || row >= m_shape.Height()) continue;
            for (int dx = -2; dx <= 2; ++dx) {
                const int column = x + dx;
                if (column < 0 || column >= m_shape.Width()) continue;
                const Position q = m_shape.At(column, row);
                if (!m_shape.Get(q)) continue;
                const int apart = dx * dx + dy * dy;
                const double steep = distance + kRise[apart];
                if (m_distances.At(q) >= steep * steep && apart > 0) return true;
            }
        }
        return false;
    }

    /// By the squared distance between two pixels: how much more one is from the ground on a slope.
    static constexpr double kRise[9] = {0, 0.75, 1.0607, 0, 1.2, 1.3417, 0, 0, 1.6971};

    const BitPlane& m_shape;
    const DistanceMap& m_distances;
};

}  // namespace

void MeasureShape(const BitPlane& shape, DistanceMap& distances, BitPlane& middle) {
    const GroundBelow below(shape);
    const std::size_t width = static_cast<std::size_t>(shape.Words()) * 64;
    std::vector<std::uint16_t> above(width);
    std::vector<Nearest> nearest(width);
    std::vector<Nearest> nearestAbove(width);
    RowEnvelope envelope(width);
    AxisMarks marks(shape, middle);
    for (int y = 0; y < shape.Height(); ++y) {
        GroundBelow::StepRow(shape.Row(y), shape.Words(), above.data());
        std::uint32_t* squares = distances.From(shape.At(0, y));
        ForEachRun(shape.Row(y), shape.Words(), [&](int first, int last) {
            envelope.Measure(first, last, above.data(), below.Row(y), squares, nearest.data());
            const Position row = shape.At(0, y);
            const Position rowAbove = row - shape.Down();
            for (int x = first; x <= last; ++x) {
                const auto i = static_cast<std::size_t>(x);
                const Position p = row + static_cast<Position>(x);
                if (x > first) marks.Mark(p, p - 1, nearest[i], nearest[i - 1], {1, 0});
                const bool isBelowShape = above[i] > 1;
                if (isBelowShape)
                    marks.Mark(p, rowAbove + static_cast<Position>(x), nearest[i], nearestAbove[i], {0, 1});
                if (squares[x] != 1) continue;
                const bool isUnderShape = below.Row(y)[i] > 1;
                if ((!isBelowShape && !isUnderShape) || first == last) middle.Set(p);
            }
        });
        nearest.swap(nearestAbove);
    }
    marks.Settle();
    SlopeFilter(shape, distances).Apply(middle);
}

}  // namespace tarvex::skeleton
