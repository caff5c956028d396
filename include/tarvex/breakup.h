// Automatic break-up: a filled shape becomes regions that can each be stitched in one direction.
//
// A region is a column: two rails, its long sides, run beside each other in the same direction, and stitches
// go from rail to rail. Together with the two edges between the rails' starts and between their ends the
// rails are the region's boundary. A ring has its two outlines as rails.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "tarvex/containers.h"
#include "tarvex/raster.h"
#include "tarvex/rectangles.h"

namespace tarvex {

/// The ends of a straight cut across the shape, in raster coordinates.
struct CUTLINE {
    std::int32_t x1 = 0;
    std::int32_t y1 = 0;
    std::int32_t x2 = 0;
    std::int32_t y2 = 0;
    friend bool operator==(const CUTLINE&, const CUTLINE&) = default;
};

/// How a break-up ended.
enum class BreakUpEnd {
    Done,
    EmptyFrame,      ///< the outline has no width or no height in whole units
    NoRaster,        ///< no memory for the working raster, or the outline is too large for one
    TooComplicated,  ///< refused by the complexity guard
    TooManyLines,    ///< 500 or more skeleton lines in one pass
    UncutJunction,   ///< a junction at which no cut could be made
    Aborted,         ///< Escape was held after a pass
    TimedOut,        ///< more than 60 seconds had passed after a pass
    TooManyPasses,   ///< junctions were left after the last pass
    NotSplit         ///< the regions could not be made into columns
};

/// Splits one filled shape at the junctions of its skeleton.
///
///     CAutoBreakUp breakUp;
///     if (breakUp.AutoBreakUp(image, 96.0, outline, regions, inclinations, true)) ...
///
/// Pass after pass the shape is thinned to its skeleton, and wherever more than two skeleton lines meet, one
/// that does not run straight through is cut off by a line between two points of the outline. After the
/// pass that finds nothing to cut, each remaining skeleton line is the spine of a region.
///
/// Raster coordinates are document coordinates less the rounded minimum of the outline; a pixel's position is
/// its column and row.
///
/// What the numbers in it mean for the picture's resolution: at junctions the lines' ends are sought within 5
/// pixels, lines of up to 10 pixels are taken for noise, directions are looked up 25 pixels ahead (15 in
/// the second pass, 5 later), and regions are found on a grid of 10 pixels. So strokes should be some 15 to
/// 60 pixels wide. The outline's points are the candidates for the ends of cuts: give one for every pixel or
/// so.
///
/// One object serves any number of runs, on one thread at a time.
class TARVEX_API CAutoBreakUp : public CImgProc {
  public:
    CAutoBreakUp() = default;
    CAutoBreakUp(const CAutoBreakUp&) = delete;
    CAutoBreakUp& operator=(const CAutoBreakUp&) = delete;
    ~CAutoBreakUp() override;

    /// Breaks up the shape whose closed polylines are `outline` and whose rendering is `image`, a bitmap of 1
    /// or 32 bits in document coordinates: every pixel that is not black belongs to the shape.
    ///
    /// On success `regions` holds two polylines for each region, its rails, in document coordinates, and
    /// `inclinations` for each rail the positions at which inclinations meet it: the index of a point divided
    /// by the polyline's number of points. The k-th position on one rail and the k-th on the other are the
    /// ends of one inclination. Positions grow along both rails, inclinations do not cross and turn slowly;
    /// they are about 17 x scale / 300 (rounded down) pixels apart, at least 1. A ring's rails are closed.
    ///
    /// Rails follow the outline itself, not its pixels, and regions on the two sides of a cut share its ends.
    ///
    /// With `checkComplexity` shapes are refused whose outline has 2000 points or more and that have more
    /// than 28 pixels for each of them.
    ///
    /// False when the shape cannot be broken up; then both outputs are empty and `End` tells the reason. Long
    /// runs are abandoned, with a beep, when Escape is held after a pass or more than 60 seconds have passed;
    /// a pass that has begun is finished.
    bool AutoBreakUp(HBITMAP image, double scale, const CPolyPolyDPoint& outline, CPolyPolyDPoint& regions,
                     CPolyPolyInclination& inclinations, bool checkComplexity);

