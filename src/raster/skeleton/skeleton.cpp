// CSkeleton: bitmaps in, skeletons and centre lines out.
#include "tarvex/skeleton.h"

#include <cstring>
#include <optional>
#include <utility>

#include "core/append.h"
#include "raster/centerline/stroke_fitter.h"
#include "raster/centerline/strokes.h"
#include "raster/contour_appender.h"
#include "raster/dib.h"
#include "raster/skeleton/bit_plane.h"
#include "raster/skeleton/line_graph.h"
#include "raster/skeleton/thinning.h"
#include "tarvex/raster.h"

namespace tarvex {

using skeleton::BitPlane;
using skeleton::DistanceMap;

/// The bitmap at hand, and once it is thinned what it was.
struct CSkeleton::Mask {
    UniqueBitmap bitmap;
    std::optional<BitPlane> shape;
    std::optional<BitPlane> lines;
};

namespace {

/// A bitmap that can be thinned; none when the handle is not one's.
std::optional<BITMAP> Describe(HBITMAP handle) {
    BITMAP bitmap{};
    if (handle == nullptr) return std::nullopt;
    GdiFlush();
    if (GetObject(handle, static_cast<int>(sizeof bitmap), &bitmap) != static_cast<int>(sizeof bitmap))
        return std::nullopt;
    const bool canBeRead = bitmap.bmBits != nullptr && bitmap.bmWidth > 0 && bitmap.bmHeight > 0 &&
                           (bitmap.bmBitsPixel == 1 || bitmap.bmBitsPixel == 32);
    return canBeRead ? std::optional(bitmap) : std::nullopt;
}

constexpr std::size_t kColourBytes = 4;
constexpr double kOutputTolerance = 0.5;  // pixels

std::uint8_t* RowOf(const BITMAP& bitmap, int y) {
    const auto width = static_cast<std::size_t>(bitmap.bmWidth);
    const std::size_t stride = bitmap.bmBitsPixel == 32
                                   ? kColourBytes * width
                                   : CImgProc::WIDTHBYTES(static_cast<unsigned>(bitmap.bmWidth));
    return static_cast<std::uint8_t*>(bitmap.bmBits) +
           static_cast<std::size_t>(bitmap.bmHeight - 1 - y) * stride;
}

/// The bits of a byte in reverse order: a bitmap's leftmost pixel is its byte's highest bit, a plane's the
/// lowest.
std::uint8_t Reversed(std::uint8_t byte) {
    constexpr std::uint8_t kNibbles[16] = {0, 8, 4, 12, 2, 10, 6, 14, 1, 9, 5, 13, 3, 11, 7, 15};
    return static_cast<std::uint8_t>(kNibbles[byte & 15] << 4 | kNibbles[byte >> 4]);
}

void ReadBits(const std::uint8_t* row, int width, std::uint64_t* words) {
    for (int x = 0; x < width; x += 8) {
        const std::uint64_t byte = Reversed(row[x / 8]) & (x + 8 > width ? 0xFFU >> (x + 8 - width) : 0xFFU);
        words[x / 64] |= byte << (x % 64);
    }
}

void ReadColours(const std::uint8_t* row, int width, std::uint64_t* words) {
    for (int x = 0; x < width; ++x, row += kColourBytes) {
        if ((row[0] | row[1] | row[2]) != 0) words[x / 64] |= std::uint64_t{1} << (x % 64);
    }
}

BitPlane Read(const BITMAP& bitmap) {
    BitPlane plane(bitmap.bmWidth, bitmap.bmHeight);
    for (int y = 0; y < bitmap.bmHeight; ++y) {
        if (bitmap.bmBitsPixel == 1) {
            ReadBits(RowOf(bitmap, y), bitmap.bmWidth, plane.Row(y));
        } else {
            ReadColours(RowOf(bitmap, y), bitmap.bmWidth, plane.Row(y));
        }
    }
    return plane;
}

void Write(const BitPlane& plane, const BITMAP& bitmap) {
    for (int y = 0; y < bitmap.bmHeight; ++y) {
        std::uint8_t* row = RowOf(bitmap, y);
        const std::uint64_t* words = plane.Row(y);
        if (bitmap.bmBitsPixel == 1) {
            for (int x = 0; x < bitmap.bmWidth; x += 8)
                row[x / 8] = Reversed(static_cast<std::uint8_t>(words[x / 64] >> (x % 64)));
            continue;
        }
        for (int x = 0; x < bitmap.bmWidth; ++x, row += kColourBytes)
            std::memset(row, (words[x / 64] >> (x % 64) & 1) != 0 ? 0xFF : 0, kColourBytes - 1);
    }
}

BitPlane Thinned(const BitPlane& shape) {
    BitPlane plane = shape;
    DistanceMap distances(shape);
    skeleton::Thin(plane, distances);
    return plane;
}

}  // namespace

CSkeleton::CSkeleton() = default;
CSkeleton::CSkeleton(CSkeleton&& other) noexcept = default;
CSkeleton& CSkeleton::operator=(CSkeleton&& other) noexcept = default;
CSkeleton::~CSkeleton() = default;

HBITMAP CSkeleton::MakeBitmapMono(HBITMAP bitmap) {
    const auto source = Describe(bitmap);
    std::unique_ptr<Mask> mask;
    if (source) {
        mask = std::make_unique<Mask>();
        mask->bitmap.Reset(CImgProc::CreateBitmapBW(source->bmWidth, source->bmHeight));
        const auto copy = Describe(mask->bitmap.Get());
        if (copy) {
            Write(Read(*source), *copy);
        } else {
            mask = nullptr;
        }
    }
    m_mask = std::move(mask);
    return Bitmap();
}

bool CSkeleton::DoSkeleton() {
    const auto bitmap = Describe(Bitmap());
    if (!bitmap) return false;
    BitPlane shape = Read(*bitmap);
    if (m_mask->lines && *m_mask->lines == shape) return true;
    BitPlane lines = Thinned(shape);
    Write(lines, *bitmap);
    m_mask->shape = std::move(shape);
    m_mask->lines = std::move(lines);
    return true;
}

HBITMAP CSkeleton::Bitmap() const { return m_mask ? m_mask->bitmap.Get() : nullptr; }

bool CSkeleton::DoSkeleton(HBITMAP bitmap) {
    const auto raster = Describe(bitmap);
    if (!raster) return false;
    Write(Thinned(Read(*raster)), *raster);
    return true;
}

bool CSkeleton::InputMono(HBITMAP mask) { return MakeBitmapMono(mask) != nullptr; }

bool CSkeleton::Output(CPolyPolyBezier& out) {
    out.RemoveAll();
    if (!DoSkeleton()) return false;
    const BitPlane& shape = *m_mask->shape;
    DistanceMap distances(shape);
    BitPlane middle(shape.Width(), shape.Height());
    skeleton::MeasureShape(shape, distances, middle);
    centerline::StrokeRules rules;
    rules.joinsStraight = false;
    centerline::StrokeFitter fitter(kOutputTolerance, centerline::StrokeEnds::kept);
    ContourAppender appender(static_cast<COwningList<CArray<BPOINT, BPOINT>>&>(out));
    for (const centerline::Stroke& stroke :
         centerline::FindStrokes(skeleton::FindLines(*m_mask->lines, shape, distances), shape, rules)) {
        const centerline::FittedStroke fitted = fitter.Fit(stroke);
        auto contour = std::make_unique<CArray<BPOINT, BPOINT>>();
        AppendAll(*contour, fitted.nodes);
        appender.Add(std::move(contour));
    }
    return true;
}

}  // namespace tarvex
