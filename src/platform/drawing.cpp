// Lines and paths on device contexts: recorded while a path is open, drawn otherwise.
#include <new>
#include <span>
#include <utility>

#include "platform/objects.h"
#include "platform/polygon_fill.h"
#include "platform/stroke.h"

namespace tarvex {

using platform::Context;
using platform::Figure;
using platform::Path;
using platform::Surface;

namespace {

std::shared_ptr<Context> FindContext(HDC dc) { return platform::Registry::Instance().Find<Context>(dc); }

/// The pixels that a pen can reach from, and one more for what is rounded towards them.
platform::Window ReachOf(const Surface& pixels, std::int64_t penWidth) {
    const double margin = static_cast<double>(penWidth) / 2 + 2;
    return {-margin, -margin, pixels.width + margin, pixels.height + margin};
}

void Stroke(const Surface& pixels, const platform::Pen& pen, std::span<const Figure> figures) {
    if (!pen.colour.has_value()) return;
    const platform::PixelWord value = ValueOf(pixels, *pen.colour);
    if (pen.width > 1) {
        StrokeWide(pixels, figures, pen.width, value);
    } else {
        StrokeThin(pixels, figures, value);
    }
}

void Fill(const Surface& pixels, const platform::Brush& brush, int mode, std::span<const Figure> figures) {
    if (!brush.colour.has_value()) return;
    platform::PolygonFill fill(pixels);
    for (const Figure& figure : figures) fill.AddPolygon(figure.points);
    fill.Fill(mode == WINDING ? platform::FillRule::Winding : platform::FillRule::Alternate,
              ValueOf(pixels, *brush.colour));
}

enum class Parts { Interior, Outline, Both };

/// Raises std::bad_alloc.
void Paint(const Context& context, const Path& path, Parts parts) {
    const platform::Canvas canvas(context);
    const Surface* pixels = canvas.Pixels();
    if (pixels == nullptr) return;
    const platform::Pen& pen = *context.pen.object;
    std::vector<Figure> figures = path.Flatten(ReachOf(*pixels, pen.width));
    if (parts != Parts::Outline) Fill(*pixels, *context.brush.object, context.fillMode, figures);
    if (parts == Parts::Both) {
        for (Figure& figure : figures) figure.closed = true;
    }
    if (parts != Parts::Interior) Stroke(*pixels, pen, figures);
}

BOOL PaintRecorded(HDC dc, Parts parts) {
    const auto context = FindContext(dc);
    if (context == nullptr || !context->path.has_value()) return FALSE;
    const Path path = std::move(*context->path);
    context->path.reset();
    try {
        Paint(*context, path, parts);
        return TRUE;
    } catch (const std::bad_alloc&) {
        return FALSE;
    }
}

/// Lets `add` extend the path being recorded, or a path of its own that is drawn at once.
template <class Add>
BOOL Extend(Context& context, Add add) {
    try {
        if (context.recording.has_value()) {
            add(*context.recording);
        } else {
            Path path;
            add(path);
            Paint(context, path, Parts::Outline);
        }
        return TRUE;
    } catch (const std::bad_alloc&) {
        return FALSE;
    }
}

}  // namespace

BOOL MoveToEx(HDC dc, int x, int y, POINT* former) {
    const auto context = FindContext(dc);
    if (context == nullptr) return FALSE;
    const POINT position = std::exchange(context->position, POINT{x, y});
    if (former != nullptr) *former = position;
    if (context->recording.has_value()) context->recording->BreakFigure();
    return TRUE;
}

BOOL LineTo(HDC dc, int x, int y) {
    const auto context = FindContext(dc);
    if (context == nullptr) return FALSE;
    const POINT to{x, y};
    if (Extend(*context, [&](Path& path) { path.AddLine(context->position, to); }) == FALSE) return FALSE;
    context->position = to;
    return TRUE;
}

BOOL Polyline(HDC dc, const POINT* points, int count) {
    const auto context = FindContext(dc);
    if (context == nullptr || points == nullptr || count < 2) return FALSE;
    return Extend(*context, [&](Path& path) { path.AddPolyline({points, static_cast<std::size_t>(count)}); });
}

BOOL PolyBezier(HDC dc, const POINT* points, DWORD count) {
    const auto context = FindContext(dc);
    if (context == nullptr || points == nullptr || count < 4 || count % 3 != 1) return FALSE;
    return Extend(*context, [&](Path& path) { path.AddCurves({points, count}); });
}

BOOL BeginPath(HDC dc) {
    const auto context = FindContext(dc);
    if (context == nullptr) return FALSE;
    context->path.reset();
    context->recording.emplace();
    return TRUE;
}

BOOL CloseFigure(HDC dc) {
    const auto context = FindContext(dc);
    if (context == nullptr || !context->recording.has_value()) return FALSE;
    return Extend(*context, [](Path& path) { path.CloseFigure(); });
}

BOOL EndPath(HDC dc) {
    const auto context = FindContext(dc);
    if (context == nullptr || !context->recording.has_value()) return FALSE;
    context->path = std::move(context->recording);
    context->recording.reset();
    return TRUE;
}

BOOL FillPath(HDC dc) { return PaintRecorded(dc, Parts::Interior); }
BOOL StrokePath(HDC dc) { return PaintRecorded(dc, Parts::Outline); }
BOOL StrokeAndFillPath(HDC dc) { return PaintRecorded(dc, Parts::Both); }

int SetPolyFillMode(HDC dc, int mode) {
    const auto context = FindContext(dc);
    if (context == nullptr || (mode != ALTERNATE && mode != WINDING)) return 0;
    return std::exchange(context->fillMode, mode);
}

int SetBkMode(HDC dc, int mode) {
    const auto context = FindContext(dc);
    if (context == nullptr || (mode != TRANSPARENT && mode != OPAQUE)) return 0;
    return std::exchange(context->backgroundMode, mode);
}

}  // namespace tarvex
