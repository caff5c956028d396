// Fitting few Bezier segments to a stroke's middle, with corners and straight pieces.
#pragma once

#include <algorithm>
#include <optional>
#include <vector>

#include "raster/centerline/strokes.h"
#include "raster/contours/corners.h"
#include "raster/contours/curve_run.h"

namespace tarvex::centerline {

/// A contour, and the stroke's width at each of its nodes.
struct FittedStroke {
    std::vector<BPOINT> nodes;
    std::vector<double> widths;
};

/// What becomes of the ends of open strokes: they stay bit for bit, or are moved onto the straight line that
/// a stroke's end is.
enum class StrokeEnds { kept, straightened };

class StrokeFitter {
  public:
    /// `tolerance` is how far curves may run from the points.
    StrokeFitter(double tolerance, StrokeEnds ends) : m_tolerance(tolerance), m_ends(ends) {}

    /// A closed stroke gives a closed contour, a dot two equal nodes.
    FittedStroke Fit(const Stroke& stroke);

  private:
    /// Whatever is asked for, between a tenth of a pixel and more than any picture is wide.
    double Tolerance() const { return m_tolerance > 0.1 ? std::min(m_tolerance, 1e9) : 0.1; }
    contours::Tuning TuningFor(double radius) const;
    void FindCorners(const Stroke& stroke, const contours::Tuning& tuning);
    void PlaceCorners(bool isClosed, double radius);
    void FitPieces(const contours::Tuning& tuning);
    std::vector<double> WidthsAtJoints() const;
    FittedStroke Finish(bool isClosed) const;

    double m_tolerance;
    StrokeEnds m_ends;
    contours::Chain m_chain;
    contours::CornerFinder m_finder;
    std::vector<DPOINT> m_points;  // of a closed stroke from its first corner on
    std::vector<double> m_radii;
    std::vector<std::size_t> m_breaks;                      // indices of the ends and the corners
    std::vector<DPOINT> m_places;                           // where they are to be
    std::vector<std::optional<contours::Line>> m_straight;  // pieces between breaks
    std::vector<contours::Cubic> m_cubics;
};

}  // namespace tarvex::centerline