    /// The same with the regions in the place of the outline. On failure the outline is empty: it is cleared
    /// whatever the result.
    bool AutoBreakUp(HBITMAP image, double scale, CPolyPolyDPoint& outline,
                     CPolyPolyInclination& inclinations, bool checkComplexity);

    /// How the last run ended.
    BreakUpEnd End() const { return m_end; }
    /// The cuts of the last run, in raster coordinates, in the order in which they were made.
    std::span<const CUTLINE> CutLines() const { return m_cutLines; }
    /// The skeleton lines of the last run, in raster coordinates. Those that regions were made of, region
    /// by region, are `RegionLines`, indices into them.
    const CPolyPolyPoint& SkeletonLines() const { return m_lines; }
    std::span<const int> RegionLines() const { return m_regionLines; }
    /// The document position of raster pixel (0, 0).
    CPoint Origin() const { return {m_left, m_top}; }

  protected:
    using Points = std::vector<POINT>;

    class OutlineIndex;  ///< the outline's points by place

    /// One end of a skeleton line.
    struct LineEnd {
        int line;
        bool atFront;
    };

    bool AutoBreakUpInternal(const CPolyPolyDPoint& outline, CPolyPolyDPoint& regions,
                             CPolyPolyInclination& inclinations);

    // -----------------------------------------------------------------------------------------
    // A pass

    /// Brings the working raster up to date: the shape in white, all cuts so far in black, 2 pixels wide.
    bool MakeBitmap();
    /// Paints all cut lines. False when there is no memory for that.
    bool DrawCutLines(CDC& dc, bool white, int width);
    bool isTooComplicate() const;
    /// Thins the working raster into the line matrix and traces its lines.
    void TraceSkeleton();
    /// Drops lines of fewer than 4 points, and spurs of fewer than 10. One line is always left.
    void FilterSmallLines();
    /// 2: ends at two junctions; 1: a spur, one end at a junction and the other free, or fewer than 4
    /// points; 0: neither. As the line matrix was when anchors were last listed.
    int CountCloseAnchors(const CArray<POINT, POINT>& line) const;
    /// Removes these lines, but never all of more than one; empties the list.
    void DeleteSkippedLines(std::vector<int>& skipped);
    /// Cuts at every junction; whether there was any to cut. Clears m_cutOk when one could not be cut.
    bool ReduceCrossLines();
    bool CutOneLine(const std::vector<Points>& branches);
    bool ReduceCrossPoint(std::vector<Points> branches, POINT centre, std::vector<POINT> directions);
    bool CutBranch(POINT centre, const std::vector<POINT>& directions, int branch);
    /// The outline's point nearest to the centre of those on the given sides of two rays from it.
    std::optional<DPOINT> FindClosestPoint(POINT centre, POINT a, int sideA, POINT b, int sideB) const;
    /// Whether two cut lines meet inside the raster.
    bool CrossingCutLines() const;

    // -----------------------------------------------------------------------------------------
    // After the last pass

    /// Joins skeleton lines that lie apart by no more than a gap.
    void FilterSkelLines();
    bool ReduceSkelLines(const std::vector<LineEnd>& group);
    bool CreateOutlines(CPolyPolyDPoint& regions, CPolyPolyInclination& inclinations);
    void FixCutEdges(CPolyPolyDPoint& regions) const;
    void AddInclinations(CPolyPolyDPoint& regions, CPolyPolyInclination& inclinations) const;
    /// A pixel of the line that lies well inside the shape, for tracing the region from. When there is none
    /// the line's first point, and false.
    std::pair<bool, POINT> MakeAutoTracePoint(const CArray<POINT, POINT>& line) const;

    // -----------------------------------------------------------------------------------------
    // Raster and document coordinates

