// Telling the drawing from its ground.
#include "support/precompiled.h"

#include "support/grey_picture.h"
#include "support/property.h"
#include "tarvex/contours.h"

namespace tarvex {
namespace {

using test::GreyPicture;

TEST(Threshold, CountsEveryPixelOfEveryRowWhateverTheStride) {
    const std::vector<std::uint8_t> levels = {0, 1, 2, 3, 4, 99, 5, 5, 5, 5, 5, 99};
    const GreyHistogram counts = CountLevels({levels.data(), 5, 2, 6});
    EXPECT_EQ(counts[5], 5u);
    EXPECT_EQ(counts[0], 1u);
    EXPECT_EQ(counts[99], 0u);
    EXPECT_EQ(std::accumulate(counts.begin(), counts.end(), std::uint64_t{0}), 10u);
}

TEST(Threshold, OtsuLiesInTheMiddleBetweenSeparatePeaks) {
    struct Case {
        std::vector<std::pair<int, int>> peaks;  // level, count
        int threshold;
    };
    const Case cases[] = {
        {{}, 127},
        {{{40, 9}}, 127},
        {{{0, 5}, {255, 5}}, 127},
        {{{0, 1}, {255, 1000}}, 127},
        {{{10, 7}, {20, 3}}, 14},
        {{{100, 7}, {101, 3}}, 100},
        {{{0, 50}, {100, 50}, {255, 100}}, 177},
    };
    for (const Case& c : cases) {
        GreyHistogram histogram{};
        for (const auto& [level, count] : c.peaks)
            histogram[static_cast<std::size_t>(level)] = static_cast<std::uint64_t>(count);
        EXPECT_EQ(OtsuThreshold(histogram), c.threshold);
    }
}

/// The variance between the classes, from its definition.
double BetweenVariance(const GreyHistogram& histogram, int threshold) {
    double count[2] = {};
    double sum[2] = {};
    for (int level = 0; level < 256; ++level) {
        const int side = level <= threshold ? 0 : 1;
        count[side] += static_cast<double>(histogram[static_cast<std::size_t>(level)]);
        sum[side] += static_cast<double>(histogram[static_cast<std::size_t>(level)]) * level;
    }
    if (count[0] == 0 || count[1] == 0) return 0;
    const double all = count[0] + count[1];
    const double difference = sum[0] / count[0] - sum[1] / count[1];
    return count[0] / all * (count[1] / all) * difference * difference;
}

TEST(Threshold, OtsuHasTheLargestVarianceBetweenTheClasses) {
    test::ExpectLaw([](const std::vector<std::uint8_t>& levels) {
        GreyHistogram histogram{};
        for (std::uint8_t level : levels) ++histogram[level];
        const double found = BetweenVariance(histogram, OtsuThreshold(histogram));
        for (int t = 0; t < 256; ++t) RC_ASSERT(BetweenVariance(histogram, t) <= found * (1 + 1e-12) + 1e-12);
    });
}

TEST(Threshold, TheShapeIsDarkUnlessAlmostTheWholeFrameAndThreeQuartersOfThePictureAre) {
    struct Case {
        std::vector<std::string> rows;
        ShapeSide side;
    };
    const Case cases[] = {
        {{"....", ".##.", "...."}, ShapeSide::dark},
        {{"####", "#..#", "####"}, ShapeSide::light},
        {{"####", "####", "####"}, ShapeSide::light},
        {{"###.", "#..#", "####"}, ShapeSide::light},              // 9 of 10 on the frame, 9 of 12 in all
        {{"##..", "####", "####"}, ShapeSide::dark},               // 8 of 10 on the frame
        {{"####", "#..#", "#..#", "####"}, ShapeSide::light},      // 12 of 16
        {{"#####", "#...#", "#..##", "#####"}, ShapeSide::light},  // 15 of 20
        {{"#####", "#...#", "#...#", "#####"}, ShapeSide::dark},   // 14 of 20: a light ground, framed
        {{"#"}, ShapeSide::light},
        {{"."}, ShapeSide::dark},
    };
    for (const Case& c : cases)
        EXPECT_EQ(FindShapeSide(GreyPicture(c.rows).View(), 127), c.side)
            << c.rows[0] << '/' << c.rows.size();
    EXPECT_EQ(FindShapeSide({}, 127), ShapeSide::dark);
}

}  // namespace
}  // namespace tarvex
