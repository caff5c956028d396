// `tarvex shape`: what two drawings fill, combined.
#pragma once

#include <optional>
#include <string>

#include "tarvex/filled_shape.h"
#include "tarvex/shaping.h"
#include "tarvex/trace_command.h"

namespace tarvex::app {

struct ShapeInput {
    std::string path;
    ShapeFill fill = ShapeFill::AsDrawn;
};

struct ShapeOptions {
    ShapingOperation operation = SHAPING_UNION;
    ShapeInput a;
    ShapeInput b;
    std::string output;
    Format format = Format::Svg;
    bool byRaster = false;
    std::optional<int> precision;
};

/// The operations as they are named, in the order of their codes.
inline constexpr const char* SHAPING_NAMES[] = {"difference", "intersection", "xor", "union"};

/// Both drawings are scaled, by one power of two, to about this size before they are combined, and
/// back after.
inline constexpr double SHAPING_FRAME = 16384;

/// Returns the program's exit status or raises ProgramError.
int RunShape(const ShapeOptions& options);

}  // namespace tarvex::app
