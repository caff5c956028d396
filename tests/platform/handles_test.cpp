// Bitmaps, contexts and selections: what is made, described, refused and let go of.
#include "support/precompiled.h"

#include <set>
#include <thread>

#include "platform/pictures.h"
#include "platform/registry.h"

namespace tarvex::test {
namespace {

/// Handles that stand for nothing: null, small numbers, addresses, and one deleted a moment ago.
std::vector<void*> BadHandles() {
    static int somewhere = 0;
    Picture gone(1, 1, 1);
    const HDC deletedContext = CreateCompatibleDC(nullptr);
    DeleteDC(deletedContext);
    const HBRUSH deletedBrush = CreateSolidBrush(0);
    DeleteObject(deletedBrush);
    return {nullptr,
            reinterpret_cast<void*>(std::uintptr_t{1}),
            reinterpret_cast<void*>(std::uintptr_t{0xff0000}),
            reinterpret_cast<void*>(~std::uintptr_t{0}),
            &somewhere,
            deletedContext,
            deletedBrush,
            gone.Handle(),
            gone.Dc()};
}

auto Fields(const BITMAP& b) {
    return std::tuple(b.bmType, b.bmWidth, b.bmHeight, b.bmWidthBytes, b.bmPlanes, b.bmBitsPixel, b.bmBits);
}

TEST(Bitmap, IsDescribedAsItWasMade) {
    struct Row {
        int width, height, depth, rowBytes;
    };
    for (const Row& row : {Row{1, 1, 1, 4},
                           {32, 3, 1, 4},
                           {33, 3, 1, 8},
                           {33, -3, 1, 8},
                           {1, 1, 32, 4},
                           {5, -7, 32, 20},
                           {100000, 2, 1, 12500}}) {
        const MonoInfo info = MakeInfo(row.width, row.height, row.depth);
        void* bits = nullptr;
        const UniqueBitmap bitmap(CreateDIBSection(nullptr, info.Info(), DIB_RGB_COLORS, &bits, nullptr, 0));
        ASSERT_TRUE(bitmap);
        DIBSECTION section{};
        ASSERT_EQ(GetObject(bitmap.Get(), sizeof section, &section), static_cast<int>(sizeof section));
        EXPECT_EQ(Fields(section.dsBm),
                  std::tuple(0, row.width, std::abs(row.height), row.rowBytes, 1, row.depth, bits));
        EXPECT_EQ(section.dsBmih.biHeight, row.height);
        EXPECT_EQ(section.dsBmih.biSizeImage, static_cast<DWORD>(row.rowBytes * std::abs(row.height)));
        EXPECT_EQ(section.dsBmih.biClrUsed, row.depth == 1 ? 2u : 0u);

        BITMAP description{};
        EXPECT_EQ(GetObject(bitmap.Get(), sizeof description, &description),
                  static_cast<int>(sizeof description));
        EXPECT_EQ(Fields(description), Fields(section.dsBm));
        EXPECT_EQ(GetObject(bitmap.Get(), sizeof description + 1, &section),
                  static_cast<int>(sizeof description));
        EXPECT_EQ(GetObject(bitmap.Get(), sizeof description - 1, &section), 0);
        EXPECT_EQ(GetObject(bitmap.Get(), -1, &section), 0);
        EXPECT_EQ(GetObject(bitmap.Get(), 0, nullptr), static_cast<int>(sizeof description));
    }
}

TEST(Bitmap, StartsBlackAndIsStoredBottomUpOrTopDown) {
    for (const int height : {3, -3}) {
        const Picture picture(10, height, 1);
        EXPECT_EQ(picture.Memory(), std::vector<std::uint8_t>(12, 0));
        SetPixel(picture.Dc(), 9, 0, RGB(255, 255, 255));
        EXPECT_EQ(picture.Bits()[height > 0 ? 9 : 1], 0x40) << height;
    }
}

TEST(Bitmap, ColoursThatAreNotGivenAreBlack) {
    for (const DWORD used : {0u, 1u, 2u, 256u}) {
        MonoInfo info = MakeInfo(1, 1, 1);
        info.header.biClrUsed = used;
        info.table = {0xFF112233, 0xFF445566};
        const UniqueBitmap bitmap(
            CreateDIBSection(nullptr, info.Info(), DIB_RGB_COLORS, nullptr, nullptr, 0));
        const UniqueDC dc(CreateCompatibleDC(nullptr));
        const SelectedObject selected(dc.Get(), bitmap.Get());
        EXPECT_EQ(GetPixel(dc.Get(), 0, 0), RGB(0x11, 0x22, 0x33));
        SetPixel(dc.Get(), 0, 0, used == 1 ? 0 : RGB(0x44, 0x55, 0x66));
        EXPECT_EQ(GetPixel(dc.Get(), 0, 0), used == 1 ? 0 : RGB(0x44, 0x55, 0x66)) << used;
    }
}

TEST(Bitmap, IsRefusedForWhatItCannotBe) {
    constexpr int kMin = std::numeric_limits<int>::min();
    constexpr int kMax = std::numeric_limits<int>::max();
    const std::size_t live = platform::Registry::Instance().LiveObjects();
    std::vector<MonoInfo> refused;
    for (const auto& [width, height] : {std::pair(0, 1),
                                        {1, 0},
                                        {-1, 1},
                                        {kMin, 1},
                                        {kMax, kMax},
                                        {kMax, kMin},
                                        {1, kMin},
                                        {1, kMax},
                                        {kMax, 2},
                                        {65536, 8192}})
        refused.push_back(MakeInfo(width, height, 32));
    for (const auto& [width, height] : {std::pair(kMax, 9), {kMax, kMin}, {1, kMax}, {kMin, 1}})
        refused.push_back(MakeInfo(width, height, 1));
    for (const int depth : {0, 4, 8, 16, 24, 31, 64}) refused.push_back(MakeInfo(1, 1, depth));
    refused.push_back(MakeInfo(1, 1, 1));
    refused.back().header.biSize = 12;
    refused.push_back(MakeInfo(1, 1, 1));
    refused.back().header.biPlanes = 3;
    refused.push_back(MakeInfo(1, 1, 32));
    refused.back().header.biCompression = 3;
    for (const MonoInfo& info : refused) {
        void* bits = &refused;
        EXPECT_EQ(CreateDIBSection(nullptr, info.Info(), DIB_RGB_COLORS, &bits, nullptr, 0), nullptr)
            << info.header.biWidth << " x " << info.header.biHeight << " x " << info.header.biBitCount;
        EXPECT_EQ(bits, nullptr);
    }
    const MonoInfo good = MakeInfo(1, 1, 1);
    int bits = 0;
    EXPECT_EQ(CreateDIBSection(nullptr, nullptr, DIB_RGB_COLORS, nullptr, nullptr, 0), nullptr);
    EXPECT_EQ(CreateDIBSection(nullptr, good.Info(), 1, nullptr, nullptr, 0), nullptr);
    EXPECT_EQ(CreateDIBSection(nullptr, good.Info(), DIB_RGB_COLORS, nullptr, &bits, 0), nullptr);
    EXPECT_EQ(platform::Registry::Instance().LiveObjects(), live);
}

TEST(Handles, ThatStandForNothingAreRefusedEverywhere) {
    const Picture good(4, 4, 32);
    std::vector<void*> bad = BadHandles();
    bad.push_back(good.Handle());  // of the wrong kind below
    bad.push_back(GetStockObject(WHITE_BRUSH));
    const RECT r = {0, 0, 4, 4};
    for (void* handle : bad) {
        const auto dc = static_cast<HDC>(handle);
        EXPECT_FALSE(DeleteDC(dc));
        EXPECT_EQ(ReleaseDC(nullptr, dc), 0);
        EXPECT_EQ(GetDeviceCaps(dc, LOGPIXELSX), 0);
        if (handle != nullptr) {
            EXPECT_EQ(CreateCompatibleDC(dc), nullptr);
        }
        EXPECT_EQ(SelectObject(dc, GetStockObject(BLACK_BRUSH)), nullptr);
        EXPECT_FALSE(BitBlt(dc, 0, 0, 1, 1, good.Dc(), 0, 0, SRCCOPY));
        EXPECT_FALSE(BitBlt(good.Dc(), 0, 0, 1, 1, dc, 0, 0, SRCCOPY));
        EXPECT_FALSE(StretchBlt(good.Dc(), 0, 0, 1, 1, dc, 0, 0, 1, 1, SRCCOPY));
        EXPECT_EQ(SetStretchBltMode(dc, COLORONCOLOR), 0);
        EXPECT_EQ(FillRect(dc, &r, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH))), 0);
        EXPECT_EQ(GetPixel(dc, 0, 0), CLR_INVALID);
        EXPECT_EQ(SetPixel(dc, 0, 0, 0), CLR_INVALID);
    }
    bad = BadHandles();
    bad.push_back(good.Dc());
    for (void* handle : bad) {
        char out[256];
        EXPECT_EQ(GetObject(handle, sizeof out, out), 0);
        EXPECT_FALSE(DeleteObject(handle));
        EXPECT_EQ(SelectObject(good.Dc(), handle), nullptr);
        EXPECT_EQ(FillRect(good.Dc(), &r, static_cast<HBRUSH>(handle)), 0);
    }
    EXPECT_EQ(GetObject(GetStockObject(WHITE_BRUSH), sizeof(BITMAP), &bad), 0);
    EXPECT_EQ(FillRect(good.Dc(), nullptr, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH))), 0);
    EXPECT_FALSE(BitBlt(good.Dc(), 0, 0, 1, 1, good.Dc(), 0, 0, 0x00000042)) << "only SRCCOPY";
    EXPECT_EQ(good.Memory(), std::vector<std::uint8_t>(64, 0));
}

