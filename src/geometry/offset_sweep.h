// Which parts of a tangle of closed curves bound the region that a rule of winding numbers fills, and the
// contours they make up.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "geometry/offset_grid.h"

namespace tarvex::offsetting {

/// A directed edge. The tag says where it comes from; its pieces keep it.
struct Edge {
    GridPoint from;
    GridPoint to;
    int tag = 0;
};

/// A corner of a contour, with the tag of the edge that leaves it.
struct Corner {
    GridPoint at;
    int tag = 0;
};

/// A closed contour; the last corner's edge leads back to the first.
using Contour = std::vector<Corner>;

/// Which winding numbers are inside.
enum class Inside { positive, nonZero, evenOdd };

inline constexpr std::size_t NO_LIMIT = static_cast<std::size_t>(-1);

/// Appends the edges of a contour; backwards, against its direction, with the same tags.
enum class Sense { forwards, backwards };
void AppendEdges(const Contour& contour, Sense sense, std::vector<Edge>& edges);

/// The contours around the region, which lies to the left of them (y upwards): around parts of it
/// counter-clockwise, around holes in it clockwise. They do not cross themselves or one another but may
/// touch; where parts touch in a point they are separate contours. Pieces of one edge that follow one
/// another are one edge; a contour starts at the edge with its least tag, contours are ordered by
/// these. Nothing when `edges` crossed more than `mostCrossings` times.
std::optional<std::vector<Contour>> Outline(std::span<const Edge> edges, Inside rule,
                                            std::size_t mostCrossings = NO_LIMIT);

/// The edges, cut wherever they meet one another; directed as given, overlaps once.
std::vector<Edge> CutAtCrossings(std::span<const Edge> edges);

}  // namespace tarvex::offsetting
