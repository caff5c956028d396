// Outline tracing: its contract at the edges, and the fast tracer against the plain rules.
#include "support/precompiled.h"

#include "tarvex/shapetrace.h"

#include "raster/plain_shape_trace.h"
#include "support/ascii_raster.h"
#include "support/property.h"

namespace tarvex {
namespace {

using test::BitPicture;
using test::Drawn;
using Points = CArray<DPOINT, DPOINT>;

constexpr int kLowest = std::numeric_limits<int>::min();
constexpr int kHighest = std::numeric_limits<int>::max();

CShapeTrace TracerOf(const BitPicture& picture) { return CShapeTrace(test::Bitmap1(picture).Get()); }

std::vector<std::vector<BPOINT>> Contours(const CPolyPolyBezier& shape) {
    std::vector<std::vector<BPOINT>> all;
    for (int i = 0; i < shape.GetCount(); ++i)
        all.emplace_back(shape[i].GetData(), shape[i].GetData() + shape[i].GetSize());
    return all;
}

/// The same bits in every node.
bool Identical(const std::vector<std::vector<BPOINT>>& a, const std::vector<std::vector<BPOINT>>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& ca, const auto& cb) {
        return ca.size() == cb.size() && std::memcmp(ca.data(), cb.data(), ca.size() * sizeof(BPOINT)) == 0;
    });
}

BitPicture Marks(CShapeTrace& tracer, int width, int height) {
    BitPicture picture(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) picture.Set(x, y, tracer.GetTracePixel(x, y));
    }
    return picture;
}

// Lines are seen in stretches that depend on the seed, so in one picture of them some seeds see too little
// and others enough.
TEST(ShapeTrace, YieldsTheContoursAndMarksOfThePlainRules) {
    test::ExpectLaw(
        [](unsigned seed) {
            const bool isOfLines = *rc::gen::inRange(0, 5) < 2;
            const BitPicture picture = isOfLines ? test::ThinLines(150, 120, 8, seed) : test::AnyPicture();
            const int minPoints = isOfLines ? *rc::gen::inRange(65, 1500)
                                            : *rc::gen::element(-1, 0, 4, 10, 40, 100, 400, 1000, kHighest);
            CShapeTrace tracer = TracerOf(picture);
            test::PlainShapeTrace plain(picture);
            for (const int least : {minPoints, 0}) {
                CPolyPolyBezier out;
                RC_ASSERT(tracer.DoTrace(out, least));
                const std::string what = "minPoints " + std::to_string(minPoints) + "\n" + picture.Text();
                if (!Identical(Contours(out), plain.DoTrace(least))) RC_FAIL(what);
                if (Marks(tracer, picture.Width(), picture.Height()) != plain.Trace())
                    RC_FAIL("marks, " + what);
            }
        },
        700);
}

// Points that are in the array beforehand count as walked.
TEST(ShapeTrace, OutlinesAreThoseOfThePlainRules) {
    test::ExpectLaw(
        [] {
            const BitPicture picture = test::AnyPicture();
            const int x = test::AnyCoordinate(picture.Width()), y = test::AnyCoordinate(picture.Height());
            const int minPoints = *rc::gen::inRange(0, 30);
            CShapeTrace tracer = TracerOf(picture);
            test::PlainShapeTrace plain(picture);
            if (*rc::gen::inRange(0, 2) == 1) {
                CPolyPolyBezier out;
                tracer.DoTrace(out, 50);
                plain.DoTrace(50);
            }
            Points points;
            for (int i = *rc::gen::element(0, 0, 0, 1, 12); i > 0; --i) points.Add({i * 1.0, 7});
            const auto [expectedTaken, expected] =
                plain.GetOutline(x, y, minPoints, {points.begin(), points.end()});
            RC_ASSERT((tracer.GetOutline(x, y, points, minPoints) == 1) == expectedTaken);
            RC_ASSERT(std::equal(points.begin(), points.end(), expected.begin(), expected.end()));
        },
        400);
}