TEST(Handles, OfDeletedObjectsDoNotComeBackSoon) {
    std::set<void*> seen;
    for (int i = 0; i < 5000; ++i) {
        const HBRUSH brush = CreateSolidBrush(0);
        EXPECT_TRUE(seen.insert(brush).second);
        EXPECT_TRUE(DeleteObject(brush));
        EXPECT_FALSE(DeleteObject(brush));
    }
}

TEST(Selection, ReturnsWhatWasThereAndKeepsItFromBeingDeleted) {
    const std::size_t live = platform::Registry::Instance().LiveObjects();
    {
        const MonoInfo info = MakeInfo(3, 3, 1);
        UniqueBitmap a(CreateDIBSection(nullptr, info.Info(), DIB_RGB_COLORS, nullptr, nullptr, 0));
        UniqueBitmap b(CreateDIBSection(nullptr, info.Info(), DIB_RGB_COLORS, nullptr, nullptr, 0));
        UniqueDC dc(CreateCompatibleDC(nullptr));
        UniqueDC other(CreateCompatibleDC(dc.Get()));
        EXPECT_EQ(platform::Registry::Instance().LiveObjects(), live + 4);

        const HGDIOBJ placeholder = SelectObject(dc.Get(), a.Get());
        ASSERT_NE(placeholder, nullptr);
        EXPECT_EQ(SelectObject(dc.Get(), a.Get()), a.Get()) << "again into the same context";
        EXPECT_EQ(SelectObject(other.Get(), a.Get()), nullptr) << "one context at a time";
        EXPECT_FALSE(DeleteObject(a.Get()));
        BITMAP still{};
        EXPECT_NE(GetObject(a.Get(), sizeof still, &still), 0);
        EXPECT_EQ(SelectObject(dc.Get(), b.Get()), a.Get());
        EXPECT_TRUE(DeleteObject(a.Detach()));
        EXPECT_EQ(SelectObject(dc.Get(), placeholder), b.Get());
        EXPECT_EQ(SelectObject(other.Get(), b.Get()), placeholder);
        other.Reset();  // deleting a context lets go of its bitmap
        EXPECT_TRUE(DeleteObject(b.Detach()));

        const std::tuple<HGDIOBJ, int, int> tools[] = {
            {CreateSolidBrush(RGB(1, 2, 3)), WHITE_BRUSH, NULL_BRUSH},
            {CreatePen(PS_SOLID, 2, 0), BLACK_PEN, NULL_PEN}};
        for (const auto& [tool, former, next] : tools) {
            EXPECT_EQ(SelectObject(dc.Get(), tool), GetStockObject(former));
            EXPECT_FALSE(DeleteObject(tool));
            EXPECT_EQ(SelectObject(dc.Get(), GetStockObject(next)), tool);
            EXPECT_TRUE(DeleteObject(tool));
        }
    }
    EXPECT_EQ(platform::Registry::Instance().LiveObjects(), live);
}

