// Strokes drawn with known middles and widths, and traced.
#include "support/precompiled.h"

#include "support/ascii_raster.h"
#include "support/grey_picture.h"
#include "support/property.h"
#include "support/records.h"
#include "tarvex/bezier.h"
#include "tarvex/imagetrace.h"
#include "tarvex/raster.h"

namespace tarvex {
namespace {

using test::GreyPicture;

struct Pen {
    DPOINT a, b;
    double width;
};

double DistanceTo(const Pen& pen, double x, double y) {
    const double dx = pen.b.x - pen.a.x, dy = pen.b.y - pen.a.y, square = dx * dx + dy * dy;
    const double t =
        square > 0 ? std::clamp(((x - pen.a.x) * dx + (y - pen.a.y) * dy) / square, 0.0, 1.0) : 0;
    return std::hypot(x - pen.a.x - t * dx, y - pen.a.y - t * dy);
}

/// The pen's line, some pixels longer at either end.
Pen Longer(const Pen& pen, double atA = 3, double atB = 3) {
    const double dx = pen.b.x - pen.a.x, dy = pen.b.y - pen.a.y, length = std::max(1.0, std::hypot(dx, dy));
    return {{pen.a.x - atA / length * dx, pen.a.y - atA / length * dy},
            {pen.b.x + atB / length * dx, pen.b.y + atB / length * dy},
            pen.width};
}

/// Strokes with round ends, anti-aliased by their distance.
GreyPicture Draw(int width, int height, const std::vector<Pen>& pens) {
    GreyPicture picture(width, height);
    for (const Pen& pen : pens) {
        const int reach = static_cast<int>(pen.width / 2) + 2;
        const auto left = static_cast<int>(std::min(pen.a.x, pen.b.x)) - reach;
        const auto right = static_cast<int>(std::max(pen.a.x, pen.b.x)) + reach;
        const auto top = static_cast<int>(std::min(pen.a.y, pen.b.y)) - reach;
        const auto bottom = static_cast<int>(std::max(pen.a.y, pen.b.y)) + reach;
        for (int y = std::max(0, top); y <= std::min(height - 1, bottom); ++y) {
            for (int x = std::max(0, left); x <= std::min(width - 1, right); ++x) {
                const double part =
                    std::clamp(pen.width / 2 + 0.5 - DistanceTo(pen, x + 0.5, y + 0.5), 0.0, 1.0);
                picture.At(x, y) = std::min(picture.At(x, y), static_cast<std::uint8_t>(255 - 255 * part));
            }
        }
    }
    return picture;
}

struct Traced {
    CPolyPolyBezier strokes;
    CPolyPolyWidth widths;