TEST(ShapeTrace, WithoutABitmapThereIsNothingAndNothingFails) {
    CShapeTrace tracer(nullptr);
    CPolyPolyBezier out;
    out.Add(new CArray<BPOINT, BPOINT>);
    EXPECT_FALSE(tracer.DoTrace(out, 10));
    EXPECT_EQ(out.GetCount(), 1);
    tracer.AddEdges(0, 0, out, 10);
    tracer.SeedFill(0, 0);
    tracer.SetPixel(0, 0, true);
    tracer.SetTracePixel(0, 0, true);
    EXPECT_FALSE(tracer.GetPixel(0, 0) || tracer.GetTracePixel(0, 0));
    Points points;
    EXPECT_EQ(tracer.GetOutline(0, 0, points, 0), 0);
    EXPECT_EQ(tracer.in_cont(0, 0, false), 0);
    EXPECT_EQ(out.GetCount(), 1);
}

UniqueBitmap ColourBitmap(int width, int height, void** bits) {
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    return UniqueBitmap(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, bits, nullptr, 0));
}

#ifndef _WIN32  // which describes a bitmap without saying which way its rows run
TEST(ShapeTrace, TopDownBitmapsYieldNoContours) {
    void* bits = nullptr;
    const UniqueBitmap bitmap = ColourBitmap(40, -40, &bits);
    ASSERT_TRUE(bitmap);
    std::memset(bits, 0xFF, std::size_t{40} * 40 * 4);
    CShapeTrace tracer(bitmap.Get());
    CPolyPolyBezier out;
    out.Add(new CArray<BPOINT, BPOINT>);
    EXPECT_TRUE(tracer.DoTrace(out, 10));
    EXPECT_EQ(out.GetCount(), 0);
    EXPECT_FALSE(tracer.GetPixel(3, 3));
    tracer.SetPixel(3, 3);
    tracer.SeedFill(3, 3);
}
#endif

TEST(ShapeTrace, ColourBitmapsAreTracedWhereTheyAreLight) {
    void* bits = nullptr;
    const UniqueBitmap bitmap = ColourBitmap(40, 30, &bits);
    ASSERT_TRUE(bitmap);
    std::memset(bits, 0xFF, std::size_t{40} * 15 * 4);  // the lower half
    CShapeTrace tracer(bitmap.Get());
    CPolyPolyBezier out;
    ASSERT_TRUE(tracer.DoTrace(out, 10));
    ASSERT_EQ(out.GetCount(), 1);
    EXPECT_EQ(out[0][0].pt, (DPOINT{0, 20})) << "the first seed row in the light half";
}

TEST(ShapeTrace, ARectangleIsWalkedCounterclockwiseFromItsCorner) {
    BitPicture picture(60, 40);
    picture.FillRectangle(0, 0, 49, 29);
    Points points;
    ASSERT_EQ(TracerOf(picture).GetOutline(30, 0, points, 10), 1);
    ASSERT_EQ(points.GetSize(), 2 * 49 + 2 * 29 + 1);
    EXPECT_EQ(points[0], (DPOINT{0, 0}));
    EXPECT_EQ(points[1], (DPOINT{0, 1}));
    EXPECT_EQ(points[30], (DPOINT{1, 29}));
}

