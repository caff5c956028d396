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
#include <memory>
#include <optional>
#include <utility>
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

/// For each byte, eight lanes that are all ones where its bits are set, the lowest bit first.
constexpr auto kLanes = [] {
    std::array<std::array<std::uint16_t, 8>, 256> lanes{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        for (unsigned k = 0; k < 8; ++k) lanes[byte][k] = (byte >> k & 1) != 0 ? 0xFFFF : 0;
    }
    return lanes;
}();

/// From the steps to ground seen from one row, `former`, to those seen from the next one, at most 65535. More
/// is never the nearest ground in a picture whose pixels can be counted in 32 bits.
void StepRow(const std::uint64_t* former, const std::uint64_t* row, int words, std::uint16_t* steps) {
    const auto next = [](std::uint16_t step) { return step + (step < 65535 ? 1 : 0); };
    for (int i = 0; i < words; ++i, steps += 64) {
        const std::uint64_t word = row[i];
        if (word == 0) {
            if (former[i] != 0) std::fill_n(steps, 64, std::uint16_t{0});
        } else if (word == ~std::uint64_t{0}) {
            for (int k = 0; k < 64; ++k) steps[k] = static_cast<std::uint16_t>(next(steps[k]));
        } else {
            for (std::size_t from = 0; from < 64; from += 8) {
                const auto& mask = kLanes[word >> from & 0xFF];
                std::uint16_t* eight = steps + from;
                for (std::size_t k = 0; k < 8; ++k)
                    eight[k] = static_cast<std::uint16_t>(next(eight[k]) & mask[k]);
            }
        }
    }
}

/// The steps to the ground below, kept for the words that distances are kept for.
class GroundBelow {
  public:
    GroundBelow(const BitPlane& shape, const DistanceMap& distances)
        : m_shape(shape),
          m_distances(distances),
          m_row(WidthOf(shape)),
          m_steps(std::make_unique_for_overwrite<std::uint16_t[]>(distances.PlaceCount())) {
        for (int y = shape.Height() - 1; y >= 0; --y) {
            StepRow(shape.Row(y + 1), shape.Row(y), shape.Words(), m_row.data());
            ForEachWord(y, [this](std::size_t x, std::size_t place) {
                std::copy_n(m_row.data() + x, 64, m_steps.get() + place);
            });
        }
    }

    static std::size_t WidthOf(const BitPlane& shape) { return static_cast<std::size_t>(shape.Words()) * 64; }

    /// Those of a row, good until the next one is asked for. Words without the shape have any.
    const std::uint16_t* Row(int y) {
        ForEachWord(y, [this](std::size_t x, std::size_t place) {
            std::copy_n(m_steps.get() + place, 64, m_row.data() + x);
        });
        return m_row.data();
    }

  private:
    template <class Visit>
    void ForEachWord(int y, Visit visit) const {
        for (int i = 0; i < m_shape.Words(); ++i) {
            if (m_shape.Row(y)[i] != 0)
                visit(static_cast<std::size_t>(i) * 64, m_distances.Place(m_shape.At(i * 64, y)));
        }
    }

    const BitPlane& m_shape;
    const DistanceMap& m_distances;
    std::vector<std::uint16_t> m_row;
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

