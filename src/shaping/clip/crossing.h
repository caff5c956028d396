// Where two crossing segments cross, as a point with double coordinates.
#pragma once

#include "shaping/clip/point.h"

namespace tarvex::clip {

/// The point where the pieces `e` and `f`, which cross, are to be cut: where the input edges that they
/// come from cross, rounded to the nearest doubles (computed with twice their precision, so that many
/// edges through one point are cut in one point), if that lies in the pieces' bounding boxes; otherwise
/// where the pieces themselves cross, moved into both boxes. The result does not depend on which of the
/// two is called `e`, is never NaN, and is an end point of one of them at most.
Point CutPoint(const Segment& e, const Segment& eEdge, const Segment& f, const Segment& fEdge);

}  // namespace tarvex::clip
