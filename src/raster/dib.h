// Making the device-independent bitmaps that the raster classes work on.
#pragma once

#include "platform/handles.h"

namespace tarvex {

/// A 1-bit bitmap with the colour table black, white, sized by the header; its other fields that depend on
/// the depth are set here. Null when the system refuses.
inline UniqueBitmap CreateMonochrome(BITMAPINFOHEADER header) {
    struct {
        BITMAPINFOHEADER header;
        RGBQUAD colours[2];
    } info{header, {{0, 0, 0, 0}, {255, 255, 255, 0}}};
    info.header.biPlanes = 1;
    info.header.biBitCount = 1;
    info.header.biCompression = BI_RGB;
    info.header.biSizeImage = 0;
    info.header.biXPelsPerMeter = 0;
    info.header.biYPelsPerMeter = 0;
    info.header.biClrUsed = 0;
    info.header.biClrImportant = 0;
    const ScreenDC screen(GetDC(nullptr));
    void* bits = nullptr;
    return UniqueBitmap(CreateDIBSection(screen.Get(), reinterpret_cast<const BITMAPINFO*>(&info),
                                         DIB_RGB_COLORS, &bits, nullptr, 0));
}

/// A header of this size and depth, bottom-up for a positive height, everything else 0.
inline BITMAPINFOHEADER MakeHeader(int width, int height, int depth) {
    BITMAPINFOHEADER header{};
    header.biSize = sizeof header;
    header.biWidth = width;
    header.biHeight = height;
    header.biPlanes = 1;
    header.biBitCount = static_cast<WORD>(depth);
    header.biCompression = BI_RGB;
    return header;
}

}  // namespace tarvex