TEST(Selection, StockObjectsCanBeDeletedAndLiveOn) {
    const HGDIOBJ white = GetStockObject(WHITE_BRUSH);
    EXPECT_TRUE(DeleteObject(white));
    EXPECT_EQ(GetStockObject(WHITE_BRUSH), white);
    const Picture picture(1, 1, 1);
    const RECT all = {0, 0, 1, 1};
    EXPECT_NE(FillRect(picture.Dc(), &all, static_cast<HBRUSH>(white)), 0);
    EXPECT_EQ(picture.At(0, 0), 1u);
    EXPECT_EQ(GetStockObject(-1), nullptr);
    EXPECT_EQ(GetStockObject(1000), nullptr);
}

TEST(Selection, WithoutABitmapDrawingSucceedsAndLeavesNoTrace) {
    const UniqueDC dc(CreateCompatibleDC(nullptr));
    const Picture picture(2, 2, 32);
    const RECT all = {0, 0, 2, 2};
    EXPECT_TRUE(BitBlt(dc.Get(), 0, 0, 2, 2, picture.Dc(), 0, 0, SRCCOPY));
    EXPECT_TRUE(BitBlt(picture.Dc(), 0, 0, 2, 2, dc.Get(), 0, 0, SRCCOPY));
    EXPECT_NE(FillRect(dc.Get(), &all, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH))), 0);
    EXPECT_EQ(GetPixel(dc.Get(), 0, 0), CLR_INVALID);
}