TEST(ShapeTrace, TheNextDirectionIsSoughtFromBehindTheLastStep) {
    CShapeTrace tracer = TracerOf(Drawn({"###", "###", "###"}));
    int nx = 0, ny = 0;
    const int first[8] = {1, 3, 3, 5, 5, 7, 7, 1};
    for (int lastDir = 0; lastDir < 8; ++lastDir)
        EXPECT_EQ(tracer.Neighbor(1, 1, lastDir, &nx, &ny, true), first[lastDir]) << lastDir;
    // From the corner, coming by direction 1: 3 lies outside, 2 is next.
    EXPECT_EQ(tracer.Neighbor(0, 0, 1, &nx, &ny, true), 2);
    EXPECT_EQ((std::pair{nx, ny}), (std::pair{0, 1}));
    // None is clear: 0, and the last one tried, which lies one above the first.
    EXPECT_EQ(tracer.Neighbor(1, 1, 1, &nx, &ny, false), 0);
    EXPECT_EQ((std::pair{nx, ny}), (std::pair{0, 1}));
    for (const int extreme : {kLowest, kHighest}) {
        tracer.Neighbor(extreme, extreme, extreme, &nx, &ny, true);
        EXPECT_EQ(tracer.Probe(extreme, 1, extreme > 0 ? 0 : 4, &nx, &ny, true), 0);
    }
}

TEST(ShapeTrace, PixelOperationsClampTheirCoordinates) {
    CShapeTrace tracer = TracerOf(Drawn({"#..", "..."}));
    EXPECT_TRUE(tracer.GetPixel(-5, -1));
    EXPECT_TRUE(tracer.GetPixel(kLowest, kLowest));
    EXPECT_FALSE(tracer.GetPixel(kHighest, kHighest));
    tracer.SetPixel(kHighest, kHighest);
    EXPECT_TRUE(tracer.GetPixel(2, 1));
    tracer.SetPixel(-1, -1, false);
    EXPECT_FALSE(tracer.GetPixel(0, 0));
    EXPECT_FALSE(tracer.GetTracePixel(0, 0));
    tracer.SetTracePixel(-1, 7);
    EXPECT_TRUE(tracer.GetTracePixel(0, 1));
    EXPECT_EQ(tracer.in_cont(2, 1, true), 1);
    EXPECT_EQ(tracer.in_cont(3, 1, true), 0) << "in_cont does not clamp";
    EXPECT_EQ(tracer.in_cont(-1, 0, false), 0);
}

TEST(ShapeTrace, TheTracerWorksOnACopyThatItsOwnCopiesShare) {
    const UniqueBitmap bitmap = test::Bitmap1(Drawn({"####", "####"}));
    auto original = std::make_unique<CShapeTrace>(bitmap.Get());
    CShapeTrace copy(*original), assigned(nullptr);
    original->PUSH(0, 1, 2, 1);
    assigned = *original;
    original->SetPixel(1, 1, false);
    original.reset();
    EXPECT_FALSE(copy.GetPixel(1, 1));
    EXPECT_TRUE(copy.GetPixel(2, 1));
    EXPECT_TRUE(CShapeTrace(bitmap.Get()).GetPixel(1, 1)) << "the caller's bitmap is not touched";
    int y = -1, xl = -1, xr = -1, dy = -1;
    copy.POP(y, xl, xr, dy);
    EXPECT_EQ(y, -1) << "copied before the record was pushed";
    assigned.POP(y, xl, xr, dy);
    EXPECT_EQ((std::array{y, xl, xr, dy}), (std::array{1, 1, 2, 1}));
}

TEST(ShapeTrace, TheFillStackDropsRowsOutsideTheRaster) {
    CShapeTrace tracer = TracerOf(Drawn({"##", "##"}));
    for (const auto& [y, dy] : {std::pair{1, 1}, {0, -1}, {kHighest, kHighest}, {kLowest, kLowest}})
        tracer.PUSH(y, 0, 1, dy);
    int y = 5, xl = 5, xr = 5, dy = 5;
    tracer.POP(y, xl, xr, dy);
    EXPECT_EQ(y, 5) << "nothing was pushed, nothing is popped";
    tracer.PUSH(2, 0, 1, -1);
    tracer.POP(y, xl, xr, dy);
    EXPECT_EQ((std::array{y, xl, xr, dy}), (std::array{1, 0, 1, -1}));
}

}  // namespace
}  // namespace tarvex
