// CScaleDraw: mapping there and back, scale limits, fitting, zooming, and what it draws where.
#include "support/precompiled.h"

#include "platform/pictures.h"
#include "support/contours.h"
#include "support/property.h"
#include "support/records.h"
#include "tarvex/scaledraw.h"

namespace tarvex::test {
namespace {

constexpr int kMin = std::numeric_limits<int>::min();
constexpr int kMax = std::numeric_limits<int>::max();

std::array<LONG, 4> Sides(const RECT& r) { return {r.left, r.top, r.right, r.bottom}; }

std::tuple<double, double, int, int> OffsetOf(const CScaleDraw& view) {
    double ox = 0, oy = 0;
    int px = 0, py = 0;
    view.GetOffset(ox, oy, px, py);
    return {ox, oy, px, py};
}

TEST(ScaleDraw, StartsAtScaleOneAndRoundsHalvesUp) {
    const CScaleDraw view;
    EXPECT_EQ(view.GetScale(), 1);
    EXPECT_EQ(view.GetMinScale(), 0.002);
    EXPECT_EQ(view.GetMaxScale(), 500);
    EXPECT_EQ(OffsetOf(view), std::make_tuple(0.0, 0.0, 0, 0));
    for (const auto& [v, pixel] : {std::pair{0.0, 0},
                                   {2.5, 3},
                                   {-2.5, -2},
                                   {2.499, 2},
                                   {kNaN, 0},
                                   {kInfinity, kMax},
                                   {-1e300, kMin}}) {
        EXPECT_EQ(view.x2s(v), pixel);
        EXPECT_EQ(view.y2s(v), pixel);
        const tagPOINT p = view.p2s(FPOINT{static_cast<float>(v), 7});
        EXPECT_EQ(p.x, v == 2.499 ? 2 : pixel);
        EXPECT_EQ(p.y, 7);
    }
}

TEST(ScaleDraw, MapsThereAndBack) {
    CScaleDraw view;
    view.SetOffset(100, 200, 10, -20);
    view.SetScale(4);
    EXPECT_EQ(view.p2sd({101, 199.5}), (DPOINT{14, -22}));
    EXPECT_EQ(view.p2s(DPOINT{101, 199.5}).y, -22);
    EXPECT_EQ(view.s2p(tagPOINT{14, -22}), (DPOINT{101, 199.5}));
    EXPECT_EQ(view.s2p(DPOINT{15, -21}), (DPOINT{101.25, 199.75}));
    EXPECT_EQ(view.s2x(14, 10.0), 100);
    EXPECT_EQ(view.s2x(30, 10.0), 110) << "105 lies halfway";
    EXPECT_EQ(view.s2y(-22.0, 0.4), std::floor(199.5 / 0.4 + 0.5) * 0.4);
    EXPECT_TRUE(std::isnan(view.s2x(14, 0.0)));
    EXPECT_EQ(view.s2x(kMin), (double{kMin} - 10) / 4 + 100) << "the difference is not taken in int";
    ExpectLaw([](std::int16_t ox, std::int16_t px, std::uint16_t s, int sx) {
        CScaleDraw any;
        any.SetOffset(ox / 7.0, 0, px, 0);
        any.SetScale(s / 100.0);
        RC_ASSERT(any.x2s(any.s2x(sx)) == sx);
    });
}

TEST(ScaleDraw, MapsContoursToRunsOfCurves) {
    CScaleDraw view;
    view.SetScale(2);
    CArray<tagPOINT, tagPOINT> run;
    run.SetSize(5);
    view.p2s(MakeNodes({{{-9, -9}, {0, 0}, {1, 0}}}), run);
    EXPECT_TRUE(run.IsEmpty()) << "a single node is no curve";
    view.p2s(
        MakeNodes({{{-9, -9}, {0, 0}, {1, 0}}, {{2, 1}, {3, 1}, {4, 1.3}}, {{5, 2}, {kNaN, kInfinity}, {}}}),
        run);
    std::vector<std::pair<int, int>> points;
    for (const tagPOINT& p : run) points.emplace_back(p.x, p.y);
    EXPECT_THAT(points,
                testing::ElementsAre(std::pair{0, 0}, std::pair{2, 0}, std::pair{4, 2}, std::pair{6, 2},
                                     std::pair{8, 3}, std::pair{10, 4}, std::pair{0, kMax}));
}

TEST(ScaleDraw, KeepsScalesPositiveAndWithinTheLimits) {
    CScaleDraw view;
    for (const auto& [asked, got] :
         {std::pair{-4.0, 4.0}, {1000, 500}, {0, 0.002}, {kNaN, 0.002}, {-kInfinity, 500}, {0.002, 0.002}}) {
        view.SetScale(asked);
        EXPECT_EQ(view.GetScale(), got) << asked;
    }
    view.SetScale(3);
    view.SetMaxScale(2);
    EXPECT_EQ(view.GetScale(), 3) << "the present scale is not limited anew";
    view.SetScale(3);
    EXPECT_EQ(view.GetScale(), 2);
}

TEST(ScaleDraw, FitsBySmallerScale) {
    struct Row {
        double w, h;
        int pw, ph;
        double scale;
    };
    for (const Row& row : {Row{100, 50, 200, 200, 2}, Row{50, 100, 200, 200, 2}, Row{100, 50, 300, 100, 2},
                           Row{100, 100, 0, 300, 0.01}, Row{100, 100, 300, 0, 0.01}, Row{0, 0, 0, 0, 500},
                           Row{1e-7, 100, 1, 100, 1}, Row{-100, 100, 50, 300, 0.5}, Row{kNaN, 1, 1, 1, 1}}) {
        CScaleDraw view;
        view.SetScaleToFit(row.w, row.h, row.pw, row.ph);
        EXPECT_EQ(view.GetScale(), row.scale) << row.w << " x " << row.h;
    }
}

TEST(ScaleDraw, ShowsARectangleCentred) {
    CScaleDraw view;
    const RECT window{-1, 10, 200, 61};  // half sums round towards zero: (99, 35)
    view.SetScaleToRect(1000, 0, 2000, 100, &window);
    EXPECT_EQ(OffsetOf(view), std::make_tuple(1500.0, 50.0, 99, 35));
    EXPECT_EQ(view.GetScale(), 0.201);
    const RECT above{-3, -4, 0, 1};
    view.SetScaleToRect(0, 0, 1, 1, &above);
    EXPECT_EQ(OffsetOf(view), std::make_tuple(0.5, 0.5, -1, -1));

    CScaleDraw dragged;
    dragged.SetOffset(5, 5, 0, 0);
    dragged.SetScale(2);
    const RECT part{10, 10, 30, 20};  // document 10..20 by 10..15
    const RECT page{0, 0, 100, 100};
    dragged.SetScaleToRect(&part, &page);
    EXPECT_EQ(OffsetOf(dragged), std::make_tuple(15.0, 12.5, 50, 50));
    EXPECT_EQ(dragged.GetScale(), 10);

    const RECT huge{kMin, kMin, kMax, kMax};
    view.SetScaleToRect(0, 0, 1e9, 1e9, &huge);
    EXPECT_EQ(view.GetScale(), kMax / 1e9) << "a side beyond int counts as INT_MAX";
}

TEST(ScaleDraw, ZoomsAboutAPixelAndPans) {
    CScaleDraw view;
    view.SetOffset(3, 4, 11, 12);
    view.SetScale(1.7);
    const tagPOINT at{123, -45};
    const DPOINT kept = view.s2p(at);
    view.SetScaleZoomInPoint(at);
    view.SetScaleZoomInPoint(at);
    EXPECT_EQ(view.GetScale(), 6.8);
    EXPECT_EQ(view.p2sd(kept), (DPOINT{123, -45}));
    view.SetScaleZoomOutPoint(at);
    view.SetScaleZoomOutPoint(at);
    EXPECT_EQ(view.GetScale(), 1.7);
    EXPECT_EQ(view.s2x(123), kept.x) << "bit for bit";
    EXPECT_EQ(view.s2y(-45), kept.y);

    view.SetOffset(3, 4, kMax, 12);
    view.MoveOffset({10, 10}, {15, 3});
    EXPECT_EQ(OffsetOf(view), std::make_tuple(3.0, 4.0, kMin + 4, 5));
    view.MoveOffset({15, 3}, {10, 10});
    EXPECT_EQ(OffsetOf(view), std::make_tuple(3.0, 4.0, kMax, 12));
}

#ifndef _WIN32  // a desktop there says itself how fine it is
TEST(ScaleDraw, KnowsTrueSize) {
    EXPECT_EQ(CScaleDraw::g_scale121, 96 / 254.0);
    const DesktopHooks former = SetDesktopHooks({nullptr, nullptr, nullptr, nullptr, [] { return 254; }});
    const ScreenDC screen(GetDC(nullptr));
    CScaleDraw view;
    EXPECT_EQ(CScaleDraw::Scale121(screen.Get()), 1);
    EXPECT_EQ(view.GetScalePercent(screen.Get()), 100);
    view.SetScale121(nullptr);
    EXPECT_EQ(view.GetScale(), 96 / 254.0) << "taken when the library was loaded";
    CScaleDraw::g_scale121 = 0.5;
    view.SetScale(2);
    EXPECT_EQ(view.GetScalePercent(nullptr), 400);
    CScaleDraw::g_scale121 = 96 / 254.0;
    SetDesktopHooks(former);
    EXPECT_EQ(CScaleDraw::Scale121(screen.Get()), 96 / 254.0);
}
#endif

POINT DevicePosition(HDC dc) {
    POINT position{};
    MoveToEx(dc, 0, 0, &position);
    MoveToEx(dc, position.x, position.y, nullptr);
    return position;
}

TEST(ScaleDraw, DrawsOnlyWhatTheClipRectangleHolds) {
    const Picture picture(9, 5, 1);
    SelectObject(picture.Dc(), GetStockObject(WHITE_PEN));
    CScaleDraw view;
    view.SetScale(2);
    const RECT clip{2, 1, 6, 3};
    view.SetClipRect(&clip);
    RECT stored{};
    view.GetClipRect(&stored);
    EXPECT_EQ(Sides(stored), Sides(clip));

    view.MoveTo(picture.Dc(), 0, 1);
    view.LineTo(picture.Dc(), 4, 1);
    EXPECT_EQ(picture.Text(),
              ".........\n"
              ".........\n"
              "..####...\n"
              ".........\n"
              ".........\n");
    EXPECT_EQ(DevicePosition(picture.Dc()).x, 8) << "the device stands at the true end";
    view.LineTo(picture.Dc(), 4, 10);  // wholly outside
    EXPECT_EQ(DevicePosition(picture.Dc()).y, 2) << "nothing drawn, so the device stays";
    view.SetClipRect(nullptr);
    view.GetClipRect(&stored);
    EXPECT_EQ(Sides(stored), (std::array<LONG, 4>{kMin, kMin, kMax, kMax}));
    view.MoveTo(picture.Dc(), -1.25, 0.25);  // unrounded (-2.5, 0.5): pixel (-2, 1)
    EXPECT_EQ(DevicePosition(picture.Dc()).x, -2);
    EXPECT_EQ(DevicePosition(picture.Dc()).y, 1);
}

TEST(ScaleDraw, StartsTheNextLineWhereOneOutsideTheClipEnded) {
    const Picture picture(8, 3, 1);
    SelectObject(picture.Dc(), GetStockObject(WHITE_PEN));
    CScaleDraw view;
    const RECT clip{2, 0, 5, 2};
    view.SetClipRect(&clip);
    view.MoveTo(picture.Dc(), 0, 50);
    view.LineTo(picture.Dc(), -4, 1);
    view.LineTo(picture.Dc(), 20, 1);
    EXPECT_EQ(picture.Text(), "........\n..###...\n........\n");
}

TEST(ScaleDraw, DrawsCurvesOutlinedOrFilled) {
    const tagPOINT square[] = {{1, 1}, {1, 1}, {5, 1}, {5, 1}, {5, 1}, {5, 4}, {5, 4},
                               {5, 4}, {1, 4}, {1, 4}, {1, 4}, {1, 1}, {1, 1}};
    for (const bool fill : {false, true}) {
        const Picture picture(7, 6, 1);
        SelectObject(picture.Dc(), GetStockObject(WHITE_PEN));
        SelectObject(picture.Dc(), GetStockObject(WHITE_BRUSH));
        CScaleDraw view;
        view.PolyBezier(picture.Dc(), square, 13, fill);
        const std::string middle = fill ? ".#####.\n.#####.\n" : ".#...#.\n.#...#.\n";
        EXPECT_EQ(picture.Text(), ".......\n.#####.\n" + middle + ".#####.\n.......\n");
        view.PolyBezier(picture.Dc(), nullptr, 13, fill);
        view.PolyBezier(picture.Dc(), square, -1, fill);
        view.PolyBezier(picture.Dc(), square, 5, fill);
    }
}

}  // namespace
}  // namespace tarvex::test
