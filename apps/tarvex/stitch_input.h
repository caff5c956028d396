// The filled shapes of a picture or a drawing, for the break-up.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tarvex/containers.h"

namespace tarvex::app {

/// A shape whose contours do not cross, inside by the even-odd rule.
struct FilledShape {
    std::string colour;  ///< #rrggbb
    CPolyPolyBezier contours;
};

struct FilledShapes {
    DPOINT corner;
    double width = 0;
    double height = 0;
    double millimetresPerUnit = 0;
    std::vector<FilledShape> shapes;
    std::string remarks;  ///< what was left out, empty when all is well
};

/// Reads a file, or standard input for "-": of a picture the shape that tracing would find, of a drawing what
/// each shown element fills. A fill whose contours cross, or that fills what lies twice inside, is drawn and
/// traced, within a fraction of a pixel of a large rendering. Raises ProgramError.
FilledShapes ReadFilledShapes(const std::string& path, std::uint64_t maxPixels);

}  // namespace tarvex::app
