// BitBlt, StretchBlt and FillRect against plain loops over single pixels.
#include "support/precompiled.h"

#include "platform/pictures.h"
#include "support/property.h"

namespace tarvex::test {
namespace {

constexpr int kFar[] = {std::numeric_limits<int>::min(), std::numeric_limits<int>::min() + 1, -1000000,
                        1000000, std::numeric_limits<int>::max()};

std::int64_t Distance(std::uint32_t a, std::uint32_t b) {
    std::int64_t sum = 0;
    for (int shift = 0; shift < 24; shift += 8) {
        const std::int64_t d = std::int64_t{a >> shift & 0xFF} - std::int64_t{b >> shift & 0xFF};
        sum += d * d;
    }
    return sum;
}

/// What a colour becomes on a picture, by the stated rule.
std::uint32_t Converted(const Picture& to, std::uint32_t colour) {
    if (to.Depth() == 32) return colour & kWhitePixel;
    return Distance(colour, to.Table()[1]) < Distance(colour, to.Table()[0]) ? 1 : 0;
}

/// What a stored value of one picture becomes on another.
std::uint32_t Copied(const Picture& to, const Picture& from, std::uint32_t value) {
    if (from.Depth() == 32) return to.Depth() == 32 ? value : Converted(to, value);
    if (to.Depth() == 1 && to.Table() == from.Table()) return value;
    return Converted(to, from.Table()[value]);
}

bool Contains(const Picture& picture, std::int64_t x, std::int64_t y) {
    return x >= 0 && y >= 0 && x < picture.Width() && y < picture.Height();
}

/// Every pixel's stored value, row by row.
std::vector<std::uint32_t> Values(const Picture& picture) {
    std::vector<std::uint32_t> values;
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < picture.Width(); ++x) values.push_back(picture.At(x, y));
    return values;
}

/// The bytes and bits that belong to no pixel, the pixels being masked out.
std::vector<std::uint8_t> Padding(const Picture& picture) {
    Picture mask(picture.Width(), picture.Height(), picture.Depth());
    for (int y = 0; y < mask.Height(); ++y)
        for (int x = 0; x < mask.Width(); ++x) mask.Set(x, y, 0xFFFFFFFF);
    std::vector<std::uint8_t> bytes = picture.Memory();
    if (picture.Depth() == 32) return {};
    std::vector<std::uint8_t> masks = mask.Memory();
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(bytes[i] & ~masks[i]);
    return bytes;
}

struct Place {
    int x, y, width, height, fromX, fromY, fromWidth, fromHeight;
};

/// The target's values when each pixel of the place has taken the pixel that lies under its centre, where
/// there is one. Everything is read before anything is written.
std::vector<std::uint32_t> PlainStretch(const Picture& to, const Picture& from, const Place& p) {
    std::vector<std::uint32_t> values = Values(to);
    if (p.fromWidth < 1 || p.fromHeight < 1) return values;
    const auto sample = [](std::int64_t i, std::int64_t n, std::int64_t m) {
        return (2 * i + 1) * m / (2 * n);
    };
    for (std::int64_t y = 0; y < to.Height(); ++y) {
        for (std::int64_t x = 0; x < to.Width(); ++x) {
            const std::int64_t i = x - p.x;
            const std::int64_t j = y - p.y;
            if (i < 0 || j < 0 || i >= p.width || j >= p.height) continue;
            const std::int64_t sourceX = p.fromX + sample(i, p.width, p.fromWidth);
            const std::int64_t sourceY = p.fromY + sample(j, p.height, p.fromHeight);
            if (!Contains(from, sourceX, sourceY)) continue;
            const std::uint32_t value = from.At(static_cast<int>(sourceX), static_cast<int>(sourceY));
            values[static_cast<std::size_t>(y * to.Width() + x)] = Copied(to, from, value);
        }
    }
    return values;
}

int Coordinate(int limit) {
    return *rc::gen::weightedOneOf<int>({{12, rc::gen::inRange(-limit / 2, limit)},
                                         {1, rc::gen::elementOf(std::vector<int>(kFar, kFar + 5))}});
}

std::array<std::uint32_t, 2> Table() {
    return *rc::gen::weightedOneOf<std::array<std::uint32_t, 2>>({
        {2, rc::gen::just(std::array<std::uint32_t, 2>{0, kWhitePixel})},
        {1, rc::gen::just(std::array<std::uint32_t, 2>{kWhitePixel, 0})},
        {1, rc::gen::just(std::array<std::uint32_t, 2>{0x404040, 0x707070})},
        {1, rc::gen::just(std::array<std::uint32_t, 2>{0x0000FF, 0x0000FF})},
        {2, rc::gen::map(rc::gen::pair(rc::gen::inRange(0u, 0x1000000u), rc::gen::inRange(0u, 0x1000000u)),
                         [](std::pair<unsigned, unsigned> p) {
                             return std::array<std::uint32_t, 2>{p.first, p.second};
                         })},
    });
}

std::unique_ptr<Picture> RandomPicture(int limit) {
    const int width = *rc::gen::inRange(1, limit);
    const int height = *rc::gen::inRange(1, 12) * (*rc::gen::arbitrary<bool>() ? 1 : -1);
    auto picture = std::make_unique<Picture>(width, height, *rc::gen::element(1, 32), Table());
    std::mt19937 engine(*rc::gen::inRange(0u, 1000000u));
    picture->Scramble(engine);
    return picture;
}

enum class Sizes { Equal, Any };

/// Copies between two pictures, or within one, at any place and compares with the plain copy.
template <class Copy>
void ExpectPlainCopies(Sizes sizes, Copy copy) {
    ExpectLaw(
        [&] {
            const int limit = *rc::gen::element(9, 70, 200);
            const auto to = RandomPicture(limit);
            const auto other = RandomPicture(limit);
            const Picture& from = *rc::gen::inRange(0, 3) == 0 ? *to : *other;
            Place p = {Coordinate(limit), Coordinate(12), Coordinate(2 * limit), Coordinate(24),
                       Coordinate(limit), Coordinate(12), Coordinate(limit),     Coordinate(12)};
            if (sizes == Sizes::Equal) p.fromWidth = p.width, p.fromHeight = p.height;
            const auto expected = PlainStretch(*to, from, p);
            const auto padding = Padding(*to);
            RC_ASSERT(copy(to->Dc(), from.Dc(), p) == TRUE);
            RC_ASSERT(Values(*to) == expected);
            RC_ASSERT(Padding(*to) == padding);
        },
        600);
}

TEST(Blit, CopiesWhatAPixelByPixelCopyDoes) {
    ExpectPlainCopies(Sizes::Equal, [](HDC to, HDC from, const Place& p) {
        return BitBlt(to, p.x, p.y, p.width, p.height, from, p.fromX, p.fromY, SRCCOPY);
    });
}

TEST(Stretch, TakesThePixelUnderEachCentre) {
    ExpectPlainCopies(Sizes::Any, [](HDC to, HDC from, const Place& p) {
        return StretchBlt(to, p.x, p.y, p.width, p.height, from, p.fromX, p.fromY, p.fromWidth, p.fromHeight,
                          SRCCOPY);
    });
}

TEST(Fill, LeavesOutTheRightColumnAndTheBottomRow) {
    ExpectLaw(
        [] {
            const auto picture = RandomPicture(100);
            const RECT r = {Coordinate(100), Coordinate(12), Coordinate(100), Coordinate(12)};
            const COLORREF colour = *rc::gen::inRange(0u, 0x1000000u);
            auto expected = Values(*picture);
            const auto padding = Padding(*picture);
            const std::uint32_t word = RGB(GetBValue(colour), GetGValue(colour), GetRValue(colour));
            for (int y = 0; y < picture->Height(); ++y) {
                for (int x = 0; x < picture->Width(); ++x) {
                    if (x >= r.left && x < r.right && y >= r.top && y < r.bottom)
                        expected[static_cast<std::size_t>(y * picture->Width() + x)] =
                            Converted(*picture, word);
                }
            }
            const UniqueBrush brush(CreateSolidBrush(colour));
            RC_ASSERT(FillRect(picture->Dc(), &r, brush.Get()) != 0);
            RC_ASSERT(Values(*picture) == expected);
            RC_ASSERT(Padding(*picture) == padding);
        },
        300);
}

TEST(Fill, WithTheEmptyBrushChangesNothing) {
    const Picture picture(8, 2, 1);
    const RECT all = {0, 0, 8, 2};
    EXPECT_NE(FillRect(picture.Dc(), &all, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH))), 0);
    EXPECT_NE(FillRect(picture.Dc(), &all, static_cast<HBRUSH>(GetStockObject(NULL_BRUSH))), 0);
    EXPECT_EQ(picture.Text(), "########\n########\n");
    EXPECT_NE(FillRect(picture.Dc(), &all, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH))), 0);
    EXPECT_EQ(picture.Text(), "........\n........\n");
}

