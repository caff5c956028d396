// From a grey picture to smooth outlines: the tracing a person asks for by "trace this picture".
//
// CShapeTrace (tracing.h) follows pixels of a one-bit raster on a seed grid, as host programs rely on
// it to do. The functions here take every grey level into account and find every outline: they trace
// the curve along which the picture, taken as a continuous surface, crosses a level. An anti-aliased
// edge says by its grey where between two pixels it runs, so outlines are placed to a fraction of a
// pixel, and nothing has to be enlarged for that.
//
// Model: pixel (x, y) is a sample at its centre (x + 0.5, y + 0.5); the picture covers
// [0, width] x [0, height], x to the right, y down, and is surrounded by background. Outlines are
// closed Bezier contours in these coordinates; those around parts of the shape run clockwise as seen
// on the screen, those around holes counter-clockwise, so that both fill rules give the shape.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>

#include "tarvex/containers.h"
#include "tarvex/export.h"

namespace tarvex {

/// A grey picture that stays the caller's: 0 black to 255 white, rows from the top down, `stride`
/// bytes apart.
struct GreyView {
    const std::uint8_t* levels = nullptr;
    int width = 0;
    int height = 0;
    std::ptrdiff_t stride = 0;

    const std::uint8_t* Row(int y) const { return levels + y * stride; }
};

/// How many pixels have each grey level.
using GreyHistogram = std::array<std::uint64_t, 256>;

TARVEX_API GreyHistogram CountLevels(const GreyView& picture);

/// The threshold T of Otsu's method: levels up to T are one class, those above the other, and the
/// variance between the two classes is the largest (where several levels do equally well, as between
/// two separate peaks, the middle one). A histogram of fewer than two levels gives 127.
/// N. Otsu, "A threshold selection method from gray-level histograms", IEEE Trans. SMC 9 (1979).
TARVEX_API int OtsuThreshold(const GreyHistogram& histogram);

/// Which side of the threshold is the shape.
enum class ShapeSide { dark, light };

/// The side that is the drawing rather than its ground: the dark one, unless at least nine tenths of
/// the picture's outermost pixels and three quarters of all are dark.
TARVEX_API ShapeSide FindShapeSide(const GreyView& picture, int threshold);

struct OutlineOptions {
    int threshold = 127;  ///< levels up to this are dark; see OtsuThreshold
    ShapeSide side = ShapeSide::dark;
    /// Outlines with this many points or fewer are dropped. An outline has a point for each side of a
    /// pixel between shape and ground: a lone pixel has 4, a pair 6.
    int minPoints = 6;
    /// The picture is smoothly enlarged this many times before it is traced (1 to 16); coordinates
    /// and tolerances stay those of the picture as given.
    int detail = 1;
    /// The farthest a curve may run from the traced points, in pixels; 0 chooses it from the picture:
    /// tight where edges are anti-aliased, half a pixel where they are stairs.
    double tolerance = 0;
    /// Called now and then with the part done, 0 to 1; tracing stops when it returns false.
    std::function<bool(double)> progress;
};

/// Traces all outlines of the shape. `out` is emptied first; every contour in it is closed (its last
/// anchor is its first again), corners have independent handles, smooth nodes have handles in one
/// line, straight segments have none. Every contour encloses an area: one that a generous tolerance
/// would reduce to a line there and back stays the polygon of its points.
///
/// Shapes that touch the picture's edge are closed along it. Where pixels of the shape touch by a
/// corner only, the side that is rarer in the 4 x 4 pixels around hangs together; in a tie the shape
/// does when the mean of the four pixels there is on its side or halfway.
/// Returns false, with `out` empty, for a picture without pixels, a detail outside 1 to 16, an enlarged
/// size beyond 2^31 - 5 pixels in a row or column, and when `progress` asked to stop.
///
/// Time and memory grow with the number of pixels and of points on outlines, in proportion.
TARVEX_API bool TraceOutlines(const GreyView& picture, const OutlineOptions& options, CPolyPolyBezier& out);

}  // namespace tarvex
