// Segments cut where anything crosses them, and the polylines that stand for the pieces in the clipper.
#pragma once

#include <span>
#include <vector>

#include "shaping/point_index.h"
#include "shaping/segments.h"

namespace tarvex::shaping {

/// A curve and its polyline. Pieces that run along each other have one course in common, so that their
/// polylines are the same to the last bit.
struct Course {
    Cubic curve;
    std::vector<DPOINT> points;  ///< both ends included
};

/// A part of a segment between two neighbouring crossings.
struct Piece {
    int segment;
    double from;  ///< parameters of the segment; from < to
    double to;
    int start;  ///< number of the point it starts at: equal numbers, equal points
    int end;
    int course;       ///< -1 for a piece that is no longer than the tolerance, and has no polyline
    bool isReversed;  ///< it runs against its course
};

struct PieceList {
    std::vector<Piece> pieces;  ///< in the order of the segments and along them
    std::vector<Course> courses;
    PointIndex ends;
};

/// Cuts the segments at the splits, which have been settled, and finds the courses.
PieceList CutIntoPieces(const SegmentList& list, std::span<const Split> splits);

/// Flattens all courses at the resolution, and more finely wherever two polylines would cross between their
/// ends: their curves do not.
void FlattenCourses(PieceList& pieces, double resolution);

}  // namespace tarvex::shaping
