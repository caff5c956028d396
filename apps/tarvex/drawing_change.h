// What the commands that change a drawing have in common: read it, change its outlines, write it.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "tarvex/svg_reader.h"

namespace tarvex::app {

struct DrawingChange {
    std::string input;
    std::string output;
    std::optional<int> precision;
    /// Changes the outlines, given the frame of all that are shown (of all, when none is), and returns
    /// by how much lengths grew.
    std::function<double(SvgDocument&, const DRECT&)> apply;
};

/// Nothing is written unless all went well. A drawing without outlines is no result. Returns the
/// program's exit status or raises ProgramError.
int ChangeDrawing(const DrawingChange& change);

}  // namespace tarvex::app
