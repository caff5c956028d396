// `tarvex transform`: a drawing scaled, turned and moved.
#pragma once

#include <optional>
#include <string>

#include "tarvex/records.h"

namespace tarvex::app {

struct TransformOptions {
    std::string input;
    std::string output;
    double scaleX = 1;
    double scaleY = 1;
    double angleX = 0;  ///< radians about the axes through the drawing's centre; see CView3D
    double angleY = 0;
    double angleZ = 0;
    DPOINT move;
    std::optional<int> precision;
};

/// Scales, then turns, both about the centre of the shown outlines' frame, then moves. Returns the
/// program's exit status or raises ProgramError.
int RunTransform(const TransformOptions& options);

}  // namespace tarvex::app
