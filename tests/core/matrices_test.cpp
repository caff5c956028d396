// Bit and byte grids: their bounds, their layout, and cells that several matrices share.
#include "support/precompiled.h"

#include "tarvex/matrices.h"

#include <set>

#include "platform/pictures.h"
#include "support/property.h"
#include "support/screen.h"
#include "tarvex/framework.h"

namespace tarvex {
namespace {

constexpr int kLowest = std::numeric_limits<int>::min();
constexpr int kHighest = std::numeric_limits<int>::max();

/// Cells beside a matrix of the stated size.
std::vector<std::pair<int, int>> Outside(int width, int height) {
    return {{width, height - 1}, {width, 0},   {width - 1, height}, {-1, 0},       {0, -1},      {-2, -2},
            {-8, -10},           {kLowest, 0}, {0, kLowest},        {kHighest, 0}, {0, kHighest}};
}

TEST(BitMatrix, IsOneCellLargerThanAskedInEachDirection) {
    CBitMatrix matrix(10, 5);
    EXPECT_EQ(matrix.SizeX(), 11);
    EXPECT_EQ(matrix.SizeY(), 6);
    EXPECT_EQ(matrix.RowBytes(), 2);
    matrix.Set(10, 5);
    EXPECT_TRUE(matrix.Get(10, 5));
    for (const auto& [w, bytes] : {std::pair{0, 1}, {6, 1}, {7, 1}, {8, 2}, {15, 2}, {16, 3}})
        EXPECT_EQ(CBitMatrix(w, 0).RowBytes(), bytes) << w;
}

TEST(BitMatrix, LeftmostColumnIsTheLowestBitOfItsByte) {
    CBitMatrix matrix(20, 1);
    int mask = -1;
    const unsigned char* bytes = matrix.getP(0, 0, mask);
    matrix.Set(0, 0);
    matrix.Set(7, 0);
    matrix.Set(8, 0);
    matrix.Set(19, 1);
    EXPECT_THAT(std::vector<int>(bytes, bytes + 6), testing::ElementsAre(0x81, 0x01, 0, 0, 0, 0x08));
    EXPECT_EQ(matrix.getP(19, 1, mask), bytes + 5);
    EXPECT_EQ(mask, 8);
    EXPECT_EQ(std::as_const(matrix).getP(16, 0, mask), bytes + 2);
    EXPECT_EQ(mask, 1);
}

TEST(BitMatrix, AccessOutsideIsHarmless) {
    CBitMatrix empty, none(-1, 5), inverted(-7, -9), matrix(10, 5);
    EXPECT_EQ(empty.SizeX(), 0);
    EXPECT_EQ(empty.SizeY(), 0);
    matrix.SetSize(10, 5);
    for (CBitMatrix* m : {&empty, &none, &inverted, &matrix}) {
        for (const auto& [x, y] : Outside(11, 6)) {
            m->Set(x, y);
            m->Set(x, y, true);
            m->Set(x, y, false);
            m->Clear(x, y);
            m->Toggle(x, y);
            EXPECT_FALSE(m->Get(x, y)) << x << ' ' << y;
            int mask = 77;
            EXPECT_EQ(m->getP(x, y, mask), nullptr) << x << ' ' << y;
            EXPECT_EQ(mask, 0) << x << ' ' << y;
        }
    }
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 11; ++x) EXPECT_FALSE(matrix.Get(x, y)) << x << ' ' << y;
}

TEST(BitMatrix, HoldsTheSetOfCellsThatWereSet) {
    test::ExpectLaw([](const std::vector<std::array<std::uint8_t, 3>>& calls) {
        CBitMatrix matrix(12, 9);
        std::set<std::pair<int, int>> model;
        for (const auto& [call, column, row] : calls) {
            const int x = column % 14 - 1, y = row % 11 - 1;
            const bool inside = x >= 0 && x <= 12 && y >= 0 && y <= 9;
            const std::pair cell{x, y};
            const bool was = model.contains(cell);
            bool is = was;
            switch (call % 5) {
                case 0:
                    matrix.Set(x, y), is = true;
                    break;
                case 1:
                    matrix.Clear(x, y), is = false;
                    break;
                case 2:
                    matrix.Toggle(x, y), is = !was;
                    break;
                default:
                    matrix.Set(x, y, call % 5 == 3), is = call % 5 == 3;
            }
            if (inside && is) model.insert(cell);
            if (!is) model.erase(cell);
        }
        for (int y = -1; y <= 10; ++y)
            for (int x = -1; x <= 13; ++x) RC_ASSERT(matrix.Get(x, y) == model.contains({x, y}));
    });
}

TEST(ByteMatrix, IsExactlyAsLargeAsAsked) {
    EXPECT_EQ(CByteMatrix().SizeX(), -1);
    EXPECT_EQ(CByteMatrix().SizeY(), -1);
    CByteMatrix matrix(10, 5);
    EXPECT_EQ(matrix.SizeX(), 10);
    EXPECT_EQ(matrix.SizeY(), 5);
    matrix.Set(9, 4, 3);
    matrix.Set(0, 1, 255);
    EXPECT_EQ(matrix.Get(9, 4), 3);
    EXPECT_EQ(matrix.Row(4)[9], 3);
    EXPECT_EQ(matrix.Get(0, 1), 255);
    matrix.Row(2)[3] = 8;
    EXPECT_EQ(matrix.Get(3, 2), 8);
    EXPECT_EQ(matrix.Row(0).size(), 10u);
}

TEST(ByteMatrix, AccessOutsideIsHarmless) {
    CByteMatrix empty, flat(10, 0), thin(0, 5), inverted(-3, -4), matrix(10, 5);
    for (CByteMatrix* m : {&empty, &flat, &thin, &inverted, &matrix}) {
        m->SetAll(1);
        m->SetAllIf(1, 2);
        for (const auto& [x, y] : Outside(10, 5)) {
            m->Set(x, y, 3);
            EXPECT_EQ(m->Get(x, y), 0) << x << ' ' << y;
        }
        for (int y : {-1, 5, kLowest, kHighest}) EXPECT_TRUE(m->Row(y).empty()) << y;
    }
    for (int y = 0; y < 5; ++y) EXPECT_THAT(matrix.Row(y), testing::Each(2));
}

TEST(ByteMatrix, SetAllIfChangesOnlyTheCellsOfThatValue) {
    CByteMatrix matrix(3, 2);
    matrix.Set(1, 0, 5);
    matrix.Set(2, 1, 9);
    matrix.SetAllIf(0, 9);
    EXPECT_THAT(matrix.Row(0), testing::ElementsAre(9, 5, 9));
    matrix.SetAllIf(5, 0);
    EXPECT_THAT(matrix.Row(0), testing::ElementsAre(9, 0, 9));
    EXPECT_THAT(matrix.Row(1), testing::ElementsAre(9, 9, 9));
}

/// The definition, cell by cell.
bool HitByDefinition(const CByteMatrix& matrix, int x, int y, int r, unsigned char value) {
    for (int row = y - r; row <= y + r; ++row)
        for (int column = x - r; column <= x + r; ++column)
            if (matrix.Get(column, row) != 0 && matrix.Get(column, row) != value) return true;
    return false;
}

TEST(ByteMatrix, HitFindsForeignCellsInTheSquare) {
    test::ExpectLaw(
        [](const std::vector<std::array<std::uint8_t, 3>>& cells, std::int8_t x, std::int8_t y,
           std::uint8_t r) {
            CByteMatrix matrix(13, 9);
            for (const auto& [cx, cy, v] : cells)
                matrix.Set(cx % 13, cy % 9, static_cast<unsigned char>(v % 3));
            const int cx = x % 20, cy = y % 20, radius = r % 6 - 1;
            RC_ASSERT(matrix.Hit(cx, cy, radius, 1) == HitByDefinition(matrix, cx, cy, radius, 1));
        },
        300);
}

TEST(ByteMatrix, HitAtTheEdgesOfItsContract) {
    CByteMatrix matrix(7, 7);
    matrix.Set(2, 2, 5);
    matrix.Set(4, 4, 2);
    struct Case {
        const char* what;
        int x, y, r;
        bool isHit;
    };
    for (const Case& c : {Case{"a negative radius is an empty square", 4, 4, -1, false},
                          {"the least radius", 4, 4, kLowest, false},
                          {"the greatest radius", 0, 0, kHighest, true},
                          {"reaches down to column and row 0", kHighest, kHighest, kHighest, true},
                          {"does not reach up to them", kLowest, kLowest, kHighest, false},
                          {"far to the right", kHighest, 0, 3, false}})
        EXPECT_EQ(matrix.Hit(c.x, c.y, c.r, 5), c.isHit) << c.what;
    EXPECT_FALSE(CByteMatrix().Hit(0, 0, kHighest, 5));
}

TEST(MatrixDump, PaintsEachCellAtItsPixel) {
    CBitMatrix bits(1, 1);  // two by two cells
    bits.Set(1, 0);
    CByteMatrix bytes(5, 2);
    for (int i = 0; i < 10; ++i) bytes.Set(i % 5, i / 5, static_cast<unsigned char>(i < 8 ? i : 240 + i));
    const std::vector<COLORREF> palette = {0x000000, 0x0000FF, 0x00FF00, 0xFF0000, 0x00FFFF,
                                           0xFF00FF, 0xFFFF00, 0xFFFFFF, 0x000000, 0x0000FF};
    for (const bool onScreen : {false, true}) {
        if (onScreen && !test::CanReadScreen()) continue;
        const test::Picture picture(8, 8, 32);
        const ScreenDC screen(GetDC(nullptr));
        CDC dc(picture.Dc());
        CDC* target = onScreen ? nullptr : &dc;
        const HDC shown = onScreen ? screen.Get() : picture.Dc();
        for (int i = 0; i < 64; ++i) SetPixel(shown, i % 8, i / 8, 0x123456);

        bytes.Dump(target);
        std::vector<COLORREF> painted;
        for (int i = 0; i < 10; ++i) painted.push_back(GetPixel(shown, i % 5, i / 5));
        EXPECT_EQ(painted, palette);
        EXPECT_EQ(GetPixel(shown, 5, 0), 0x123456u);
        EXPECT_EQ(GetPixel(shown, 0, 2), 0x123456u);

        bits.Dump(target);
        EXPECT_EQ(GetPixel(shown, 0, 0), 0u);
        EXPECT_EQ(GetPixel(shown, 1, 0), 0xFFFFFFu);
        EXPECT_EQ(GetPixel(shown, 0, 1), 0u);
        EXPECT_EQ(GetPixel(shown, 1, 1), 0u);
        EXPECT_EQ(GetPixel(shown, 2, 0), palette[2]);
    }
    CDC nowhere;
    bytes.Dump(&nowhere);
    CByteMatrix(-4, -4).Dump(nullptr);
}

// --- What both kinds share -----------------------------------------------------------------------

template <class Matrix>
class Matrices : public testing::Test {};
using Kinds = testing::Types<CBitMatrix, CByteMatrix>;
TYPED_TEST_SUITE(Matrices, Kinds);

TYPED_TEST(Matrices, CopiesShareTheirCellsUntilOneIsSizedAnew) {
    TypeParam other(3, 3);
    {
        TypeParam matrix(8, 8);
        other = matrix;
        const TypeParam third(matrix);
        matrix.Set(1, 1, 1);
        EXPECT_TRUE(other.Get(1, 1));
        EXPECT_TRUE(third.Get(1, 1));
        EXPECT_EQ(other.SizeX(), matrix.SizeX());
        matrix.SetSize(2, 2);
        EXPECT_FALSE(matrix.Get(1, 1));
        matrix.Set(0, 0, 1);
        EXPECT_FALSE(other.Get(0, 0));
    }
    EXPECT_TRUE(other.Get(1, 1)) << "the cells outlive the matrix that made them";
    other.Set(7, 7, 1);
    EXPECT_TRUE(other.Get(7, 7));
    const TypeParam& same = other;
    other = same;
    EXPECT_TRUE(other.Get(1, 1));
    other.SetSize(8, 8);
    EXPECT_FALSE(other.Get(1, 1)) << "sizing clears also when the size stays";
}

TEST(BitMatrix, SizesThatCannotBeAddressedRaiseAndChangeNothing) {
    CBitMatrix matrix(8, 8);
    matrix.Set(1, 1);
    EXPECT_THROW(matrix.SetSize(kHighest, 0), CInvalidArgException);
    EXPECT_THROW(matrix.SetSize(0, kHighest), CInvalidArgException);
    EXPECT_EQ(matrix.SizeX(), 9);
    EXPECT_TRUE(matrix.Get(1, 1));
}

}  // namespace
}  // namespace tarvex
