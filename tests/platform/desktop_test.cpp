// Rectangle helpers, and the hooks behind keyboard, beep, clock and debugger.
#include "support/precompiled.h"

#include <array>
#include <ctime>

#include "tarvex/platform.h"

namespace tarvex::test {
namespace {

constexpr LONG kMin = std::numeric_limits<LONG>::min();
constexpr LONG kMax = std::numeric_limits<LONG>::max();

std::array<LONG, 4> Sides(const RECT& r) { return {r.left, r.top, r.right, r.bottom}; }

TEST(Rectangles, IntersectAndUniteWithoutTheirRightAndBottomSides) {
    struct Row {
        RECT a, b, common, both;
    };
    const RECT none = {0, 0, 0, 0};
    for (const Row& row : {
             Row{{0, 0, 10, 10}, {5, 6, 20, 20}, {5, 6, 10, 10}, {0, 0, 20, 20}},
             Row{{0, 0, 10, 10}, {10, 0, 20, 10}, none, {0, 0, 20, 10}},
             Row{{0, 0, 10, 10}, {2, 3, 4, 5}, {2, 3, 4, 5}, {0, 0, 10, 10}},
             Row{{1, 1, 3, 3}, {9, 9, 9, 20}, none, {1, 1, 3, 3}},
             Row{{5, 0, 0, 5}, {1, 1, 2, 2}, none, {1, 1, 2, 2}},
             Row{{5, 5, 0, 0}, {7, 7, 7, 7}, none, none},
             Row{{kMin, kMin, kMax, kMax}, {0, 0, 1, 1}, {0, 0, 1, 1}, {kMin, kMin, kMax, kMax}},
         }) {
        RECT result = {1, 2, 3, 4};
        EXPECT_EQ(IntersectRect(&result, &row.a, &row.b), row.common.right != row.common.left);
        EXPECT_EQ(Sides(result), Sides(row.common));
        result = row.b;
        EXPECT_EQ(IntersectRect(&result, &result, &row.a), row.common.right != row.common.left)
            << "onto an argument";
        EXPECT_EQ(Sides(result), Sides(row.common));
        EXPECT_EQ(UnionRect(&result, &row.a, &row.b), row.both.right != row.both.left);
        EXPECT_EQ(Sides(result), Sides(row.both));
        result = row.a;
        EXPECT_EQ(UnionRect(&result, &row.b, &result), row.both.right != row.both.left) << "onto an argument";
        EXPECT_EQ(Sides(result), Sides(row.both));
    }
}

TEST(Rectangles, InflateStopsAtTheEndsOfTheRange) {
    struct Row {
        RECT before;
        int dx, dy;
        RECT after;
    };
    for (const Row& row :
         {Row{{0, 0, 10, 10}, 2, 3, {-2, -3, 12, 13}}, Row{{0, 0, 10, 10}, -6, 0, {6, 0, 4, 10}},
          Row{{kMin, -5, kMax, 5}, 1, kMax, {kMin, kMin, kMax, kMax}},
          Row{{0, 0, 0, 0}, kMin, kMin, {kMax, kMax, kMin, kMin}}}) {
        RECT r{};
        EXPECT_TRUE(CopyRect(&r, &row.before));
        EXPECT_TRUE(InflateRect(&r, row.dx, row.dy));
        EXPECT_EQ(Sides(r), Sides(row.after));
    }
}

TEST(Rectangles, HoldTheirLeftAndTopSidesOnly) {
    RECT r{};
    EXPECT_TRUE(SetRect(&r, 1, 2, 4, 4));
    EXPECT_FALSE(IsRectEmpty(&r));
    int inside = 0;
    for (LONG y = 0; y < 6; ++y)
        for (LONG x = 0; x < 6; ++x) inside += PtInRect(&r, {x, y});
    EXPECT_EQ(inside, 6);
    EXPECT_TRUE(PtInRect(&r, {1, 2}));
    EXPECT_FALSE(PtInRect(&r, {4, 3}));
    EXPECT_FALSE(PtInRect(&r, {3, 4}));
}

TEST(Rectangles, RefuseNullPointers) {
    RECT r = {1, 2, 3, 4};
    EXPECT_FALSE(SetRect(nullptr, 0, 0, 1, 1));
    EXPECT_FALSE(CopyRect(nullptr, &r));
    EXPECT_FALSE(CopyRect(&r, nullptr));
    EXPECT_TRUE(IsRectEmpty(nullptr));
    EXPECT_FALSE(PtInRect(nullptr, {0, 0}));
    EXPECT_FALSE(InflateRect(nullptr, 1, 1));
    EXPECT_FALSE(IntersectRect(&r, nullptr, &r));
    EXPECT_FALSE(UnionRect(&r, &r, nullptr));
    EXPECT_EQ(Sides(r), (std::array<LONG, 4>{1, 2, 3, 4}));
}

/// Puts the former hooks back.
class HooksFor {
  public:
    explicit HooksFor(const DesktopHooks& hooks) : m_former(SetDesktopHooks(hooks)) {}
    ~HooksFor() { SetDesktopHooks(m_former); }

  private:
    DesktopHooks m_former;
};

std::vector<std::wstring> g_heard;

TEST(Desktop, IsSilentAndIdleUntilHooked) {
    const HooksFor defaults(DesktopHooks{});
    EXPECT_EQ(GetAsyncKeyState(VK_ESCAPE), 0);
    EXPECT_TRUE(MessageBeep(0));
    OutputDebugStringW(L"dropped");
    std::int64_t stored = 0;
    const std::int64_t now = _time64(&stored);
    EXPECT_EQ(stored, now);
    EXPECT_NEAR(static_cast<double>(now), static_cast<double>(std::time(nullptr)), 2);
}

TEST(Desktop, AsksAndTellsTheHooks) {
    g_heard.clear();
    const HooksFor hooks({[] { return true; }, [] { g_heard.push_back(L"beep"); },
                          [] { return std::int64_t{61}; },
                          [](const wchar_t* text) { g_heard.push_back(text); }});
    EXPECT_LT(GetAsyncKeyState(VK_ESCAPE), 0) << "the highest bit";
    EXPECT_EQ(GetAsyncKeyState('A'), 0);
    EXPECT_EQ(_time64(nullptr), 61);
    EXPECT_TRUE(MessageBeep(0));
    OutputDebugStringW(L"text");
    OutputDebugStringW(nullptr);
    EXPECT_EQ(g_heard, (std::vector<std::wstring>{L"beep", L"text"}));
}

}  // namespace
}  // namespace tarvex::test
