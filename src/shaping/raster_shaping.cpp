// Boolean operations by way of rasters.
//
// Both shapes are drawn, white on black, into 1-bit rasters of one size; whole words of pixels are combined;
// what is white then is traced. Outlines are drawn along with the interior, and the tracer walks on the
// outermost white pixels: so a contour comes back where it was, to the rounding of its pixels and the
// tolerance of the fit, and not half a pixel inside. The exception is the cut of a difference: `b` takes the
// pixels of its own outline away, and the edge it leaves lies one pixel outside of `b`.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/rounding.h"
#include "platform/handles.h"
#include "raster/dib.h"
#include "shaping/raster_frame.h"
#include "tarvex/nodes.h"
#include "tarvex/shapetrace.h"
#include "tarvex/shaping.h"

namespace tarvex {

namespace {

constexpr double kLongestSide = 2000;
constexpr int kMargin = 2;
/// Boundaries of this many pixels or fewer are left out.
constexpr int kMinPoints = 10;

/// A 1-bit raster with a context to draw on it in white.
struct Canvas {
    UniqueBitmap bitmap;
    UniqueDC dc;
    std::uint8_t* bits = nullptr;
    std::size_t size = 0;  ///< of all rows, in bytes
};

/// Without bits when the system refuses.
Canvas MakeCanvas(int width, int height) {
    Canvas canvas;
    canvas.bitmap = CreateMonochrome(MakeHeader(width, height, 1));
    canvas.dc.Reset(CreateCompatibleDC(nullptr));
    BITMAP description{};
    if (!canvas.bitmap || !canvas.dc ||
        GetObject(canvas.bitmap.Get(), static_cast<int>(sizeof description), &description) == 0) {
        return canvas;
    }
    canvas.bits = static_cast<std::uint8_t*>(description.bmBits);
    canvas.size = static_cast<std::size_t>(description.bmWidthBytes) * static_cast<std::size_t>(height);
    return canvas;
}

bool EndAndPaint(HDC dc) { return EndPath(dc) != FALSE && StrokeAndFillPath(dc) != FALSE; }

/// Draws the shape; false when the system cannot.
bool DrawShape(const Canvas& canvas, const CPolyPolyBezier& shape, const CScaleDraw& view, int fillMode) {
    const HDC dc = canvas.dc.Get();
    const SelectedObject bitmap(dc, canvas.bitmap.Get());
    const SelectedObject pen(dc, GetStockObject(WHITE_PEN));
    const SelectedObject brush(dc, GetStockObject(WHITE_BRUSH));
    if (!bitmap || !pen || !brush) return false;
    SetBkMode(dc, TRANSPARENT);
    SetPolyFillMode(dc, fillMode);  // an unknown one is refused and leaves ALTERNATE
    const bool isEachByItself = fillMode == WINDING;
    CArray<tagPOINT, tagPOINT> points;
    if (!isEachByItself) BeginPath(dc);
    for (int i = 0; i < shape.GetSize(); ++i) {
        if (shape.GetAt(i) == nullptr) continue;
        view.p2s(shape[i], points);
        if (points.IsEmpty()) continue;
        if (isEachByItself) BeginPath(dc);
        if (PolyBezier(dc, points.GetData(), static_cast<DWORD>(points.GetSize())) == FALSE) return false;
        if (isEachByItself && !EndAndPaint(dc)) return false;
    }
    return isEachByItself || EndAndPaint(dc);
}

template <class Operation>
void CombineWords(const Canvas& a, const Canvas& b, Operation operation) {
    std::uint64_t word, other;
    for (std::size_t i = 0; i < a.size; i += sizeof word) {
        const std::size_t length = std::min(sizeof word, a.size - i);
        word = other = 0;
        std::memcpy(&word, a.bits + i, length);
        std::memcpy(&other, b.bits + i, length);
        word = operation(word, other);
        std::memcpy(a.bits + i, &word, length);
    }
}

/// Leaves the result in `a`. The padding of rows is zero, and stays so.
void Combine(int op, const Canvas& a, const Canvas& b) {
    using Word = std::uint64_t;
    switch (op) {
        case SHAPING_DIFFERENCE:
            CombineWords(a, b, [](Word v, Word w) { return v & ~w; });
            break;
        case SHAPING_INTERSECTION:
            CombineWords(a, b, [](Word v, Word w) { return v & w; });
            break;
        default:
            CombineWords(a, b, [](Word v, Word w) { return v | w; });
    }
}

/// Of all contours, rounded to pixels.
tagRECT FrameOf(const CPolyPolyBezier& shape) {
    tagRECT all{};
    bool isFirst = true;
    for (int i = 0; i < shape.GetSize(); ++i) {
        DRECT frame;
        if (shape.GetAt(i) == nullptr || !GetBezierFrame(shape[i], frame)) continue;
        const tagRECT one = {RoundToInt(frame.left), RoundToInt(frame.top), RoundToInt(frame.right),
                             RoundToInt(frame.bottom)};
        all = isFirst ? one
                      : tagRECT{std::min(all.left, one.left), std::min(all.top, one.top),
                                std::max(all.right, one.right), std::max(all.bottom, one.bottom)};
        isFirst = false;
    }
    return all;
}

void MapBack(CPolyPolyBezier& shape, const CScaleDraw& view) {
    for (int i = 0; i < shape.GetSize(); ++i) {
        for (BPOINT& node : shape[i]) {
            node.cp1 = view.s2p(node.cp1);
            node.pt = view.s2p(node.pt);
            node.cp2 = view.s2p(node.cp2);
        }
    }
}

}  // namespace

std::optional<RasterFrame> FrameRaster(const tagRECT& whole) {
    double width = static_cast<double>(whole.right) - whole.left;
    double height = static_cast<double>(whole.bottom) - whole.top;
    if (width < GEOMETRY_EPSILON || height < GEOMETRY_EPSILON) return std::nullopt;
    if (width > kLongestSide || height > kLongestSide) {
        const double ratio = height / width;
        if (height > width) {
            height = kLongestSide;
            width = std::floor(kLongestSide / ratio + 0.5);
        } else {
            width = kLongestSide;
            height = std::floor(kLongestSide * ratio + 0.5);
        }
        if (width < 1 || height < 1) return std::nullopt;
    }
    RasterFrame frame;
    frame.width = SaturatingInt(width);
    frame.height = SaturatingInt(height);
    const tagRECT target = {kMargin, kMargin, frame.width - 1 - kMargin, frame.height - 1 - kMargin};
    frame.view.SetMinScale(1e-9);  // rectangles of all sizes that int has must fit
    frame.view.SetScaleToRect(whole.left, whole.top, whole.right, whole.bottom, &target);
    return frame;
}

bool PolyPolyBezierBmpShaping(int op, CPolyPolyBezier& a, CPolyPolyBezier& b, int fillModeA, int fillModeB) {
    GdiFlush();
    const tagRECT frameA = FrameOf(a);
    const tagRECT frameB = FrameOf(b);
    tagRECT whole{};
    UnionRect(&whole, &frameA, &frameB);
    const auto frame = FrameRaster(whole);
    if (!frame) return false;

    const Canvas canvasA = MakeCanvas(frame->width, frame->height);
    const Canvas canvasB = MakeCanvas(frame->width, frame->height);
    if (canvasA.bits == nullptr || canvasB.bits == nullptr) return false;
    if (!DrawShape(canvasA, a, frame->view, fillModeA)) return false;
    if (!DrawShape(canvasB, b, frame->view, fillModeB)) return false;
    GdiFlush();
    Combine(op, canvasA, canvasB);

    CPolyPolyBezier result;
    CShapeTrace tracer(canvasA.bitmap.Get());
    if (!tracer.DoTrace(result, kMinPoints) || result.IsEmpty()) return false;
    MapBack(result, frame->view);
    a = std::move(result);
    return true;
}

}  // namespace tarvex
