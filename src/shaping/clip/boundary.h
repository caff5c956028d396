// From an arrangement whose sides are known to the contours of a region in it.
#pragma once

#include <cstdint>
#include <vector>

#include "shaping/clip/sweep.h"
#include "tarvex/records.h"

namespace tarvex::clip {

/// A simple polygon: outer contours counter-clockwise with y upwards, holes clockwise.
struct Contour {
    std::vector<DPOINT> vertices;
    bool hole = false;
};

/// For each combination of subjectBit and clipBit, whether it is inside the region.
using Region = bool[4];

/// The boundary of the region, in contours that meet no vertex twice, each from its lowest vertex, in
/// the order in which the sweep leaves them, and from left to right between the same two vertices.
std::vector<Contour> TraceBoundary(const Arrangement& arrangement, const Region& region);

}  // namespace tarvex::clip
