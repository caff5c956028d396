// CRandomGenerator: reference words, equal sequences, intervals.
#include "support/precompiled.h"

#include "tarvex/random.h"

namespace tarvex::test {
namespace {

std::vector<double> Next(CRandomGenerator& random, int count) {
    std::vector<double> values;
    for (int i = 0; i < count; ++i) values.push_back(random.Random());
    return values;
}

TEST(RandomGenerator, GivesTheWordsOfItsDefinition) {
    struct Row {
        unsigned long seed;
        std::array<std::uint32_t, 5> first;
        std::uint32_t thousandth;
    };
    for (const Row& row : {
             Row{1, {0xA88191B6, 0xD8DA22A4, 0x51190FCB, 0x161E2447, 0x582ABB84}, 0x9F7235BA},
             Row{12345, {0xCB0C8986, 0x7013CBC6, 0x53C8E0D3, 0x3B4EC78A, 0xFDBC1CFA}, 0xFAE9D1A8},
             Row{0xFFFFFFFF, {0x63006407, 0x0C73955B, 0xBC4CADB3, 0x4C90CA42, 0x9E4AAAAB}, 0x5F680D6C},
         }) {
        CRandomGenerator random(row.seed);
        const std::vector<double> values = Next(random, 1000);
        for (std::size_t i = 0; i < row.first.size(); ++i)
            EXPECT_EQ(values[i], row.first[i] / 4294967296.0) << row.seed << " at " << i;
        EXPECT_EQ(values.back(), row.thousandth / 4294967296.0) << row.seed;
        EXPECT_TRUE(std::all_of(values.begin(), values.end(), [](double v) { return v >= 0 && v < 1; }));
    }
}

TEST(RandomGenerator, RepeatsForEqualSeedsAndInCopies) {
    CRandomGenerator first, second(0), third(0xFFFFFFFF);
    const auto values = Next(first, 50);
    EXPECT_EQ(Next(second, 50), values);
    EXPECT_EQ(Next(third, 50), values);
    second.RandomInit(7);
    EXPECT_NE(Next(second, 50), values);
    second = first;
    EXPECT_EQ(Next(second, 50), Next(first, 50));
}

TEST(RandomGenerator, DrawsIntegersOfTheInterval) {
    CRandomGenerator random;
    for (int i = 0; i < 1000; ++i) {
        const int drawn = random.iRandom();
        EXPECT_GE(drawn, 1000000);
        EXPECT_LE(drawn, 100000000);
    }
    random.SetInterval(5, 5);
    for (int i = 0; i < 20; ++i) EXPECT_EQ(random.iRandom(), 5);
    random.SetInterval(-2, 3);
    std::array<int, 6> counts{};
    for (int i = 0; i < 6000; ++i) ++counts[static_cast<std::size_t>(random.iRandom() + 2)];
    for (const int count : counts) EXPECT_NEAR(count, 1000, 150) << "five standard deviations";

    // Intervals inside out, empty or wider than int: some integer, and nothing overflows.
    const int least = std::numeric_limits<int>::min(), most = std::numeric_limits<int>::max();
    random.SetInterval(9, 5);
    EXPECT_EQ(random.iRandom(), 9 - 3) << "the span of -3 counts as its own far end";
    random.SetInterval(9, 8);
    EXPECT_EQ(random.iRandom(), 9);
    for (const auto& [low, high] :
         {std::pair{least, most}, {most, least}, {0, most}, {least, 0}, {-1, most}}) {
        random.SetInterval(low, high);
        for (int i = 0; i < 20; ++i) random.iRandom();
    }
}

}  // namespace
}  // namespace tarvex::test
