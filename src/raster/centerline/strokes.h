// From the lines of a skeleton to the strokes that a hand would draw.
#pragma once

#include <vector>

#include "raster/skeleton/line_graph.h"

namespace tarvex::centerline {

/// A stroke's middle, its points a pixel or so apart, and half its width at each of them. A closed one ends
/// with its first point; a dot has one point.
struct Stroke {
    std::vector<DPOINT> points;
    std::vector<double> radii;
    bool isClosed = false;
};

struct StrokeRules {
    double leastBranch = 0;     ///< a branch whose tip sticks out of another stroke by less is dropped
    bool joinsStraight = true;  ///< strokes run on through junctions
};

/// Joins the lines that continue each other through junctions and leaves out what a junction bends. `shape`
/// is what the graph is the skeleton of.
std::vector<Stroke> FindStrokes(const skeleton::LineGraph& graph, const skeleton::BitPlane& shape,
                                const StrokeRules& rules);

}  // namespace tarvex::centerline
