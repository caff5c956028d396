// Outlines of SVG's drawable elements as Bezier contours in the element's own coordinates.
//
// Path data is read by a parser of its own: the grammar is small, lib2geom's parser would bring a
// package with a hundred headers into the program's build for it, and what is needed at its edges (how
// much of damaged data still draws, exact end points, a known error of arcs) is decided here.
//
// Lines have no handles, quadratic curves are raised to cubic ones exactly, and arcs of circles and
// ellipses become cubics of at most 45 degrees each, which leave the true curve by less than 4.3e-6 of
// its larger radius. Contours are closed by repeating the first anchor as the last. What draws no
// segment at all (a lone moveto) is left out.
#pragma once

#include <string_view>
#include <vector>

#include "tarvex/records.h"

namespace tarvex::app {

using Contour = std::vector<BPOINT>;

struct PathContours {
    std::vector<Contour> contours;
    bool isSound = true;  ///< false: the data is damaged, and the contours are those before the damage
};

/// Reads the data of a path, by the grammar of SVG 1.1, section 8.3.9. As SVG prescribes, damaged data
/// draws up to its first error.
PathContours ParsePathData(std::string_view data);

struct RectShape {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    double rx = 0;  ///< of the corners; at most half the width is used
    double ry = 0;
};

/// Clockwise as seen on the screen, from the end of the top left corner. A rectangle without an area
/// has no contour.
std::vector<Contour> RectContours(const RectShape& rect);

/// Clockwise as seen on the screen, from its right end. Radii of 0 or less give no contour.
std::vector<Contour> EllipseContours(const DPOINT& centre, double rx, double ry);

/// Fewer than two points give no contour.
std::vector<Contour> PolylineContours(const std::vector<DPOINT>& points, bool isClosed);

}  // namespace tarvex::app
