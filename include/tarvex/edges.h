// Edges: the lines in a picture along which it changes from dark to light.
//
// Columns x grow to the right, rows y downwards, (0, 0) is the top left pixel.
// Pictures are taken by their luminance (Rec. 601: 0.299 red, 0.587 green,
// 0.114 blue), 0 to 255; a pixel of a 1-bit bitmap is 0 or 255.
#pragma once

#include <memory>
#include <optional>

#include "tarvex/containers.h"
#include "tarvex/contours.h"
#include "tarvex/platform.h"

namespace tarvex {

/// Canny: the picture is smoothed by a Gaussian; a pixel is on an edge where
/// its gradient's magnitude is greatest along the gradient's own direction (J.
/// Canny, "A computational approach to edge detection", 1986). Lines run
/// smoothly and corners are rounded a little.
///
/// Shen-Castan: the picture is smoothed by a symmetric exponential; an edge is
/// where the difference to the picture itself, which is its Laplacian with the
/// finest detail left out, changes its sign, and its strength is the difference
/// of the means on both sides (J. Shen and S. Castan, "An optimal linear
/// operator for step edge detection", 1992). Keeps fine detail and places
/// better where edges are close to one another, at the price of more response
/// to noise. Its cost does not depend on sigma.
enum class EdgeMethod { Canny, ShenCastan };

/// Heights of steps, in levels of luminance: an ideal straight step of this
/// height just reaches the threshold. An edge is a connected line of pixels
/// that reach `low`, one of which at least reaches `high`.
struct EdgeThresholds {
    double low = 0;
    double high = 0;
};

struct EdgeOptions {
    EdgeMethod method = EdgeMethod::Canny;
    /// Standard deviation of the smoothing filter, in pixels, from LEAST_SIGMA to
    /// MOST_SIGMA; what lies beyond counts as the nearer of the two, NaN as the
    /// lower one.
    double sigma = 1.4;
    /// Found from the picture when not given; see CEdgeDetect. Negative ones and
    /// NaN count as 0, and a lower one above the higher as that.
    std::optional<EdgeThresholds> thresholds;
};

/// Finds the edges of a picture, as a monochrome bitmap and as curves.
///
///     CEdgeDetect edges;
///     if (edges.Detect(picture)) edges.Output(curves);
///
/// Thresholds that are not given are found from the noise. Where there is nothing but noise, magnitudes of
/// gradients have a Rayleigh distribution (H. Voorhees and T. Poggio, "Detecting textons and texture
/// boundaries in natural images", 1987), whose width a low quantile of their histogram tells, where edges do
/// not reach. The high threshold is what noise of that width exceeds at one pixel in 100,000, but no less
/// than EDGE_LEAST_STEP levels; the low one is half of it.
///
/// Promises. A picture of one colour has no edges. The edges of a picture and
/// of its negative are the same, pixel by pixel. The pixel of an edge that
/// separates two areas lies within a pixel of the border.
///
/// An object holds a bitmap of its own and belongs to one thread at a time.
class TARVEX_API CEdgeDetect {
  public:
    static constexpr double LEAST_SIGMA = 0.3;
    static constexpr double MOST_SIGMA = 100;
    static constexpr double EDGE_LEAST_STEP = 8;
    static constexpr double EDGE_SURE_STEP = 80;

    CEdgeDetect();
    CEdgeDetect(const CEdgeDetect&) = delete;
    CEdgeDetect& operator=(const CEdgeDetect&) = delete;
    CEdgeDetect(CEdgeDetect&& other) noexcept;
    CEdgeDetect& operator=(CEdgeDetect&& other) noexcept;
    ~CEdgeDetect();

    /// Finds the edges of a bitmap of 1 or 32 bits, which is only read; the
    /// reserved bytes do not count. False, and the object is empty, when the
    /// handle is not such a bitmap's or there is no memory.
    ///
    /// Time is proportional to the pixels, for Canny times sigma. Memory is about
    /// 3 bytes for every pixel with Canny and 12 with Shen-Castan, beyond the
    /// result's bit.
    bool Detect(HBITMAP bitmap, const EdgeOptions& options = {});
    /// The same for a picture of grey levels. False too for one without pixels.
    bool Detect(const GreyView& picture, const EdgeOptions& options = {});

    /// The edges, white on black, 1 bit, bottom-up: as CImgProc::InitMat loads it
    /// and CSkeleton thins it. Lines are one or two pixels wide. It stays the
    /// object's, until the next `Detect`. Null when there is none.
    HBITMAP Bitmap() const;
    /// The thresholds that were applied.
    EdgeThresholds Thresholds() const;

    /// Empties `out` and fills it with the edges' curves, one contour for each
    /// branch between ends and junctions, by thinning the bitmap and fitting its
    /// lines (coordinates and joints are as CSkeleton::Output says).
    /// Curves run between pixels, up to 1.5 from the thinned bitmap: where the picture, smoothed by a
    /// Gaussian of the sigma given (1 to 3 pixels), is steepest. Without noise that is within a fifth of a
    /// pixel of a smooth border that bends gently. Where a border is stairs, as in pictures of two levels, or
    /// noise scatters the points, curves follow them less closely, to about half a pixel, and have few nodes
    /// still. Takes up to 8 bytes for every pixel near an edge. False, with `out` empty, when there is no
    /// bitmap or no memory.
    bool Output(CPolyPolyBezier& out) const;

  private:
    struct Result;

    std::unique_ptr<Result> m_result;
};

}  // namespace tarvex
