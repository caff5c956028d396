// Bitmaps in memory: made, described and deleted.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "platform/objects.h"

namespace tarvex {
namespace platform {
namespace {

/// What the bytes of one bitmap may come to.
constexpr std::int64_t kMaxBytes = std::numeric_limits<std::int32_t>::max();

bool IsSupported(const BITMAPINFOHEADER& header) {
    return header.biSize == sizeof(BITMAPINFOHEADER) && header.biPlanes == 1 &&
           (header.biBitCount == 1 || header.biBitCount == 32) && header.biCompression == BI_RGB &&
           header.biWidth > 0 && header.biHeight != 0;
}

/// The two colours that follow a 1-bit header.
std::array<PixelWord, 2> ReadTable(const BITMAPINFO& info) {
    std::array<PixelWord, 2> table{};
    const DWORD used = info.bmiHeader.biClrUsed;
    const std::size_t count = used == 0 ? 2 : std::min<std::size_t>(used, 2);
    std::memcpy(table.data(), reinterpret_cast<const std::byte*>(&info) + offsetof(BITMAPINFO, bmiColors),
                count * sizeof(RGBQUAD));
    for (PixelWord& colour : table) colour &= kColourBits;
    return table;
}

BITMAP Describe(const Bitmap& bitmap) {
    const Surface& surface = bitmap.surface;
    const auto rowBytes = static_cast<LONG>(std::abs(surface.pitch));
    return {
        0, surface.width, surface.height, rowBytes, 1, static_cast<WORD>(surface.depth), bitmap.bits.get()};
}

DIBSECTION DescribeSection(const Bitmap& bitmap) {
    DIBSECTION section{};
    section.dsBm = Describe(bitmap);
    section.dsBmih = bitmap.header;
    if (bitmap.surface.depth == Depth::Colour) {
        section.dsBitfields[0] = 0x00FF0000;
        section.dsBitfields[1] = 0x0000FF00;
        section.dsBitfields[2] = 0x000000FF;
    }
    return section;
}

}  // namespace

std::shared_ptr<Bitmap> MakeBitmap(const BITMAPINFOHEADER& header, const std::array<PixelWord, 2>& table) {
    if (!IsSupported(header)) return nullptr;
    const bool topDown = header.biHeight < 0;
    const std::int64_t height = std::abs(std::int64_t{header.biHeight});
    const std::int64_t rowBytes = (std::int64_t{header.biWidth} * header.biBitCount + 31) / 32 * 4;
    if (height > kMaxBytes / rowBytes) return nullptr;

    auto bitmap = std::make_shared<Bitmap>();
    const std::int64_t bytes = rowBytes * height;
    bitmap->bits.reset(static_cast<std::byte*>(std::calloc(static_cast<std::size_t>(bytes), 1)));
    if (bitmap->bits == nullptr) return nullptr;

    Surface& surface = bitmap->surface;
    surface.width = header.biWidth;
    surface.height = static_cast<int>(height);
    surface.depth = header.biBitCount == 1 ? Depth::Mono : Depth::Colour;
    surface.table = table;
    surface.pitch = static_cast<std::ptrdiff_t>(topDown ? rowBytes : -rowBytes);
    surface.top = bitmap->bits.get() + (topDown ? 0 : rowBytes * (height - 1));

    bitmap->header = header;
    bitmap->header.biSizeImage = static_cast<DWORD>(bytes);
    bitmap->header.biClrUsed = surface.depth == Depth::Mono ? 2 : 0;
    return bitmap;
}

}  // namespace platform

HBITMAP CreateDIBSection(HDC, const BITMAPINFO* info, UINT usage, void** bits, HANDLE section, DWORD) {
    if (bits != nullptr) *bits = nullptr;
    if (info == nullptr || usage != DIB_RGB_COLORS || section != nullptr) return nullptr;
    void* memory = nullptr;
    void* handle = platform::Register([&]() -> std::shared_ptr<platform::Bitmap> {
        const bool mono = info->bmiHeader.biBitCount == 1;
        auto bitmap = platform::MakeBitmap(
            info->bmiHeader, mono ? platform::ReadTable(*info) : std::array<platform::PixelWord, 2>{});
        if (bitmap != nullptr) memory = bitmap->bits.get();
        return bitmap;
    });
    if (bits != nullptr && handle != nullptr) *bits = memory;
    return static_cast<HBITMAP>(handle);
}

int GetObject(HANDLE object, int size, void* out) {
    const auto bitmap = platform::Registry::Instance().Find<platform::Bitmap>(object);
    if (bitmap == nullptr) return 0;
    if (out == nullptr) return sizeof(BITMAP);
    if (size >= static_cast<int>(sizeof(DIBSECTION))) {
        const DIBSECTION section = platform::DescribeSection(*bitmap);
        std::memcpy(out, &section, sizeof section);
        return sizeof section;
    }
    if (size >= static_cast<int>(sizeof(BITMAP))) {
        const BITMAP description = platform::Describe(*bitmap);
        std::memcpy(out, &description, sizeof description);
        return sizeof description;
    }
    return 0;
}

}  // namespace tarvex
