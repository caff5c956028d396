// Copying pixels from one surface to another.
//
// There are four pairs of depths and two ways to walk (pixel by pixel, or stretched). Straight copies
// have a loop for each pair, because they carry whole pictures: equal depths move bits or bytes, and
// a colour picture is turned into bits 32 pixels at a time, first to bytes of 0 or 1 (a loop that
// compilers turn into vector code), then eight bytes to eight bits by one multiplication. Stretched
// copies go through a line of destination values, built once for all the rows that repeat it.
#include "platform/surface.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "platform/bits.h"

namespace tarvex::platform {
namespace {

int Square(unsigned v) { return static_cast<int>(v * v); }

int SquaredLength(PixelWord colour) {
    return Square(colour & 0xFF) + Square(colour >> 8 & 0xFF) + Square(colour >> 16 & 0xFF);
}

/// Twice the difference of one channel.
int TwiceDifference(PixelWord a, PixelWord b, int shift) {
    return 2 * (static_cast<int>(b >> shift & 0xFF) - static_cast<int>(a >> shift & 0xFF));
}

/// The values that 0 and 1 of one table take in another.
std::array<PixelWord, 2> TableMap(const Surface& to, const Surface& from) {
    if (to.depth == Depth::Mono && to.table == from.table) return {0, 1};
    return {ValueOf(to, from.table[0]), ValueOf(to, from.table[1])};
}

/// Eight bytes of 0 or 1, the first becoming the most significant bit. No two of the products' terms
/// fall on the same bit, so nothing carries.
std::byte PackEight(const std::uint8_t* flags) {
    std::uint64_t v;
    std::memcpy(&v, flags, 8);
    return static_cast<std::byte>(v * 0x8040201008040201u >> 56);
}

/// Turns a row of 32-bit pixels into bits by a predicate on the pixel.
template <class Predicate>
void PackRow(std::byte* to, int toX, const std::byte* from, int fromX, int width, Predicate isOne) {
    int i = 0;
    for (; i < width && ((toX + i) & 7) != 0; ++i) StoreBit(to, toX + i, isOne(LoadPixel(from, fromX + i)));
    for (; width - i >= 32; i += 32) {
        const std::byte* source = from + std::ptrdiff_t{fromX + i} * 4;
        std::uint8_t flags[32];
        for (std::ptrdiff_t k = 0; k < 32; ++k) {
            PixelWord word;
            std::memcpy(&word, source + k * 4, 4);
            flags[k] = isOne(word) ? 1 : 0;
        }
        std::byte* target = to + ((toX + i) >> 3);
        for (std::ptrdiff_t k = 0; k < 4; ++k) target[k] = PackEight(flags + 8 * k);
    }
    for (; i < width; ++i) StoreBit(to, toX + i, isOne(LoadPixel(from, fromX + i)));
}

void CopyColourToMono(const Surface& to, const Surface& from, const CopyArea& area) {
    const NearestOfTwo nearest(to.table);
    for (int row = 0; row < area.height; ++row) {
        std::byte* toRow = to.Row(area.toY + row);
        const std::byte* fromRow = from.Row(area.fromY + row);
        if (nearest.IsBrightness()) {
            const int limit = nearest.BrightnessLimit();
            PackRow(toRow, area.toX, fromRow, area.fromX, area.width, [limit](PixelWord w) {
                return static_cast<int>((w & 0xFF) + (w >> 8 & 0xFF) + (w >> 16 & 0xFF)) > limit;
            });
        } else {
            PackRow(toRow, area.toX, fromRow, area.fromX, area.width, nearest);
        }
    }
}

/// Turns eight bits into eight pixels; `difference` is what separates the two colours.
void ExpandEight(std::byte* to, std::byte bits, PixelWord zero, PixelWord difference) {
    PixelWord words[8];
    for (int k = 0; k < 8; ++k) {
        const PixelWord all = 0u - (static_cast<PixelWord>(bits) >> (7 - k) & 1);
        words[k] = zero ^ (difference & all);
    }
    std::memcpy(to, words, sizeof words);
}

void CopyMonoToColour(const Surface& to, const Surface& from, const CopyArea& area) {
    const PixelWord zero = from.table[0];
    const PixelWord difference = zero ^ from.table[1];
    for (int row = 0; row < area.height; ++row) {
        std::byte* toRow = to.Row(area.toY + row);
        const std::byte* fromRow = from.Row(area.fromY + row);
        for (int i = 0; i < area.width;) {
            if (const int x = area.fromX + i; (x & 7) == 0 && area.width - i >= 8) {
                ExpandEight(toRow + std::ptrdiff_t{area.toX + i} * 4, fromRow[x >> 3], zero, difference);
                i += 8;
            } else {
                StorePixel(toRow, area.toX + i, from.table[LoadBit(fromRow, x) ? 1 : 0]);
                ++i;
            }
        }
    }
}

/// The row to copy as the `step`th: upwards from below where the rows overlap that way.
int RowInOrder(const CopyArea& area, int step) {
    return area.toY > area.fromY ? area.height - 1 - step : step;
}

void CopyMonoToMono(const Surface& to, const Surface& from, const CopyArea& area) {
    const std::array<PixelWord, 2> map = TableMap(to, from);
    if (map[0] == map[1]) {
        FillPixels(to, area.toX, area.toY, area.toX + area.width, area.toY + area.height, map[0]);
        return;
    }
    const std::uint8_t flip = map[0] == 0 ? 0 : 0xFF;
    const bool overlapsInRow = to.top == from.top && area.toY == area.fromY;
    std::vector<std::byte> line(overlapsInRow ? (static_cast<std::size_t>(area.width) + 7) / 8 : 0);
    for (int step = 0; step < area.height; ++step) {
        const int row = RowInOrder(area, step);
        const std::byte* source = from.Row(area.fromY + row);
        int sourceX = area.fromX;
        if (overlapsInRow) {
            CopyBits(line.data(), 0, source, sourceX, area.width, 0);
            source = line.data();
            sourceX = 0;
        }
        CopyBits(to.Row(area.toY + row), area.toX, source, sourceX, area.width, flip);
    }
}

void CopyColourToColour(const Surface& to, const Surface& from, const CopyArea& area) {
    for (int step = 0; step < area.height; ++step) {
        const int row = RowInOrder(area, step);
        std::memmove(to.Row(area.toY + row) + std::ptrdiff_t{area.toX} * 4,
                     from.Row(area.fromY + row) + std::ptrdiff_t{area.fromX} * 4,
                     static_cast<std::size_t>(area.width) * 4);
    }
}

/// Along one axis: the pixels of the target that are visible and have a source pixel.
struct Sampling {
    std::int64_t first = 0;    ///< counted from the target's corner
    std::vector<int> sources;  ///< the source coordinate of each, rising
};

Sampling SampleAxis(int toStart, int toSize, int toLimit, int fromStart, int fromSize, int fromLimit) {
    const std::int64_t first = std::max<std::int64_t>(0, -std::int64_t{toStart});
    const std::int64_t last = std::min<std::int64_t>(toSize, std::int64_t{toLimit} - toStart);
    Sampling sampling{first, {}};
    if (last > first) sampling.sources.reserve(static_cast<std::size_t>(last - first));
    for (std::int64_t i = first; i < last; ++i) {
        const std::int64_t source = fromStart + (2 * i + 1) * fromSize / (2 * std::int64_t{toSize});
        if (source < 0) {
            sampling.first = i + 1;
        } else if (source < fromLimit) {
            sampling.sources.push_back(static_cast<int>(source));
        } else {
            break;
        }
    }
    return sampling;
}

/// Reads the pixels in the given columns of a row as what they become in the destination.
class LineReader {
  public:
    LineReader(const Surface& to, const Surface& from)
        : m_from(from.depth), m_to(to.depth), m_nearest(to.table), m_map(TableMap(to, from)) {}

