// Regions of a picture of labels: numbered by joining pixels with their neighbours above and to the left, and
// freed from specks.
#include "raster/contours/regions.h"

#include <algorithm>
#include <numeric>
#include <unordered_map>

namespace tarvex::contours {

namespace {

/// Sets that are joined: every element leads to a smaller one, the smallest of a set to itself.
class Joined {
  public:
    std::int32_t Add() {
        m_next.push_back(static_cast<std::int32_t>(m_next.size()));
        return m_next.back();
    }
    std::int32_t Find(std::int32_t a) {
        while (At(a) != a) {
            At(a) = At(At(a));
            a = At(a);
        }
        return a;
    }
    std::int32_t Join(std::int32_t a, std::int32_t b) {
        a = Find(a);
        b = Find(b);
        if (a > b) std::swap(a, b);
        At(b) = a;
        return a;
    }
    std::size_t Size() const { return m_next.size(); }

  private:
    std::int32_t& At(std::int32_t a) { return m_next[static_cast<std::size_t>(a)]; }

    std::vector<std::int32_t> m_next;
};

/// Borders of the specks, and of whom they touch.
struct Sides {
    std::int64_t all = 0;
    std::unordered_map<RegionId, std::int64_t> with;
};

}  // namespace

RegionMap::RegionMap(const LabelView& picture) : m_width(picture.width), m_height(picture.height) {
    m_labels.resize(static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height));
    for (int y = 0; y < m_height; ++y)
        std::copy(picture.Row(y), picture.Row(y) + m_width,
                  m_labels.begin() + static_cast<std::ptrdiff_t>(Index(0, y)));
    Number();
}

Diagonal RegionMap::DiagonalAt(int x, int y) const {
    const std::uint16_t topLeft = Label(x - 1, y - 1);
    const std::uint16_t topRight = Label(x, y - 1);
    const std::uint16_t bottomLeft = Label(x - 1, y);
    const std::uint16_t bottomRight = Label(x, y);
    const bool falling = topLeft == bottomRight && topLeft != topRight && topLeft != bottomLeft;
    const bool rising = topRight == bottomLeft && topRight != topLeft && topRight != bottomRight;
    if (falling && rising) return IsRarer(x, y, topLeft, topRight) ? Diagonal::falling : Diagonal::rising;
    return falling ? Diagonal::falling : rising ? Diagonal::rising : Diagonal::none;
}

/// Whether label a has fewer of the 4 x 4 pixels around a corner than b; the smaller one in a tie.
bool RegionMap::IsRarer(int x, int y, std::uint16_t a, std::uint16_t b) const {
    int more = 0;
    for (int v = y - 2; v < y + 2; ++v) {
        for (int u = x - 2; u < x + 2; ++u) {
            const std::uint16_t label = Label(u, v);
            more += (label == a ? 1 : 0) - (label == b ? 1 : 0);
        }
    }
    return more != 0 ? more < 0 : a < b;
}

void RegionMap::Number() {
    Joined joined;
    joined.Add();  // the ground
    m_ids.assign(m_labels.size(), ground);
    for (int y = 0; y < m_height; ++y) {
        for (int x = 0; x < m_width; ++x) {
            const std::uint16_t label = Label(x, y);
            if (label == NO_LABEL) continue;
            RegionId id = ground;
            const auto join = [&](RegionId other) {
                id = id == ground ? joined.Find(other) : joined.Join(id, other);
            };
            if (x > 0 && Label(x - 1, y) == label) join(At(x - 1, y));
            if (y > 0 && Label(x, y - 1) == label) join(At(x, y - 1));
            if (y > 0 && x > 0 && Label(x - 1, y - 1) == label && DiagonalAt(x, y) == Diagonal::falling)
                join(At(x - 1, y - 1));
            if (y > 0 && x + 1 < m_width && Label(x + 1, y - 1) == label &&
                DiagonalAt(x + 1, y) == Diagonal::rising)
                join(At(x + 1, y - 1));
            m_ids[Index(x, y)] = id == ground ? joined.Add() : id;
        }
    }
    // Numbers without gaps, in the order of first pixels: a set's smallest element is its first pixel's.
    std::vector<RegionId> numbers(joined.Size(), ground);
    m_labelOf.assign(1, NO_LABEL);
    for (std::size_t i = 0; i < m_ids.size(); ++i) {
        if (m_ids[i] == ground) continue;
        RegionId& number = numbers[static_cast<std::size_t>(joined.Find(m_ids[i]))];
        if (number == ground) {
            number = static_cast<RegionId>(m_labelOf.size());
            m_labelOf.push_back(m_labels[i]);
        }
        m_ids[i] = number;
    }
}

void RegionMap::RemoveSpecks(int sides) {
    if (sides < 4) return;
    for (bool changed = true; changed;) {
        changed = false;
        std::vector<std::int64_t> around(m_labelOf.size());
        std::vector<std::int64_t> pixels(m_labelOf.size());
        const auto forEachSide = [this](auto visit) {
            for (int y = 0; y <= m_height; ++y) {
                for (int x = 0; x <= m_width; ++x) {
                    const RegionId here = At(x, y);
                    if (const RegionId left = At(x - 1, y); left != here) visit(left, here);
                    if (const RegionId above = At(x, y - 1); above != here) visit(above, here);
                }
            }
        };
        forEachSide([&](RegionId a, RegionId b) {
            ++around[static_cast<std::size_t>(a)];
            ++around[static_cast<std::size_t>(b)];
        });
        for (const RegionId id : m_ids) ++pixels[static_cast<std::size_t>(id)];
        const auto isSpeck = [&](RegionId id) {
            return id != ground && around[static_cast<std::size_t>(id)] <= sides;
        };
        std::unordered_map<RegionId, std::unordered_map<RegionId, int>> touching;
        forEachSide([&](RegionId a, RegionId b) {
            if (isSpeck(a)) ++touching[a][b];
            if (isSpeck(b)) ++touching[b][a];
        });
        if (touching.empty()) return;
        // Every speck goes to a larger region, or to one as large with a smaller number, so none go round
        // in a circle; the largest specks among specks wait for the next turn.
        std::vector<RegionId> into(m_labelOf.size());
        std::iota(into.begin(), into.end(), RegionId{0});
        for (const auto& [speck, neighbours] : touching) {
            RegionId best = ground;
            int longest = 0;
            for (const auto& [other, length] : neighbours) {
                const auto size = [&](RegionId id) { return pixels[static_cast<std::size_t>(id)]; };
                const bool larger =
                    size(other) > size(speck) || (size(other) == size(speck) && other < speck);
                if (other == ground || !larger) continue;
                if (length > longest || (length == longest && other < best)) {
                    longest = length;
                    best = other;
                }
            }
            const bool alone = neighbours.size() == 1 && neighbours.begin()->first == ground;
            if (best == ground && !alone) continue;
            into[static_cast<std::size_t>(speck)] = best;
            changed = true;
        }
        for (std::size_t i = 0; i < m_ids.size(); ++i) {
            RegionId id = m_ids[i];
            while (into[static_cast<std::size_t>(id)] != id) id = into[static_cast<std::size_t>(id)];
            m_labels[i] = m_labelOf[static_cast<std::size_t>(id)];
        }
        Number();
    }
}

}  // namespace tarvex::contours