    explicit Traced(const GreyPicture& picture, const CentreLineOptions& options = {}) {
        EXPECT_TRUE(CImageTrace(picture.View()).DoTrace(options, strokes, widths));
        EXPECT_EQ(strokes.GetSize(), widths.GetSize());
        for (int i = 0; i < Count(); ++i) EXPECT_EQ(strokes[i].GetSize(), widths[i].GetSize());
    }
    int Count() const { return strokes.GetSize(); }
    DPOINT First(int i) const { return strokes[i][0].pt; }
    DPOINT Last(int i) const { return strokes[i][strokes[i].GetUpperBound()].pt; }
    double MiddleWidth(int i) const {
        std::vector<double> all(widths[i].GetData(), widths[i].GetData() + widths[i].GetSize());
        std::nth_element(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(all.size() / 2), all.end());
        return all[all.size() / 2];
    }
    /// How far the stroke's curve runs from a line at most.
    double FarthestFrom(int i, const Pen& line) const {
        CArray<DPOINT, DPOINT> points;
        GetPolyline(strokes[i], points, 0.5);
        double farthest = 0;
        for (int k = 0; k < points.GetSize(); ++k)
            farthest = std::max(farthest, DistanceTo(line, points[k].x, points[k].y));
        return farthest;
    }
};

double Apart(DPOINT a, DPOINT b) { return std::hypot(a.x - b.x, a.y - b.y); }

/// Each pen must have been found as one straight stroke from end to end.
void ExpectPens(const GreyPicture& picture, const std::vector<Pen>& pens, double atEnds = 1.5) {
    const Traced traced(picture);
    ASSERT_EQ(traced.Count(), static_cast<int>(pens.size()));
    for (const Pen& pen : pens) {
        int found = 0;
        for (int i = 0; i < traced.Count(); ++i) {
            const DPOINT from = traced.First(i), to = traced.Last(i);
            const double same = std::max(Apart(from, pen.a), Apart(to, pen.b));
            const double reversed = std::max(Apart(from, pen.b), Apart(to, pen.a));
            if (std::min(same, reversed) > atEnds) continue;
            ++found;
            EXPECT_LE(traced.FarthestFrom(i, Longer(pen)), 0.8);
            EXPECT_NEAR(traced.MiddleWidth(i), pen.width, 0.5);
            EXPECT_LE(traced.strokes[i].GetSize(), pen.width < 3 ? 4 : 2) << "a straight line is one segment";
        }
        EXPECT_EQ(found, 1) << "the stroke from " << testing::PrintToString(pen.a);
    }
}

TEST(ImageTrace, CrossingStrokesComeOutAsTwoAtEverySlant) {
    for (const double width : {2.0, 3.5, 6.0, 10.0}) {
        for (const int degrees : {20, 25, 32, 45, 60, 90}) {
            SCOPED_TRACE(testing::Message() << width << " wide at " << degrees << " degrees");
            const double half = degrees * 3.14159265358979 / 360;
            const double x = 110 * std::cos(half), y = 110 * std::sin(half);
            const std::vector<Pen> pens = {{{125 - x, 125.3 - y}, {125 + x, 125.3 + y}, width},
                                           {{125 - x, 125.3 + y}, {125 + x, 125.3 - y}, width}};
            ExpectPens(Draw(250, 250, pens), pens);
        }
    }
}

TEST(ImageTrace, ABranchMeetsTheStrokeThatPassesAndABarBetweenTwoStaysOne) {
    const std::vector<Pen> branch = {{{20, 30.2}, {180, 38.2}, 5}, {{104, 34.5}, {90, 110}, 5}};
    ExpectPens(Draw(200, 130, branch), branch);
    const std::vector<Pen> letter = {
        {{40, 15}, {40, 120}, 6}, {{61, 15}, {61, 120}, 6}, {{40, 66}, {61, 66}, 6}};
    ExpectPens(Draw(110, 135, letter), letter);
}

TEST(ImageTrace, ALineThatEndsInACornerMeetsItsSidesWhereTheyMeet) {
    const DPOINT corner{140.3, 139.6};
    for (const double width : {3.0, 5.0, 9.0}) {
        for (const double degrees : {15.0, 30.0, 45.0, 70.0, 225.0}) {
            SCOPED_TRACE(testing::Message() << "width " << width << " at " << degrees << " degrees");
            const double turn = degrees * 3.14159265358979 / 180;
            const std::vector<Pen> pens = {
                {{corner.x + 120, corner.y}, corner, width},
                {corner, {corner.x, corner.y + 120}, width},
                {corner, {corner.x + 110 * std::cos(turn), corner.y + 110 * std::sin(turn)}, width}};
            const Traced traced(Draw(280, 280, pens));
            ASSERT_EQ(traced.Count(), 2);
            const bool isFirst = traced.strokes[0].GetSize() == 3;
            const auto& sides = traced.strokes[isFirst ? 0 : 1];
            const auto& third = traced.strokes[isFirst ? 1 : 0];
            ASSERT_EQ(sides.GetSize(), 3);
            ASSERT_EQ(third.GetSize(), 2);
            EXPECT_LE(Apart(sides[1].pt, corner), 1);
            EXPECT_LE(std::min(Apart(third[0].pt, corner), Apart(third[1].pt, corner)), 1);
        }
    }
}

std::vector<Pen> SixtyPens(unsigned seed) {
    std::mt19937 random(seed);
    const auto below = [&random](double bound) {
        return static_cast<double>(random()) / 4294967296.0 * bound;
    };
    std::vector<Pen> pens;
    while (pens.size() < 60) {
        const DPOINT a{20 + below(860), 20 + below(660)};
        const double turn = below(6.28), length = 60 + below(160);
        const DPOINT b{a.x + length * std::cos(turn), a.y + length * std::sin(turn)};
        if (b.x > 20 && b.y > 20 && b.x < 880 && b.y < 680) pens.push_back({a, b, 3 + below(4)});
    }
    return pens;
}

/// How far from an end of the pen a traced stroke may end: where it cannot be seen, in or at another pen's
/// stroke, anywhere up to the far side of that.
double RoomAt(DPOINT end, const Pen& pen, const std::vector<Pen>& pens) {
    double room = 3;
    for (const Pen& other : pens) {
        const double halves = (pen.width + other.width) / 2;
        if (&other != &pen && DistanceTo(other, end.x, end.y) <= halves + 1)
            room = std::max(room, halves + 3);
    }
    return room;
}

TEST(ImageTrace, SixtyStrokesThatCrossAsTheyLikeGiveHardlyOtherPaths) {
    int found = 0;
    for (const unsigned seed : {11U, 12U, 13U}) {
        const std::vector<Pen> pens = SixtyPens(seed);
        const Traced traced(Draw(900, 700, pens));
        EXPECT_LE(traced.Count(), 65);
        EXPECT_GE(traced.Count(), 55);
        for (const Pen& pen : pens) {
            const double atA = RoomAt(pen.a, pen, pens), atB = RoomAt(pen.b, pen, pens);
            for (int i = 0; i < traced.Count(); ++i) {
                const DPOINT from = traced.First(i), to = traced.Last(i);
                const bool isWhole = (Apart(from, pen.a) <= atA && Apart(to, pen.b) <= atB) ||
                                     (Apart(from, pen.b) <= atB && Apart(to, pen.a) <= atA);
                if (!isWhole || traced.FarthestFrom(i, Longer(pen, atA, atB)) > 1) continue;
                if (std::fabs(traced.MiddleWidth(i) - pen.width) > 0.5) continue;
                ++found;
                break;
            }
        }
    }
    EXPECT_GE(found, 148) << "of 180, each from end to end, within a pixel, with its width";
}

TEST(ImageTrace, CornersAreCornersAndCurvesSmooth) {
    const std::vector<Pen> frame = {
        {{20, 20}, {140, 32}, 5}, {{140, 32}, {130, 120}, 5}, {{130, 120}, {20, 20}, 5}};
    const Traced triangle(Draw(160, 140, frame));
    ASSERT_EQ(triangle.Count(), 1);
    ASSERT_EQ(triangle.strokes[0].GetSize(), 4);
    EXPECT_EQ(triangle.First(0), triangle.Last(0));
    for (const Pen& pen : frame) {
        double nearest = 1e9;
        for (int k = 0; k < 4; ++k) nearest = std::min(nearest, Apart(triangle.strokes[0][k].pt, pen.a));
        EXPECT_LE(nearest, 1.2);
    }
    const Traced ring(test::Render(
        120, 120, [](double x, double y) { return std::fabs(std::hypot(x - 60, y - 60) - 45) <= 3; }));
    ASSERT_EQ(ring.Count(), 1);
    EXPECT_LE(ring.strokes[0].GetSize(), 9);
    CArray<DPOINT, DPOINT> points;
    GetPolyline(ring.strokes[0], points, 0.5);
    for (int k = 0; k < points.GetSize(); ++k) EXPECT_NEAR(Apart(points[k], {60, 60}), 45, 0.8);
    EXPECT_NEAR(ring.MiddleWidth(0), 6, 0.5);
}

TEST(ImageTrace, DotsAreKeptAndSpecksAreNot) {
    const std::vector<Pen> marks = {
        {{20, 20}, {20, 20}, 9}, {{45.5, 21}, {45.5, 21}, 4}, {{70, 20}, {70.6, 20}, 1.2}};
    const GreyPicture picture = Draw(90, 40, marks);
    const Traced traced(picture);
    ASSERT_EQ(traced.Count(), 2);
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(traced.strokes[i].GetSize(), 2);
        EXPECT_EQ(traced.First(i), traced.Last(i));
        EXPECT_LE(std::min(Apart(traced.First(i), marks[0].a), Apart(traced.First(i), marks[1].a)), 0.8);
        EXPECT_LE(std::min(std::fabs(traced.widths[i][0] - 9), std::fabs(traced.widths[i][0] - 4)), 1.2);
    }
    CentreLineOptions all;
    all.speckPixels = 0;
    EXPECT_EQ(Traced(picture, all).Count(), 3);
}

TEST(ImageTrace, SettingsDoWhatTheySay) {
    const std::vector<Pen> pens = {{{20, 40}, {180, 40}, 6}, {{100, 40}, {100, 52}, 6}};
    const GreyPicture picture = Draw(200, 80, pens);
    CentreLineOptions options;
    EXPECT_EQ(Traced(picture, options).Count(), 2);
    options.minBranch = 15;
    EXPECT_EQ(Traced(picture, options).Count(), 1);
    options.minBranch = 2;
    options.joinStrokes = false;
    EXPECT_EQ(Traced(picture, options).Count(), 3);
    options.side = ShapeSide::light;
    options.threshold = 10;
    EXPECT_NE(Traced(picture, options).Count(), 3);
    options.progress = [](double) { return false; };
    CPolyPolyBezier strokes;
    CPolyPolyWidth widths;
    EXPECT_FALSE(CImageTrace(picture.View()).DoTrace(options, strokes, widths));
    EXPECT_EQ(strokes.GetSize() + widths.GetSize(), 0);
    EXPECT_FALSE(CImageTrace(nullptr).DoTrace({}, strokes, widths));
    EXPECT_FALSE(CImageTrace(GreyView{}).DoTrace({}, strokes, widths));
}

TEST(ImageTrace, BitmapsOfEitherPolarityAndDepthTraceAlike) {
    const GreyPicture picture = Draw(80, 60, {{{15, 15}, {60, 40}, 5}});
    const Traced expected(test::Stairs(picture));
    for (const bool isNegative : {false, true}) {
        for (const int depth : {1, 32}) {
            SCOPED_TRACE(testing::Message()
                         << depth << " bits, " << (isNegative ? "light on dark" : "dark on light"));
            const UniqueBitmap bitmap(depth == 1 ? CImgProc::CreateBitmapBW(80, 60)
                                                 : CImgProc::CreateBitmap32(80, 60));
            BITMAP description{};
            ASSERT_NE(GetObject(bitmap.Get(), static_cast<int>(sizeof description), &description), 0);
            for (int i = 0; i < 80 * 60; ++i) {
                const bool isLight = (picture.At(i % 80, i / 80) > 127) != isNegative;
                if (depth == 1) {
                    CImgProc::SetPixel(description, i % 80, i / 80, isLight);
                } else {
                    CImgProc::SetPixel32(description, i % 80, i / 80,
                                         isLight ? RGB(200, 255, 220) : RGB(70, 0, 30));
                }
            }
            CPolyPolyBezier strokes;
            CPolyPolyWidth widths;
            ASSERT_TRUE(CImageTrace(bitmap.Get()).DoTrace({}, strokes, widths));
            ASSERT_EQ(strokes.GetSize(), 1);
            for (int k = 0; k < 2; ++k) EXPECT_EQ(strokes[0][k], expected.strokes[0][k]);
        }
    }
}

TEST(ImageTrace, AnyPictureGivesFiniteStrokesInsideIt) {
    test::ExpectLaw([] {
        const test::BitPicture shape = test::AnyPicture();
        GreyPicture picture(shape.Width(), shape.Height());
        for (int y = 0; y < shape.Height(); ++y) {
            for (int x = 0; x < shape.Width(); ++x) picture.At(x, y) = shape.Get(x, y) ? 0 : 255;
        }
        CentreLineOptions options;
        options.side = ShapeSide::dark;
        options.threshold = 127;
        options.speckPixels = *rc::gen::inRange(0, 3);
        options.minBranch = *rc::gen::element(0.0, 2.0, 10.0);
        const Traced traced(picture, options);
        for (int i = 0; i < traced.Count(); ++i) {
            for (int k = 0; k < traced.strokes[i].GetSize(); ++k) {
                const DPOINT p = traced.strokes[i][k].pt;
                RC_ASSERT(p.x >= -2 && p.y >= -2 && p.x <= shape.Width() + 2 && p.y <= shape.Height() + 2);
                RC_ASSERT(traced.widths[i][k] >= 0.5 && traced.widths[i][k] <= 2 * shape.Width() + 2);
            }
        }
    });
}

}  // namespace
}  // namespace tarvex
