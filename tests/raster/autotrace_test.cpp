// Colour-region tracing: compared with the plain rules, and what becomes of the picture's reserved bytes.
#include "support/precompiled.h"

#include "tarvex/autotrace.h"

#include <set>

#include "platform/handles.h"
#include "raster/plain_auto_trace.h"
#include "support/property.h"
#include "tarvex/raster.h"

namespace tarvex {
namespace {

using test::ColourPicture;

RGBQUAD Grey(int level, int reserved = 0) {
    const BYTE v = static_cast<BYTE>(level);
    return {v, v, v, static_cast<BYTE>(reserved)};
}

/// A bitmap of the picture, and a way back.
class Bitmap32 {
  public:
    explicit Bitmap32(const ColourPicture& picture)
        : m_bitmap(CImgProc::CreateBitmap32(picture.width, picture.height)) {
        GetObject(m_bitmap.Get(), static_cast<int>(sizeof m_description), &m_description);
        for (int y = 0; y < picture.height; ++y)
            for (int x = 0; x < picture.width; ++x) At(x, y) = ColourPicture(picture).At(x, y);
    }
    HBITMAP Handle() const { return m_bitmap.Get(); }
    RGBQUAD& At(int x, int y) {
        return static_cast<RGBQUAD*>(
            m_description.bmBits)[(m_description.bmHeight - 1 - y) * m_description.bmWidth + x];
    }
    /// The values that reserved bytes have.
    std::set<int> Marks() {
        std::set<int> marks;
        for (int y = 0; y < m_description.bmHeight; ++y)
            for (int x = 0; x < m_description.bmWidth; ++x) marks.insert(At(x, y).rgbReserved);
        return marks;
    }