TEST(Screen, IsOnePictureThatEveryContextOnItDraws) {
    const std::size_t live = platform::Registry::Instance().LiveObjects();
    {
        const ScreenDC one(GetDC(nullptr));
        const ScreenDC two(GetDC(nullptr));
        EXPECT_EQ(GetDeviceCaps(one.Get(), LOGPIXELSX), 96);
        EXPECT_EQ(GetDeviceCaps(one.Get(), HORZRES), 1024);
        EXPECT_EQ(GetDeviceCaps(one.Get(), VERTRES), 768);
        EXPECT_EQ(GetDeviceCaps(one.Get(), BITSPIXEL), 32);
        SetPixel(one.Get(), 1023, 767, RGB(1, 2, 3));
        EXPECT_EQ(GetPixel(two.Get(), 1023, 767), RGB(1, 2, 3));
        EXPECT_EQ(GetPixel(two.Get(), 1024, 767), CLR_INVALID);
        EXPECT_TRUE(BitBlt(one.Get(), 1022, 767, 1, 1, two.Get(), 1023, 767, SRCCOPY));
        EXPECT_EQ(GetPixel(two.Get(), 1022, 767), RGB(1, 2, 3));

        const Picture picture(1, 1, 1);
        EXPECT_EQ(SelectObject(one.Get(), picture.Handle()), nullptr);
        EXPECT_FALSE(DeleteDC(one.Get())) << "contexts of the screen are released";
        EXPECT_EQ(ReleaseDC(nullptr, picture.Dc()), 0) << "contexts in memory are deleted";
    }
    EXPECT_EQ(platform::Registry::Instance().LiveObjects(), live);
}

TEST(Threads, WorkOnTheirOwnObjectsAndShareTheScreen) {
    const std::size_t live = platform::Registry::Instance().LiveObjects();
    std::vector<std::thread> threads;
    std::vector<int> wrong(4, 0);
    for (std::size_t t = 0; t < wrong.size(); ++t) {
        threads.emplace_back([&, t] {
            const COLORREF mine = RGB(static_cast<int>(t) + 1, 0, 0);
            for (int round = 0; round < 300; ++round) {
                const Picture picture(40, 3, 32);
                const UniqueBrush brush(CreateSolidBrush(mine));
                const RECT all = {0, 0, 40, 3};
                FillRect(picture.Dc(), &all, brush.Get());
                const ScreenDC screen(GetDC(nullptr));
                BitBlt(screen.Get(), 0, 0, 40, 3, picture.Dc(), 0, 0, SRCCOPY);
                BitBlt(picture.Dc(), 0, 0, 40, 3, screen.Get(), 0, 0, SRCCOPY);
                const COLORREF first = GetPixel(picture.Dc(), 0, 0);
                // The screen shows one thread's picture whole, never a mixture of two.
                for (int x = 0; x < 40; ++x) wrong[t] += GetPixel(picture.Dc(), x, 2) != first;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
    EXPECT_EQ(platform::Registry::Instance().LiveObjects(), live);
}

}  // namespace
}  // namespace tarvex::test
