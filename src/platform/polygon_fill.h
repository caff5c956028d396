// Filling polygons by scan lines, each pixel decided at its centre.
#pragma once

#include <span>
#include <vector>

#include "platform/path.h"
#include "platform/surface.h"

namespace tarvex::platform {

enum class FillRule { Alternate, Winding };

/// Collects the edges of closed polygons and fills what they enclose.
///
/// A pixel is inside when the edges that pass to the left of its centre, or through it, are odd in
/// number (Alternate) or differ in number between downward and upward ones (Winding). An edge passes a
/// row when the row's centre is at or below its upper end and above its lower end; so polygons that
/// share an edge share no pixel, and a rectangle's right column and bottom row stay out.
class PolygonFill {
  public:
    explicit PolygonFill(const Surface& surface) : m_surface(surface) {}

    /// Adds the edges between consecutive points and from the last point to the first. Coordinates
    /// may be up to 2^37 in size. Raises std::bad_alloc.
    void AddPolygon(std::span<const FixedPoint> points);

    /// Fills with a value as ValueOf gives it, and forgets the edges. Raises std::bad_alloc.
    void Fill(FillRule rule, PixelWord value);

  private:
    struct Edge {
        int firstRow;
        int endRow;
        int direction;  ///< 1 downwards, -1 upwards
        // Where the current row's centre line is met: x + rest / height sixteenths, 0 <= rest < height.
        Fixed x;
        Fixed rest;
        Fixed height;
        Fixed stepX;  ///< added from row to row, with its rest
        Fixed stepRest;

        /// The first pixel at or right of the edge, within the surface or one past it.
        int Column(int width) const;
        void Advance();
    };

    /// An edge's place in one row.
    struct Crossing {
        int column;
        int direction;
    };

    void AddEdge(FixedPoint from, FixedPoint to);
    void FillRow(int y, FillRule rule, PixelWord value);

    const Surface& m_surface;
    std::vector<Edge> m_edges;
    std::vector<Edge> m_active;
    std::vector<Crossing> m_crossings;
};

}  // namespace tarvex::platform