  private:
    UniqueBitmap m_bitmap;
    BITMAP m_description{};
};

ColourPicture Filled(int width, int height, int level) {
    ColourPicture picture(width, height);
    std::fill(picture.pixels.begin(), picture.pixels.end(), Grey(level));
    return picture;
}

void FillRectangle(ColourPicture& picture, int left, int top, int right, int bottom, int level) {
    for (int y = top; y <= bottom; ++y)
        for (int x = left; x <= right; ++x) picture.At(x, y) = Grey(level);
}

/// Rectangles of near and far colours, some with noise; rows of one to three words of bits.
ColourPicture AnyColours() {
    ColourPicture picture(*rc::gen::inRange(1, 140), *rc::gen::inRange(1, 45));
    std::mt19937 random(*rc::gen::arbitrary<unsigned>());
    const auto below = [&random](int bound) {
        return static_cast<int>(random() % static_cast<unsigned>(bound));
    };
    for (int i = below(12); i >= 0; --i) {
        const RGBQUAD colour{static_cast<BYTE>(100 + below(3)), static_cast<BYTE>(below(2) * 90),
                             static_cast<BYTE>(below(4)), 0};
        const int x = below(picture.width), y = below(picture.height);
        const int right = std::min(picture.width - 1, x + below(50)),
                  bottom = std::min(picture.height - 1, y + below(40));
        for (int py = y; py <= bottom; ++py)
            for (int px = x; px <= right; ++px)
                if (below(20) != 0) picture.At(px, py) = colour;
    }
    return picture;
}

std::vector<std::vector<DPOINT>> Outlines(const CPolyPolyDPoint& lines) {
    std::vector<std::vector<DPOINT>> outlines;
    for (int i = 0; i < lines.GetCount(); ++i) outlines.emplace_back(lines[i].begin(), lines[i].end());
    return outlines;
}

TEST(AutoTrace, YieldsTheOutlinesOfThePlainRules) {
    test::ExpectLaw(
        [] {
            const ColourPicture picture = AnyColours();
            Bitmap32 bitmap(picture);
            CAutoTrace tracer(bitmap.Handle(), 96);
            test::PlainAutoTrace plain(picture);
            for (int calls = 0; calls < 3; ++calls) {  // marks must not outlive a call
                const int x = test::AnyCoordinate(picture.width), y = test::AnyCoordinate(picture.height);
                const int tolerance =
                    *rc::gen::element(0, 1, 2, 9, 3000, 195075, std::numeric_limits<int>::max());
                const bool smooth = *rc::gen::arbitrary<bool>();
                tracer.SetFillFilter(smooth);
                tracer.DoTrace(x, y, nullptr, tolerance, *rc::gen::arbitrary<bool>(), true, false);
                RC_ASSERT(Outlines(tracer.TracedLines()) == plain.DoTrace(x, y, tolerance, smooth));
            }
        },
        400);
}

TEST(AutoTrace, StopsTheFillAtCutLinesAndKeepsColours) {
    ColourPicture picture = Filled(60, 40, 200);
    Bitmap32 bitmap(picture);
    CAutoTrace tracer(bitmap.Handle(), 96);
    tracer.SetFillFilter(false);
    auto line = std::make_unique<CArray<POINT, POINT>>();
    line->Add({30, 0});
    line->Add({30, 39});
    line->Add({30, 45});
    tracer.CutPolylines().Add(std::move(line));
    tracer.CutPolylines().Add(std::make_unique<CArray<POINT, POINT>>());
    tracer.DoTrace(10, 10, nullptr, 0, true, true, false);
    ASSERT_EQ(tracer.TracedLines().GetCount(), 1);
    double right = 0;
    for (const DPOINT& p : tracer.TracedLines()[0]) right = std::max(right, p.x);
    EXPECT_EQ(right, 28);  // a line two pixels wide covers columns 29 and 30
    EXPECT_EQ(bitmap.At(10, 10).rgbReserved, PIXEL_ATTR_DIGI);
    EXPECT_EQ(bitmap.At(50, 10).rgbReserved, 0);
    EXPECT_EQ(bitmap.At(30, 10).rgbRed, 200);
}

TEST(AutoTrace, ClearsForeignReservedBytesAndKeepsOnlyDigitisedMarks) {
    ColourPicture picture = Filled(40, 40, 0);
    FillRectangle(picture, 10, 10, 29, 29, 255);
    for (RGBQUAD& pixel : picture.pixels) pixel.rgbReserved = 255;
    picture.At(0, 0).rgbReserved = PIXEL_ATTR_DIGI;
    Bitmap32 bitmap(picture);
    CAutoTrace tracer(bitmap.Handle(), 96);
    tracer.DoTrace(20, 20, nullptr, 0, false, true, false);
    EXPECT_EQ(tracer.TracedLines().GetCount(), 1);
    EXPECT_THAT(bitmap.Marks(), testing::ElementsAre(0, PIXEL_ATTR_DIGI));
    EXPECT_EQ(bitmap.At(20, 20).rgbReserved, 0);
    tracer.SeedFillAD(20, 20);
    EXPECT_EQ(bitmap.At(20, 20).rgbReserved, PIXEL_ATTR_DIGI);
    EXPECT_EQ(bitmap.At(0, 0).rgbReserved, PIXEL_ATTR_DIGI);
    EXPECT_EQ(Outlines(tracer.TracedLines())[0].size(),
              77U);                                         // 19 steps along each side, and the start again
    tracer.DoTrace(20, 20, nullptr, 0, true, true, false);  // what is digitised may be filled again
    EXPECT_EQ(tracer.TracedLines().GetCount(), 1);
}

TEST(AutoTrace, HandsTheRegionToTheBreakUpOrTheSkeleton) {
    ColourPicture picture = Filled(140, 60, 0);
    FillRectangle(picture, 10, 20, 129, 39, 255);
    Bitmap32 bitmap(picture);
    CAutoTrace tracer(bitmap.Handle(), 96);
    CPolyPolyInclination inclinations;
    tracer.DoTrace(20, 30, &inclinations, 0, false, true, false);
    EXPECT_EQ(tracer.TracedLines().GetCount(), 2) << "two rails";
    EXPECT_EQ(inclinations.GetCount(), 2);
    EXPECT_TRUE(tracer.SkeletonCurves().IsEmpty());
    tracer.DoTrace(20, 30, nullptr, 0, false, true, true);
    EXPECT_EQ(tracer.SkeletonCurves().GetCount(), 1);
    EXPECT_TRUE(tracer.TracedLines().IsEmpty());
    tracer.DoTrace(0, 0, &inclinations, 0, false, true, false);  // the ground around it is a ring
    tracer.DoTrace(-5, 70, &inclinations, 0, false, true, false);
    EXPECT_TRUE(tracer.TracedLines().IsEmpty() && inclinations.IsEmpty());
}

TEST(AutoTrace, WorksOnNothingWithoutA32BitPicture) {
    const UniqueBitmap mono(CImgProc::CreateBitmapBW(20, 20));
    for (const HBITMAP handle : {HBITMAP{}, mono.Get()}) {
        CAutoTrace tracer(handle, 96);
        CPolyPolyInclination inclinations;
        tracer.CutPolylines().Add(std::make_unique<CArray<POINT, POINT>>());
        for (const bool skeleton : {false, true})
            tracer.DoTrace(5, 5, &inclinations, 1, true, true, skeleton);
        tracer.CutPolylines().RemoveAll();
        tracer.DoTrace(std::numeric_limits<int>::min(), std::numeric_limits<int>::max(), &inclinations, 1,
                       true, true, true);
        tracer.SeedFillAD(5, 5);
        tracer.SetPixel(5, 5, 1, 2, 3);
        EXPECT_TRUE(CAutoTrace::IsEqual(tracer.GetPixel(5, 5), Grey(0)));
        EXPECT_TRUE(CAutoTrace::IsEqual(tracer.GetMajorityPixel(5, 5), tracer.GetMeanPixel(5, 5)));
        EXPECT_TRUE(tracer.TracedLines().IsEmpty());
    }
}

TEST(AutoTrace, TakesColoursFromClampedWindows) {
    ColourPicture picture = Filled(20, 20, 0);
    FillRectangle(picture, 0, 0, 1, 1, 90);
    FillRectangle(picture, 10, 4, 13, 19, 100);
    FillRectangle(picture, 14, 4, 19, 19, 110);
    Bitmap32 bitmap(picture);
    CAutoTrace tracer(bitmap.Handle(), 96);
    // The corner's window is it four times, its neighbours twice each and the one across: all nine are set.
    EXPECT_TRUE(CAutoTrace::IsEqual(tracer.GetMeanPixel(-3, -9), Grey(90)));
    EXPECT_TRUE(CAutoTrace::IsEqual(tracer.GetMeanPixel(2, 0), Grey(30)));
    // 110 joins 100 (squared distance 300), which was seen first.
    EXPECT_TRUE(CAutoTrace::IsEqual(tracer.GetMajorityPixel(14, 10), Grey(100)));
    tracer.SetPixel(25, 25, 9, 8, 7);
    EXPECT_TRUE(CAutoTrace::IsEqual(tracer.GetPixel(19, 19), RGBQUAD{7, 8, 9, 0}));
    EXPECT_TRUE(CAutoTrace::IsAlmostEqual(Grey(0), Grey(1), 4));
    EXPECT_FALSE(CAutoTrace::IsAlmostEqual(Grey(0), Grey(1), 3)) << "strictly less";
}

}  // namespace
}  // namespace tarvex
