// Cubic Bezier segments: evaluation, nearest point, length, flattening; and fitting segments to points.
//
// A segment is the curve B(t) = (1-t)³ p0 + 3t(1-t)² p1 + 3t²(1-t) p2 + t³ p3, t from 0 to 1, in the
// caller's unit; nothing here depends on the direction of y. Distances are sqrt(dx*dx + dy*dy), the
// products and the sum rounded as written, so coordinates beyond about 1e154 are infinitely far apart.
// Nothing here throws, except std::bad_alloc (CMemoryException is one) when memory runs out. Functions that
// are const may be called on one object from several threads at once; the arrays they fill belong to one
// thread.
#pragma once

#include "tarvex/records.h"

namespace tarvex {

/// One cubic Bezier segment.
///
///     CBezier curve({0, 0}, {0, 40}, {100, 40}, {100, 0});
///     curve.SetResolution(0.5);
///     CArray<DPOINT, DPOINT> points;
///     curve.GetPolyline(points);  // (0, 0), ..., (100, 0)
///
/// Any coordinates may be given, NaN and infinities included: every operation ends, and what cannot be
/// computed comes out as NaN, infinity or the fallback that its description states.
class TARVEX_API CBezier {
  public:
    /// The segment from node `a` to node `b` of a contour: (a.pt, a.cp2, b.cp1, b.pt).
    CBezier(const BPOINT& a, const BPOINT& b);
    CBezier(const DPOINT& start, const DPOINT& control1, const DPOINT& control2, const DPOINT& end);
    CBezier(const CBezier&) = default;
    CBezier& operator=(const CBezier&) = default;

    /// Sets the length up to which `GetPolyline` takes a leg of the control polygon for flat, and within
    /// which `GetLength` takes two estimates for equal. Any value is accepted: 0, a negative one or NaN
    /// makes `GetPolyline` halve as far as its limits allow.
    void SetResolution(double value);

    /// Whether `GetPolyline` subdivides a straight segment like any other (true, which yields evenly
    /// spaced points), or gives just its end point (false).
    void SetExpandStraightLines(bool value);

    /// The point at parameter `t`. Exactly 0 and exactly 1 give `p0` and `p3` bit for bit; parameters
    /// outside [0, 1] follow the same polynomial beyond the ends.
    ///
    /// The sum runs from p0 to p3, with the weights (3-t)t² - 3t + 1, ((t-2)t² + t)·3, 3t²·(1-t), t²·t.
    DPOINT GetCurvePoint(double t) const;

    /// The parameter of the curve point nearest to `p`, by scanning: about 100 samples along the curve,
    /// then eight passes of about 21 samples, each ten times finer. The result lies in [0, 1] to a
    /// resolution of 1e-10. The earliest of equally near samples wins.
    ///
    /// Fast and predictable, but it can settle on the wrong one of two branches that come nearly equally
    /// close between samples: `GetNearestCurvePointT` cannot. The parameters advance by repeated
    /// addition, so the last sample of the first scan lies just below 1; the end point is reached by the
    /// finer passes only. When no sample is nearer than 1e100 (NaN included) the result is that of a
    /// best sample at 0: 0.
    double _GetCurveT(const DPOINT& p) const;

    /// `GetCurvePoint(_GetCurveT(p))`.
    DPOINT _GetCurvePoint(const DPOINT& p) const;

    /// The parameter of the curve point nearest to `p`, exactly: the roots in [0, 1] of
    /// (B(t) - p)·B'(t), a polynomial of degree five in Bezier form, isolated by halving.
    ///
    /// Candidates are 0, the roots in increasing order and 1, compared by squared distance; a later one
    /// wins only when strictly nearer, so a point equally far from everything gives 0. Source:
    /// P. J. Schneider, "Solving the Nearest-Point-on-Curve Problem", Graphics Gems, 1990. At most five
    /// chains of 64 halvings, a few microseconds.
    double GetNearestCurvePointT(const DPOINT& p) const;

    /// `GetCurvePoint(GetNearestCurvePointT(p))`.
    DPOINT GetNearestCurvePoint(const DPOINT& p) const;

    /// The length of the polyline p0, B(1/n), ..., B((n-1)/n), p3, summed from p0. An `n` below 2 gives
    /// the distance from `p0` to `p3`.
    double GetL(int n) const;

    /// The arc length: `GetL(n)` for the first n of 20, 40, ..., 20480 that lies within `resolution` of
    /// `GetL(10)`, or of n = 20480.
    ///
    /// Each estimate is compared with the 10-chord one, not with the one before: deliberately, so that a
    /// curved segment is measured with 20480 chords (relative error about 1e-9) unless the resolution
    /// is coarse. Costs up to 20480 evaluations.
    double GetLength() const;

