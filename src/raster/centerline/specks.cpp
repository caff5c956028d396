// Specks and pinholes.
//
// A small piece is found from its first pixel in scan order, which has no pixel of the piece before it in
// its neighbourhood. Few other pixels are like that, so most are passed over at a glance, and a fill from one
// of them stops as soon as it has found one pixel too many.
#include "raster/centerline/specks.h"

#include <algorithm>
#include <array>
#include <vector>

namespace tarvex::centerline {
namespace {

using skeleton::BitPlane;
using skeleton::Position;

constexpr skeleton::Window kBefore = 0xF;        // of a window: what comes before the centre in scan order
constexpr skeleton::Window kBesideBefore = 0xA;  // the same, of the four pixels beside it

/// The pixels that hang together with `first`, and are as it is, if they are at most `most`; none otherwise.
class SmallPiece {
  public:
    SmallPiece(const BitPlane& plane, int most)
        : m_plane(plane), m_most(static_cast<std::size_t>(std::min(most, kMostPixels))) {}

    const std::vector<Position>& From(Position first, bool isSet) {
        m_pixels.assign(1, first);
        for (std::size_t i = 0; i < m_pixels.size() && m_pixels.size() <= m_most; ++i) {
            if (!isSet && IsAtRim(m_pixels[i])) {  // not a hole but open ground
                m_pixels.clear();
                break;
            }
            const skeleton::Window window = m_plane.Around(m_pixels[i]);
            ForEachNeighbour(m_plane, m_pixels[i], isSet ? window : ~window & kSides, [this](Position q) {
                if (std::find(m_pixels.begin(), m_pixels.end(), q) == m_pixels.end()) m_pixels.push_back(q);
            });
        }
        if (m_pixels.size() > m_most) m_pixels.clear();
        return m_pixels;
    }

  private:
    static constexpr skeleton::Window kSides = 0xAA;
    static constexpr int kMostPixels = 256;

    bool IsAtRim(Position p) const {
        const auto [x, y] = m_plane.Where(p);
        return x <= 0 || y <= 0 || x + 1 >= m_plane.Width() || y + 1 >= m_plane.Height();
    }

    const BitPlane& m_plane;
    std::size_t m_most;
    std::vector<Position> m_pixels;
};

}  // namespace

void RemoveSpecks(BitPlane& plane, int most) {
    if (most < 1) return;
    SmallPiece piece(plane, most);
    std::vector<Position> going;
    for (int y = 0; y < plane.Height(); ++y) {
        for (int i = 0; i < plane.Words(); ++i) {
            for (std::uint64_t word = plane.Row(y)[i]; word != 0; word &= word - 1) {
                const Position p = plane.At(i * 64 + std::countr_zero(word), y);
                if ((plane.Around(p) & kBefore) != 0) continue;
                const std::vector<Position>& pixels = piece.From(p, true);
                going.insert(going.end(), pixels.begin(), pixels.end());
            }
        }
    }
    for (const Position p : going) plane.Clear(p);
    // A hole lies inside the picture, so its first pixel comes after a set one on its left and one above.
    going.clear();
    for (int y = 1; y + 1 < plane.Height(); ++y) {
        for (int i = 0; i < plane.Words(); ++i) {
            const std::uint64_t here = plane.Row(y)[i];
            const std::uint64_t left = here << 1 | plane.Row(y)[i - 1] >> 63;
            for (std::uint64_t word = ~here & left & plane.Row(y - 1)[i]; word != 0; word &= word - 1) {
                const int x = i * 64 + std::countr_zero(word);
                if (x + 1 >= plane.Width()) continue;
                const Position p = plane.At(x, y);
                if ((plane.Around(p) & kBesideBefore) != kBesideBefore) continue;
                const std::vector<Position>& pixels = piece.From(p, false);
                going.insert(going.end(), pixels.begin(), pixels.end());
            }
        }
    }
    for (const Position p : going) plane.Set(p);
}

}  // namespace tarvex::centerline
