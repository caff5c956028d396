// Pair adjustments out of GPOS tables, sound and damaged.
#include "support/precompiled.h"

#include "platform/font_kerning.h"
#include "support/property.h"

namespace tarvex::platform::test {
namespace {

using Words = std::vector<int>;

std::vector<std::byte> Table(const Words& words) {
    std::vector<std::byte> bytes;
    for (const int w : words) {
        bytes.push_back(static_cast<std::byte>(w >> 8 & 0xFF));
        bytes.push_back(static_cast<std::byte>(w & 0xFF));
    }
    return bytes;
}

/// A table with one `kern` feature, one lookup, and in it these two subtables, the second one by an extension
/// where that is asked for. Offsets count bytes, two a word.
Words WithSubtables(const Words& first, const Words& second, bool isExtended) {
    const int firstSize = 2 * static_cast<int>(first.size());
    Words words = {1, 0,      0,      10, 28,        // version, scripts, features at 10, lookups at 28
                   1, 0x6B65, 0x726E, 8,  0,  1, 0,  // one feature: kern, at 18; its lookups: 0
                   0, 0,                             // (unused)
                   1, 4};                            // one lookup, at 32
    const int type = isExtended ? 9 : 2;
    const int head = 10;  // of the lookup: type, flags, count, two offsets
    const int extension = isExtended ? 8 : 0;
    words.insert(words.end(), {type, 0, 2, head, head + extension + firstSize});
    const auto add = [&](const Words& subtable) {
        if (isExtended) words.insert(words.end(), {1, 2, 0, 8});
        words.insert(words.end(), subtable.begin(), subtable.end());
    };
    add(first);
    add(second);
    return words;
}

// Pairs one by one: glyph 5 before 7 gets -100 and before 9 gets 20. The value has a placement before the
// advance, and the second glyph a value too.
const Words kPairs = {1, 12, 5, 1, 1, 18, 1, 1, 5, 2, 7, 1, -100, 3, 9, 1, 20, 3};

// By classes: glyphs 5 and 6 (class 0 and 1) before glyphs 7 to 9 (class 1): 11 and -33.
const Words kClasses = {2, 24, 4, 0,   34, 42, 2, 2,  // covers at 24, classes at 34 and 42
                        0, 11, 0, -33,                // by first and second class
                        2, 1,  5, 6,   0,             // the glyphs 5 to 6
                        1, 6,  1, 1,                  // glyph 6 is of class 1
                        2, 1,  7, 9,   1};            // the glyphs 7 to 9 are of class 1

TEST(Kerning, TheFirstSubtableThatHasThePairCounts) {
    for (const bool isExtended : {false, true}) {
        const KerningTable table(Table(WithSubtables(kPairs, kClasses, isExtended)));
        ASSERT_TRUE(table.HasPairs());
        const std::tuple<std::uint16_t, std::uint16_t, int> cases[] = {
            {5, 7, -100}, {5, 9, 20}, {5, 8, 11}, {6, 7, -33}, {6, 9, -33},   {6, 10, 0},
            {5, 6, 0},    {4, 7, 0},  {7, 7, 0},  {0, 0, 0},   {65535, 7, 0}, {5, 65535, 0}};
        for (const auto& [left, right, value] : cases)
            EXPECT_EQ(table.Adjustment(left, right), value) << left << ' ' << right << ' ' << isExtended;
    }
    EXPECT_FALSE(KerningTable().HasPairs());
    EXPECT_EQ(KerningTable(Table({1, 0, 0, 10, 0, 0})).Adjustment(1, 2), 0);
}

TEST(Kerning, DamagedTablesAreReadWithinTheirBytesAndInBoundedTime) {
    tarvex::test::ExpectLaw(
        [](std::uint32_t seed, std::uint8_t changes, std::uint8_t cut) {
            auto bytes = Table(WithSubtables(kPairs, kClasses, seed % 2 == 0));
            std::mt19937 random(seed);
            for (int i = 0; i < changes % 16; ++i)
                bytes[random() % bytes.size()] = static_cast<std::byte>(random() % 2 == 0 ? 0xFF : random());
            if (cut % 2 == 0) bytes.resize(bytes.size() * cut / 256);
            const KerningTable table(std::move(bytes));
            for (const int left : {0, 5, 6, 65535}) {
                for (const int right : {0, 7, 9, 65535}) {
                    const int value =
                        table.Adjustment(static_cast<std::uint16_t>(left), static_cast<std::uint16_t>(right));
                    RC_ASSERT(std::abs(value) <= 2000 * 32768);
                }
            }
        },
        500);
    // Every list as long as can be, and all of them in one another's place.
    const KerningTable table(Table(Words(70000, 0x6B65)));
    EXPECT_EQ(table.Adjustment(1, 2), 0);
}

}  // namespace
}  // namespace tarvex::platform::test
