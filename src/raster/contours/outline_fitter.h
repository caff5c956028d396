// From the points along an outline, or along a border between junctions, to corners, edges and curves.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "raster/contours/corners.h"
#include "raster/contours/curve_run.h"
#include "tarvex/containers.h"

namespace tarvex::contours {

using Contours = std::vector<std::unique_ptr<CArray<BPOINT, BPOINT>>>;

/// How closely to follow points, in pixels. Stairs of a two-level picture lie up to half a pixel off the edge
/// they stand for; `soft` edges lie where they are, give or take the grey's noise. A tolerance above 0 is
/// the farthest that a curve may run from the points.
Tuning TuningFor(bool soft, double tolerance);

/// The closed contour of these segments, each of which begins where the one before it ends.
std::unique_ptr<CArray<BPOINT, BPOINT>> ToContour(const std::vector<Cubic>& cubics, double scale);

/// Whether a closed contour encloses anything: not so a line there and back.
bool EnclosesArea(const CArray<BPOINT, BPOINT>& contour);

/// The closed polygon with these corners, in segments, the first of which ends at the first corner.
std::vector<Cubic> PolygonOf(std::span<const Crossing> corners);

/// Turns points into cubic segments. What is returned is valid until the next call.
class OutlineFitter {
  public:
    explicit OutlineFitter(const Tuning& tuning) : m_tuning(tuning), m_fitter(tuning) {}

    /// A closed outline; the first point is not repeated at the end, the last segment ends where the first
    /// begins.
    const std::vector<Cubic>& FitLoop(std::span<const Crossing> points);

    /// A border from its first point to its last, which stay where they are; they may be the same place.
    const std::vector<Cubic>& FitOpen(std::span<const Crossing> points);

  private:
    bool IsLoop() const { return m_runs == m_corners.size(); }
    const Corner& CornerAfter(std::size_t k) const { return m_corners[(k + 1) % m_corners.size()]; }
    void FitCornerless();
    void FitRuns();
    void TakeRun(std::size_t k);
    void FindEdges();
    bool FollowsLine(const Line& line, double near) const;
    void FitEnd(const Corner& corner);
    void FitBetween(std::size_t k);
    bool IsOnEdge(Crossing tip, const Line& edge) const;
    static double DistanceFrom(const Line& line, Crossing p);
    bool IsCutOff(Crossing p, std::size_t k, Crossing tip) const;

    Tuning m_tuning;
    Chain m_chain;
    CornerFinder m_finder;
    RunFitter m_fitter;
    std::vector<Corner> m_corners;  // of an open chain, its ends too
    std::size_t m_runs = 0;         // stretches between corners
    std::vector<bool> m_straight;
    std::vector<Crossing> m_run;
    std::vector<Cubic> m_cubics;
};

}  // namespace tarvex::contours
