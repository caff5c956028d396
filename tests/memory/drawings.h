// Small drawings that every operation has something to do with, and the bytes of what comes out.
#pragma once

#include <cstddef>

#include "platform/handles.h"
#include "shaping/outlines.h"
#include "support/grey_picture.h"
#include "tarvex/containers.h"
#include "tarvex/raster.h"

namespace tarvex::test {

/// A ring with a bar through it, smooth at the edges.
inline GreyPicture RingAndBar(int width, int height) {
    return Render(width, height, [=](double x, double y) {
        const double r = std::hypot(x - width / 2.0, y - height / 2.0) / (height / 2.0);
        return (r < 0.9 && r > 0.5) || (std::fabs(x - y) < height / 10.0 && y > 2 && y < height - 2);
    });
}

/// The dark pixels, white on black.
inline UniqueBitmap MonoBitmap(const GreyPicture& picture) {
    UniqueBitmap bitmap(CImgProc::CreateBitmapBW(picture.width, picture.height));
    BITMAP description{};
    GetObject(bitmap.Get(), static_cast<int>(sizeof description), &description);
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x) CImgProc::SetPixel(description, x, y, picture.At(x, y) < 128);
    return bitmap;
}

/// Bands of three colours across.
inline UniqueBitmap ColourBitmap(int width, int height) {
    UniqueBitmap bitmap(CImgProc::CreateBitmap32(width, height));
    BITMAP description{};
    GetObject(bitmap.Get(), static_cast<int>(sizeof description), &description);
    static constexpr COLORREF colours[] = {RGB(250, 20, 20), RGB(20, 250, 20), RGB(20, 20, 250)};
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            CImgProc::SetPixel32(description, x, y, colours[(x / 15 + y / 20) % 3]);
    return bitmap;
}

/// A disc and a frame that cross, in units that the vector path likes.
inline CPolyPolyBezier Disc() {
    return testing_support::Shape(
        {testing_support::Circle(400, 400, 300), testing_support::Circle(400, 400, 90)});
}
inline CPolyPolyBezier Frame() {
    return testing_support::Shape(
        {testing_support::Rect(350, 300, 900, 800), testing_support::Rect(500, 450, 700, 600)});
}

template <class T>
void AddBytes(std::string& bytes, const CArray<T, T>& array) {
    const int count = array.GetSize();
    bytes.append(reinterpret_cast<const char*>(&count), sizeof count);
    for (const T& record : array) {
        if constexpr (requires { record.flags; }) {  // a node, which ends in bytes that mean nothing
            bytes.append(reinterpret_cast<const char*>(&record), offsetof(T, flags) + sizeof record.flags);
        } else if constexpr (requires { record.isHole; }) {
            bytes += std::to_string(record.depth) + ' ' + std::to_string(record.parent) + ' ' +
                     std::to_string(record.isHole) + '\n';
        } else {
            bytes.append(reinterpret_cast<const char*>(&record), sizeof record);
        }
    }
}

template <class Array>
std::string Bytes(const COwningList<Array>& list) {
    std::string bytes;
    for (int i = 0; i < list.GetCount(); ++i) AddBytes(bytes, list[i]);
    return bytes;
}

template <class T>
std::string Bytes(const CArray<T, T>& array) {
    std::string bytes;
    AddBytes(bytes, array);
    return bytes;
}

/// The pixels as they stand in memory.
inline std::string Bytes(const UniqueBitmap& bitmap) {
    BITMAP description{};
    GetObject(bitmap.Get(), static_cast<int>(sizeof description), &description);
    return {static_cast<const char*>(description.bmBits), static_cast<std::size_t>(description.bmWidthBytes) *
                                                              static_cast<std::size_t>(description.bmHeight)};
}

}  // namespace tarvex::test
