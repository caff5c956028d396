// Characters of installed fonts as contours placed at a pen.
#include "support/precompiled.h"

#include "platform/handles.h"
#include "support/records.h"
#include "tarvex/glyphs.h"

namespace tarvex::test {
namespace {

LOGFONTW Font(const std::wstring& family, int height) {
    LOGFONTW font{};
    font.lfHeight = height;
    font.lfWeight = FW_NORMAL;
    std::copy(family.begin(), family.end(), font.lfFaceName);
    return font;
}

ABCFLOAT Widths(const LOGFONTW& font, unsigned c) {
    const UniqueFont made(CreateFontIndirectW(&font));
    const UniqueDC dc(CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr));
    const SelectedObject selected(dc.Get(), made.Get());
    ABCFLOAT widths{};
    EXPECT_TRUE(GetCharABCWidthsFloatW(dc.Get(), c, c, &widths));
    return widths;
}

bool IsStraight(const CPolyPolyBezier& shape) {
    for (int i = 0; i < shape.GetSize(); ++i) {
        for (const BPOINT& node : shape[i]) {
            if (!(node.cp1 == node.pt && node.cp2 == node.pt)) return false;
        }
    }
    return true;
}

TEST(GlyphOutlines, SpacesMoveThePenByTheirWidthAlone) {
    LOGFONTW font = Font(L"DejaVu Sans", -2048);
    CPolyPolyBezier out;
    DPOINT pen{100, 7};
    EXPECT_EQ(GetTTOutlinePoints(font, ' ', out, pen, 1), 0);
    EXPECT_EQ(out.GetSize(), 0);
    EXPECT_EQ(pen, (DPOINT{100 + 651, 7})) << "the advance of the space is 651 of 2048 units";
}

TEST(GlyphOutlines, LettersHaveTheFontsOwnContours) {
    LOGFONTW font = Font(L"DejaVu Sans", -2048);
    struct Case {
        unsigned c;
        int contours;
        bool isStraight;
    };
    // Among them composite glyphs and a character beyond U+FFFF, which Windows' engine does not take.
    for (const Case& c : {
             Case{'I', 1, true},
             {'i', 2, true},
             {'O', 2, false},
             {'B', 3, false},
             {0xC4, 4, true},
             {0xFC, 3, false},
#ifndef _WIN32
             {0x1D539, 6, false},
#endif
         }) {
        CPolyPolyBezier out;
        DPOINT pen;
        EXPECT_EQ(GetTTOutlinePoints(font, c.c, out, pen, 0), c.contours) << c.c;
        EXPECT_EQ(IsStraight(out), c.isStraight) << c.c;
        for (int i = 0; i < out.GetSize(); ++i) EXPECT_EQ(out[i][0].pt, out[i][out[i].GetUpperBound()].pt);
    }
}

TEST(GlyphOutlines, GlyphsStandWithTheirLeftEdgeAndBaselineAtThePen) {
    for (const std::wstring family : {L"DejaVu Sans", L"DejaVu Serif", L"Z003"}) {
        LOGFONTW font = Font(family, -1000);
        for (const unsigned c : {0x41u, 0x67u, 0x6Au, 0x57u, 0xDFu}) {
            const ABCFLOAT w = Widths(font, c);
            for (const int bearing : {0, 1}) {
                CPolyPolyBezier out;
                DPOINT pen{500.25, -30};
                const int count = GetTTOutlinePoints(font, c, out, pen, bearing);
                ASSERT_EQ(count, out.GetSize());
                ASSERT_GT(count, 0);
                DRECT frame{};
                out.CalcFrame(frame, 1.0);
                EXPECT_NEAR(frame.left, 500.25 + (bearing != 0 ? double{w.abcfA} : 0), 1e-9) << c;
                EXPECT_DOUBLE_EQ(pen.x,
                                 500.25 + (frame.right - frame.left) + double{w.abcfA} + double{w.abcfC});
                EXPECT_EQ(pen.y, -30);
                // Rounding moves each edge by a half at most, and the curves' frame is good to one.
                EXPECT_NEAR(frame.right - frame.left, w.abcfB, 2) << c;
                if (c == 'A') {
                    EXPECT_NEAR(frame.bottom, -30, 16) << "stands on the baseline";
                    EXPECT_LT(frame.top, -600);
                }
            }
        }
    }
}

TEST(GlyphOutlines, AllThatIsInTheContainerIsPlaced) {
    LOGFONTW font = Font(L"DejaVu Sans", -2048);
    CPolyPolyBezier out;
    DPOINT pen;
    EXPECT_EQ(GetTTOutlinePoints(font, 'I', out, pen, 0), 1);
    const DPOINT first = out[0][0].pt;
    EXPECT_EQ(GetTTOutlinePoints(font, 'I', out, pen, 0), 2);
    EXPECT_FALSE(out[0][0].pt == first);
}

#ifndef _WIN32  // whose engine makes fonts of any size
TEST(GlyphOutlines, WithoutAFontNothingHappens) {
    for (const int height : {-16385, 40000, std::numeric_limits<int>::min()}) {
        LOGFONTW font = Font(L"DejaVu Sans", height);
        CPolyPolyBezier out;
        DPOINT pen{1, 2};
        EXPECT_EQ(GetTTOutlinePoints(font, 'A', out, pen, 1), 0);
        EXPECT_EQ(out.GetSize(), 0);
        EXPECT_EQ(pen, (DPOINT{1, 2}));
    }
}
#endif

}  // namespace
}  // namespace tarvex::test
