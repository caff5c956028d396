// Copying, filling and single pixels on device contexts.
#include <new>
#include <utility>

#include "platform/objects.h"

namespace tarvex {

using platform::Canvas;
using platform::Context;
using platform::PixelWord;
using platform::Registry;
using platform::Surface;

namespace {

COLORREF ColourAt(const Surface& pixels, int x, int y) {
    const std::byte* row = pixels.Row(y);
    const PixelWord word = pixels.depth == platform::Depth::Mono
                               ? pixels.table[platform::LoadBit(row, x) ? 1 : 0]
                               : platform::LoadPixel(row, x);
    return platform::SwapRedBlue(word);
}

/// Runs `copy(to, from)` on the surfaces of two contexts.
template <class Copy>
BOOL CopyBetween(HDC to, HDC from, DWORD operation, Copy copy) {
    Registry& registry = Registry::Instance();
    const auto toContext = registry.Find<Context>(to);
    const auto fromContext = registry.Find<Context>(from);
    if (toContext == nullptr || fromContext == nullptr || operation != SRCCOPY) return FALSE;
    const Canvas toCanvas(*toContext);
    const Canvas fromCanvas(*fromContext, toCanvas);
    if (toCanvas.Pixels() == nullptr || fromCanvas.Pixels() == nullptr) return TRUE;
    try {
        copy(*toCanvas.Pixels(), *fromCanvas.Pixels());
        return TRUE;
    } catch (const std::bad_alloc&) {
        return FALSE;
    }
}

}  // namespace

BOOL BitBlt(HDC to, int x, int y, int width, int height, HDC from, int fromX, int fromY, DWORD operation) {
    return CopyBetween(to, from, operation, [&](const Surface& target, const Surface& source) {
        CopyPixels(target, source, ClipCopy(target, x, y, width, height, source, fromX, fromY));
    });
}

BOOL StretchBlt(HDC to, int x, int y, int width, int height, HDC from, int fromX, int fromY, int fromWidth,
                int fromHeight, DWORD operation) {
    return CopyBetween(to, from, operation, [&](const Surface& target, const Surface& source) {
        StretchPixels(target, {x, y, width, height}, source, {fromX, fromY, fromWidth, fromHeight});
    });
}

int SetStretchBltMode(HDC dc, int mode) {
    const auto context = Registry::Instance().Find<Context>(dc);
    if (context == nullptr || mode < 1 || mode > 4) return 0;
    return std::exchange(context->stretchMode, mode);
}

int FillRect(HDC dc, const RECT* rectangle, HBRUSH brush) {
    Registry& registry = Registry::Instance();
    const auto context = registry.Find<Context>(dc);
    const auto paint = registry.Find<platform::Brush>(brush);
    if (context == nullptr || paint == nullptr || rectangle == nullptr) return 0;
    const Canvas canvas(*context);
    if (const Surface* pixels = canvas.Pixels(); pixels != nullptr && paint->colour.has_value())
        FillPixels(*pixels, rectangle->left, rectangle->top, rectangle->right, rectangle->bottom,
                   ValueOf(*pixels, *paint->colour));
    return 1;
}

COLORREF GetPixel(HDC dc, int x, int y) {
    const auto context = Registry::Instance().Find<Context>(dc);
    if (context == nullptr) return CLR_INVALID;
    const Canvas canvas(*context);
    const Surface* pixels = canvas.Pixels();
    if (pixels == nullptr || !pixels->Contains(x, y)) return CLR_INVALID;
    return ColourAt(*pixels, x, y);
}

COLORREF SetPixel(HDC dc, int x, int y, COLORREF colour) {
    const auto context = Registry::Instance().Find<Context>(dc);
    if (context == nullptr) return CLR_INVALID;
    const Canvas canvas(*context);
    const Surface* pixels = canvas.Pixels();
    if (pixels == nullptr || !pixels->Contains(x, y)) return CLR_INVALID;
    platform::FillSpan(*pixels, y, x, x + 1, ValueOf(*pixels, platform::SwapRedBlue(colour)));
    return ColourAt(*pixels, x, y);
}

BOOL GdiFlush() { return TRUE; }

}  // namespace tarvex
