// From a line drawing to the strokes it was drawn with.
//
// Model: pixel (x, y) is a square around (x + 0.5, y + 0.5); the picture covers [0, width] x [0, height], x
// to the right, y down, and is surrounded by ground.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "tarvex/containers.h"
#include "tarvex/contours.h"
#include "tarvex/platform.h"

namespace tarvex {

/// Widths of strokes: for each stroke one at each of its nodes.
class TARVEX_API CPolyPolyWidth : public COwningList<CArray<double, double>> {};

/// What CImageTrace takes for a line, and how closely it follows it. Lengths are in pixels.
struct CentreLineOptions {
    /// Levels up to this are dark; found by Otsu's method when not given.
    std::optional<int> threshold;
    /// Which side of the threshold is drawn; found from the picture when not given (`FindShapeSide`).
    std::optional<ShapeSide> side;
    /// Specks of this many pixels or fewer, up to 256, are left out and such pinholes filled. 0 keeps all.
    int speckPixels = 4;
    /// A branch is left out unless it sticks out of the stroke that it leaves by this much, and by four
    /// fifths of that stroke's half width. So is the tip of a corner. 0 leaves out none but what CSkeleton
    /// does.
    double minBranch = 2;
    /// Whether strokes run on through junctions, where that is straight, and crossings are mended. Otherwise
    /// every line between ends and junctions is a stroke.
    bool joinStrokes = true;
    /// The farthest a curve may run from the traced middle; at least 0.1.
    double tolerance = 0.5;
    /// Called now and then with the part done, 0 to 1; tracing stops when it returns false.
    std::function<bool(double)> progress;
};

/// Traces a line drawing along the middle of its lines, each stroke once, with its width.
///
///     CImageTrace tracer(bitmap);
///     CPolyPolyBezier strokes;
///     CPolyPolyWidth widths;
///     tracer.DoTrace({}, strokes, widths);
///
/// The lines are thinned as CSkeleton does it, and then placed by the greys at their edges. What a junction
/// bends is mended: strokes that go straight on through it become one, two that cross at a slant cross in one
/// place, a third arm runs on to the stroke that passes, straight lines that end together meet in one point.
/// Straight lines are straight segments, corners are corners.
///
/// Different objects may be used on different threads.
class TARVEX_API CImageTrace {
  public:
    /// Copies the greys of a bitmap of 1 or 32 bits (a colour's is its luma, 0.299 red + 0.587 green +
    /// 0.114 blue). A null handle, and a bitmap that cannot be read, give a tracer without a picture.
    explicit CImageTrace(HBITMAP bitmap);
    /// Refers to the picture, which must stay.
    explicit CImageTrace(const GreyView& picture);
    CImageTrace(const CImageTrace&) = delete;
    CImageTrace& operator=(const CImageTrace&) = delete;
    ~CImageTrace();

    /// Empties `strokes` and `widths` and fills them: contour i of `strokes` is the middle of a stroke,
    /// closed when its last anchor is its first, and array i of `widths` holds its width at each of the
    /// contour's nodes. The first and the last node of an open stroke are where the largest discs at its ends
    /// have their centres, so drawn with round ends it is as long as it was. A dot is a contour of two equal
    /// nodes.
    ///
    /// Widths are those of the drawing to about half a pixel, and closer where greys show it. In junctions
    /// they are carried on from beside them.
    ///
    /// False, with both lists empty, when there is no picture or `progress` asked to stop. Time is
    /// proportional to the picture's pixels; memory is about 16 bytes for each at most.
    bool DoTrace(const CentreLineOptions& options, CPolyPolyBezier& strokes, CPolyPolyWidth& widths) const;

  private:
    struct Picture;

    std::unique_ptr<Picture> m_picture;
};

}  // namespace tarvex
