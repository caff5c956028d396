// Pictures that are no drawings, thinned, traced and searched for edges.
#include "support/precompiled.h"

#include <ctime>

#include "platform/handles.h"
#include "tarvex/edges.h"
#include "tarvex/imagetrace.h"
#include "tarvex/raster.h"
#include "tarvex/skeleton.h"

namespace tarvex {
namespace {

struct OddPicture {
    const char* name;
    int width, height;
    std::function<bool(int x, int y)> isSet;
    int skeletonPixels, branches, strokes, edges;
};

const std::vector<OddPicture>& OddPictures() {
    const auto all = [](int, int) { return true; };
    const auto none = [](int, int) { return false; };
    const auto everyOther = [](int x, int y) { return (x + y) % 2 == 0; };
    constexpr int any = -1;
    // The checkerboard's skeleton is itself but for two corners, and every step in it is a branch.
    static const std::vector<OddPicture> pictures = {
        {"all set", 300, 200, all, 102, 1, 1, 0},
        {"all clear", 300, 200, none, 0, 0, 0, 0},
        {"one pixel, set", 1, 1, all, 1, 1, 1, 0},
        {"one pixel, clear", 1, 1, none, 0, 0, 0, 0},
        {"one row", 300, 1, all, 300, 1, 1, 0},
        {"one row of dots", 300, 1, everyOther, 150, 150, 150, any},
        {"one column", 1, 300, all, 300, 1, 1, 0},
        {"a checkerboard", 301, 200, everyOther, 30098, 59201, 500, any},
    };
    return pictures;
}

void ExpectNodesInside(const CPolyPolyBezier& curves, const OddPicture& picture) {
    for (int i = 0; i < curves.GetSize(); ++i) {
        for (int k = 0; k < curves[i].GetSize(); ++k) {
            const DPOINT p = curves[i][k].pt;
            ASSERT_TRUE(p.x >= -1 && p.y >= -1 && p.x <= picture.width + 1 && p.y <= picture.height + 1)
                << p.x << ' ' << p.y;
        }
    }
}

TEST(OddPictures, HaveDefinedLinesAndEdgesInLittleTime) {
    for (const OddPicture& picture : OddPictures()) {
        SCOPED_TRACE(picture.name);
        const std::clock_t start = std::clock();
        const UniqueBitmap bitmap(CImgProc::CreateBitmapBW(picture.width, picture.height));
        BITMAP pixels{};
        ASSERT_NE(GetObject(bitmap.Get(), static_cast<int>(sizeof pixels), &pixels), 0);
        for (int y = 0; y < picture.height; ++y) {
            for (int x = 0; x < picture.width; ++x) CImgProc::SetPixel(pixels, x, y, picture.isSet(x, y));
        }

        CSkeleton skeleton;
        CPolyPolyBezier curves;
        ASSERT_TRUE(skeleton.InputMono(bitmap.Get()) && skeleton.Output(curves));
        BITMAP thinned{};
        ASSERT_NE(GetObject(skeleton.Bitmap(), static_cast<int>(sizeof thinned), &thinned), 0);
        int count = 0;
        for (int y = 0; y < picture.height; ++y) {
            for (int x = 0; x < picture.width; ++x) count += CImgProc::GetPixel(thinned, x, y);
        }
        EXPECT_EQ(count, picture.skeletonPixels);
        EXPECT_EQ(curves.GetSize(), picture.branches);
        ExpectNodesInside(curves, picture);

        CentreLineOptions options;
        options.side = ShapeSide::light;
        options.speckPixels = 0;
        CPolyPolyWidth widths;
        ASSERT_TRUE(CImageTrace(bitmap.Get()).DoTrace(options, curves, widths));
        EXPECT_EQ(curves.GetSize(), picture.strokes);
        ExpectNodesInside(curves, picture);
        options = {};
        ASSERT_TRUE(CImageTrace(bitmap.Get()).DoTrace(options, curves, widths));
        EXPECT_LE(curves.GetSize(), picture.strokes) << "the side that is drawn is anybody's guess";

        for (const EdgeMethod method : {EdgeMethod::Canny, EdgeMethod::ShenCastan}) {
            CEdgeDetect detector;
            EdgeOptions edgeOptions;
            edgeOptions.method = method;
            ASSERT_TRUE(detector.Detect(bitmap.Get(), edgeOptions) && detector.Output(curves));
            EXPECT_TRUE(picture.edges < 0 || curves.GetSize() == picture.edges) << curves.GetSize();
            ExpectNodesInside(curves, picture);
        }
        // Half a second for the checkerboard; asking every pixel about every other takes minutes.
        constexpr double most = 30;
        EXPECT_LT(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC, most);
    }
}

}  // namespace
}  // namespace tarvex
