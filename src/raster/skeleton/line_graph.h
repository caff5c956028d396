// A skeleton as lines between nodes.
#pragma once

#include <algorithm>
#include <span>
#include <vector>

#include "raster/skeleton/bit_plane.h"
#include "raster/skeleton/distance_map.h"
#include "tarvex/contours.h"
#include "tarvex/records.h"

namespace tarvex::skeleton {

/// An end, a junction or a lone pixel.
struct Node {
    DPOINT at;
    double radius = 0;  ///< of the largest disc in the shape around it
};

/// A line from node to node, or one that is closed and has none. Its points are a pixel or so apart, in
/// pixels' columns and rows, moved to the middle between the shape's edges; the first and the last are the
/// nodes' places. A closed line ends with its first point.
struct Line {
    std::vector<DPOINT> points;
    std::vector<double> radii;  ///< half the shape's width at each point
    int from = -1;
    int to = -1;

    bool IsClosed() const { return from < 0; }
};

struct LineGraph {
    std::vector<Node> nodes;
    std::vector<Line> lines;  ///< in the order of their first pixel, row by row
};

/// A picture whose shape was found by its greys, and the levels of what is wholly ground and wholly shape:
/// pixels between them are shape in part.
struct ShapeGreys {
    GreyView picture;
    double ground = 0;
    double shape = 0;

    double PartAt(int x, int y) const {
        return std::clamp((picture.Row(y)[x] - ground) / (shape - ground), 0.0, 1.0);
    }
};

/// The lines of a skeleton, `lines`, of the shape that `distances` belong to. Junction pixels that touch are
/// one node, unless they cover more than a few pixels: then each is a node, with lines of two points between.
/// With greys, middles and widths are more exact.
LineGraph FindLines(const BitPlane& lines, const BitPlane& shape, const DistanceMap& distances,
                    const ShapeGreys* greys = nullptr);

}  // namespace tarvex::skeleton
