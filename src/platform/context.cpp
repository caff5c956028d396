// Device contexts, the stock objects, and what is selected where.
//
// The screen and the stock objects are made by whoever asks first, which is the library's own start, and
// taken down when it is unloaded, before the registry.
#include <algorithm>
#include <cstdlib>
#include <cwchar>
#include <utility>

#include "platform/desktop.h"
#include "platform/font.h"
#include "platform/objects.h"

namespace tarvex {
namespace platform {
namespace {

constexpr int kScreenWidth = 1024;
constexpr int kScreenHeight = 768;

std::shared_ptr<Bitmap> MakeScreen() {
    static std::mutex drawing;
    BITMAPINFOHEADER header{};
    header.biSize = sizeof header;
    header.biWidth = kScreenWidth;
    header.biHeight = kScreenHeight;
    header.biPlanes = 1;
    header.biBitCount = 32;
    auto bitmap = MakeBitmap(header, {});
    if (bitmap == nullptr) throw std::bad_alloc();
    bitmap->sharedBy = &drawing;
    return bitmap;
}

const std::shared_ptr<Bitmap>& Screen() {
    static const std::shared_ptr<Bitmap> screen = MakeScreen();
    return screen;
}

std::shared_ptr<Bitmap> MakePlaceholder() {
    BITMAPINFOHEADER header{};
    header.biSize = sizeof header;
    header.biWidth = header.biHeight = 1;
    header.biPlanes = header.biBitCount = 1;
    auto bitmap = MakeBitmap(header, {0, kColourBits});
    if (bitmap == nullptr) throw std::bad_alloc();
    return bitmap;
}

template <class T>
Selected<T> RegisterStock(std::shared_ptr<T> object) {
    object->stock = true;
    void* const handle = Registry::Instance().Insert(object);
    return {handle, std::move(object)};
}

struct StockObjects {
    Selected<Brush> white = RegisterStock(std::make_shared<Brush>(kColourBits));
    Selected<Brush> black = RegisterStock(std::make_shared<Brush>(PixelWord{0}));
    Selected<Brush> none = RegisterStock(std::make_shared<Brush>(std::nullopt));
    Selected<Pen> whitePen = RegisterStock(std::make_shared<Pen>(kColourBits, 1));
    Selected<Pen> blackPen = RegisterStock(std::make_shared<Pen>(PixelWord{0}, 1));
    Selected<Pen> noPen = RegisterStock(std::make_shared<Pen>(std::nullopt, 1));
    Selected<Bitmap> placeholder = RegisterStock(MakePlaceholder());
    Selected<Font> noFont = RegisterStock(std::make_shared<Font>(nullptr));
};

const StockObjects& Stock() {
    static const StockObjects stock;
    return stock;
}

void* RegisterContext(ContextOrigin origin) {
    return Register([origin] {
        auto context = std::make_shared<Context>(origin);
        context->bitmap.handle = Stock().placeholder.handle;
        context->font.handle = Stock().noFont.handle;
        if (origin != ContextOrigin::Memory) context->bitmap.object = Screen();
        context->brush = Stock().white;
        context->pen = Stock().blackPen;
        return context;
    });
}

/// Puts an object into its place in a context and returns the handle of what was there.
template <class T>
void* Replace(Selected<T>& place, void* handle, std::shared_ptr<T> object) {
    if (place.object != nullptr) --place.object->selections;
    if (object != nullptr) ++object->selections;
    place.object = std::move(object);
    return std::exchange(place.handle, handle);
}

void* SelectBitmapLocked(Context& context, void* handle, std::shared_ptr<Bitmap> bitmap) {
    if (context.origin != ContextOrigin::Memory) return nullptr;
    if (bitmap->stock) return Replace<Bitmap>(context.bitmap, handle, nullptr);
    if (bitmap->selections > 0 && context.bitmap.object != bitmap) return nullptr;
    return Replace(context.bitmap, handle, std::move(bitmap));
}

void* SelectFontLocked(Context& context, void* handle, std::shared_ptr<Font> font) {
    if (font->stock) font = nullptr;
    return Replace(context.font, handle, std::move(font));
}

/// Selects an object of whatever kind; null when it is not one to be selected.
void* SelectLocked(Context& context, void* handle, std::shared_ptr<Object> object) {
    switch (object->kind) {
        case Kind::Bitmap:
            return SelectBitmapLocked(context, handle, std::static_pointer_cast<Bitmap>(std::move(object)));
        case Kind::Brush:
            return Replace(context.brush, handle, std::static_pointer_cast<Brush>(std::move(object)));
        case Kind::Pen:
            return Replace(context.pen, handle, std::static_pointer_cast<Pen>(std::move(object)));
        case Kind::Font:
            return SelectFontLocked(context, handle, std::static_pointer_cast<Font>(std::move(object)));
        case Kind::Context:
            break;
    }
    return nullptr;
}

enum class Parting { Delete, Release };

/// Lets go of a context, if this is how its kind is let go of.
bool DropContext(HDC handle, Parting parting) {
    Registry& registry = Registry::Instance();
    std::shared_ptr<Object> dropped;  // destroyed after the lock is gone
    const auto lock = registry.Lock();
    const auto context = registry.FindLocked<Context>(handle);
    if (context == nullptr) return false;
    if ((context->origin == ContextOrigin::Screen) != (parting == Parting::Release)) return false;
    if (context->origin == ContextOrigin::Memory) Replace<Bitmap>(context->bitmap, nullptr, nullptr);
    Replace<Brush>(context->brush, nullptr, nullptr);
    Replace<Pen>(context->pen, nullptr, nullptr);
    Replace<Font>(context->font, nullptr, nullptr);
    dropped = registry.EraseLocked(handle);
    return true;
}

}  // namespace
}  // namespace platform

using platform::Brush;
using platform::Context;
using platform::ContextOrigin;
using platform::Parting;
using platform::Registry;

HDC CreateCompatibleDC(HDC dc) {
    if (dc != nullptr && Registry::Instance().Find<Context>(dc) == nullptr) return nullptr;
    return static_cast<HDC>(platform::RegisterContext(ContextOrigin::Memory));
}

BOOL DeleteDC(HDC dc) { return platform::DropContext(dc, Parting::Delete) ? TRUE : FALSE; }

HDC CreateDCW(const WCHAR* driver, const WCHAR*, const WCHAR*, const void*) {
    if (driver == nullptr || std::wcscmp(driver, L"DISPLAY") != 0) return nullptr;
    return static_cast<HDC>(platform::RegisterContext(ContextOrigin::Display));
}

HDC GetDC(HWND window) {
    return window == nullptr ? static_cast<HDC>(platform::RegisterContext(ContextOrigin::Screen)) : nullptr;
}

int ReleaseDC(HWND window, HDC dc) {
    return window == nullptr && platform::DropContext(dc, Parting::Release) ? 1 : 0;
}

int GetDeviceCaps(HDC dc, int index) {
    if (Registry::Instance().Find<Context>(dc) == nullptr) return 0;
    switch (index) {
        case HORZRES:
            return platform::kScreenWidth;
        case VERTRES:
            return platform::kScreenHeight;
        case BITSPIXEL:
            return 32;
        case PLANES:
            return 1;
        case LOGPIXELSX:
        case LOGPIXELSY:
            return platform::PixelsPerInch();
        default:
            return 0;
    }
}

HGDIOBJ SelectObject(HDC dc, HGDIOBJ handle) {
    Registry& registry = Registry::Instance();
    const auto lock = registry.Lock();
    const auto context = registry.FindLocked<Context>(dc);
    if (context == nullptr) return nullptr;
    auto object = registry.FindAnyLocked(handle);
    return object == nullptr ? nullptr : platform::SelectLocked(*context, handle, std::move(object));
}

BOOL DeleteObject(HGDIOBJ handle) {
    Registry& registry = Registry::Instance();
    std::shared_ptr<platform::Object> deleted;  // destroyed after the lock is gone
    const auto lock = registry.Lock();
    const auto object = registry.FindAnyLocked(handle);
    if (object == nullptr || object->kind == platform::Kind::Context) return FALSE;
    if (object->stock) return TRUE;
    if (object->selections > 0) return FALSE;
    deleted = registry.EraseLocked(handle);
    return TRUE;
}

HGDIOBJ GetStockObject(int index) {
    try {
        const platform::StockObjects& stock = platform::Stock();
        switch (index) {
            case WHITE_BRUSH:
                return stock.white.handle;
            case BLACK_BRUSH:
                return stock.black.handle;
            case NULL_BRUSH:
                return stock.none.handle;
            case WHITE_PEN:
                return stock.whitePen.handle;
            case BLACK_PEN:
                return stock.blackPen.handle;
            case NULL_PEN:
                return stock.noPen.handle;
            case SYSTEM_FONT:
                return stock.noFont.handle;
            default:
                return nullptr;
        }
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

HBRUSH CreateSolidBrush(COLORREF colour) {
    return static_cast<HBRUSH>(
        platform::Register([colour] { return std::make_shared<Brush>(platform::SwapRedBlue(colour)); }));
}

HPEN CreatePen(int style, int width, COLORREF colour) {
    if (style != PS_SOLID && style != PS_NULL) return nullptr;
    return static_cast<HPEN>(platform::Register([=] {
        const auto paint = style == PS_SOLID ? std::optional(platform::SwapRedBlue(colour)) : std::nullopt;
        return std::make_shared<platform::Pen>(paint,
                                               std::max<std::int64_t>(1, std::abs(std::int64_t{width})));
    }));
}

}  // namespace tarvex