TEST(Pixels, AreReadAndWrittenAsColours) {
    const Picture colour(2, -2, 32);
    colour.Set(1, 0, 0xAA000000);
    EXPECT_EQ(SetPixel(colour.Dc(), 1, 0, RGB(0x33, 0x22, 0x11)), RGB(0x33, 0x22, 0x11));
    EXPECT_EQ(colour.At(1, 0), 0x00332211u) << "blue lowest, the reserved byte 0";
    EXPECT_EQ(GetPixel(colour.Dc(), 1, 0), 0x112233u);

    const Picture mono(9, 1, 1, {0x0000FF, 0x00FF00});
    EXPECT_EQ(SetPixel(mono.Dc(), 8, 0, RGB(10, 200, 0)), RGB(0, 255, 0)) << "the colour it really got";
    EXPECT_EQ(mono.Bits()[1], 0x80);
    EXPECT_EQ(GetPixel(mono.Dc(), 0, 0), RGB(0, 0, 255));

    for (const auto& [x, y] : {std::pair(-1, 0), {0, -1}, {9, 0}, {0, 1}, {kFar[0], 0}, {0, kFar[4]}}) {
        EXPECT_EQ(GetPixel(mono.Dc(), x, y), CLR_INVALID);
        EXPECT_EQ(SetPixel(mono.Dc(), x, y, 0), CLR_INVALID);
    }
}

}  // namespace
}  // namespace tarvex::test