    /// Appends the segment as a polyline to `out`: the flattening that all of the library uses.
    ///
    /// An empty `out` first receives `p0`; otherwise its last point is taken for the segment's start,
    /// which is not appended (the halving starts at `p0` all the same). The points that follow end
    /// with `p3`, exactly. Segments are halved at t = 0.5 until all three legs of a piece's control
    /// polygon are at most as long as the threshold; the piece then gives its two control points and
    /// its end. Control points become vertices on purpose: they are within the threshold of the curve.
    ///
    /// The threshold is `resolution`, but for chords |p0 - p3| longer than 2000, 5000, 10000 and 100000
    /// no finer than 3, 5, 10 and 20 units. A piece that is not flat after 60 halvings is taken for flat,
    /// and once a segment has given more than 100,000 points all its remaining pieces are: only
    /// NaN, infinite or astronomically large coordinates and resolutions near or below 0 come to that.
    ///
    /// A segment whose handles are both shorter than 1e-8 gives `p3` alone when straight lines are not
    /// expanded. A point-like segment gives its point three times. Linear in the number of points.
    void GetPolyline(CArray<DPOINT, DPOINT>& out) const;

    /// Replaces `out` by p0, B(1/n), ..., B((n-1)/n), p3 with the n that `GetLength` settles on: 21 to
    /// 20481 points, even in the parameter, not along the curve.
    void GetPolylineEx(CArray<DPOINT, DPOINT>& out) const;

    /// The halving of `GetPolyline` on a record of the caller's: appends the points that follow
    /// `work->p0` to `work->target`, with `work->flatness` as the threshold; the 100,000 points are
    /// counted from `work->startCount`. The record is not changed. Without a target nothing happens.
    void GetBArray(BEZIER* work) const;

    DPOINT p0;                        ///< start
    DPOINT p1;                        ///< first control point
    DPOINT p2;                        ///< second control point
    DPOINT p3;                        ///< end
    double resolution = 1.0;          ///< see `SetResolution`
    bool expandStraightLines = true;  ///< see `SetExpandStraightLines`
};

/// Replaces `out` by the flattened contour `nodes`: the first anchor, then what `CBezier::GetPolyline`
/// appends for each pair of consecutive nodes at `resolution`, straight segments expanded.
///
/// Fewer than two nodes give an empty polyline. A closed contour (last anchor equal to the first) gives
/// a polyline whose last point repeats its first.
TARVEX_API void GetPolyline(const CArray<BPOINT, BPOINT>& nodes, CArray<DPOINT, DPOINT>& out,
                            double resolution);

// ---------------------------------------------------------------------------------------------
// Fitting
//
// A run of digitised points becomes a chain of cubic segments: P. J. Schneider, "An Algorithm for
// Automatically Fitting Digitized Curves", Graphics Gems, 1990. A segment's handles lie along the
// tangents at its ends; their lengths are the least-squares solution, where it is sound. A segment
// that comes nearer than the tolerance to all its points is kept; one that is not far off is tried
// again up to four times with parameters improved by a Newton step; otherwise the run is split at its
// worst point (the last of equals), where both sides get one tangent, and both sides are fitted.
//
// Particular to this library:
// - `error` is compared with squared distances: 4 admits points up to 2 units off the curve. Segments
//   with a worst squared distance below error² are worth the Newton steps.
// - Whatever is below 1e-8 counts as zero: lengths of vectors to normalise, chord length,
//   determinants, denominators.
// - A handle is at most 0.618 times as long as its segment's chord.
// - Where least squares give a negative handle, or a tangent is zero, both handles are a third of the
//   chord.
// - Equal consecutive points are fitted as given; equal points at an end of the run leave that end
//   without a tangent, hence with handles of length 0 there.
// - After 1000 splits inside one another, a range that still does not fit is left out: the chain
//   has a gap there. So is a range whose distances are all NaN and whose split falls outside it, which
//   takes a coordinate that is not finite.
// - Finite points may lie as far apart as they like: where squared distances would be beyond the largest
//   double, a range is fitted as its image in a unit of its own. So up to 1002 finite points always have a
//   whole chain, whatever `error` is, with finite control points while no coordinate reaches 2^1022; beyond,
//   a handle may point past the largest double.
//
// Each segment starts where the one before ends, the first and last at the first and last point, bit
// for bit. Time is proportional to the points times the depth of splitting: for ordinary outlines,
// some ten passes over the points.

/// Appends the segments fitted to the `n` points of the run to `out`, which is not emptied first. The
/// fields of BEZIER other than the points keep their defaults. Fewer than two points append nothing.
TARVEX_API void FitCurve(const DPOINT* points, int n, CArray<BEZIER, BEZIER>* out, double error);

/// Replaces `out` by the contour fitted to the `n` points of the run: one node per joint, the first
/// without an incoming handle, the last without an outgoing one, `flags` 0. Fewer than two points give an
/// empty contour; so does a run of which no range fits.
TARVEX_API void FitCurve(const DPOINT* points, int n, CArray<BPOINT, BPOINT>* out, double error);

}  // namespace tarvex
