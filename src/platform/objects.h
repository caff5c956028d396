// What handles stand for: bitmaps, brushes, pens and device contexts; fonts have their own header.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <optional>

#include "platform/path.h"
#include "platform/registry.h"
#include "platform/surface.h"
#include "tarvex/platform.h"

namespace tarvex::platform {

struct FreeMemory {
    void operator()(std::byte* p) const { std::free(p); }
};

struct Bitmap : Object {
    static constexpr Kind kKind = Kind::Bitmap;
    Bitmap() : Object(kKind) {}

    BITMAPINFOHEADER header{};
    std::unique_ptr<std::byte, FreeMemory> bits;
    Surface surface;
    std::mutex* sharedBy = nullptr;  ///< guards the pixels of a bitmap that several threads draw on
};

struct Brush : Object {
    static constexpr Kind kKind = Kind::Brush;
    explicit Brush(std::optional<PixelWord> c) : Object(kKind), colour(c) {}

    const std::optional<PixelWord> colour;  ///< none: paints nothing
};

struct Pen : Object {
    static constexpr Kind kKind = Kind::Pen;
    Pen(std::optional<PixelWord> c, std::int64_t w) : Object(kKind), colour(c), width(w) {}

    const std::optional<PixelWord> colour;  ///< none: draws nothing
    const std::int64_t width;               ///< in pixels; 1 is the thin line
};

struct Font;  // font.h

/// An object selected into a context, by its handle too, which the next selection returns.
template <class T>
struct Selected {
    void* handle = nullptr;
    std::shared_ptr<T> object;
};

/// Who lets go of a context, and whether it draws on the screen.
enum class ContextOrigin {
    Memory,   ///< CreateCompatibleDC and DeleteDC
    Screen,   ///< GetDC and ReleaseDC; draws on the screen
    Display,  ///< CreateDCW and DeleteDC; draws on the screen
};

struct Context : Object {
    static constexpr Kind kKind = Kind::Context;
    explicit Context(ContextOrigin from) : Object(kKind), origin(from) {}

    const ContextOrigin origin;
    Selected<Bitmap> bitmap;  ///< the object is null before the first bitmap is selected
    Selected<Brush> brush;
    Selected<Pen> pen;
    Selected<Font> font;  ///< the object is null before the first font is selected
    POINT position{};
    int stretchMode = BLACKONWHITE;
    int fillMode = ALTERNATE;
    int backgroundMode = OPAQUE;
    std::optional<Path> recording;  ///< between BeginPath and EndPath
    std::optional<Path> path;       ///< after EndPath, until it is painted
};

/// Makes a bitmap of zero bits, or null when the header or memory does not allow it. The colours
/// follow the header; `table` gives them at 1 bit.
std::shared_ptr<Bitmap> MakeBitmap(const BITMAPINFOHEADER& header, const std::array<PixelWord, 2>& table);

/// The bitmap that a context draws on, held for as long as the drawing takes.
class Canvas {
  public:
    explicit Canvas(const Context& context) : m_bitmap(context.bitmap.object) {
        if (m_bitmap != nullptr && m_bitmap->sharedBy != nullptr)
            m_lock = std::unique_lock(*m_bitmap->sharedBy);
    }
    /// A canvas that is read while `other` is drawn on; the two may be one.
    Canvas(const Context& context, const Canvas& other) : m_bitmap(context.bitmap.object) {
        if (m_bitmap != nullptr && m_bitmap->sharedBy != nullptr && m_bitmap != other.m_bitmap)
            m_lock = std::unique_lock(*m_bitmap->sharedBy);
    }
    /// Null when no bitmap is selected.
    const Surface* Pixels() const { return m_bitmap == nullptr ? nullptr : &m_bitmap->surface; }

  private:
    std::shared_ptr<Bitmap> m_bitmap;
    std::unique_lock<std::mutex> m_lock;
};

/// Calls `make` and puts what it returns into the registry; null when either finds no memory.
template <class Make>
void* Register(Make make) {
    try {
        std::shared_ptr<Object> object = make();
        return object == nullptr ? nullptr : Registry::Instance().Insert(std::move(object));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace tarvex::platform
