// Pixels of bitmaps, and line tracing against its plain rules.
#include "support/precompiled.h"

#include "raster/plain_line_tracer.h"
#include "support/ascii_raster.h"
#include "support/property.h"
#include "support/screen.h"
#include "tarvex/raster.h"

namespace tarvex {
namespace {

using test::BitPicture;
using test::Drawn;
using test::PlainLineTracer;
using Lines = std::vector<PlainLineTracer::Line>;

constexpr int kLowest = std::numeric_limits<int>::min();
constexpr int kHighest = std::numeric_limits<int>::max();

BITMAP Description(int width, int height, int depth, void* bits) {
    BITMAP bitmap{};
    bitmap.bmWidth = width;
    bitmap.bmHeight = height;
    bitmap.bmWidthBytes = 12345;  // never to be used
    bitmap.bmPlanes = 1;
    bitmap.bmBitsPixel = static_cast<WORD>(depth);
    bitmap.bmBits = bits;
    return bitmap;
}

BITMAP Description(HBITMAP handle) {
    BITMAP bitmap{};
    GetObject(handle, static_cast<int>(sizeof bitmap), &bitmap);
    return bitmap;
}

CImgProc Loaded(const std::vector<std::string_view>& rows) {
    return CImgProc(test::Bitmap1(Drawn(rows)).Get());
}

Lines LinesOf(const CPolyPolyPoint& lines) {
    Lines all;
    for (int i = 0; i < lines.GetCount(); ++i) {
        all.emplace_back();
        for (int k = 0; k < lines[i].GetSize(); ++k) all.back().emplace_back(lines[i][k].x, lines[i][k].y);
    }
    return all;
}

std::string Cells(const CByteMatrix& mat) {
    std::string text;
    for (int y = 0; y < mat.SizeY(); ++y) {
        for (int x = 0; x < mat.SizeX(); ++x)
            text += static_cast<char>(mat.Get(x, y) == 0 ? '.' : '0' + mat.Get(x, y));
        text += '\n';
    }
    return text;
}

bool SameCells(const CByteMatrix& mat, const PlainLineTracer& plain) {
    for (int y = 0; y < mat.SizeY(); ++y) {
        for (int x = 0; x < mat.SizeX(); ++x) {
            if (mat.Get(x, y) != plain.Get(x, y)) return false;
        }
    }
    return true;
}

TEST(ImgProc, RowsArePaddedToWholeWords) {
    for (const auto& [bits, bytes] :
         {std::pair{0U, 0U}, {1U, 4U}, {32U, 4U}, {33U, 8U}, {64U, 8U}, {0xFFFFFFFFU, 0x20000000U}})
        EXPECT_EQ(CImgProc::WIDTHBYTES(bits), bytes) << bits;
}

TEST(ImgProc, BitsAreFoundFromTheBottomUpMostSignificantFirst) {
    std::vector<std::uint8_t> bits(8);
    const BITMAP bitmap = Description(10, 2, 1, bits.data());
    CImgProc::SetPixel(bitmap, 9, 0, true);
    EXPECT_EQ(bits, (std::vector<std::uint8_t>{0, 0, 0, 0, 0, 0x40, 0, 0}));
    CImgProc::SetPixel(bitmap, 0, 1, true);
    EXPECT_EQ(bits, (std::vector<std::uint8_t>{0x80, 0, 0, 0, 0, 0x40, 0, 0}));
    EXPECT_TRUE(CImgProc::GetPixel(bitmap, 9, 0));
    EXPECT_FALSE(CImgProc::GetPixel(bitmap, 9, 1));
    CImgProc::SetPixel(bitmap, 9, 0, false);
    EXPECT_FALSE(CImgProc::GetPixel(bitmap, 9, 0));
}

TEST(ImgProc, ColoursAreRedInTheLowBitsAndLeaveTheReservedByte) {
    std::vector<std::uint8_t> bits = {0x11, 0x22, 0x33, 0x44, 0, 0, 0, 9, 0, 0, 1, 0, 0, 0, 0, 0};
    const BITMAP bitmap = Description(2, 2, 32, bits.data());
    EXPECT_EQ(CImgProc::GetPixel32(bitmap, 0, 1), 0x112233u);
    EXPECT_TRUE(CImgProc::GetPixel(bitmap, 0, 1));
    EXPECT_FALSE(CImgProc::GetPixel(bitmap, 1, 1)) << "only the reserved byte is not zero";
    EXPECT_TRUE(CImgProc::GetPixel(bitmap, 0, 0)) << "red 1";
    CImgProc::SetPixel32(bitmap, 0, 1, 0xFFA1B2C3);
    EXPECT_THAT(std::vector<int>(bits.begin(), bits.begin() + 4),
                testing::ElementsAre(0xA1, 0xB2, 0xC3, 0x44));
}

TEST(ImgProc, PixelsOutsideAndAtOtherDepthsAreNotSet) {
    std::vector<std::uint8_t> bits(64, 0xFF);
    const std::vector<std::uint8_t> untouched = bits;
    for (const int depth : {1, 32, 8, 24}) {
        for (const int height : {2, 0, -2}) {
            const BITMAP bitmap = Description(2, height, depth, bits.data());
            for (const auto& [x, y] :
                 {std::pair{-1, 0}, {2, 0}, {0, -1}, {0, 2}, {kLowest, kLowest}, {kHighest, kHighest}}) {
                EXPECT_FALSE(CImgProc::GetPixel(bitmap, x, y));
                EXPECT_EQ(CImgProc::GetPixel32(bitmap, x, y), 0u);
                CImgProc::SetPixel(bitmap, x, y, false);
                CImgProc::SetPixel32(bitmap, x, y, 0);
                EXPECT_EQ(CImgProc::CountPointPaths(bitmap, x, y), 0);
            }
            EXPECT_EQ(CImgProc::GetPixel(bitmap, 0, 0), (depth == 1 || depth == 32) && height == 2);
        }
    }
    EXPECT_EQ(bits, untouched);
    EXPECT_FALSE(CImgProc::GetPixel(Description(2, 2, 32, nullptr), 0, 0));
}

TEST(ImgProc, CreatesBlackBottomUpBitmaps) {
    for (const int depth : {1, 32}) {
        const UniqueBitmap bitmap(depth == 1 ? CImgProc::CreateBitmapBW(33, 5)
                                             : CImgProc::CreateBitmap32(33, 5));
        DIBSECTION section{};
        ASSERT_EQ(GetObject(bitmap.Get(), static_cast<int>(sizeof section), &section),
                  static_cast<int>(sizeof section));
        EXPECT_EQ(section.dsBmih.biHeight, 5);
        EXPECT_EQ(section.dsBm.bmWidth, 33);
        EXPECT_EQ(section.dsBm.bmBitsPixel, depth);
        for (int y = 0; y < 5; ++y) {
            for (int x = 0; x < 33; ++x) EXPECT_FALSE(CImgProc::GetPixel(section.dsBm, x, y));
        }
    }
    EXPECT_EQ(CImgProc::CreateBitmapBW(0, 5), nullptr);
    EXPECT_EQ(CImgProc::CreateBitmap32(5, kHighest), nullptr);
}

TEST(ImgProc, WhiteIsWhatIsSetInABitmapThatItMakes) {
    const UniqueBitmap bitmap(CImgProc::CreateBitmapBW(4, 4));
    CImgProc::SetPixel(Description(bitmap.Get()), 1, 2, true);
    {
        const UniqueDC dc(CreateCompatibleDC(nullptr));
        const SelectedObject selected(dc.Get(), bitmap.Get());
        EXPECT_EQ(GetPixel(dc.Get(), 1, 2), RGB(255, 255, 255));
        EXPECT_EQ(GetPixel(dc.Get(), 2, 1), RGB(0, 0, 0));
    }
    if (!test::CanReadScreen()) return;
    const ScreenDC screen(GetDC(nullptr));
    SetPixel(screen.Get(), 2, 1, RGB(1, 2, 3));
    CImgProc::DumpBmp(bitmap.Get());
    EXPECT_EQ(GetPixel(screen.Get(), 1, 2), RGB(255, 255, 255));
    EXPECT_EQ(GetPixel(screen.Get(), 2, 1), RGB(0, 0, 0));
}

TEST(ImgProc, CountsAreThoseOfTheirDefinitions) {
    test::ExpectLaw(
        [](unsigned seed) {
            std::mt19937 random(seed);
            CImgProc img;
            PlainLineTracer plain(BitPicture(9, 7));
            img.mat().SetSize(9, 7);
            for (int y = 0; y < 7; ++y) {
                for (int x = 0; x < 9; ++x) {
                    const int value = random() % 2 == 0 ? 0 : static_cast<int>(random() % 4);
                    img.mat().Set(x, y, static_cast<unsigned char>(value));
                    plain.Set(x, y, value);
                }
            }
            for (int y = -1; y <= 7; ++y) {
                for (int x = -1; x <= 9; ++x) {
                    RC_ASSERT(img.CountPointPaths(x, y) == plain.Count(x, y, plain.NotEmpty()));
                    RC_ASSERT(img.CountPointPaths2(x, y) == plain.Count2(x, y, plain.NotEmpty()));
                    RC_ASSERT(img.CountPointPaths3(x, y) == plain.Count3(x, y));
                    for (unsigned char v = 0; v < 4; ++v) {
                        RC_ASSERT(img.CountPointPaths(x, y, v) == plain.Count(x, y, plain.Equal(v)));
                        RC_ASSERT(img.CountPointPaths2(x, y, v) == plain.Count2(x, y, plain.Equal(v)));
                        RC_ASSERT(img.CountPointPaths3(x, y, v) == plain.Count3(x, y, v));
                    }
                }
            }
        },
        200);
}

TEST(ImgProc, CountsAndLinesAtTheEndsOfTheCoordinateRangeAreNone) {
    CImgProc img = Loaded({"##", "##"});
    for (const int x : {kLowest, kHighest}) {
        for (const int y : {kLowest, kHighest, 0}) {
            EXPECT_EQ(img.CountPointPaths(x, y) + img.CountPointPaths2(x, y, 1) + img.CountPointPaths3(y, x),
                      0);
            int atX = x, atY = y;
            EXPECT_FALSE(img.TraceLinePoint(atX, atY));
            CArray<POINT, POINT> line;
            img.GetPolylineFromAnchor(line, x, y);
            EXPECT_TRUE(line.IsEmpty());
        }
    }
}

TEST(ImgProc, TracesTheLinesOfThePlainRules) {
    test::ExpectLaw(
        [] {
            const BitPicture picture = test::AnyPicture();
            const int maxLines = *rc::gen::element(0, 0, 1, 3, 500, -1);
            CImgProc img(test::Bitmap1(picture).Get());
            CPolyPolyPoint lines;
            lines.Add(new CArray<POINT, POINT>);
            img.TraceAnchorPointsAndLines(lines, maxLines);
            PlainLineTracer plain(picture);
            if (LinesOf(lines) != plain.Trace(maxLines)) RC_FAIL(picture.Text());
            if (!SameCells(img.mat(), plain)) RC_FAIL("cells of\n" + picture.Text() + Cells(img.mat()));
        },
        400);
}

TEST(ImgProc, SingleStepsAndSearchesAreThoseOfThePlainRules) {
    test::ExpectLaw(
        [](unsigned seed) {
            const BitPicture picture = test::ThinLines(24, 16, 5, seed);
            CImgProc img(test::Bitmap1(picture).Get());
            PlainLineTracer plain(picture);
            for (int round = 0; round < 30; ++round) {
                const int n = *rc::gen::inRange(0, 4);
                int x = -7, y = -7, px = -7, py = -7;
                RC_ASSERT(img.FindLinePoint(x, y, n) == plain.FindLinePoint(px, py, n));
                RC_ASSERT((std::pair{x, y}) == (std::pair{px, py}));
                RC_ASSERT(img.TraceLinePoint(x, y) == plain.Step(px, py));
                RC_ASSERT((std::pair{x, y}) == (std::pair{px, py}));
                RC_ASSERT(SameCells(img.mat(), plain));
            }
        },
        200);
}

TEST(ImgProc, ARingIsOneLineFromItsOneAnchorBackToIt) {
    CImgProc img = Loaded({".####.", "#....#", "#....#", "#....#", ".####."});
    CPolyPolyPoint lines;
    img.TraceAnchorPointsAndLines(lines, 0);
    ASSERT_EQ(lines.GetCount(), 1);
    const auto line = LinesOf(lines)[0];
    EXPECT_EQ(line.size(), 15u);
    EXPECT_EQ(line.front(), line.back());
    EXPECT_EQ(img.mat().Get(line.front().first, line.front().second), IMGPROC_ANCHOR);
}

TEST(ImgProc, LooseStubsReachToBothSidesStopAtTheLimitAndAreAppended) {
    CPolyPolyPoint lines;
    Loaded({"...", "...", "..#"}).TraceLoosePoints(lines, 0);
    EXPECT_EQ(LinesOf(lines), (Lines{{{1, 2}, {2, 2}, {3, 2}}}));
    CImgProc img = Loaded({"#.#", "###"});
    for (const auto& [limit, count] : {std::pair(3, 3), {3, 4}, {0, 9}}) {
        img.TraceLoosePoints(lines, limit);
        EXPECT_EQ(lines.GetCount(), count) << "the limit is looked at after a stub is appended";
    }
    EXPECT_EQ(Cells(img.mat()), "1.1\n111\n");
}

TEST(ImgProc, DrawnLinesHaveAnchorsAtTheirEnds) {
    CImgProc img = Loaded({"####", "####", "####"});
    CPolyPolyPoint lines;
    const auto add = [&lines](std::initializer_list<POINT> points) {
        auto line = std::make_unique<CArray<POINT, POINT>>();
        for (const POINT& p : points) line->Add(p);
        lines.Add(std::move(line));
    };
    add({{0, 0}, {1, 0}, {2, 0}, {3, 0}});
    lines.Add(static_cast<CArray<POINT, POINT>*>(nullptr));
    add({});
    add({{2, 2}});
    add({{-1, 1}, {0, 1}, {1, 0}, {kHighest, kLowest}});
    add({{3, 1}, {3, 0}, {3, 2}});
    img.MakeLinesMat(lines);
    EXPECT_EQ(Cells(img.mat()), "2111\n1..2\n..22\n");
}

TEST(ImgProc, CopiesShareTheirCellsUntilOneIsLoadedAnew) {
    const UniqueBitmap bitmap = test::Bitmap1(Drawn({"#.", ".#"}));
    auto original = std::make_unique<CImgProc>(bitmap.Get());
    CImgProc copy(*original);
    original->mat().Set(1, 0, 7);
    EXPECT_EQ(copy.mat().Get(1, 0), 7);
    original->InitMat(bitmap.Get());
    EXPECT_EQ(copy.mat().Get(1, 0), 7);
    EXPECT_EQ(original->mat().Get(1, 0), 0);
    original->InitMat(nullptr);
    EXPECT_EQ(Cells(original->mat()), "1.\n.1\n");
    original.reset();
    EXPECT_EQ(Cells(copy.mat()), "17\n.1\n");
    EXPECT_EQ(CImgProc().mat().SizeX(), -1);
}

}  // namespace
}  // namespace tarvex
