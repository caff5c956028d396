// All points in which the segments of two shapes cross each other, or themselves.
#pragma once

#include <vector>

#include "shaping/segments.h"

namespace tarvex::shaping {

/// A point that two segments have in common: a crossing, or an end of one that lies on the other.
struct Crossing {
    int first;  ///< segment; of shape A where the shapes differ
    double s;
    int second;
    double t;
    DPOINT point;  ///< an end's anchor if it is one
};

enum class Scope {
    BetweenShapes,  ///< only pairs of a segment of A and one of B
    Everywhere,     ///< all pairs, a segment with itself included
};

struct Meetings {
    std::vector<Crossing> crossings;
    std::vector<CommonStretch> stretches;
};

/// The crossings and common stretches. Crossings are ordered as a search would meet them that takes each pair
/// of contours in turn, the second one's segments one after the other and along each of them the first one's.
/// Neighbouring segments' common end is none. Where segments run along each other only the ends of the common
/// stretch are.
Meetings FindMeetings(const SegmentList& list, Scope scope);

}  // namespace tarvex::shaping