    /// The quotient by an even number. Most are by 2, which shifting divides by sooner.
    static std::int64_t RoundedUp(std::int64_t a, std::int64_t b) {
        if (b == 2) return (a + 1) >> 1;
        const std::int64_t quotient = a / b;
        return quotient + (a % b > 0 ? 1 : 0);
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
        const std::int64_t apart = std::int64_t{x} - m_site[top];
        const std::int64_t rise = apart * (std::int64_t{x} + m_site[top]) + square - m_square[top];
        const std::int64_t from = RoundedUp(rise, 2 * apart);
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
        : m_middle(middle), m_doubtful(Nearest::kChoices, BitPlane(shape.Width(), kRows)) {}

    /// Of two neighbours: `a`, and `b` that is `step` before it.
    void Mark(int x, int y, const Nearest& ofA, const Nearest& ofB, Offset step) {
        if (ofA.isOne && ofB.isOne) {
            if (const auto isA = Separates(ofA.choices[0], ofB.choices[0], step))
                m_middle.Set(*isA ? m_middle.At(x, y) : m_middle.At(x - step.x, y - step.y));
            return;
        }
        for (std::size_t i = 0; i < Nearest::kChoices; ++i) {
            BitPlane& doubtful = m_doubtful[i];
            if (const auto isA =
                    Separates(ofA.choices[ofA.isOne ? 0 : i], ofB.choices[ofB.isOne ? 0 : i], step))
                doubtful.Set(*isA ? doubtful.At(x, y % kRows)
                                  : doubtful.At(x - step.x, (y - step.y) % kRows));
        }
    }

    /// Decides the doubtful ones of a row, when those of the next one have been marked.
    void Settle(int y) {
        for (int i = 0; i < m_middle.Words(); ++i) {
            std::uint64_t agreed = ~std::uint64_t{0};
            for (BitPlane& plane : m_doubtful) agreed &= std::exchange(plane.Row(y % kRows)[i], 0);
            m_middle.Row(y)[i] |= agreed;
        }
    }

  private:
    static constexpr int kRows = 2;

    /// Whether the axis passes between `a` and `b`, and then whether it marks `a`.
    static std::optional<bool> Separates(Offset ofA, Offset ofB, Offset step) {
        if (!Separate(ofA, ofB, step)) return std::nullopt;
        const std::int64_t forA = Preference(ofA, {ofB.x - step.x, ofB.y - step.y});
        const std::int64_t forB = Preference(ofB, {ofA.x + step.x, ofA.y + step.y});
        return forA < forB;
    }

    BitPlane& m_middle;
    std::vector<BitPlane> m_doubtful;  // by each choice, of two rows
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
        std::array<std::uint32_t, 9> least{};  // a square that is this much is on the slope
        for (const std::size_t apart : {1U, 2U, 4U, 5U, 8U}) {
            const double steep = distance + kRise[apart];
            least[apart] = static_cast<std::uint32_t>(std::ceil(steep * steep));
        }
        for (int dy = -2; dy <= 2; ++dy) {
            const int row = y + dy;
            if (row < 0 || row >= m_shape.Height()) continue;
            for (int dx = -2; dx <= 2; ++dx) {
                const int column = x + dx;
                if (column < 0 || column >= m_shape.Width()) continue;
                const Position q = m_shape.At(column, row);
                const auto apart = static_cast<std::size_t>(dx * dx + dy * dy);
                if (apart > 0 && m_shape.Get(q) && m_distances.At(q) >= least[apart]) return true;
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

DistanceMap::DistanceMap(const BitPlane& shape) : m_places(shape.PositionCount() / 64) {
    for (int y = 0; y < shape.Height(); ++y) {
        for (int i = 0; i < shape.Words(); ++i) {
            if (shape.Row(y)[i] == 0) continue;
            m_places[shape.At(i * 64, y) >> 6] = static_cast<std::uint32_t>(m_placeCount);
            m_placeCount += 64;
        }
    }
    m_squares = std::make_unique_for_overwrite<std::uint32_t[]>(m_placeCount);
    std::fill_n(m_squares.get(), 64, 0U);
}

void MeasureShape(const BitPlane& shape, DistanceMap& distances, BitPlane& middle) {
    GroundBelow below(shape, distances);
    const std::size_t width = GroundBelow::WidthOf(shape);
    std::vector<std::uint16_t> above(width);
    std::vector<std::uint32_t> squares(width);
    std::vector<Nearest> nearest(width);
    std::vector<Nearest> nearestAbove(width);
    RowEnvelope envelope(width);
    AxisMarks marks(shape, middle);
    for (int y = 0; y < shape.Height(); ++y) {
        StepRow(shape.Row(y - 1), shape.Row(y), shape.Words(), above.data());
        const std::uint16_t* belowRow = below.Row(y);
        ForEachRun(shape.Row(y), shape.Words(), [&](int first, int last) {
            envelope.Measure(first, last, above.data(), belowRow, squares.data(), nearest.data());
            for (int x = first; x <= last; ++x) {
                const auto i = static_cast<std::size_t>(x);
                if (x > first) marks.Mark(x, y, nearest[i], nearest[i - 1], {1, 0});
                const bool isBelowShape = above[i] > 1;
                if (isBelowShape) marks.Mark(x, y, nearest[i], nearestAbove[i], {0, 1});
                if (squares[i] != 1) continue;
                const bool isUnderShape = belowRow[i] > 1;
                if ((!isBelowShape && !isUnderShape) || first == last) middle.Set(middle.At(x, y));
            }
        });
        std::uint32_t* from = squares.data();
        for (int i = 0; i < shape.Words(); ++i, from += 64) {
            if (shape.Row(y)[i] == 0) continue;
            distances.SetWord(shape.At(i * 64, y), from);
            std::fill_n(from, 64, 0U);
        }
        if (y > 0) marks.Settle(y - 1);
        nearest.swap(nearestAbove);
    }
    if (shape.Height() > 0) marks.Settle(shape.Height() - 1);
    SlopeFilter(shape, distances).Apply(middle);
}

}  // namespace tarvex::skeleton
