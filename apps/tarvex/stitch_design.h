// Shapes broken up for stitching, with their colours and their real size.
#pragma once

#include <string>
#include <vector>

#include "tarvex/breakup.h"

namespace tarvex::app {

/// Millimetres of a pixel when nothing says otherwise: 96 to the inch.
inline constexpr double MILLIMETRES_PER_PIXEL = 25.4 / 96;

struct StitchShape {
    std::string colour;  ///< #rrggbb
    std::vector<IslandBreakUp> islands;
};

/// Coordinates are the input's own, x right, y down.
struct StitchDesign {
    DPOINT corner;  ///< the page's top left
    double width = 0;
    double height = 0;
    double millimetresPerUnit = MILLIMETRES_PER_PIXEL;
    std::vector<StitchShape> shapes;
};

/// Why an island was not broken up, in the words of a message.
std::string Explained(BreakUpEnd end);

}  // namespace tarvex::app
