// The break-up's pipeline: its limits, its reasons to give up, and the searches it makes fast.
#include "support/precompiled.h"

#include "tarvex/breakup.h"

#include <array>
#include <set>

#include "breakup/faces.h"
#include "breakup/outline_index.h"
#include "support/ascii_raster.h"
#include "support/contours.h"
#include "support/property.h"
#include "tarvex/lines.h"

namespace tarvex {
namespace {

using namespace test;

/// The steps that only the class itself may take.
class OpenBreakUp : public CAutoBreakUp {
  public:
    using CAutoBreakUp::CountCloseAnchors;
    using CAutoBreakUp::DeleteSkippedLines;
    using CAutoBreakUp::FilterSkelLines;
    using CAutoBreakUp::m_hWorkBitmap;
    using CAutoBreakUp::m_lines;
    using CAutoBreakUp::m_lookAhead;
    using CAutoBreakUp::m_maxPasses;
    using CAutoBreakUp::m_oneCutPerPass;
    using CAutoBreakUp::OutlineIndex;
    ~OpenBreakUp() override = default;
};

void AddClosed(CPolyPolyDPoint& outline, const Points& corners) { AddTo(outline, Polyline(Closed(corners))); }

/// A polygon with a point for every unit of its sides.
Points Dense(const Points& corners, double step = 1) {
    Points points;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const DPOINT &a = corners[i], &b = corners[(i + 1) % corners.size()];
        const int steps = std::max(1, static_cast<int>(std::hypot(b.x - a.x, b.y - a.y) / step + 0.5));
        for (int k = 0; k < steps; ++k)
            points.push_back({a.x + (b.x - a.x) * k / steps, a.y + (b.y - a.y) * k / steps});
    }
    return points;
}

BitPicture Rectangles(int width, int height, const std::vector<std::array<int, 4>>& rectangles) {
    BitPicture picture(width, height);
    for (const auto& r : rectangles) picture.FillRectangle(r[0], r[1], r[2] - 1, r[3] - 1);
    return picture;
}

/// A comb of vertical teeth below a bar: a junction for each inner tooth.
struct Comb {
    explicit Comb(int teeth) {
        const int width = 60 * teeth;
        std::vector<std::array<int, 4>> rectangles{{10, 10, width - 10, 30}};
        Points corners{{10, 10}, {width - 10.0, 10}, {width - 10.0, 30}};
        for (int i = teeth - 1; i >= 0; --i) {
            const int left = 60 * i + 20;
            rectangles.push_back({left, 30, left + 20, 110});
            for (const DPOINT& p :
                 {DPOINT{left + 20.0, 30}, {left + 20.0, 110}, {left + 0.0, 110}, {left + 0.0, 30}})
                corners.push_back(p);
        }
        corners.push_back({10, 30});
        bitmap = Bitmap1(Rectangles(width, 120, rectangles));
        AddClosed(outline, Dense(corners));
    }
    UniqueBitmap bitmap;
    CPolyPolyDPoint outline;
};

#ifndef _WIN32  // whose keyboard and clock are its own
/// Desktop hooks for the life of a test, with what they were asked.
struct Desktop {
    explicit Desktop(bool held, int secondsEach = 0) {
        escapeHeld = held;
        step = secondsEach;
        now = 1000;
        beeps = 0;
        former = SetDesktopHooks(
            {[] { return escapeHeld; }, [] { ++beeps; }, [] { return now += step; }, nullptr});
    }
    ~Desktop() { SetDesktopHooks(former); }
    DesktopHooks former;
    static inline bool escapeHeld = false;
    static inline int step = 0;
    static inline std::int64_t now = 0;
    static inline int beeps = 0;
};
#endif

struct Result {
    BreakUpEnd end;
    int rails;
    int inclinations;
};

Result RunOn(CAutoBreakUp& breakUp, HBITMAP image, const CPolyPolyDPoint& outline, bool check = true) {
    CPolyPolyDPoint regions;
    CPolyPolyInclination inclinations;
    AddClosed(regions, {{1, 2}});  // what was there must not stay
    inclinations.Add(std::make_unique<CArray<double, double>>());
    const bool done = breakUp.AutoBreakUp(image, 96, outline, regions, inclinations, check);
    EXPECT_EQ(done, breakUp.End() == BreakUpEnd::Done);
    return {breakUp.End(), regions.GetCount(), inclinations.GetCount()};
}

TEST(BreakUp, CutsAPlusIntoThreeColumnsInTheDocumentsPlace) {
    const UniqueBitmap image = Bitmap1(Rectangles(300, 260, {{130, 40, 150, 200}, {60, 110, 220, 130}}));
    CPolyPolyDPoint outline;
    AddClosed(outline, Dense({{130, 40},
                              {150, 40},
                              {150, 110},
                              {220, 110},
                              {220, 130},
                              {150, 130},
                              {150, 200},
                              {130, 200},
                              {130, 130},
                              {60, 130},
                              {60, 110},
                              {130, 110}}));
    CAutoBreakUp breakUp;
    CPolyPolyInclination inclinations;
    ASSERT_TRUE(breakUp.AutoBreakUp(image.Get(), 96, outline, inclinations, true));
    ASSERT_EQ(outline.GetCount(), 6) << "two rails for each";
    ASSERT_EQ(inclinations.GetCount(), 6);
    double area = 0;
    for (int r = 0; r < 6; r += 2) {
        Points around(outline[r].begin(), outline[r].end());
        for (int i = outline[r + 1].GetUpperBound(); i >= 0; --i) around.push_back(outline[r + 1][i]);
        area += std::fabs(SignedArea(around));
        ASSERT_EQ(inclinations[r].GetSize(), inclinations[r + 1].GetSize());
        for (int rail = r; rail < r + 2; ++rail) {
            for (const double at : inclinations[rail]) {
                const double index = at * outline[rail].GetSize();
                EXPECT_NEAR(index, std::round(index), 1e-6)
                    << "a position is a point's index over their number";
            }
        }
        EXPECT_GT(inclinations[r].GetSize(), 5);
    }
    EXPECT_NEAR(area, 20 * 160 + 20 * 140, 1);
    EXPECT_EQ(breakUp.Origin(), CPoint(60, 40));
    for (const CUTLINE& cut : breakUp.CutLines())  // from corner to corner of the crossing
        EXPECT_EQ(std::abs(cut.x1 - cut.x2) + std::abs(cut.y1 - cut.y2), 20);
}

TEST(BreakUp, FailsWithEmptyOutputsAndTheReason) {
    const UniqueBitmap black(CImgProc::CreateBitmapBW(100, 100));
    const UniqueBitmap bar = Bitmap1(Rectangles(100, 40, {{10, 10, 90, 30}}));
    CPolyPolyDPoint none, column, square, faraway, strange;
    AddClosed(column, {{5, 1}, {5.4, 90}, {4.6, 30}});
    AddClosed(square, {{10, 10}, {90, 10}, {90, 30}, {10, 30}});
    AddClosed(faraway, {{-2e9, 0}, {2e9, 0}, {0, 2e9}});
    AddClosed(strange, {{std::nan(""), 0}, {HUGE_VAL, -HUGE_VAL}, {3, 3}});
    const struct {
        const char* what;
        HBITMAP image;
        const CPolyPolyDPoint& outline;
        BreakUpEnd end;
    } cases[] = {
        {"no outline", bar.Get(), none, BreakUpEnd::EmptyFrame},
        {"one rounded column", bar.Get(), column, BreakUpEnd::EmptyFrame},
        {"wider than integers", bar.Get(), faraway, BreakUpEnd::EmptyFrame},
        {"not finite", bar.Get(), strange, BreakUpEnd::EmptyFrame},
        {"no picture", nullptr, square, BreakUpEnd::NoRaster},
        {"nothing in the picture", black.Get(), square, BreakUpEnd::NotSplit},
    };
    for (const auto& c : cases) {
        CAutoBreakUp breakUp;
        const Result result = RunOn(breakUp, c.image, c.outline);
        EXPECT_EQ(result.end, c.end) << c.what;
        EXPECT_EQ(result.rails + result.inclinations, 0) << c.what;
        CPolyPolyInclination inclinations;
        CPolyPolyDPoint copy;
        copy.Copy(c.outline);
        EXPECT_FALSE(breakUp.AutoBreakUp(c.image, 96, copy, inclinations, true));
        EXPECT_TRUE(copy.IsEmpty()) << c.what;
    }
    CAutoBreakUp again;  // an object serves again after a failure
    RunOn(again, black.Get(), square);
    EXPECT_EQ(RunOn(again, bar.Get(), square).end, BreakUpEnd::Done);
}

TEST(BreakUp, RefusesComplicatedShapesOnlyWhenAsked) {
    const auto refused = [](int side, double step, bool check) {
        CPolyPolyDPoint outline;
        const double s = side;
        AddClosed(outline, Dense({{0, 0}, {s, 0}, {s, s}, {0, s}}, step));
        const UniqueBitmap image = Bitmap1(Rectangles(side, side, {{0, 0, side, side}}));
        CAutoBreakUp breakUp;
        return RunOn(breakUp, image.Get(), outline, check).end == BreakUpEnd::TooComplicated;
    };
    EXPECT_TRUE(refused(500, 1, true)) << "250000 pixels for 2001 points";
    EXPECT_FALSE(refused(500, 1, false));
    EXPECT_FALSE(refused(499, 1, true)) << "1997 points";
    EXPECT_FALSE(refused(160, 0.25, true)) << "10 pixels for a point";
}

#ifndef _WIN32
TEST(BreakUp, ObeysEscapeAndTheClockOnlyAfterAPassThatCut) {
    const Comb comb(3);
    const UniqueBitmap bar = Bitmap1(Rectangles(100, 40, {{10, 10, 90, 30}}));
    CPolyPolyDPoint barOutline;
    AddClosed(barOutline, Dense({{10, 10}, {90, 10}, {90, 30}, {10, 30}}));
    const auto end = [](HBITMAP image, const CPolyPolyDPoint& outline) {
        CAutoBreakUp breakUp;
        return RunOn(breakUp, image, outline).end;
    };
    {
        const Desktop held(true);
        EXPECT_EQ(end(bar.Get(), barOutline), BreakUpEnd::Done);
        EXPECT_EQ(Desktop::beeps, 0);
        EXPECT_EQ(end(comb.bitmap.Get(), comb.outline), BreakUpEnd::Aborted);
        EXPECT_EQ(Desktop::beeps, 1);
    }
    {
        const Desktop slow(false, 61);
        EXPECT_EQ(end(comb.bitmap.Get(), comb.outline), BreakUpEnd::TimedOut);
        EXPECT_EQ(Desktop::beeps, 1);
    }
    const Desktop justInTime(false, 60);
    EXPECT_EQ(end(comb.bitmap.Get(), comb.outline), BreakUpEnd::Done) << "60 seconds are not more than 60";
    EXPECT_EQ(Desktop::beeps, 0);
}
#endif

TEST(BreakUp, LooksLessFarAheadAfterEachPassAndGivesUpAfterSix) {
    const Comb comb(10);
    OpenBreakUp breakUp;
    EXPECT_EQ(RunOn(breakUp, comb.bitmap.Get(), comb.outline).end, BreakUpEnd::Done);
    std::set<std::pair<int, int>> places;  // the anchors of one junction may all make the same cut
    for (const CUTLINE& cut : breakUp.CutLines()) places.insert(std::minmax(cut.x1, cut.x2));
    EXPECT_EQ(places.size(), 8U) << "the outer teeth continue the bar";
    EXPECT_EQ(breakUp.m_lookAhead, 15);
    OpenBreakUp slowly;
    slowly.m_oneCutPerPass = true;
    EXPECT_EQ(RunOn(slowly, comb.bitmap.Get(), comb.outline).end, BreakUpEnd::TooManyPasses);
    EXPECT_EQ(slowly.CutLines().size(), 6U);
    EXPECT_EQ(slowly.m_lookAhead, 5);
    slowly.m_maxPasses = 9;
    EXPECT_EQ(RunOn(slowly, comb.bitmap.Get(), comb.outline).end, BreakUpEnd::Done);
}

TEST(BreakUp, RefusesFiveHundredLines) {
    std::vector<std::array<int, 4>> bars;
    for (int i = 0; i < 510; ++i)
        bars.push_back({12 * (i % 30), 20 * (i / 30), 12 * (i % 30) + 5, 20 * (i / 30) + 18});
    const UniqueBitmap image = Bitmap1(Rectangles(360, 360, bars));
    CPolyPolyDPoint outline;
    AddClosed(outline, {{0, 0}, {360, 0}, {360, 360}, {0, 360}});
    CAutoBreakUp breakUp;
    EXPECT_EQ(RunOn(breakUp, image.Get(), outline).end, BreakUpEnd::TooManyLines);
}

TEST(BreakUp, NeverDeletesTheLastLine) {
    const auto left = [](int lines, std::vector<int> skipped) {
        OpenBreakUp breakUp;
        for (int i = 0; i < lines; ++i) {
            auto line = std::make_unique<CArray<POINT, POINT>>();
            line->Add({i, 0});
            breakUp.m_lines.Add(std::move(line));
        }
        breakUp.DeleteSkippedLines(skipped);
        EXPECT_TRUE(skipped.empty());
        std::vector<int> kept;
        for (int i = 0; i < breakUp.m_lines.GetCount(); ++i) kept.push_back(breakUp.m_lines[i][0].x);
        return kept;
    };
    EXPECT_EQ(left(1, {0}), std::vector<int>({0}));
    EXPECT_EQ(left(3, {2, 1, 0}), std::vector<int>({0}));
    EXPECT_EQ(left(4, {2, 0, 2}), std::vector<int>({1, 3}));
    EXPECT_EQ(left(2, {}), std::vector<int>({0, 1}));
}

TEST(BreakUp, JoinsLinesOnlyAcrossTheShapesPixels) {
    const auto joined = [](bool isWhite, int gap) {
        OpenBreakUp breakUp;
        breakUp.m_hWorkBitmap = CImgProc::CreateBitmapBW(60, 20);
        BITMAP work{};
        GetObject(breakUp.m_hWorkBitmap, static_cast<int>(sizeof work), &work);
        for (int x = 0; x < 60; ++x) CImgProc::SetPixel(work, x, 10, isWhite);
        for (const int start : {30 + gap, 10}) {
            auto line = std::make_unique<CArray<POINT, POINT>>();
            for (int x = start; x <= start + 20; ++x) line->Add({x, 10});
            breakUp.m_lines.Add(std::move(line));
        }
        breakUp.FilterSkelLines();
        return breakUp.m_lines.GetCount() == 1 ? breakUp.m_lines[0].GetSize() : 0;
    };
    EXPECT_EQ(joined(true, 5), 42);
    EXPECT_EQ(joined(true, 6), 0);
    EXPECT_EQ(joined(false, 5), 0);
}

TEST(BreakUp, FindsTheFirstOfTheNearestOutlinePoints) {
    ExpectLaw(
        [] {
            CPolyPolyDPoint outline;
            const int span = *rc::gen::element(3, 60, 900);
            Points all;
            for (int i = *rc::gen::inRange(1, 4); i > 0; --i) {
                const auto points = *rc::gen::container<std::vector<std::pair<int, int>>>(
                    rc::gen::pair(rc::gen::inRange(0, 2 * span), rc::gen::inRange(-span, span)));
                DPoints polyline;
                for (const auto& [x, y] : points) polyline.Add({x / 2.0, y / 2.0});
                all.insert(all.end(), polyline.begin(), polyline.end());
                AddTo(outline, std::move(polyline));
            }
            const OpenBreakUp::OutlineIndex index(outline);
            for (int tries = 0; tries < 8; ++tries) {
                const auto point = [span] {
                    return POINT{*rc::gen::inRange(-span, 2 * span), *rc::gen::inRange(-span, 2 * span)};
                };
                const POINT z = point(), a = point();
                const int side = *rc::gen::inRange(-1, 2);
                const auto accepts = [&](const DPOINT& p) {
                    return GetHalfPlane(p.x, p.y, z.x, z.y, a.x, a.y) == side;
                };
                const DPOINT* best = nullptr;
                for (const DPOINT& p : all) {
                    if (accepts(p) && (best == nullptr || std::hypot(p.x - z.x, p.y - z.y) <
                                                              std::hypot(best->x - z.x, best->y - z.y)))
                        best = &p;
                }
                const auto found = index.Nearest(z, accepts);
                RC_ASSERT(found.has_value() == (best != nullptr));
                if (best != nullptr) RC_ASSERT(found->x == best->x && found->y == best->y);
            }
        },
        200);
}

// Whatever the cuts do, cross, share ends or lie on each other, the pieces' areas add up.
TEST(BreakUp, CutsDivideAreaWithoutLossOrGain) {
    ExpectLaw(
        [] {
            CPolyPolyDPoint outline;
            const Points outer = Dense({{0, 0}, {80, 0}, {80, 60}, {0, 60}}, 5);
            const Points hole = Dense({{10, 10}, {30, 10}, {30, 40}, {10, 40}}, 5);
            AddClosed(outline, outer);
            AddClosed(outline, hole);
            std::vector<CUTLINE> cuts;
            for (int i = *rc::gen::inRange(0, 7); i > 0; --i) {
                const auto end = [&outer] {
                    const DPOINT p = outer[*rc::gen::inRange<std::size_t>(0, outer.size())];
                    return POINT{static_cast<int>(p.x), static_cast<int>(p.y)};
                };
                const POINT a = end(), b = end();
                cuts.push_back({a.x, a.y, b.x, b.y});
            }
            double area = 0;
            for (const Piece& piece : MakePieces(outline, cuts)) {
                area += piece.outer.area;
                for (const Boundary& inner : piece.holes) area += inner.area;
            }
            RC_ASSERT(std::fabs(area - (80 * 60 - 20 * 30)) < 1e-6);
        },
        300);
}

}  // namespace
}  // namespace tarvex
