// Pixels by their distance to the ground, and among equals by what the shape is like around them.
//
// The order is that of the exact squared distances up to 64 pixels and of steps of 1/64 pixel beyond, in
// which pixels are sorted by counting.
//
// Of two pixels side by side that are equally far from the ground one has to go first, and the other may have
// to stay then. Taken row by row, a mirrored shape would keep its other one, and so would the halves of a
// symmetric shape: pixel by pixel that adds up to lines that lie differently, and to a branch that is just
// long enough on one side only. So the squared distances of the eight pixels around decide, which are the
// same however the picture lies: by the last bits of their sum, which differ as soon as the sums do, mostly.
// Scan order is left for pixels whose surroundings are alike.
#include "raster/skeleton/removal_order.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <memory>
#include <utility>

namespace tarvex::skeleton {
namespace {

constexpr std::uint32_t kExactSquares = 64 * 64;
constexpr std::uint32_t kSums = 16;  // sums around a pixel that are told apart

/// Grows with the distance; the steps are fine enough to keep lines centred, and few.
std::uint32_t Steps(std::uint32_t square) {
    if (square <= kExactSquares) return square;
    return static_cast<std::uint32_t>(64 * std::sqrt(static_cast<double>(square)));
}

/// The sums of the squared distances in three rows, for a word's columns and those beside it.
class ColumnSums {
  public:
    ColumnSums(const BitPlane& plane, const DistanceMap& distances)
        : m_down(plane.Down()), m_distances(distances) {}

    /// To be called with a word's first position before the others are asked for.
    void Read(Position first) {
        const std::uint32_t* above = m_distances.Word(first - m_down);
        m_word = m_distances.Word(first);
        const std::uint32_t* below = m_distances.Word(first + m_down);
        for (std::size_t i = 0; i < 64; ++i) m_sums[i + 1] = above[i] + m_word[i] + below[i];
        m_sums.front() = OfColumn(first - 1);
        m_sums.back() = OfColumn(first + 64);
    }
    std::uint32_t Square(std::size_t i) const { return m_word[i]; }
    /// Around the word's i-th pixel, itself left out; too large ones wrap.
    std::uint32_t Around(std::size_t i) const {
        return m_sums[i] + m_sums[i + 1] + m_sums[i + 2] - m_word[i];
    }

  private:
    std::uint32_t OfColumn(Position p) const {
        return m_distances.At(p - m_down) + m_distances.At(p) + m_distances.At(p + m_down);
    }

    Position m_down;
    const DistanceMap& m_distances;
    const std::uint32_t* m_word = nullptr;
    std::array<std::uint32_t, 66> m_sums;
};

}  // namespace

std::vector<Position> RemovalOrder(const BitPlane& plane, const DistanceMap& distances,
                                   const BitPlane* except) {
    const auto forEachWord = [&](auto visit) {
        for (int y = 0; y < plane.Height(); ++y) {
            for (int i = 0; i < plane.Words(); ++i) {
                std::uint64_t word = plane.Row(y)[i];
                if (except != nullptr) word &= ~except->Row(y)[i];
                if (word != 0) visit(word, plane.At(i * 64, y));
            }
        }
    };
    std::size_t count = 0;
    forEachWord(
        [&count](std::uint64_t word, Position) { count += static_cast<std::size_t>(std::popcount(word)); });
    // Distances lie far apart in memory: looking at each of them once is half the time of sorting.
    const auto keys = std::make_unique_for_overwrite<std::uint32_t[]>(count);
    std::vector<std::uint32_t> next(std::size_t{kSums} * kExactSquares / 64);
    std::uint32_t* key = keys.get();
    ColumnSums sums(plane, distances);
    forEachWord([&](std::uint64_t word, Position first) {
        sums.Read(first);
        for (; word != 0; word &= word - 1) {
            const auto i = static_cast<std::size_t>(std::countr_zero(word));
            *key = kSums * Steps(sums.Square(i)) + sums.Around(i) % kSums;
            if (*key >= next.size()) next.resize(2 * std::size_t{*key});
            ++next[*key++];
        }
    });
    std::uint32_t sum = 0;
    for (std::uint32_t& n : next) sum += std::exchange(n, sum);
    std::vector<Position> sorted(count);
    key = keys.get();
    forEachWord([&](std::uint64_t word, Position first) {
        for (; word != 0; word &= word - 1)
            sorted[next[*key++]++] = first + static_cast<Position>(std::countr_zero(word));
    });
    return sorted;
}

}  // namespace tarvex::skeleton