    void Read(const std::byte* row, const std::vector<int>& columns, std::vector<PixelWord>& line) const {
        const auto read = [&](auto valueAt) {
            std::transform(columns.begin(), columns.end(), line.begin(), valueAt);
        };
        if (m_from == Depth::Mono) {
            read([&](int x) { return m_map[LoadBit(row, x) ? 1 : 0]; });
        } else if (m_to == Depth::Mono) {
            read([&](int x) { return m_nearest(LoadPixel(row, x)) ? PixelWord{1} : PixelWord{0}; });
        } else {
            read([&](int x) { return LoadPixel(row, x); });
        }
    }

  private:
    Depth m_from;
    Depth m_to;
    NearestOfTwo m_nearest;
    std::array<PixelWord, 2> m_map;
};

/// A copy of a surface's pixels, for copies onto itself.
class Snapshot {
  public:
    explicit Snapshot(const Surface& surface) : m_view(surface) {
        const std::size_t pitch =
            static_cast<std::size_t>(surface.pitch < 0 ? -surface.pitch : surface.pitch);
        m_bytes.resize(pitch * static_cast<std::size_t>(surface.height));
        for (int y = 0; y < surface.height; ++y)
            std::memcpy(m_bytes.data() + pitch * static_cast<std::size_t>(y), surface.Row(y), pitch);
        m_view.top = m_bytes.data();
        m_view.pitch = static_cast<std::ptrdiff_t>(pitch);
    }
    const Surface& View() const { return m_view; }

