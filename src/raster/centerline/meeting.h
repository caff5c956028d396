// Where strokes meet that all end at one junction.
#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "raster/centerline/arms.h"

namespace tarvex::centerline {

/// Arms cut where their lines begin to be straight, and the point that they all run into from there.
struct Meeting {
    std::vector<Arm> arms;
    DPOINT at{};
    std::pair<Arm, Arm> sides;  ///< the two of them that turn the least from one to the other
    double turn = 0;            ///< by which these two turn, in radians
};

/// None where a line does not become straight soon, or where they, going straight on, miss each other by more
/// than a pixel or half their half width.
std::optional<Meeting> FindMeeting(const ArmGraph& graph, const std::vector<Arm>& ends);

}  // namespace tarvex::centerline
