// What the library takes from the system it gives back.
#include "support/precompiled.h"

#include "platform/handles.h"
#include "support/ascii_raster.h"
#include "support/contours.h"
#include "support/handle_count.h"
#include "tarvex/tarvex.h"

namespace tarvex::test {
namespace {

CPolyPolyBezier Square(double from, double to) {
    CPolyPolyBezier square;
    AddTo(square, Corners(Box(from, from, to, to)));
    return square;
}

UniqueBitmap Bitmap32(const BitPicture& picture) {
    UniqueBitmap bitmap(CImgProc::CreateBitmap32(picture.Width(), picture.Height()));
    BITMAP description{};
    GetObject(bitmap.Get(), sizeof description, &description);
    auto* pixel = static_cast<RGBQUAD*>(description.bmBits);
    for (int y = picture.Height() - 1; y >= 0; --y) {
        for (int x = 0; x < picture.Width(); ++x) {
            const auto level = static_cast<BYTE>(picture.Get(x, y) ? 255 : 0);
            *pixel++ = {level, level, level, 0};
        }
    }
    return bitmap;
}

void TraceAll(HBITMAP mono, HBITMAP colour) {
    CPolyPolyBezier lines;
    EXPECT_TRUE(CShapeTrace(mono).DoTrace(lines, 4));
    CSkeleton skeleton;
    EXPECT_TRUE(skeleton.InputMono(mono) && skeleton.Output(lines));
    CPolyPolyInclination inclinations;
    CAutoTrace(colour, 96).DoTrace(12, 12, &inclinations, 0, false, false, false);
    RGBQUAD palette[2];
    int count = 2;
    CColorReduction(colour).DoColorReduction(palette, count, 0);
}

void ShapeAll() {
    for (const int op : {SHAPING_DIFFERENCE, SHAPING_INTERSECTION, SHAPING_UNION}) {
        CPolyPolyBezier a = Square(0, 40);
        CPolyPolyBezier b = Square(15, 55);
        EXPECT_TRUE(PolyPolyBezierBmpShaping(op, a, b, ALTERNATE, WINDING));
    }
}

void BreakUp(HBITMAP image) {
    CPolyPolyDPoint outline;
    AddTo(outline, Polyline(Box(4, 4, 20, 20)));
    CPolyPolyInclination inclinations;
    CAutoBreakUp breakUp;
    breakUp.AutoBreakUp(image, 96, outline, inclinations, true);
}

TEST(Handles, CountsSeeOneMore) {
    const HandleCount before = HandlesInUse();
    const UniqueBrush brush(CreateSolidBrush(RGB(1, 2, 3)));
    EXPECT_EQ(HandlesInUse().drawing, before.drawing + 1);
#ifdef _WIN32
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    EXPECT_EQ(HandlesInUse().system, before.system + 1);
    CloseHandle(event);
#endif
}

TEST(Handles, AreAsManyAfterAThousandTracingsShapingsAndBreakUps) {
    BitPicture picture(24, 24);
    picture.FillRectangle(4, 4, 19, 19);
    const UniqueBitmap mono = Bitmap1(picture);
    const UniqueBitmap colour = Bitmap32(picture);
    HandleCount before;
    for (int i = 0; i <= 1000; ++i) {
        TraceAll(mono.Get(), colour.Get());
        ShapeAll();
        BreakUp(colour.Get());
        if (i == 0) before = HandlesInUse();  // what the system itself makes once is there now
    }
    const HandleCount after = HandlesInUse();
    EXPECT_EQ(after.drawing, before.drawing);
    EXPECT_EQ(after.system, before.system);
}

}  // namespace
}  // namespace tarvex::test