    CPoint p2bmp(const CPoint& p) const;
    CPoint bmp2p(const CPoint& p) const;
    DPOINT bmp2p(const DPOINT& p) const;

    CPolyPolyPoint m_lines;
    std::vector<int> m_regionLines;
    std::vector<CUTLINE> m_cutLines;
    std::int32_t m_left = 0;
    std::int32_t m_top = 0;
    std::int32_t m_width = 0;
    std::int32_t m_height = 0;
    CPolyPolyDPoint m_outline;  ///< in raster coordinates
    double m_scale = 96.0;
    HBITMAP m_hWorkBitmap = nullptr;
    HBITMAP m_hSourceBitmap = nullptr;
    bool m_oneCutPerPass = false;
    std::int32_t m_maxPasses = 6;
    double m_closeDist = 5.0;
    std::int32_t m_lookAhead = 25;
    bool m_cutOk = true;
    std::int32_t m_edgeLimit = 6;
    std::int32_t m_extendTrim = 1;
    std::int32_t m_shortLine = 10;
    bool m_checkComplexity = true;

  private:
    struct Anchor {
        POINT at;
        bool isJunction;  ///< not a free end
    };

    bool Run(const CPolyPolyDPoint& outline, CPolyPolyDPoint& regions, CPolyPolyInclination& inclinations);
    bool Frame(const CPolyPolyDPoint& outline);
    bool Fail(BreakUpEnd end);
    bool CopySource();
    bool RunPasses();
    void ListAnchors();
    bool IsFreeEnd(POINT p) const;
    std::vector<Points> GatherBranches(POINT junction, std::vector<int>& skipped) const;
    bool JoinFrom(bool atFront);
    bool IsBridged(POINT a, POINT b) const;
    void ReleaseRaster();

    BreakUpEnd m_end = BreakUpEnd::Done;
    std::vector<Anchor> m_anchors;  ///< the line matrix' cells of value 2, in scan order
    std::size_t m_drawnCuts = 0;    ///< cuts that are in the working raster
    bool m_hasSource = false;       ///< whether the shape is in the working raster
    std::shared_ptr<const OutlineIndex> m_index;
};

// ---------------------------------------------------------------------------------------------
// Whole shapes

/// A region of a shape, in the shape's coordinates.
struct StitchRegion {
    std::vector<DPOINT> first;  ///< the rails; those of a ring are closed
    std::vector<DPOINT> second;
    /// Inclinations by the indices of their ends in `first` and `second`, growing along both.
    std::vector<std::pair<int, int>> inclinations;
    bool isRing = false;
};

/// What became of one island of a shape: an outer contour with its holes.
struct IslandBreakUp {
    BreakUpEnd end = BreakUpEnd::Done;
    std::vector<StitchRegion> regions;  ///< empty unless the end is Done
    std::vector<DLINE> cuts;
    std::vector<std::vector<DPOINT>> contours;  ///< the island itself, flattened; the outer one first
    double pixelsPerUnit = 0;                   ///< of the rendering that was broken up
};

struct ShapeBreakUpOptions {
    bool checkComplexity = true;
    /// Pixels for each unit of the shape in the rendering; 0 chooses it for each island so that its strokes
    /// are about as wide as the break-up's constants are made for.
    double pixelsPerUnit = 0;
    /// About how far apart inclinations are along a column, in units of the shape; 0 for 5 pixels.
    double spacing = 0;
};

/// Breaks up a shape of Bezier contours, inside by the even-odd rule, island by island: each is rendered by
/// itself and broken up by CAutoBreakUp. Contours must not cross; those of fewer than three points, and null
/// ones, are passed over. Islands come in the order of their outer contours.
///
/// After an island whose run was aborted no more are tried.
TARVEX_API std::vector<IslandBreakUp> BreakUpShape(const CPolyPolyBezier& shape,
                                                   const ShapeBreakUpOptions& options);

}  // namespace tarvex
