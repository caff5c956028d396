// Both shapes as one list of cubic segments, and the splitting of segments at points.
#pragma once

#include <span>
#include <vector>

#include "bezier/nodes_cubic.h"
#include "tarvex/containers.h"

namespace tarvex::shaping {

enum class Operand : int { A = 1, B = 2 };

struct Segment {
    /// What it runs along, from its first anchor to its last. A line without handles runs evenly here.
    Cubic curve;
    int contour;
    int index;  ///< of its first node in its contour
    bool hasHandles;
};

struct SegmentContour {
    Operand operand;
    int position;  ///< in its shape's list
    int first;     ///< segment
    int count;     ///< of segments; the last ends where the first starts
};

struct SegmentList {
    std::vector<Segment> segments;
    std::vector<SegmentContour> contours;

    const Segment& operator[](int i) const { return segments[static_cast<std::size_t>(i)]; }
    const SegmentContour& ContourOf(int segment) const {
        return contours[static_cast<std::size_t>((*this)[segment].contour)];
    }
    int Size() const { return static_cast<int>(segments.size()); }
    /// The segment after this one, around the contour.
    int Next(int segment) const {
        const SegmentContour& c = ContourOf(segment);
        return segment + 1 < c.first + c.count ? segment + 1 : c.first;
    }
};

/// Appends the segments of a shape whose contours are closed. Null contours and those of fewer than two nodes
/// have none.
void AppendSegments(const CPolyPolyBezier& shape, Operand operand, SegmentList& list);

/// A place on a segment at which it is to be split, and the point that both pieces then end at.
struct Split {
    int segment;
    double t;
    DPOINT point;
};

/// A stretch that two segments have in common: from `s0` to `s1` of the first, where the second one runs from
/// `t0` to `t1`, evenly by parameter.
struct CommonStretch {
    int first;
    double s0, s1;
    int second;
    double t0, t1;
};

/// Sorts splits by segment and parameter and drops those that equal an end of the segment, or the one before
/// them, within POINT_EPSILON.
void SettleSplits(const SegmentList& list, std::vector<Split>& splits);

/// Gives each of two segments that have a stretch in common the other's splits on it, and settles all again.
/// Both are then cut into the same pieces there, also where a crossing is so flat that it was found in two
/// places.
void ShareSplits(const SegmentList& list, std::span<const CommonStretch> stretches,
                 std::vector<Split>& splits);

/// The piece of a segment with its ends at given points, which are (nearly) those of the parameters; handles
/// move with their ends. A line without handles gives another.
Cubic PieceOf(const Segment& segment, double from, double to, DPOINT start, DPOINT end);

/// Gives the contours of an operand nodes at settled splits of the list made of it.
void InsertNodes(const SegmentList& list, Operand operand, std::span<const Split> splits,
                 CPolyPolyBezier& shape);

}  // namespace tarvex::shaping