  private:
    Surface m_view;
    std::vector<std::byte> m_bytes;
};

}  // namespace

NearestOfTwo::NearestOfTwo(const std::array<PixelWord, 2>& table)
    : m_blue(TwiceDifference(table[0], table[1], 0)),
      m_green(TwiceDifference(table[0], table[1], 8)),
      m_red(TwiceDifference(table[0], table[1], 16)),
      m_constant(SquaredLength(table[0]) - SquaredLength(table[1])) {}

int NearestOfTwo::BrightnessLimit() const {
    // m_blue * sum + m_constant > 0; the constant is not positive where the table gets brighter.
    return -m_constant / m_blue;
}

PixelWord ValueOf(const Surface& surface, PixelWord colour) {
    if (surface.depth == Depth::Colour) return colour & kColourBits;
    return NearestOfTwo(surface.table)(colour) ? 1 : 0;
}

CopyArea ClipCopy(const Surface& to, int toX, int toY, int width, int height, const Surface& from, int fromX,
                  int fromY) {
    const auto clip = [](std::int64_t toStart, std::int64_t fromStart, std::int64_t size, int toSize,
                         int fromSize) {
        const std::int64_t first = std::max({std::int64_t{0}, -toStart, -fromStart});
        const std::int64_t last = std::min({size, toSize - toStart, fromSize - fromStart});
        return std::array<std::int64_t, 2>{first, std::max<std::int64_t>(0, last - first)};
    };
    const auto [skipX, clippedWidth] = clip(toX, fromX, width, to.width, from.width);
    const auto [skipY, clippedHeight] = clip(toY, fromY, height, to.height, from.height);
    if (clippedWidth == 0 || clippedHeight == 0) return {};
    return {static_cast<int>(toX + skipX),   static_cast<int>(toY + skipY),  static_cast<int>(fromX + skipX),
            static_cast<int>(fromY + skipY), static_cast<int>(clippedWidth), static_cast<int>(clippedHeight)};
}

void CopyPixels(const Surface& to, const Surface& from, const CopyArea& area) {
    if (area.width <= 0 || area.height <= 0) return;
    if (to.depth == Depth::Mono) {
        from.depth == Depth::Mono ? CopyMonoToMono(to, from, area) : CopyColourToMono(to, from, area);
    } else {
        from.depth == Depth::Mono ? CopyMonoToColour(to, from, area) : CopyColourToColour(to, from, area);
    }
}

void StretchPixels(const Surface& to, const Extent& target, const Surface& from, const Extent& source) {
    if (target.width <= 0 || target.height <= 0 || source.width <= 0 || source.height <= 0) return;
    if (to.top == from.top) {
        const Snapshot before(from);
        StretchPixels(to, target, before.View(), source);
        return;
    }
    const Sampling columns = SampleAxis(target.x, target.width, to.width, source.x, source.width, from.width);
    const Sampling rows =
        SampleAxis(target.y, target.height, to.height, source.y, source.height, from.height);
    if (columns.sources.empty() || rows.sources.empty()) return;

    const LineReader reader(to, from);
    const int width = static_cast<int>(columns.sources.size());
    const int left = static_cast<int>(target.x + columns.first);
    const int top = static_cast<int>(target.y + rows.first);
    std::vector<PixelWord> line(columns.sources.size());
    int lineOf = -1;
    for (std::size_t row = 0; row < rows.sources.size(); ++row) {
        if (rows.sources[row] != lineOf) {
            lineOf = rows.sources[row];
            reader.Read(from.Row(lineOf), columns.sources, line);
        }
        std::byte* toRow = to.Row(top + static_cast<int>(row));
        const auto* words = reinterpret_cast<const std::byte*>(line.data());
        if (to.depth == Depth::Colour) {
            std::memcpy(toRow + std::ptrdiff_t{left} * 4, words, line.size() * 4);
        } else {
            PackRow(toRow, left, words, 0, width, [](PixelWord value) { return value != 0; });
        }
    }
}

void FillSpan(const Surface& surface, int y, int left, int right, PixelWord value) {
    std::byte* row = surface.Row(y);
    if (surface.depth == Depth::Mono) {
        FillBits(row, left, std::int64_t{right} - left, value != 0);
    } else {
        for (int x = left; x < right; ++x) StorePixel(row, x, value);
    }
}

void FillPixels(const Surface& surface, int left, int top, int right, int bottom, PixelWord value) {
    left = std::max(left, 0);
    right = std::min(right, surface.width);
    top = std::max(top, 0);
    bottom = std::min(bottom, surface.height);
    if (left >= right || top >= bottom) return;
    FillSpan(surface, top, left, right, value);
    for (int y = top + 1; y < bottom; ++y) {
        if (surface.depth == Depth::Mono) {
            FillSpan(surface, y, left, right, value);
        } else {
            const std::ptrdiff_t start = std::ptrdiff_t{left} * 4;
            std::memcpy(surface.Row(y) + start, surface.Row(top) + start,
                        static_cast<std::size_t>(right - left) * 4);
        }
    }
}

}  // namespace tarvex::platform
