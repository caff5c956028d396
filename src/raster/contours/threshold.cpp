// Telling the drawing from its ground: level counts, Otsu's threshold and the shape's side.
#include <algorithm>
#include <bit>
#include <cstring>

#include "raster/contours/level_set.h"
#include "tarvex/contours.h"

namespace tarvex {

GreyHistogram CountLevels(const GreyView& picture) {
    // Four tables, so that runs of one level do not wait for the counter they have just changed; and
    // eight pixels of the same level as the one before, the usual thing in drawings, count at once.
    std::array<GreyHistogram, 4> counts{};
    for (int y = 0; y < picture.height; ++y) {
        const std::uint8_t* row = picture.Row(y);
        int x = 0;
        for (; x + 8 <= picture.width; x += 8) {
            std::uint64_t eight = 0;
            std::memcpy(&eight, row + x, 8);
            if (eight == row[x] * std::uint64_t{0x0101010101010101}) {
                counts[0][row[x]] += 8;
                continue;
            }
            for (int k = 0; k < 8; ++k) ++counts[static_cast<std::size_t>(k & 3)][row[x + k]];
        }
        for (; x < picture.width; ++x) ++counts[0][row[x]];
    }
    for (std::size_t level = 0; level < 256; ++level)
        counts[0][level] += counts[1][level] + counts[2][level] + counts[3][level];
    return counts[0];
}

int OtsuThreshold(const GreyHistogram& histogram) {
    double total = 0;
    double sum = 0;
    for (std::size_t level = 0; level < 256; ++level) {
        total += static_cast<double>(histogram[level]);
        sum += static_cast<double>(histogram[level]) * static_cast<double>(level);
    }
    double best = 0;
    int first = 127;
    int last = 127;
    double darkCount = 0;
    double darkSum = 0;
    for (int level = 0; level < 255; ++level) {
        const auto count = static_cast<double>(histogram[static_cast<std::size_t>(level)]);
        darkCount += count;
        darkSum += count * level;
        const double lightCount = total - darkCount;
        if (darkCount == 0 || lightCount == 0) continue;
        const double difference = darkSum / darkCount - (sum - darkSum) / lightCount;
        const double between = darkCount * lightCount * difference * difference;
        if (between > best) {
            best = between;
            first = last = level;
        } else if (between == best && last == level - 1) {
            last = level;
        }
    }
    return (first + last) / 2;
}

ShapeSide FindShapeSide(const GreyView& picture, int threshold) {
    if (picture.width <= 0 || picture.height <= 0) return ShapeSide::dark;
    const auto level = static_cast<std::uint8_t>(std::clamp(threshold, 0, 255));
    std::uint64_t frame = 0;
    std::uint64_t darkFrame = 0;
    std::uint64_t dark = 0;
    for (int y = 0; y < picture.height; ++y) {
        const std::uint8_t* row = picture.Row(y);
        std::uint64_t darkInRow = 0;
        for (int x = 0; threshold >= 0 && x < picture.width; x += 64)
            darkInRow += static_cast<std::uint64_t>(
                std::popcount(contours::DarkBits(row + x, std::min(64, picture.width - x), level)));
        dark += darkInRow;
        if (y == 0 || y == picture.height - 1) {
            frame += static_cast<std::uint64_t>(picture.width);
            darkFrame += darkInRow;
        } else {
            frame += picture.width > 1 ? 2 : 1;
            darkFrame += row[0] <= threshold ? 1 : 0;
            if (picture.width > 1) darkFrame += row[picture.width - 1] <= threshold ? 1 : 0;
        }
    }
    const std::uint64_t all =
        static_cast<std::uint64_t>(picture.width) * static_cast<std::uint64_t>(picture.height);
    return 10 * darkFrame >= 9 * frame && 4 * dark >= 3 * all ? ShapeSide::light : ShapeSide::dark;
}

}  // namespace tarvex
